#include "map/node_names.h"

#include "scene/System.Beacon.Fencing.Scene.Helpers.h"
#include "scene/name_case.h"

namespace System::Beacon::Fencing::Scene::Beacons {

TNodesByName::TNodesByName(INode* ARoot) {
  TNodeHelper::Visit(
      ARoot, [this](INode* ANode) { FNodes.emplace(WithoutCase(ANode->GetName()), ANode); });
}

INode* TNodesByName::Find(const std::string& AName) const {
  const auto Found = FNodes.find(WithoutCase(AName));
  return Found == FNodes.end() ? nullptr : Found->second;
}

}  // namespace System::Beacon::Fencing::Scene::Beacons
