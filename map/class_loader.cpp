#include <array>

#include "map/System.Beacon.Fencing.Scene.Beacons.h"
#include "persistence/stored_classes.h"

namespace System::Beacon::Fencing::Scene::Beacons {
namespace {

/// The classes of stored scenes.
const auto& SceneClasses() {
  static const std::array Classes{&TScene::ClassInfo(),
                                  &TConnectingNodes::ClassInfo(),
                                  &TMap::ClassInfo(),
                                  &TBeacon::ClassInfo(),
                                  &TPathsLayer::ClassInfo(),
                                  &TZonesLayer::ClassInfo(),
                                  &TBeaconsLayer::ClassInfo(),
                                  &TMapPath::ClassInfo(),
                                  &TMapPathNode::ClassInfo(),
                                  &TPathZone::ClassInfo(),
                                  &TCircularZone::ClassInfo(),
                                  &TZone::ClassInfo(),
                                  &TCamera::ClassInfo()};
  return Classes;
}

}  // namespace

TRef<TInterfacedObject> GetDefaultClassLoader(const std::string& AQualifiedClass,
                                              TLoadedResource& ALoadedResource) {
  ALoadedResource = nullptr;
  for (const TClassInfo* Class : SceneClasses())
    if (SameName(AQualifiedClass, Class->Name)) return Class->Create();
  return nullptr;
}

}  // namespace System::Beacon::Fencing::Scene::Beacons

namespace System::Beacon::Fencing {

void RegisterStoredClasses(TRttiContext& AContext) {
  for (const TClassInfo* Class : Scene::Beacons::SceneClasses()) AContext.Register(*Class);
  for (const TClassInfo* Class : {&Scene::TNode::ClassInfo(),
                                  &Scene::TLayer::ClassInfo(),
                                  &Scene::TRectangle::ClassInfo(),
                                  &Scene::TEllipse::ClassInfo(),
                                  &Scene::TSegment::ClassInfo(),
                                  &Scene::TPolygonShape::ClassInfo()})
    AContext.Register(*Class);
}

}  // namespace System::Beacon::Fencing
