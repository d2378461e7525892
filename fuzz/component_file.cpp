// Component files: what is read is written and read again; what is refused changes nothing.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "fencing/System.Beacon.Fencing.h"
#include "persistence/component_file.h"

namespace {

using namespace System;
using namespace System::Beacon::Fencing;

void ReadStopped(TBeaconZonesFencing& AComponent, std::string_view AText) {
  AComponent.SetDesigning(true);
  ReadComponent(AComponent, AText, "fuzz");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* AData, std::size_t ASize) {
  TBeaconZonesFencing Component;
  const std::string Before = WriteComponent(Component);
  try {
    ReadStopped(Component, {reinterpret_cast<const char*>(AData), ASize});
  } catch (const EFileError&) {
    if (WriteComponent(Component) != Before) std::abort();
    return 0;
  }
  const std::string Written = WriteComponent(Component);
  TBeaconZonesFencing Copy;
  ReadStopped(Copy, Written);
  if (WriteComponent(Copy) != Written) std::abort();
  return 0;
}
