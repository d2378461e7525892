// What may be wrong with paths and the links between them.
#include <fmt/format.h>

#include <algorithm>
#include <numeric>
#include <set>
#include <unordered_map>
#include <vector>

#include "apps/wayfence/project_faults.h"
#include "apps/wayfence/scene_walk.h"

namespace Wayfence {

using namespace System;
using namespace System::Beacon::Fencing;
using namespace System::Beacon::Fencing::Scene::Beacons;

namespace {

/// Letters in lower case: links know nodes whatever the case.
std::string Folded(std::string AName) {
  for (char& Letter : AName)
    if (Letter >= 'A' && Letter <= 'Z') Letter = static_cast<char>(Letter - 'A' + 'a');
  return AName;
}

void CheckConnections(TMapPath& APath, TFaults& AFaults) {
  const std::string Place = TFaults::PlaceOf(APath);
  const std::int32_t Count = APath.GetControlPointCount();
  std::vector<bool> IsJoined(static_cast<std::size_t>(Count), false);
  for (const auto& [From, To] : APath.GetConnections()) {
    if (From < 0 || To < 0 || From >= Count || To >= Count) {
      AFaults.AddError(Place,
                       fmt::format("the connection {}|{} names a point that is not there; the path "
                                   "has points 0 to {}",
                                   From,
                                   To,
                                   Count - 1));
      continue;
    }
    IsJoined[From] = IsJoined[To] = true;
  }
  const auto Alone = std::count(IsJoined.begin(), IsJoined.end(), false);
  if (Alone > 0)
    AFaults.AddWarning(
        Place, fmt::format("points without a connection: {}; no route leads over them", Alone));
}

void CheckPlaces(TMapPath& APath, TFaults& AFaults) {
  TMap* const Map = MapOf(APath);
  if (!Map)
    return AFaults.AddError(TFaults::PlaceOf(APath), "the path is on no map; move it to one");
  TRectF Area = Map->GetGlobalRect();
  Area.Inflate(0.01F, 0.01F);
  for (const TPointF& Point : APath.GetPathGlobalPoints())
    if (!Area.Contains(Point))
      AFaults.AddWarning(TFaults::PlaceOf(APath),
                         fmt::format("its point at {}, {} is off the map", Point.X, Point.Y));
}

void CheckNodeNames(Scene::INode* AScene, TFaults& AFaults) {
  std::unordered_map<std::string, std::string> Places;
  for (TMapPathNode* Node : NodesOf<TMapPathNode>(AScene)) {
    const auto [Known, IsNew] = Places.emplace(Node->GetName(), TFaults::PlaceOf(*Node));
    if (!IsNew)
      AFaults.AddError(TFaults::PlaceOf(*Node),
                       fmt::format("the node has the name of '{}'; both count as one place: give "
                                   "it another name",
                                   Known->second));
  }
}

void CheckLinks(Scene::INode* AScene, TFaults& AFaults) {
  std::set<std::string> Names;
  for (Scene::ISceneNode* Node : NodesOf<Scene::ISceneNode>(AScene))
    Names.insert(Folded(Node->GetName()));
  for (TConnectingNodes* Links : NodesOf<TConnectingNodes>(AScene))
    for (const auto& [From, To] : Links->GetConnections())
      for (const std::string& Name : {From, To})
        if (!Names.contains(Folded(Name)))
          AFaults.AddError(
              TFaults::PlaceOf(*Links),
              fmt::format("the link '{}' to '{}' names '{}', which no node has", From, To, Name));
}

/// The parts of the graph that no path joins to one another.
void CheckReach(Scene::TScene& AScene, TFaults& AFaults) {
  TArray<TPathNodeInfo> Nodes;
  TArray<TPathEdge> Edges;
  GetAllPaths(&AScene, Nodes, Edges);
  std::vector<std::int32_t> Parents(Nodes.GetLength());
  std::iota(Parents.begin(), Parents.end(), 0);
  const auto RootOf = [&Parents](std::int32_t ANode) {
    while (Parents[ANode] != ANode) ANode = Parents[ANode] = Parents[Parents[ANode]];
    return ANode;
  };
  for (const auto& [From, To] : Edges) Parents[RootOf(From)] = RootOf(To);
  if (Nodes.IsEmpty())
    return AFaults.AddWarning(AScene.GetName(), "there is no path; no route can be asked for");
  const auto NameOf = [&Nodes](std::size_t ANode) {
    const TPathNodeInfo& Info = Nodes[ANode];
    return Info.Node
               ? Info.Node->GetName()
               : fmt::format("the place at {}, {}", Info.GlobalPosition.X, Info.GlobalPosition.Y);
  };
  std::set<std::int32_t> Reported{RootOf(0)};
  for (std::size_t I = 1; I < Nodes.GetLength(); ++I)
    if (Reported.insert(RootOf(static_cast<std::int32_t>(I))).second)
      AFaults.AddWarning(
          NameOf(I), fmt::format("no route leads from '{}' to it; link their paths", NameOf(0)));
}

}  // namespace

void CheckPaths(const TProjectFile& AProject, TFaults& AFaults) {
  for (TMapPath* Path : NodesOf<TMapPath>(AProject.Scene.Get())) {
    CheckConnections(*Path, AFaults);
    CheckPlaces(*Path, AFaults);
  }
  CheckNodeNames(AProject.Scene.Get(), AFaults);
  CheckLinks(AProject.Scene.Get(), AFaults);
  CheckReach(*AProject.Scene, AFaults);
}

}  // namespace Wayfence
