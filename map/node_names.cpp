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

std::string PlaceInScene(INode& ANode) {
  std::string Result;
  for (const TRef<INode>& Node : ANode.GetHierarchyPath()) {
    if (!Node->GetParent()) continue;
    if (!Result.empty()) Result += " > ";
    Result += Node->GetName();
  }
  return Result.empty() ? ANode.GetName() : Result;
}

}  // namespace System::Beacon::Fencing::Scene::Beacons
