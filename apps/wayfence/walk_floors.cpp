#include "apps/wayfence/walk_floors.h"

#include "apps/wayfence/map_units.h"

namespace Wayfence {

using namespace System;
using namespace System::Beacon;
using namespace System::Beacon::Fencing;

TWalkFloors::TWalkFloors(const TFencingProject& AProject) {
  for (const TFencingMap& Map : AProject.Maps) {
    const double Metres = MetresPerUnit(Map.Map.Get());
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
