// Nodes by name.
#pragma once

#include <string>
#include <unordered_map>

#include "scene/System.Beacon.Fencing.Scene.h"

namespace System::Beacon::Fencing::Scene::Beacons {

/// The first node of each name at or below a root, letter case ignored, as the tree was when this
/// was made. Looks at the nodes.
class TNodesByName {
 public:
  explicit TNodesByName(INode* ARoot);
  /// Nothing when no node has the name.
  INode* Find(const std::string& AName) const;

 private:
  std::unordered_map<std::string, INode*> FNodes;
};

/// Where a node stands, for messages: the names from below the root down, "Ground floor > Beacons >
/// Door".
std::string PlaceInScene(INode& ANode);

}  // namespace System::Beacon::Fencing::Scene::Beacons
