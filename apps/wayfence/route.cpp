// wayfence route: the shortest way to a point of interest.
#include <fmt/format.h>

#include "apps/wayfence/commands.h"
#include "apps/wayfence/json_line.h"
#include "apps/wayfence/map_session.h"
#include "apps/wayfence/project_file.h"
#include "platform/errors.h"

namespace Wayfence {

using namespace System;
using namespace System::Beacon::Fencing;

namespace {

void RequirePath(const TFencingProject& AProject, std::int32_t AMap) {
  for (const TPathNodeInfo& Info : AProject.GlobalPath)
    if (Info.MapIndex == AMap) return;
  throw EGeneralError(
      fmt::format("there is no path on map {}, so no route begins or ends there", AMap));
}

/// One line for every point of the route: where it is, and how far one has come, metres of the map
/// or whatever its unit is.
void PrintRoute(const TFencingProject& AProject) {
  double Length = 0.0;
  const TPathNodeInfo* Last = nullptr;
  for (const auto& [Node, Map] : AProject.Graph.LastCalculatedPath.Get()) {
    const TPathNodeInfo& Info = AProject.GlobalPath[static_cast<std::size_t>(Node)];
    if (Last && Last->MapIndex == Info.MapIndex)
      Length += TRouteCalculator::Distance(Last->GlobalPosition, Info.GlobalPosition);
    Last = &Info;
    TJsonLine()
        .Text("node", Info.Node ? Info.Node->GetName() : std::string())
        .Number("map", Info.MapIndex)
        .Decimal("x", Info.GlobalPosition.X)
        .Decimal("y", Info.GlobalPosition.Y)
        .Decimal("length", Length)
        .Print();
  }
}

}  // namespace

int RunRoute(const TRouteArguments& AArguments) {
  const TProjectFile File = OpenProject(AArguments.Project);
  TFencingProject Project = ExtractFrom(File);
  const auto MapCount = static_cast<int>(Project.Maps.GetLength());
  if (AArguments.Map < 0 || AArguments.Map >= MapCount)
    throw EGeneralError(
        fmt::format("--from: there is no map {}; the project has {}", AArguments.Map, MapCount));
  Project.SetCurrentMapIndex(AArguments.Map);
  const std::int32_t Poi = IndexOfPoi(Project, AArguments.To);
  RequirePath(Project, AArguments.Map);
  RequirePath(Project, Project.PoiList.PoiList[static_cast<std::size_t>(Poi)].MapIndex);
  if (!Project.RouteTo(Poi, {AArguments.X, AArguments.Y}))
    throw EGeneralError(fmt::format("no path leads to '{}' from there", AArguments.To));
  PrintRoute(Project);
  return ExitDone;
}

}  // namespace Wayfence
