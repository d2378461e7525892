#include <cstdlib>

#include "platform/beacons/captures/captures.h"

using namespace System::Beacon;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* AData, std::size_t ASize) {
  try {
    const auto Reader = OpenAdvertisementLog(std::vector<std::uint8_t>(AData, AData + ASize));
    TAdvertisement Next;
    while (Reader->Read(Next)) {
      if (Next.Payload.size() > MaxPayloadSize) std::abort();
    }
    if (Reader->GetProgress() != 1.0) std::abort();
  } catch (const EBeaconSourceError&) {  // refused as a whole, which is well
  }
  return 0;
}
