// The straightforward reading that ours is measured against: field by field, item after item, texts
// compared as texts.
#pragma once

#include <cmath>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "fencing/System.Beacon.Fencing.h"

namespace Bench {

using TBytes = std::vector<std::uint8_t>;

/// An iBeacon's advertising payload; major and minor from a running number.
inline TBytes PayloadOf(std::uint32_t ANumber) {
  TBytes Result{0x02, 0x01, 0x06, 0x1A, 0xFF, 0x4C, 0x00, 0x02, 0x15};
  for (int I = 0; I < 16; ++I) Result.push_back(static_cast<std::uint8_t>(0x20 + I));
  for (const int Shift : {24, 16, 8, 0})
    Result.push_back(static_cast<std::uint8_t>(ANumber >> Shift));
  Result.push_back(0xC5);
  return Result;
}

struct TPlainBeacon {
  std::string UUID;
  int Major = 0;
  int Minor = 0;
  int Power = 0;
};

inline std::string TextOf(const std::uint8_t* AUUID) {
  System::TGUID GUID;
  std::copy_n(AUUID, 16, GUID.Bytes.begin());
  return System::GUIDToString(GUID);
}

inline std::optional<TPlainBeacon> DecodePlainly(std::span<const std::uint8_t> APayload) {
  std::vector<TBytes> Structures;
  for (std::size_t At = 0; At < APayload.size() && At + APayload[At] < APayload.size();
       At += 1U + APayload[At])
    Structures.emplace_back(APayload.begin() + At + 1, APayload.begin() + At + 1 + APayload[At]);
  for (const TBytes& S : Structures)
    if (S.size() == 26 && S[0] == 0xFF && S[1] == 0x4C && S[2] == 0 && S[3] == 2 && S[4] == 0x15)
      return TPlainBeacon{
          TextOf(&S[5]), S[21] << 8 | S[22], S[23] << 8 | S[24], static_cast<std::int8_t>(S[25])};
  return std::nullopt;
}

inline System::Beacon::Fencing::TBeaconItem* FindPlainly(
    System::Beacon::Fencing::TBeaconZones& AZones, const TPlainBeacon& ABeacon) {
  for (int I = 0; I < AZones.GetCount(); ++I) {
    auto& List = *AZones.GetItems(I)->GetBeaconList();
    for (int J = 0; J < List.GetCount(); ++J) {
      auto* const Item = List.GetItems(J);
      if (Item->GetUUID() == ABeacon.UUID && Item->GetMajor() == ABeacon.Major &&
          Item->GetMinor() == ABeacon.Minor)
        return Item;
    }
  }
  return nullptr;
}

/// The beacons that are present, as a list that is walked.
class TPlainService {
 public:
  void Process(std::span<const std::uint8_t> APayload, int ARssi) {
    const auto Beacon = DecodePlainly(APayload);
    if (!Beacon) return;
    TPresent& Present = Find(*Beacon);
    Present.Rssi = ARssi;
    Present.Distance = std::pow(10.0, (Beacon->Power - ARssi) / 10.0 * 0.5);
  }

 private:
  struct TPresent {
    TPlainBeacon Beacon;
    int Rssi = 0;
    double Distance = 0.0;
  };
  TPresent& Find(const TPlainBeacon& ABeacon) {
    for (TPresent& Present : FPresent)
      if (Present.Beacon.UUID == ABeacon.UUID && Present.Beacon.Major == ABeacon.Major &&
          Present.Beacon.Minor == ABeacon.Minor)
        return Present;
    return FPresent.emplace_back(TPresent{ABeacon});
  }
  std::vector<TPresent> FPresent;
};

}  // namespace Bench
