// Run files: what is read hangs together, and the page's JSON of it is whole.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <utility>

#include "apps/wayfence/report_page.h"
#include "platform/errors.h"

namespace {

using namespace Wayfence;

void Expect(bool AHolds) {
  if (!AHolds) std::abort();
}

/// Each item names a map that is there.
template <class TItems>
void ExpectMaps(const TRunRecord& ARun, const TItems& AItems, int ALeast = 0) {
  for (const auto& Item : AItems)
    Expect(Item.Map >= ALeast && Item.Map < static_cast<int>(ARun.Maps.size()));
}

template <class TItems>
void ExpectInTime(const TRunRecord& ARun, const TItems& AItems) {
  Expect(std::is_sorted(AItems.begin(), AItems.end(), [](const auto& A, const auto& B) {
    return A.Seconds < B.Seconds;
  }));
  if (!AItems.empty()) Expect(AItems.front().Seconds >= 0.0 && AItems.back().Seconds <= ARun.End);
}

void ExpectWhole(const TRunRecord& ARun) {
  Expect(!ARun.Maps.empty());
  ExpectMaps(ARun, ARun.Beacons);
  ExpectMaps(ARun, ARun.Zones);
  ExpectMaps(ARun, ARun.Pois);
  ExpectMaps(ARun, ARun.Edges);
  ExpectMaps(ARun, ARun.Positions);
  ExpectMaps(ARun, ARun.Truth);
  ExpectMaps(ARun, ARun.Events, -1);
  for (const TRunRecord::TSignal& Signal : ARun.Signals)
    Expect(Signal.Beacon >= 0 && Signal.Beacon < static_cast<int>(ARun.Beacons.size()));
  for (const TRunRecord::TEvent& Event : ARun.Events)
    Expect(Event.Zone >= -1 && Event.Zone < static_cast<int>(ARun.Zones.size()));
  ExpectInTime(ARun, ARun.Positions);
  ExpectInTime(ARun, ARun.Truth);
  ExpectInTime(ARun, ARun.Signals);
  ExpectInTime(ARun, ARun.Events);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* AData, std::size_t ASize) {
  try {
    TRunRecord Run = ParseRun({reinterpret_cast<const char*>(AData), ASize}, "fuzz");
    ExpectWhole(Run);
    const std::string Json = RunsToJson({{"fuzz", std::move(Run)}});
    Expect(nlohmann::json::accept(Json) && Json.find('<') == std::string::npos);
  } catch (const System::EFileError&) {  // refused as a whole, which is well
  }
  return 0;
}
