#include "fencing/System.Beacon.Fencing.h"

namespace System::Beacon::Fencing {

const TClassInfo& TBeaconZones::ClassInfo() {
  static const TClassInfo Info{.Name = "System.Beacon.Fencing.TBeaconZones",
                               .Base = &TOwnedCollection::ClassInfo()};
  return Info;
}

TBeaconZones::TBeaconZones(TPersistent* AOwner, TCollectionItemClass AItemClass)
    : TOwnedCollection(AOwner, AItemClass), FGuard(New<TZoneGuard>()) {}

// ---------------------------------------------------------------- base values

template <class TReadText>
void TBeaconZones::SpreadBase(const std::string& AOld,
                              const std::string& ANew,
                              TReadText AReadText,
                              TTextSetter ASetText) {
  for (int I = 0; I < GetCount(); ++I) {
    TBeaconInZoneList& List = *GetItems(I)->GetBeaconList();
    for (int J = 0; J < List.GetCount(); ++J)
      if (AReadText(*List.GetItems(J)) == AOld) (List.GetItems(J)->*ASetText)(ANew);
  }
}

std::string TBeaconZones::GetBaseGUID() const {
  return GUIDToString(FBaseGUID);
}

void TBeaconZones::SetBaseGUID(const std::string& AValue) {
  const std::string Old = GetBaseGUID();
  if (AValue == Old) return;
  SpreadBase(
      Old, AValue, [](TBeaconItem& A) { return A.GetUUID(); }, &TBeaconItem::SetUUID);
  for (int I = 0; I < GetCount(); ++I) GetItems(I)->SetBaseGUID(AValue);
  FBaseGUID = StringToGUID(AValue);
}

void TBeaconZones::SetBaseEddyNamespace(const std::string& AValue) {
  if (AValue == FBaseEddyNamespace) return;
  SpreadBase(
      FBaseEddyNamespace,
      AValue,
      [](TBeaconItem& A) { return A.GetEddyNamespace(); },
      &TBeaconItem::SetEddyNamespace);
  for (int I = 0; I < GetCount(); ++I) GetItems(I)->SetBaseEddyNamespace(AValue);
  FBaseEddyNamespace = AValue;
}

void TBeaconZones::SetBaseManufacturerID(const std::string& AValue) {
  if (AValue == FBaseManufacturerID) return;
  SpreadBase(
      FBaseManufacturerID,
      AValue,
      [](TBeaconItem& A) { return A.GetManufacturerID(); },
      &TBeaconItem::SetManufacturerID);
  for (int I = 0; I < GetCount(); ++I) GetItems(I)->SetBaseManufacturerID(AValue);
  FBaseManufacturerID = AValue;
}

// ---------------------------------------------------------------- look-up

TBeaconZoneItem* TBeaconZones::GetZoneForBeacon(const IBeacon* ABeacon) {
  TBeaconItem* Ignored = nullptr;
  return GetZoneForBeacon(ABeacon, Ignored);
}

TBeaconZoneItem* TBeaconZones::GetZoneForBeacon(const IBeacon* ABeacon, TBeaconItem*& ABeaconItem) {
  const auto Key = ABeacon ? LookUpKeyOf(*ABeacon) : std::nullopt;
  if (!Key) return nullptr;
  const std::lock_guard Guard(FGuard->Lock);
  const TPlace* const Place = FindLocked(*Key);
  if (!Place) return nullptr;
  ABeaconItem = Place->Item;
  return Place->Zone;
}

TZoneMatch TBeaconZones::FindMatch(const IBeacon* ABeacon) {
  const auto Key = ABeacon ? LookUpKeyOf(*ABeacon) : std::nullopt;
  if (!Key) return {};
  const std::lock_guard Guard(FGuard->Lock);
  const TPlace* const Place = FindLocked(*Key);
  if (!Place) return {};
  return {Place->Zone->FLink, Place->Item->FLink, Place->Zone->GetSystemProximity()};
}

bool TBeaconZones::ZoneHolds(const TItemLink<TBeaconZoneItem>& AZone, const IBeacon& ABeacon) {
  const auto Key = LookUpKeyOf(ABeacon);
  if (!Key) return false;
  const std::lock_guard Guard(FGuard->Lock);
  const TBeaconZoneItem* const Zone = AZone.Get();
  return Zone && Zone->FBeaconList->FindLocked(*Key) != nullptr;
}

const TBeaconZones::TPlace* TBeaconZones::FindLocked(const TBeaconIdentity& AKey) {
  if (FLookUpVersion != FGuard->Version) BuildLookUp();
  return FLookUp.Find(AKey);
}

void TBeaconZones::BuildLookUp() {
  FLookUp.Clear();
  for (int I = 0; I < GetCount(); ++I) {
    const TBeaconInZoneList& List = *GetItems(I)->FBeaconList;
    for (int J = 0; J < List.GetCount(); ++J)
      List.GetItems(J)->ForEachKey([&](const TBeaconIdentity& AKey) {
        FLookUp.Insert(AKey, {GetItems(I), List.GetItems(J)});
      });
  }
  FLookUpVersion = FGuard->Version;
}

void TBeaconZones::Update(TCollectionItem* AItem) {
  TOwnedCollection::Update(AItem);
  FOnChange(this);
}

void TBeaconZones::ChangeContents(const std::function<void()>& AChange) {
  FGuard->Change(AChange);
}

}  // namespace System::Beacon::Fencing
