// What may be wrong with zones.
#include "apps/wayfence/project_faults.h"
#include "apps/wayfence/scene_walk.h"

namespace Wayfence {

using namespace System;
using namespace System::Beacon::Fencing;
using namespace System::Beacon::Fencing::Scene::Beacons;

namespace {

void CheckOutline(Scene::ISceneNode& ANode, TFaults& AFaults) {
  const std::string Place = TFaults::PlaceOf(ANode);
  if (const auto* const Polygon = dynamic_cast<TPathZone*>(&ANode)) {
    if (Polygon->GetControlPointCount() < 3)
      return AFaults.AddError(Place, "the zone has fewer than three corners; add some");
    if (Polygon->ComputeIsCrossed())
      AFaults.AddWarning(Place,
                         "the outline of the zone crosses itself; parts may count as outside");
  }
  if (ANode.GetGlobalRect().IsEmpty())
    AFaults.AddError(Place, "the zone has no area; nothing is ever in it");
}

void CheckPlace(Scene::ISceneNode& ANode, TFaults& AFaults) {
  TMap* const Map = MapOf(ANode);
  if (!Map)
    AFaults.AddError(TFaults::PlaceOf(ANode), "the zone is on no map; move it to one");
  else if (IntersectRect(Map->GetGlobalRect(), ANode.GetGlobalRect()).IsEmpty() &&
           !ANode.GetGlobalRect().IsEmpty())
    AFaults.AddWarning(TFaults::PlaceOf(ANode), "the zone lies off its map");
}

}  // namespace

void CheckZones(const TProjectFile& AProject, TFaults& AFaults) {
  for (IZone* Zone : NodesOf<IZone>(AProject.Scene.Get())) {
    CheckOutline(*Zone, AFaults);
    CheckPlace(*Zone, AFaults);
  }
}

}  // namespace Wayfence
