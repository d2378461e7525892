#include "map/System.Beacon.Fencing.Scene.Beacons.h"

namespace System::Beacon::Fencing::Scene::Beacons {

const TClassInfo& TPathsLayer::ClassInfo() {
  static const TClassInfo Info{
      .Name = "System.Beacon.Fencing.Scene.Beacons.TPathsLayer",
      .Base = &TLayer::ClassInfo(),
      .Create = [] { return TRef<TInterfacedObject>(New<TPathsLayer>()); },
  };
  return Info;
}

}  // namespace System::Beacon::Fencing::Scene::Beacons
