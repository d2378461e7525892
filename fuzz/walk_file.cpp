// Walk files.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "apps/wayfence/walk.h"
#include "platform/errors.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* AData, std::size_t ASize) {
  using namespace Wayfence;
  try {
    const TWalk Walk = ParseWalk({reinterpret_cast<const char*>(AData), ASize}, "fuzz");
    if (!(Walk.Speed > 0.0) || Walk.Stops.empty() == !Walk.Random) std::abort();
    System::Beacon::CheckRadioOptions(Walk.Radio);
  } catch (const System::EFileError&) {  // refused as a whole, which is well
  }
  return 0;
}
