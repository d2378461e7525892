// Lists of beacons: what is read becomes a project, and its text.
#include <cstddef>
#include <cstdint>
#include <string>

#include "apps/wayfence/import_beacons.h"
#include "apps/wayfence/import_project.h"
#include "platform/errors.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* AData, std::size_t ASize) {
  using namespace Wayfence;
  const std::string Text(reinterpret_cast<const char*>(AData), ASize);
  try {
    TWarnings Warnings;
    TImportedFloors Floors;
    AddBeacons(Floors, TBeaconRows(TCsvReader("fuzz", Text)), {.SizeOfMaps = TPlace{20.0, 12.0}});
    KeepFirstBeacons(Floors, Warnings);
    BuildProject("fuzz", Floors, Warnings).MakeBundle();
  } catch (const System::EGeneralError&) {  // refused as a whole, which is well
  }
  return 0;
}
