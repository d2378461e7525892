#include "runtimepaint/monitored_regions.h"

#include <limits>

namespace System::Beacon::Fencing {
namespace {

bool IsNumber16(std::int32_t AValue) {
  return AValue >= 0 && AValue <= std::numeric_limits<std::uint16_t>::max();
}

}  // namespace

void TMonitoredRegions::Add(const IDesignBeacon& ABeacon) {
  if (ABeacon.GetKindofBeacon() == TKindofBeacon::Eddystone)
    AddEddystone(ABeacon);
  else
    AddiBAltBeacon(ABeacon);
}

TBeaconsRegion* TMonitoredRegions::Find(const TBeaconIdentity& AKey) {
  if (!FFound.Insert(AKey, FRegions.size())) return &FRegions[*FFound.Find(AKey)];
  FRegions.emplace_back();
  return nullptr;
}

void TMonitoredRegions::AddEddystone(const IDesignBeacon& ABeacon) {
  TEddystoneUID UID;
  if (!UID.SetNamespace(ABeacon.GetEddyNamespace()) || !UID.SetInstance(ABeacon.GetEddyInstance()))
    return;
  static constexpr std::array<std::uint8_t, 6> NoInstance{};
  TBeaconsRegion* const Known = Find(TBeaconIdentity::OfEddystone(UID.Namespace, NoInstance));
  if (!Known) {
    FRegions.back().KindofBeacon = TKindofBeacon::Eddystone;
    FRegions.back().EddysUIDRegion.Initialize(UID.Namespace, UID.Instance);
  } else if (Known->EddysUIDRegion.GetInstanceST() != UID.GetInstance()) {
    Known->EddysUIDRegion.Initialize(UID.Namespace);
  }
}

/// A second beacon of a UUID drops the minor, even when it repeats the first.
void TMonitoredRegions::AddiBAltBeacon(const IDesignBeacon& ABeacon) {
  constexpr TKindofBeacon Accepted = TKindofBeacon::iBeaconAltBeacon;
  if (!IsNumber16(ABeacon.GetMajor()) || !IsNumber16(ABeacon.GetMinor())) return;
  const auto Major = static_cast<std::uint16_t>(ABeacon.GetMajor());
  const auto Minor = static_cast<std::uint16_t>(ABeacon.GetMinor());
  const TGUID UUID = ABeacon.GetGUID();
  const auto Kind = static_cast<std::uint8_t>(ABeacon.GetKindofBeacon());
  TBeaconsRegion* const Known = Find(TBeaconIdentity::OfUUID(UUID, 0, 0, Kind));
  if (!Known) {
    FRegions.back().KindofBeacon = ABeacon.GetKindofBeacon();
    FRegions.back().iBAltBeaconRegion.Initialize(UUID, Major, Minor, Accepted, ABeacon.GetMID());
    return;
  }
  TiBAltBeaconRegion& Region = Known->iBAltBeaconRegion;
  const int MID = Region.ManufacturerID == ABeacon.GetMID() ? Region.ManufacturerID : -1;
  if (Region.Major == Major)
    Region.Initialize(UUID, Major, Accepted, MID);
  else
    Region.Initialize(UUID, Accepted, MID);
}

}  // namespace System::Beacon::Fencing
