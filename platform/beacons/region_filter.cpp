#include "platform/beacons/region_filter.h"

#include <algorithm>

namespace System::Beacon {
namespace {

TBeaconIdentity KeyOfUUID(const TGUID& AGUID) {
  return TBeaconIdentity::OfUUID(AGUID, 0, 0);
}

TBeaconIdentity KeyOfNamespace(std::span<const std::uint8_t, 10> ANamespace) {
  static constexpr std::array<std::uint8_t, 6> NoInstance{};
  return TBeaconIdentity::OfEddystone(ANamespace, NoInstance);
}

TBeaconIdentity KeyOf(const TBeaconsRegion& ARegion) {
  return ARegion.KindofBeacon == TKindofBeacon::Eddystone
             ? KeyOfNamespace(ARegion.EddysUIDRegion.GetNamespace())
             : KeyOfUUID(ARegion.iBAltBeaconRegion.GUID);
}

TBeaconIdentity RegionKeyOf(const TBeaconFrame& AFrame) {
  return AFrame.Kind == TFrameKind::EddystoneUID
             ? KeyOfNamespace(std::span<const std::uint8_t, 10>(AFrame.Id, 10))
             : KeyOfUUID(AFrame.GetGUID());
}

bool KindAccepts(TKindofBeacon AKind, TFrameKind AFrameKind) noexcept {
  if (AKind == TKindofBeacon::iBeaconAltBeacon)
    return AFrameKind == TFrameKind::iBeacon || AFrameKind == TFrameKind::AltBeacon;
  return (AKind == TKindofBeacon::iBeacon && AFrameKind == TFrameKind::iBeacon) ||
         (AKind == TKindofBeacon::AltBeacon && AFrameKind == TFrameKind::AltBeacon);
}

bool RegionAccepts(const TEddysUIDRegion& ARegion, const TBeaconFrame& AFrame) noexcept {
  return !ARegion.HasInstance ||
         std::equal(ARegion.UID.Instance.begin(), ARegion.UID.Instance.end(), AFrame.Id + 10);
}

bool RegionAccepts(const TiBAltBeaconRegion& ARegion, const TBeaconFrame& AFrame) noexcept {
  return KindAccepts(ARegion.KindofBeacon, AFrame.Kind) &&
         (!ARegion.Major || *ARegion.Major == AFrame.Major) &&
         (!ARegion.Minor || *ARegion.Minor == AFrame.Minor) &&
         (ARegion.ManufacturerID == -1 || AFrame.Kind == TFrameKind::iBeacon ||
          ARegion.ManufacturerID == AFrame.ManufacturerID);
}

bool RegionAccepts(const TBeaconsRegion& ARegion, const TBeaconFrame& AFrame) noexcept {
  return ARegion.KindofBeacon == TKindofBeacon::Eddystone
             ? RegionAccepts(ARegion.EddysUIDRegion, AFrame)
             : RegionAccepts(ARegion.iBAltBeaconRegion, AFrame);
}

}  // namespace

void TRegionFilter::Assign(std::span<const TBeaconsRegion> ARegions, TKindofBeacons AKinds) {
  FRegions.assign(ARegions.begin(), ARegions.end());
  FNextOfSameKey.assign(FRegions.size(), -1);
  FFirstOfKey.Clear();
  FFirstOfKey.Reserve(FRegions.size());
  FKinds = AKinds;
  ++FGeneration;
  for (std::size_t I = 0; I < FRegions.size(); ++I) {
    const TBeaconIdentity Key = KeyOf(FRegions[I]);
    const auto Number = static_cast<std::int32_t>(I);
    if (FFirstOfKey.Insert(Key, Number)) continue;
    FNextOfSameKey[I] = std::exchange(*FFirstOfKey.Find(Key), Number);
  }
}

bool TRegionFilter::Accepts(const TBeaconFrame& AFrame) const noexcept {
  if (!HasKind(AFrame.Kind)) return false;
  const std::int32_t* const First = FFirstOfKey.Find(RegionKeyOf(AFrame));
  for (std::int32_t I = First ? *First : -1; I >= 0; I = FNextOfSameKey[I])
    if (RegionAccepts(FRegions[I], AFrame)) return true;
  return false;
}

bool TRegionFilter::HasKind(TFrameKind AKind) const noexcept {
  const bool Both = FKinds.Contains(TKindofBeacon::iBeaconAltBeacon);
  switch (AKind) {
    case TFrameKind::iBeacon:
      return Both || FKinds.Contains(TKindofBeacon::iBeacon);
    case TFrameKind::AltBeacon:
      return Both || FKinds.Contains(TKindofBeacon::AltBeacon);
    default:
      return FKinds.Contains(TKindofBeacon::Eddystone);
  }
}

}  // namespace System::Beacon
