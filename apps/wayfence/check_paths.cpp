// What may be wrong with paths.
#include <fmt/format.h>

#include <algorithm>
#include <numeric>
#include <set>
#include <vector>

#include "apps/wayfence/project_faults.h"
#include "apps/wayfence/scene_walk.h"

namespace Wayfence {

using namespace System;
using namespace System::Beacon::Fencing;
using namespace System::Beacon::Fencing::Scene::Beacons;

namespace {

void CheckConnections(TMapPath& APath, TFaults& AFaults) {
  const std::string Place = TFaults::PlaceOf(APath);
  const std::int32_t Count = APath.GetControlPointCount();
  if (Count == 0)
    return AFaults.AddError(Place, "the path has no points; add some, or take it out");
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
  CheckReach(*AProject.Scene, AFaults);
}

}  // namespace Wayfence
