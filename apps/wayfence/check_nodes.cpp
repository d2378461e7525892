// What may be wrong with any node.
#include <fmt/format.h>

#include <exception>
#include <map>

#include "apps/wayfence/project_faults.h"
#include "apps/wayfence/scene_walk.h"

namespace Wayfence {

using namespace System;
using namespace System::Beacon::Fencing;
using namespace System::Beacon::Fencing::Scene::Beacons;

namespace {

bool IsTurnedOrScaled(Scene::ISceneNode& ANode) {
  TMatrix Matrix = ANode.GetLocalMatrix();
  Matrix.M[2] = TMatrix::Identity().M[2];
  return Matrix != TMatrix::Identity();
}

bool IsUnderMovedParent(Scene::ISceneNode& ANode) {
  const Scene::ISceneNode* const Parent = ANode.GetSceneParent();
  return Parent && Parent->GetGlobalMatrix() != TMatrix::Identity();
}

void CheckMatrix(Scene::ISceneNode& ANode, TFaults& AFaults) {
  if (IsTurnedOrScaled(ANode) && IsUnderMovedParent(ANode))
    AFaults.AddWarning(TFaults::PlaceOf(ANode),
                       "the node is turned or scaled under a parent that was moved, so it is drawn "
                       "elsewhere than one would think: move the node instead of the parent");
}

void CheckDescription(Scene::INode& ANode, TFaults& AFaults) {
  const TValue Text = ANode.GetProperty("DescriptionList");
  if (Text.IsEmpty()) return;
  try {
    StringToDescriptionList(Text.As<std::string>());
  } catch (const std::exception& Error) {
    AFaults.AddError(TFaults::PlaceOf(ANode),
                     fmt::format("its DescriptionList cannot be read: {}", Error.what()));
  }
}

/// Applications find places by their names.
void CheckNames(Scene::INode* AScene, TFaults& AFaults) {
  for (TMap* Map : NodesOf<TMap>(AScene)) {
    std::map<std::string, int> Counts;
    for (IBeacon* Beacon : NodesOf<IBeacon>(Map)) ++Counts[Beacon->GetName()];
    for (IZone* Zone : NodesOf<IZone>(Map)) ++Counts[Zone->GetName()];
    for (const auto& [Name, Count] : Counts)
      if (Count > 1)
        AFaults.AddWarning(TFaults::PlaceOf(*Map),
                           fmt::format("{} beacons and zones are called '{}'; only the first is "
                                       "found by that name",
                                       Count,
                                       Name));
  }
}

}  // namespace

void CheckNodes(const TProjectFile& AProject, TFaults& AFaults) {
  for (Scene::ISceneNode* Node : NodesOf<Scene::ISceneNode>(AProject.Scene.Get())) {
    CheckMatrix(*Node, AFaults);
    CheckDescription(*Node, AFaults);
  }
  CheckNames(AProject.Scene.Get(), AFaults);
}

}  // namespace Wayfence
