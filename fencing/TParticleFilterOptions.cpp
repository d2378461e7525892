#include "fencing/System.Beacon.Fencing.Types.h"
#include "fencing/messages.h"

namespace System::Beacon::Fencing {

const TClassInfo& TParticleFilterOptions::ClassInfo() {
  using T = TParticleFilterOptions;
  static const TClassInfo Info{
      .Name = "System.Beacon.Fencing.Types.TParticleFilterOptions",
      .Base = &TPersistent::ClassInfo(),
      .Properties = {
          Published<&T::GetParticlesNumber, &T::SetParticlesNumber>("ParticlesNumber"),
          Published<&T::GetUpdateInterval, &T::SetUpdateInterval>("UpdateInterval"),
          Published<&T::GetMovementStDeviation, &T::SetMovementStDeviation>("MovementStDeviation"),
          Published<&T::GetSignalRelativeStdDev, &T::SetSignalRelativeStdDev>(
              "SignalRelativeStdDev"),
          Published<&T::GetBeaconsToUse, &T::SetBeaconsToUse>("BeaconsToUse"),
          Published<&T::GetOwnsCalcDistance, &T::SetOwnsCalcDistance>("OwnsCalcDistance"),
          Published<&T::GetMotionThreshold, &T::SetMotionThreshold>("MotionThreshold"),
          Published<&T::GetCalibrationAverage, &T::SetCalibrationAverage>("CalibrationAverage"),
          Public<&T::GetSPC, &T::SetSPC>("SPC"),
          Published<&T::GetAutomaticCalibration, &T::SetAutomaticCalibration>(
              "AutomaticCalibration")}};
  return Info;
}

void TParticleFilterOptions::SetParticlesNumber(std::int32_t AValue) {
  StorePositive(FParticlesNumber, AValue, Messages::SParticlesNumber);
}
void TParticleFilterOptions::SetUpdateInterval(std::int32_t AValue) {
  StorePositive(FUpdateInterval, AValue, Messages::SUpdateInterval);
}
void TParticleFilterOptions::SetBeaconsToUse(std::int32_t AValue) {
  StorePositive(FBeaconsToUse, AValue, Messages::SBeaconsToUse);
}

void TParticleFilterOptions::SetSignalRelativeStdDev(float AValue) {
  if (AValue == FSignalRelativeStdDev) return;
  if (!(AValue > 0.0F && AValue <= 100.0F)) RaiseComponentError(Messages::SSignalRelativeStdDev);
  Store(FSignalRelativeStdDev, AValue);
}

void TParticleFilterOptions::AssignTo(TPersistent* ADest) {
  auto* const Dest = dynamic_cast<TParticleFilterOptions*>(ADest);
  if (!Dest) RaiseAssignError(ADest);
  Dest->SetParticlesNumber(FParticlesNumber);
  Dest->SetUpdateInterval(FUpdateInterval);
  Dest->SetMovementStDeviation(FMovementStDeviation);
  Dest->SetSignalRelativeStdDev(FSignalRelativeStdDev);
  Dest->SetBeaconsToUse(FBeaconsToUse);
}

}  // namespace System::Beacon::Fencing
