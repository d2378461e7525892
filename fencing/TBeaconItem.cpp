#include <charconv>

#include "fencing/System.Beacon.Fencing.h"
#include "fencing/messages.h"
#include "platform/hex.h"

namespace System::Beacon::Fencing {

bool IsManufacturerID(std::string_view AText) noexcept {
  if (AText == "-1") return true;
  if (AText.empty() || AText.size() > 4) return false;
  for (const char Char : AText)
    if (HexDigit(Char) < 0) return false;
  return true;
}

const TClassInfo& TBeaconItem::ClassInfo() {
  using T = TBeaconItem;
  static const TClassInfo Info{
      .Name = "System.Beacon.Fencing.TBeaconItem",
      .Base = &TCollectionItem::ClassInfo(),
      .Properties = {Published<&T::GetDisplayName, &T::SetDisplayName>("DisplayName"),
                     Published<&T::GetUUID, &T::SetUUID>("UUID"),
                     Published<&T::GetMajor, &T::SetMajor>("Major"),
                     Published<&T::GetMinor, &T::SetMinor>("Minor"),
                     Published<&T::GetManufacturerID, &T::SetManufacturerID>("ManufacturerID"),
                     Published<&T::GetEddyNamespace, &T::SetEddyNamespace>("EddyNamespace"),
                     Published<&T::GetEddyInstance, &T::SetEddyInstance>("EddyInstance"),
                     Published<&T::GetKindofBeacon, &T::SetKindofBeacon>("KindofBeacon"),
                     Public<&T::GetGUID, &T::SetGUID>("GUID")}};
  return Info;
}

TBeaconItem::TBeaconItem(TCollection* ACollection)
    : TCollectionItem(ACollection), FLink(New<TItemLink<TBeaconItem>>(this)) {
  auto* const List = dynamic_cast<TBeaconInZoneList*>(ACollection);
  FGuard = List ? List->FGuard : New<TZoneGuard>();
  if (!List) return;
  if (!List->GetBaseGUID().empty()) SetUUID(List->GetBaseGUID());
  if (!List->GetBaseManufacturerID().empty()) SetManufacturerID(List->GetBaseManufacturerID());
  if (!List->GetBaseEddyNamespace().empty()) SetEddyNamespace(List->GetBaseEddyNamespace());
}

TBeaconItem::~TBeaconItem() {
  FGuard->Change([this] { FLink->Clear(); });
}

std::string TBeaconItem::GetDisplayName() const {
  return FName.empty() ? TCollectionItem::GetDisplayName() : FName;
}

void TBeaconItem::SetDisplayName(const std::string& AValue) {
  SetterEntered(*this, "DisplayName", AValue);
  TCollectionItem::SetDisplayName(AValue);
  if (AValue == FName) return;
  FName = AValue;
  Changed(true);
}

std::string TBeaconItem::GetUUID() const {
  return GUIDToString(FUUID);
}

void TBeaconItem::SetUUID(const std::string& AValue) {
  if (AValue == GetUUID()) return;
  SetGUID(StringToGUID(AValue));
  Changed(false);
}

void TBeaconItem::SetGUID(const TGUID& AValue) {
  FGuard->Change([&] { FUUID = AValue; });
}

void TBeaconItem::SetMajor(std::uint16_t AValue) {
  if (AValue == FMajor) return;
  FGuard->Change([&] { FMajor = AValue; });
  Changed(false);
}

void TBeaconItem::SetMinor(std::uint16_t AValue) {
  if (AValue == FMinor) return;
  FGuard->Change([&] { FMinor = AValue; });
  Changed(false);
}

void TBeaconItem::SetManufacturerID(const std::string& AValue) {
  if (!IsManufacturerID(AValue)) RaiseComponentError(Messages::SManufacturerID);
  FManufacturerID = AValue;
}

int TBeaconItem::GetMID() const {
  int Result = -1;
  if (FManufacturerID != "-1")
    std::from_chars(
        FManufacturerID.data(), FManufacturerID.data() + FManufacturerID.size(), Result, 16);
  return Result;
}

void TBeaconItem::SetEddyNamespace(const std::string& AValue) {
  TEddystoneUID UID = FEddyUID;
  if (!UID.SetNamespace(AValue)) RaiseComponentError(Messages::SEddyNamespace);
  SetEddyUID(UID);
  Changed(false);
}

void TBeaconItem::SetEddyInstance(const std::string& AValue) {
  TEddystoneUID UID = FEddyUID;
  if (!UID.SetInstance(AValue)) RaiseComponentError(Messages::SEddyInstance);
  SetEddyUID(UID);
  Changed(false);
}

void TBeaconItem::SetEddyUID(const TEddystoneUID& AValue) {
  FGuard->Change([&] { FEddyUID = AValue; });
}

void TBeaconItem::AssignTo(TPersistent* ADest) {
  auto* const Dest = dynamic_cast<TBeaconItem*>(ADest);
  if (!Dest) RaiseAssignError(ADest);
  Dest->SetUUID(GetUUID());
  Dest->SetMajor(FMajor);
  Dest->SetMinor(FMinor);
  Dest->SetContext(FContext);
  Dest->SetEddyUID(FEddyUID);
  Dest->FManufacturerID = FManufacturerID;
  Changed(true);
}

}  // namespace System::Beacon::Fencing
