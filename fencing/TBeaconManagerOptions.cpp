#include "fencing/System.Beacon.Fencing.Types.h"
#include "fencing/messages.h"

namespace System::Beacon::Fencing {

void TOptionSet::StorePositive(std::int32_t& AField,
                               std::int32_t AValue,
                               std::string_view AMessage) {
  if (AValue == AField) return;
  if (AValue < 1) RaiseComponentError(AMessage);
  AField = AValue;
  Changed();
}

const TClassInfo& TBeaconManagerOptions::ClassInfo() {
  using T = TBeaconManagerOptions;
  static const TClassInfo Info{
      .Name = "System.Beacon.Fencing.Types.TBeaconManagerOptions",
      .Base = &TPersistent::ClassInfo(),
      .Properties = {Published<&T::GetBeaconDeathTime, &T::SetBeaconDeathTime>("BeaconDeathTime"),
                     Published<&T::GetScanningTime, &T::SetScanningTime>("ScanningTime"),
                     Published<&T::GetScanningSleepingTime, &T::SetScanningSleepingTime>(
                         "ScanningSleepingTime"),
                     Published<&T::GetSPC, &T::SetSPC>("SPC"),
                     Published<&T::GetCalcMode, &T::SetCalcMode>("CalcMode"),
                     Published<&T::GetMode, &T::SetMode>("Mode")}};
  return Info;
}

void TBeaconManagerOptions::SetBeaconDeathTime(std::int32_t AValue) {
  StorePositive(FBeaconDeathTime, AValue, Messages::SBeaconDeathTime);
}
void TBeaconManagerOptions::SetScanningTime(std::int32_t AValue) {
  StorePositive(FScanningTime, AValue, Messages::SScanningTime);
}
void TBeaconManagerOptions::SetScanningSleepingTime(std::int32_t AValue) {
  StorePositive(FScanningSleepingTime, AValue, Messages::SScanningSleepingTime);
}

void TBeaconManagerOptions::AssignTo(TPersistent* ADest) {
  auto* const Dest = dynamic_cast<TBeaconManagerOptions*>(ADest);
  if (!Dest) RaiseAssignError(ADest);
  Dest->SetBeaconDeathTime(FBeaconDeathTime);
  Dest->SetScanningTime(FScanningTime);
  Dest->SetScanningSleepingTime(FScanningSleepingTime);
  Dest->SetSPC(FSPC);
  Dest->SetCalcMode(FCalcMode);
  Dest->FOnChange = FOnChange;
  Dest->SetMode(FMode);
}

}  // namespace System::Beacon::Fencing
