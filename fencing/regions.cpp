// Merging the beacons of all zones into regions.
#include "fencing/System.Beacon.Fencing.h"

namespace System::Beacon::Fencing {
namespace {

/// The regions so far, and where to find the one that an item falls into: there is at most one for
/// a UUID and one for a namespace.
struct TMerger {
  std::vector<TBeaconsRegion> Regions;
  TIdentityTable<std::size_t> Found;

  void Add(const TBeaconItem& AItem);
};

bool IsEddystone(const TBeaconItem& AItem) {
  return AItem.GetKindofBeacon() == TKindofBeacon::Eddystone;
}

TBeaconIdentity KeyOf(const TBeaconItem& AItem) {
  static constexpr std::array<std::uint8_t, 6> NoInstance{};
  return IsEddystone(AItem) ? TBeaconIdentity::OfEddystone(AItem.GetEddyUID().Namespace, NoInstance)
                            : TBeaconIdentity::OfUUID(AItem.GetGUID(), 0, 0);
}

TBeaconsRegion RegionOf(const TBeaconItem& AItem) {
  TBeaconsRegion Result;
  Result.KindofBeacon = AItem.GetKindofBeacon();
  if (IsEddystone(AItem))
    Result.EddysUIDRegion.Initialize(AItem.GetEddyUID().Namespace, AItem.GetEddyUID().Instance);
  else
    Result.iBAltBeaconRegion.Initialize(AItem.GetGUID(),
                                        AItem.GetMajor(),
                                        AItem.GetMinor(),
                                        AItem.GetKindofBeacon(),
                                        AItem.GetMID());
  return Result;
}

void Widen(TEddysUIDRegion& ARegion, const TBeaconItem& AItem) {
  if (ARegion.GetInstanceST() != AItem.GetEddyInstance())
    ARegion.Initialize(AItem.GetEddyUID().Namespace);
}

/// Always drops the minor: one region for a UUID and major covers all minors, even when the item
/// repeats the one that is there.
void Widen(TBeaconsRegion& ARegion, const TBeaconItem& AItem) {
  TiBAltBeaconRegion& Part = ARegion.iBAltBeaconRegion;
  const TKindofBeacon Kind = ARegion.KindofBeacon == AItem.GetKindofBeacon()
                                 ? ARegion.KindofBeacon
                                 : TKindofBeacon::iBeaconAltBeacon;
  const int MID = Part.ManufacturerID == AItem.GetMID() ? Part.ManufacturerID : -1;
  if (Part.Major == AItem.GetMajor())
    Part.Initialize(AItem.GetGUID(), AItem.GetMajor(), Kind, MID);
  else
    Part.Initialize(AItem.GetGUID(), Kind, MID);
  ARegion.KindofBeacon = Kind;
}

void TMerger::Add(const TBeaconItem& AItem) {
  const TBeaconIdentity Key = KeyOf(AItem);
  if (Found.Insert(Key, Regions.size())) {
    Regions.push_back(RegionOf(AItem));
    return;
  }
  TBeaconsRegion& Region = Regions[*Found.Find(Key)];
  if (IsEddystone(AItem))
    Widen(Region.EddysUIDRegion, AItem);
  else
    Widen(Region, AItem);
}

}  // namespace

std::vector<TBeaconsRegion> RegionsOfZones(const TBeaconZones& AZones) {
  TMerger Merger;
  for (int I = 0; I < AZones.GetCount(); ++I) {
    const TBeaconInZoneList& List = *AZones.GetItems(I)->GetBeaconList();
    for (int J = 0; J < List.GetCount(); ++J) Merger.Add(*List.GetItems(J));
  }
  return std::move(Merger.Regions);
}

}  // namespace System::Beacon::Fencing
