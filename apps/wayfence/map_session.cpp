#include "apps/wayfence/map_session.h"

#include <fmt/format.h>

#include <algorithm>

#include "apps/wayfence/component_loading.h"
#include "platform/errors.h"

namespace Wayfence {

using namespace System;
using namespace System::Beacon::Fencing;

namespace {

TSourceArguments WithProject(TSourceArguments AFrom, const std::string& AProject) {
  AFrom.Project = AProject;
  return AFrom;
}

/// How much of a silence can change anything: beacons are lost after their time.
TTicks LongestSilence(const TBeaconMapFencing& AComponent) {
  const TTicks UntilLost =
      AComponent.GetBeaconManagerOptions()->GetBeaconDeathTime() * TicksPerSecond;
  return std::max(3600 * TicksPerSecond, UntilLost + 60 * TicksPerSecond);
}

/// What is raised names the file.
void ShowProject(TBeaconMapFencing& AComponent, const TProjectFile& AProject) {
  try {
    AComponent.SetXMLMap(AProject.Bundle->SerializeToXML());
  } catch (const EConvertError& Error) {
    throw EFileError(fmt::format("{}: {}", AProject.Name, Error.what()));
  }
}

}  // namespace

TMapSession::TMapSession(const TSourceArguments& AFrom,
                         const std::string& AProject,
                         const std::string& AComponentFile)
    : Run(OpenRun(WithProject(AFrom, AProject))), Project(OpenProject(AProject)) {
  if (!AComponentFile.empty()) LoadStopped(Component, AComponentFile);
  if (Component.GetMapOptions().IsEmpty())
    Component.SetMapOptions({TFencingMapOption::ColorBeacon,
                             TFencingMapOption::HighlightZones,
                             TFencingMapOption::ShowPosition,
                             TFencingMapOption::ShowPositionInPath,
                             TFencingMapOption::ShowBeacons,
                             TFencingMapOption::ShowZones,
                             TFencingMapOption::ShowPaths});
  ShowProject(Component, Project);
  if (Component.GetProjectInformation().Maps.IsEmpty())
    throw EGeneralError(fmt::format("{}: the project has no map", AProject));
  Run.Source->ShortenSilences(LongestSilence(Component));
  Component.SetSource(Run.Source);
}

std::int32_t IndexOfPoi(const TFencingProject& AProject, const std::string& AName) {
  const auto& Pois = AProject.PoiList.PoiList;
  for (std::size_t I = 0; I < Pois.GetLength(); ++I)
    if (Pois[I].Name == AName) return static_cast<std::int32_t>(I);
  throw EGeneralError(fmt::format(
      "there is no point of interest '{}'; 'wayfence inspect' lists them under \"pois\"", AName));
}

}  // namespace Wayfence
