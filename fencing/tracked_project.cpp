#include "fencing/tracked_project.h"

#include "fencing/map_fencing.h"

namespace System::Beacon::Fencing {

void TEstimateReceiver::Estimated(const TPointF& AEstimatedPoint, const TPointF& APointToPath) {
  FOwner.TakeEstimateOf(FProject, FMapIndex, AEstimatedPoint, APointToPath);
}

TFencingMap* TTrackedProject::GetMap(std::int32_t AMapIndex) {
  return AMapIndex >= 0 && static_cast<std::size_t>(AMapIndex) < Project.Maps.GetLength()
             ? &Project.Maps[static_cast<std::size_t>(AMapIndex)]
             : nullptr;
}

TMapCalculator* TTrackedProject::GetCalculator(std::int32_t AMapIndex) {
  return AMapIndex >= 0 && static_cast<std::size_t>(AMapIndex) < Calculators.size()
             ? &Calculators[static_cast<std::size_t>(AMapIndex)]
             : nullptr;
}

void TTrackedProject::Disconnect() {
  for (const TMapCalculator& Entry : Calculators) Entry.Calculator->SetOnEstimatingPosition({});
}

void TTrackedProject::EndWork() {
  if (const TMapCalculator* const Entry = GetCalculator(std::exchange(CalculatorAtWork, -1)))
    Entry->Calculator->SetOnEstimatingPosition({});
}

void TTrackedProject::SetLastPoints(TPointF APoint, TPointF APathPoint) {
  const std::lock_guard Guard(FLock);
  FLastPoint = APoint;
  FLastPathPoint = APathPoint;
}
TPointF TTrackedProject::GetLastPoint() const {
  return Read(&TTrackedProject::FLastPoint);
}
TPointF TTrackedProject::GetLastPathPoint() const {
  return Read(&TTrackedProject::FLastPathPoint);
}
TPointF TTrackedProject::GetLastCalculatedPosition() const {
  return Read(&TTrackedProject::FLastCalculatedPosition);
}
void TTrackedProject::SetLastCalculatedPosition(TPointF AValue) {
  const std::lock_guard Guard(FLock);
  FLastCalculatedPosition = AValue;
}

TTrackedProject::TZones TTrackedProject::GetLastZones() const {
  return Read(&TTrackedProject::FLastZones);
}
void TTrackedProject::SetLastZones(TZones AValue) {
  const std::lock_guard Guard(FLock);
  std::swap(FLastZones, AValue);
}

std::optional<std::int32_t> TTrackedProject::GetRoute() const {
  return Read(&TTrackedProject::FRoute);
}
void TTrackedProject::SetRoute(std::optional<std::int32_t> AValue) {
  const std::lock_guard Guard(FLock);
  FRoute = AValue;
  FIsArrivalShown = false;
}
bool TTrackedProject::TakeRoute(std::int32_t AValue) {
  const std::lock_guard Guard(FLock);
  if (FRoute != AValue) return false;
  FRoute.reset();
  FIsArrivalShown = true;
  return true;
}
void TTrackedProject::PutRouteBack(std::int32_t AValue) {
  const std::lock_guard Guard(FLock);
  if (std::exchange(FIsArrivalShown, false)) FRoute = AValue;
}
void TTrackedProject::ClearShownRoute() {
  {
    const std::lock_guard Guard(FLock);
    if (!std::exchange(FIsArrivalShown, false)) return;
  }
  Project.ClearRoute();
}

}  // namespace System::Beacon::Fencing
