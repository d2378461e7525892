#include "map/System.Beacon.Fencing.Scene.Beacons.h"

namespace System::Beacon::Fencing::Scene::Beacons {

const TClassInfo& TZone::ClassInfo() {
  static const TClassInfo Info{
      .Name = "System.Beacon.Fencing.Scene.Beacons.TZone",
      .Base = &TRectangle::ClassInfo(),
      .Create = [] { return TRef<TInterfacedObject>(New<TZone>()); },
      .Properties = {
          Published<&TZone::GetDescriptionList, &TZone::SetDescriptionList>("DescriptionList")}};
  return Info;
}

}  // namespace System::Beacon::Fencing::Scene::Beacons
