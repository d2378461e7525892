// What the targets of the capture readers share.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <vector>

#include "platform/beacons/captures/captures.h"

namespace Fuzz {

using TOpen = System::TRef<System::Beacon::IAdvertisementReader> (*)(std::vector<std::uint8_t>);

/// Opens the input with `AOpen` and reads it to its end.
inline int ReadToTheEnd(TOpen AOpen, const std::uint8_t* AData, std::size_t ASize) {
  try {
    const auto Reader = AOpen(std::vector<std::uint8_t>(AData, AData + ASize));
    System::Beacon::TAdvertisement Next;
    while (Reader->Read(Next)) {
      if (Next.Payload.size() > System::Beacon::MaxPayloadSize) std::abort();
    }
    if (Reader->GetProgress() != 1.0) std::abort();
  } catch (const System::Beacon::EBeaconSourceError&) {  // refused as a whole, which is well
  }
  return 0;
}

}  // namespace Fuzz
