// Floor plans: what is read becomes a project, and its text.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "apps/wayfence/import_beacons.h"
#include "apps/wayfence/import_geojson.h"
#include "apps/wayfence/import_place.h"
#include "apps/wayfence/import_project.h"
#include "platform/errors.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* AData, std::size_t ASize) {
  using namespace Wayfence;
  try {
    TWarnings Warnings;
    TImportedFloors Floors =
        ReadGeoJson({reinterpret_cast<const char*>(AData), ASize}, "fuzz", Warnings);
    const bool AreInDegrees = AreDegrees(Floors);
    for (TImportedFloor& Floor : Floors) PlaceFloor(Floor, AreInDegrees, {});
    KeepFirstBeacons(Floors, Warnings);
    BuildProject("fuzz", Floors, Warnings).MakeBundle();
  } catch (const System::EGeneralError&) {  // refused as a whole, which is well
  }
  return 0;
}
