#include "fencing/loaded_project.h"

#include "fencing/map_fencing.h"

namespace System::Beacon::Fencing {

void TEstimateReceiver::Estimated(const TPointF& AEstimatedPoint, const TPointF& APointToPath) {
  FOwner.TakeEstimateOf(FProject, FMapIndex, AEstimatedPoint, APointToPath);
}

TFencingMap* TLoadedProject::GetCurrentMap() {
  const std::int32_t Index = Project.CurrentMapIndex;
  return Index >= 0 && static_cast<std::size_t>(Index) < Project.Maps.GetLength()
             ? &Project.Maps[static_cast<std::size_t>(Index)]
             : nullptr;
}

TMapCalculator* TLoadedProject::GetCalculator(std::int32_t AMapIndex) {
  return AMapIndex >= 0 && static_cast<std::size_t>(AMapIndex) < Calculators.size()
             ? &Calculators[static_cast<std::size_t>(AMapIndex)]
             : nullptr;
}

void TLoadedProject::Disconnect() {
  for (const TMapCalculator& Entry : Calculators) Entry.Calculator->SetOnEstimatingPosition({});
}

void TLoadedProject::SetLastPoints(TPointF APoint, TPointF APathPoint) {
  const std::lock_guard Guard(FLock);
  FLastPoint = APoint;
  FLastPathPoint = APathPoint;
}
TPointF TLoadedProject::GetLastPoint() const {
  return Read(&TLoadedProject::FLastPoint);
}
TPointF TLoadedProject::GetLastPathPoint() const {
  return Read(&TLoadedProject::FLastPathPoint);
}
TPointF TLoadedProject::GetLastCalculatedPosition() const {
  return Read(&TLoadedProject::FLastCalculatedPosition);
}
void TLoadedProject::SetLastCalculatedPosition(TPointF AValue) {
  const std::lock_guard Guard(FLock);
  FLastCalculatedPosition = AValue;
}

TLoadedProject::TZones TLoadedProject::GetLastZones() const {
  return Read(&TLoadedProject::FLastZones);
}
void TLoadedProject::SetLastZones(TZones AValue) {
  const std::lock_guard Guard(FLock);
  std::swap(FLastZones, AValue);
}

std::optional<std::int32_t> TLoadedProject::GetRoute() const {
  return Read(&TLoadedProject::FRoute);
}
void TLoadedProject::SetRoute(std::optional<std::int32_t> AValue) {
  const std::lock_guard Guard(FLock);
  FRoute = AValue;
}
bool TLoadedProject::TakeRoute(std::int32_t AValue) {
  const std::lock_guard Guard(FLock);
  if (FRoute != AValue) return false;
  FRoute.reset();
  return true;
}

}  // namespace System::Beacon::Fencing
