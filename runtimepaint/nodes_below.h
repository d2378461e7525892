// Nodes of a kind in a tree.
#pragma once

#include <vector>

#include "scene/System.Beacon.Fencing.Scene.Helpers.h"

namespace System::Beacon::Fencing {

/// The nodes of an interface at and below a node, depth first.
template <class TInterface>
std::vector<TRef<TInterface>> NodesBelow(Scene::INode* ANode) {
  std::vector<TRef<TInterface>> Result;
  Scene::TNodeHelper::Visit(ANode, [&Result](Scene::INode* AVisited) {
    if (auto* const Found = Supports<TInterface>(AVisited)) Result.emplace_back(Found);
  });
  return Result;
}

}  // namespace System::Beacon::Fencing
