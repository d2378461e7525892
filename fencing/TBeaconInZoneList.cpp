#include "fencing/System.Beacon.Fencing.h"

namespace System::Beacon::Fencing {

const TClassInfo& TBeaconInZoneList::ClassInfo() {
  static const TClassInfo Info{.Name = "System.Beacon.Fencing.TBeaconInZoneList",
                               .Base = &TOwnedCollection::ClassInfo()};
  return Info;
}

TBeaconInZoneList::TBeaconInZoneList(TPersistent* AOwner, TCollectionItemClass AItemClass)
    : TOwnedCollection(AOwner, AItemClass) {
  const auto* const Zone = dynamic_cast<TBeaconZoneItem*>(AOwner);
  FGuard = Zone ? Zone->FGuard : New<TZoneGuard>();
}

TBeaconItem* TBeaconInZoneList::ContainsBeacon(const IBeacon* ABeacon) {
  const auto Key = ABeacon ? LookUpKeyOf(*ABeacon) : std::nullopt;
  if (!Key) return nullptr;
  const std::lock_guard Guard(FGuard->Lock);
  return FindLocked(*Key);
}

TBeaconItem* TBeaconInZoneList::FindLocked(const TBeaconIdentity& AKey) {
  if (FLookUpVersion != FGuard->Version) BuildLookUp();
  TBeaconItem* const* const Found = FLookUp.Find(AKey);
  return Found ? *Found : nullptr;
}

void TBeaconInZoneList::BuildLookUp() {
  FLookUp.Clear();
  FLookUp.Reserve(2 * static_cast<std::size_t>(GetCount()));
  for (int I = 0; I < GetCount(); ++I)
    GetItems(I)->ForEachKey(
        [&](const TBeaconIdentity& AKey) { FLookUp.Insert(AKey, GetItems(I)); });
  FLookUpVersion = FGuard->Version;
}

void TBeaconInZoneList::Update(TCollectionItem* AItem) {
  TOwnedCollection::Update(AItem);
  FOnChange(this);
}

void TBeaconInZoneList::ChangeContents(const std::function<void()>& AChange) {
  FGuard->Change(AChange);
}

}  // namespace System::Beacon::Fencing
