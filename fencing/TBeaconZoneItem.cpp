#include "fencing/System.Beacon.Fencing.h"

namespace System::Beacon::Fencing {

const TClassInfo& TBeaconZoneItem::ClassInfo() {
  using T = TBeaconZoneItem;
  static const TClassInfo Info{
      .Name = "System.Beacon.Fencing.TBeaconZoneItem",
      .Base = &TCollectionItem::ClassInfo(),
      .Properties = {Published<&T::GetDisplayName, &T::SetDisplayName>("DisplayName"),
                     Published<&T::GetBeaconList, &T::SetBeaconList>("BeaconList"),
                     Published<&T::GetBeaconProximity, &T::SetBeaconProximity>("BeaconProximity")}};
  return Info;
}

TBeaconZoneItem::TBeaconZoneItem(TCollection* ACollection)
    : TCollectionItem(ACollection), FLink(New<TItemLink<TBeaconZoneItem>>(this)) {
  const auto* const Zones = dynamic_cast<TBeaconZones*>(ACollection);
  FGuard = Zones ? Zones->FGuard : New<TZoneGuard>();
  FBeaconList = std::make_unique<TBeaconInZoneList>(this);
  FBeaconList->SetOnChange(Bind<&TBeaconZoneItem::ItemsChanged>(this));
  if (!Zones) return;
  SetBaseGUID(Zones->GetBaseGUID());
  SetBaseEddyNamespace(Zones->GetBaseEddyNamespace());
  SetBaseManufacturerID(Zones->GetBaseManufacturerID());
}

TBeaconZoneItem::~TBeaconZoneItem() {
  FGuard->Change([this] { FLink->Clear(); });
}

std::string TBeaconZoneItem::GetDisplayName() const {
  return FName.empty() ? TCollectionItem::GetDisplayName() : FName;
}

void TBeaconZoneItem::SetDisplayName(const std::string& AValue) {
  SetterEntered(*this, "DisplayName", AValue);
  TCollectionItem::SetDisplayName(AValue);
  if (AValue == FName) return;
  FName = AValue;
  Changed(false);
}

void TBeaconZoneItem::SetBeaconList(TBeaconInZoneList* AValue) {
  if (AValue == FBeaconList.get()) return;
  FBeaconList->Assign(AValue);
  Changed(false);
}

void TBeaconZoneItem::SetBeaconProximity(TBeaconEditProximity AValue) {
  if (AValue == FBeaconProximity) return;
  FGuard->Change([&] { FBeaconProximity = AValue; });
  Changed(false);
}

void TBeaconZoneItem::SetBaseGUID(const std::string& AValue) {
  if (AValue == FBaseGUID) return;
  FBaseGUID = AValue;
  FBeaconList->SetBaseGUID(AValue);
}

void TBeaconZoneItem::SetBaseEddyNamespace(const std::string& AValue) {
  if (AValue == FBaseEddyNamespace) return;
  FBaseEddyNamespace = AValue;
  FBeaconList->SetBaseEddyNamespace(AValue);
}

void TBeaconZoneItem::SetBaseManufacturerID(const std::string& AValue) {
  if (AValue == FBaseManufacturerID) return;
  FBaseManufacturerID = AValue;
  FBeaconList->SetBaseManufacturerID(AValue);
}

TBeaconProximity TBeaconZoneItem::GetSystemProximity() const noexcept {
  return static_cast<TBeaconProximity>(static_cast<int>(FBeaconProximity) + 1);
}

void TBeaconZoneItem::ItemsChanged(TObject*) {
  Changed(false);
}

void TBeaconZoneItem::AssignTo(TPersistent* ADest) {
  auto* const Dest = dynamic_cast<TBeaconZoneItem*>(ADest);
  if (!Dest) RaiseAssignError(ADest);
  Dest->FName = FName;
  Dest->SetBaseGUID(FBaseGUID);
  Dest->SetBaseEddyNamespace(FBaseEddyNamespace);
  Dest->SetBaseManufacturerID(FBaseManufacturerID);
  Dest->FContext = FContext;
  Dest->FBeaconList->Assign(FBeaconList.get());
  Dest->SetBeaconProximity(FBeaconProximity);
  Changed(true);
}

void TBeaconZoneItem::Assign(TPersistent* ASource) {
  TCollectionItem::Assign(ASource);
  auto* const Source = dynamic_cast<TBeaconZoneItem*>(ASource);
  if (!Source) return;
  SetDisplayName(Source->GetDisplayName());
  SetBeaconList(Source->GetBeaconList());
}

}  // namespace System::Beacon::Fencing
