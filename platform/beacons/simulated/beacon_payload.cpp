#include "platform/beacons/simulated/beacon_payload.h"

#include <initializer_list>

namespace System::Beacon {
namespace {

using TBytes = std::vector<std::uint8_t>;

/// Flags: generally discoverable, no classic Bluetooth.
TBytes Begin(std::initializer_list<std::uint8_t> AHead) {
  constexpr std::size_t LongestLegacyPayload = 31;
  TBytes Result;
  Result.reserve(LongestLegacyPayload);
  Result.insert(Result.end(), {0x02, 0x01, 0x06});
  Result.insert(Result.end(), AHead);
  return Result;
}

void AppendIdentity(
    TBytes& ABytes, const TGUID& AGUID, std::uint16_t AMajor, std::uint16_t AMinor, int APower) {
  ABytes.insert(ABytes.end(), AGUID.Bytes.begin(), AGUID.Bytes.end());
  for (const std::uint16_t Value : {AMajor, AMinor}) {
    ABytes.push_back(static_cast<std::uint8_t>(Value >> 8));
    ABytes.push_back(static_cast<std::uint8_t>(Value & 0xFF));
  }
  ABytes.push_back(static_cast<std::uint8_t>(APower));
}

}  // namespace

TBytes MakeiBeaconPayload(const TGUID& AGUID,
                          std::uint16_t AMajor,
                          std::uint16_t AMinor,
                          int APower) {
  TBytes Result = Begin({26, 0xFF, 0x4C, 0x00, 0x02, 0x15});
  AppendIdentity(Result, AGUID, AMajor, AMinor, APower);
  return Result;
}

TBytes MakeAltBeaconPayload(std::uint16_t ACompany,
                            const TGUID& AGUID,
                            std::uint16_t AMajor,
                            std::uint16_t AMinor,
                            int APower) {
  const auto Low = static_cast<std::uint8_t>(ACompany & 0xFF);
  const auto High = static_cast<std::uint8_t>(ACompany >> 8);
  TBytes Result = Begin({27, 0xFF, Low, High, 0xBE, 0xAC});
  AppendIdentity(Result, AGUID, AMajor, AMinor, APower);
  Result.push_back(0);  // reserved for the maker
  return Result;
}

TBytes MakeEddystonePayload(const TEddystoneUID& AUID, int APower) {
  constexpr int LossInFirstMetre = 41;  // dB
  const auto PowerAtZero = static_cast<std::uint8_t>(APower + LossInFirstMetre);
  TBytes Result = Begin({0x03, 0x03, 0xAA, 0xFE, 23, 0x16, 0xAA, 0xFE, 0x00, PowerAtZero});
  Result.insert(Result.end(), AUID.Namespace.begin(), AUID.Namespace.end());
  Result.insert(Result.end(), AUID.Instance.begin(), AUID.Instance.end());
  Result.insert(Result.end(), 2, 0);  // reserved
  return Result;
}

}  // namespace System::Beacon
