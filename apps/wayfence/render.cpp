// wayfence render: a floor as a picture.
#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <numbers>

#include "apps/wayfence/commands.h"
#include "apps/wayfence/map_session.h"
#include "apps/wayfence/project_file.h"
#include "platform/controls/offscreen_control.h"
#include "platform/errors.h"
#include "runtimepaint/System.Beacon.Fencing.RuntimePaint.Painter.h"

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

/// How high a picture is that holds a map, turned, without room around it.
float HeightOf(const IDesignMap& AMap, int AWidth, int ARotation) {
  const TRectF Rect = AMap.GetGlobalRect();
  const double Angle = ARotation * std::numbers::pi / 180.0;
  const double Cos = std::abs(std::cos(Angle)), Sin = std::abs(std::sin(Angle));
  const double Width = Rect.GetWidth() * Cos + Rect.GetHeight() * Sin;
  const double Height = Rect.GetWidth() * Sin + Rect.GetHeight() * Cos;
  const double Result = std::max(1.0, std::round(AWidth * Height / Width));
  if (!(Result * AWidth <= static_cast<double>(MaxPicturePixels)) || Result > MaxPictureSide)
    throw EGeneralError(
        fmt::format("map '{}' gives no picture of {} pixels width: it may have {} pixels, and {} a "
                    "side; give another --width",
                    AMap.GetName(),
                    AWidth,
                    MaxPicturePixels,
                    MaxPictureSide));
  return static_cast<float>(Result);
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
  TBeaconFencingMapPainter Painter;
  Painter.SetXmlData(OpenBundle(AArguments.Project)->SerializeToXML());
  TFencingProject Project = Painter.GetProjectInformation();
  const auto MapCount = static_cast<int>(Project.Maps.GetLength());
  if (AArguments.Map < 0 || AArguments.Map >= MapCount)
    throw EGeneralError(
        fmt::format("--map: there is no map {}; the project has {}", AArguments.Map, MapCount));
  if (!AArguments.Route.empty()) ShowRoute(Project, AArguments.Route[0], AArguments.Route[1]);
  const IDesignMap& Map = *Project.Maps[static_cast<std::size_t>(AArguments.Map)].Map;

  TOffscreenControl Control(static_cast<float>(AArguments.Width),
                            HeightOf(Map, AArguments.Width, AArguments.Rotation));
  Control.SetOnPaint(Bind<&TBeaconFencingMapPainter::ControlPaint>(&Painter));
  Painter.SetControl(&Control);
  Painter.SetMapOptions(OptionsOf(AArguments.Options));
  Control.Update();  // from now on the size is known, and the view stays
  Painter.SetMapIndex(AArguments.Map);
  Painter.SetRotation(AArguments.Rotation);
  Control.SavePicture(AArguments.File);
  return ExitDone;
}

}  // namespace Wayfence
