// What beacons send.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/beacons/System.Beacon.h"

namespace System::Beacon {

// Advertising payloads: flags, then one frame. `APower` in dBm at 1 m, at most 20.
std::vector<std::uint8_t> MakeiBeaconPayload(const TGUID& AGUID,
                                             std::uint16_t AMajor,
                                             std::uint16_t AMinor,
                                             int APower);
std::vector<std::uint8_t> MakeAltBeaconPayload(std::uint16_t ACompany,
                                               const TGUID& AGUID,
                                               std::uint16_t AMajor,
                                               std::uint16_t AMinor,
                                               int APower);
std::vector<std::uint8_t> MakeEddystonePayload(const TEddystoneUID& AUID, int APower);

}  // namespace System::Beacon
