// Description lists: whatever text is taken becomes pairs that are written and read again.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "map/System.Beacon.Fencing.Scene.Beacons.h"
#include "platform/errors.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* AData, std::size_t ASize) {
  using namespace System::Beacon::Fencing::Scene::Beacons;
  const std::string_view Text(reinterpret_cast<const char*>(AData), ASize);
  TDescriptionList List;
  try {
    List = StringToDescriptionList(Text);
  } catch (const System::EConvertError&) {
    return 0;
  }
  if (List.size() > Text.size()) std::abort();
  if (StringToDescriptionList(DescriptionListToString(List)) != List) std::abort();
  return 0;
}
