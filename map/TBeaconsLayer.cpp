#include "map/System.Beacon.Fencing.Scene.Beacons.h"

namespace System::Beacon::Fencing::Scene::Beacons {

const TClassInfo& TBeaconsLayer::ClassInfo() {
  static const TClassInfo Info{
      .Name = "System.Beacon.Fencing.Scene.Beacons.TBeaconsLayer",
      .Base = &TLayer::ClassInfo(),
      .Create = [] { return TRef<TInterfacedObject>(New<TBeaconsLayer>()); },
  };
  return Info;
}

}  // namespace System::Beacon::Fencing::Scene::Beacons
