// The nodes of a scene by what they are.
#pragma once

#include <vector>

#include "map/System.Beacon.Fencing.Scene.Beacons.h"
#include "scene/System.Beacon.Fencing.Scene.Helpers.h"

namespace Wayfence {

/// The nodes of a class at and below a node, depth first.
template <class TClass>
std::vector<TClass*> NodesOf(System::Beacon::Fencing::Scene::INode* ANode) {
  std::vector<TClass*> Result;
  System::Beacon::Fencing::Scene::TNodeHelper::Visit(ANode, [&Result](auto* AVisited) {
    if (auto* const Found = dynamic_cast<TClass*>(AVisited)) Result.push_back(Found);
  });
  return Result;
}

/// The map that a node stands on; nothing for one that stands on none.
inline System::Beacon::Fencing::Scene::Beacons::TMap* MapOf(
    System::Beacon::Fencing::Scene::INode& ANode) {
  for (auto* Node = &ANode; Node; Node = Node->GetParent())
    if (auto* const Map = dynamic_cast<System::Beacon::Fencing::Scene::Beacons::TMap*>(Node))
      return Map;
  return nullptr;
}

}  // namespace Wayfence
