// wayfence render: a floor as a picture.
#include <fmt/format.h>

#include <algorithm>

#include "apps/wayfence/commands.h"
#include "apps/wayfence/floor_picture.h"
#include "apps/wayfence/map_session.h"
#include "apps/wayfence/output_files.h"
#include "apps/wayfence/project_file.h"
#include "platform/errors.h"
#include "platform/files.h"

namespace Wayfence {

using namespace System;
using namespace System::Beacon::Fencing;

namespace {

TFencingMapOptions OptionsOf(const std::vector<std::string>& ANames) {
  TFencingMapOptions Result;
  constexpr auto& Names = TEnumNames<TFencingMapOption>::Names;
  for (std::size_t I = 0; I < Names.size(); ++I)
    if (std::find(ANames.begin(), ANames.end(), Names[I]) != ANames.end())
      Result.Include(static_cast<TFencingMapOption>(I));
  return Result;
}

void ShowRoute(TFencingProject& AProject, const std::string& AFrom, const std::string& ATo) {
  const TBeaconFencingPOI From =
      AProject.PoiList.PoiList[static_cast<std::size_t>(IndexOfPoi(AProject, AFrom))];
  const std::int32_t To = IndexOfPoi(AProject, ATo);
  AProject.SetCurrentMapIndex(From.MapIndex);
  if (!AProject.RouteTo(To, From.Position))
    throw EGeneralError(fmt::format("no path leads from '{}' to '{}'", AFrom, ATo));
}

}  // namespace

int RunRender(const TRenderArguments& AArguments) {
  CheckOutputs({AArguments.File}, {AArguments.Project});
  const TProjectFile File = OpenProject(AArguments.Project);
  TFencingProject Project = ExtractFrom(File);
  if (!AArguments.Route.empty()) ShowRoute(Project, AArguments.Route[0], AArguments.Route[1]);
  const TFloorPicture Floor =
      DrawFloor(*File.Scene,
                AArguments.Map,
                AArguments.Width,
                {.Shown = OptionsOf(AArguments.Options), .Rotation = AArguments.Rotation});
  ReplaceFile(AArguments.File, EncodePng(*Floor.Picture));
  return ExitDone;
}

}  // namespace Wayfence
