#include "map/System.Beacon.Fencing.Scene.Beacons.h"

namespace System::Beacon::Fencing::Scene::Beacons {

const TClassInfo& TCircularZone::ClassInfo() {
  static const TClassInfo Info{
      .Name = "System.Beacon.Fencing.Scene.Beacons.TCircularZone",
      .Base = &TEllipse::ClassInfo(),
      .Create = [] { return TRef<TInterfacedObject>(New<TCircularZone>()); },
      .Properties = {
          Published<&TCircularZone::GetDescriptionList, &TCircularZone::SetDescriptionList>(
              "DescriptionList")}};
  return Info;
}

}  // namespace System::Beacon::Fencing::Scene::Beacons
