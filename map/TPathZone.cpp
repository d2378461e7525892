#include "map/System.Beacon.Fencing.Scene.Beacons.h"

namespace System::Beacon::Fencing::Scene::Beacons {

const TClassInfo& TPathZone::ClassInfo() {
  static const TClassInfo Info{
      .Name = "System.Beacon.Fencing.Scene.Beacons.TPathZone",
      .Base = &TPolygonShape::ClassInfo(),
      .Create = [] { return TRef<TInterfacedObject>(New<TPathZone>()); },
      .Properties = {Published<&TPathZone::GetDescriptionList, &TPathZone::SetDescriptionList>(
          "DescriptionList")}};
  return Info;
}

}  // namespace System::Beacon::Fencing::Scene::Beacons
