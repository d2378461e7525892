#include "map/System.Beacon.Fencing.Scene.Beacons.h"

namespace System::Beacon::Fencing::Scene::Beacons {

const TClassInfo& TZonesLayer::ClassInfo() {
  static const TClassInfo Info{
      .Name = "System.Beacon.Fencing.Scene.Beacons.TZonesLayer",
      .Base = &TLayer::ClassInfo(),
      .Create = [] { return TRef<TInterfacedObject>(New<TZonesLayer>()); },
  };
  return Info;
}

}  // namespace System::Beacon::Fencing::Scene::Beacons
