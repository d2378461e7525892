#include "apps/wayfence/walk_floors.h"

namespace Wayfence {

using namespace System;
using namespace System::Beacon;
using namespace System::Beacon::Fencing;

namespace {

double MetresAUnitOf(IDesignMap* AMap) {
  const auto* const Units = Supports<IDesignMapUnits>(AMap);
  if (!Units) return 1.0;
  switch (Units->GetMeasureUnits()) {
    case TMeasureUnits::Centimeters:
      return 0.01;
    case TMeasureUnits::Meters:
      return 1.0;
    case TMeasureUnits::Inches:
      return 0.0254;
  }
  return 1.0;
}

}  // namespace

TWalkFloors::TWalkFloors(const TFencingProject& AProject) {
  for (const TFencingMap& Map : AProject.Maps) {
    const double Metres = MetresAUnitOf(Map.Map.Get());
    const TRectF Rect = Map.Map->GetGlobalRect();
    FFloors.push_back({Rect.Left * Metres, Rect.Top * Metres, Metres});
  }
}

TRadioPlace TWalkFloors::ToBuilding(int AMap, double AX, double AY) const {
  const TFloor& Floor = FFloors[static_cast<std::size_t>(AMap)];
  return {AX * Floor.MetresAUnit - Floor.Left, AY * Floor.MetresAUnit - Floor.Top, AMap};
}

TRadioPlace TWalkFloors::ToMap(const TRadioPlace& APlace) const {
  const TFloor& Floor = FFloors[static_cast<std::size_t>(APlace.Level)];
  return {APlace.X + Floor.Left, APlace.Y + Floor.Top, APlace.Level};
}

}  // namespace Wayfence
