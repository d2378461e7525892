#include "apps/wayfence/floor_picture.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>
#include <vector>

#include "apps/wayfence/scene_walk.h"
#include "platform/errors.h"
#include "runtimepaint/map_look.h"
#include "scene/System.Beacon.Fencing.Scene.Helpers.h"
#include "scene/canvas/System.Beacon.Fencing.Canvas.Wyx.h"

namespace Wayfence {

using namespace System;
using namespace System::Beacon::Fencing;
using namespace System::Beacon::Fencing::Scene;
using Beacons::TBeacon;
using Beacons::TMap;

namespace {

/// Puts back what a scene shows: the camera and the viewport, and of every node whether it is
/// seen, of beacons how.
class TSceneView {
 public:
  explicit TSceneView(TScene& AScene)
      : FScene(AScene), FCamera(AScene.GetCamera()), FViewport(AScene.GetViewport()) {
    for (INode* Node : NodesOf<INode>(&AScene)) FModes.emplace_back(Node, Node->GetMode());
    for (TBeacon* Beacon : NodesOf<TBeacon>(&AScene))
      FLooks.emplace_back(Beacon, Beacon->GetVisualizationMode());
  }
  TSceneView(const TSceneView&) = delete;
  TSceneView& operator=(const TSceneView&) = delete;
  ~TSceneView() {
    for (const auto& [Node, Mode] : FModes)
      if (Node->GetMode().GetCode() != Mode.GetCode()) Node->SetMode(Mode);
    for (const auto& [Beacon, Look] : FLooks) Beacon->SetVisualizationMode(Look);
    FScene.SetCamera(FCamera);
    FScene.SetViewport(FViewport);
  }

  /// Looks at a rectangle, turned; what is seen then, if it is not.
  TRectF Look(const TRectF& ARect, float ARadians, TPictureSize APixels) {
    const auto Viewport = New<TViewport>();
    Viewport->SetScreenSize(static_cast<float>(APixels.Width), static_cast<float>(APixels.Height));
    FScene.SetViewport(Viewport);
    const auto Camera = New<TCamera>();
    Camera->SetRotation(ARadians);
    FScene.SetCamera(Camera);
    TCameraHelper::FocusRect(Camera.Get(), &FScene, ARect, 1.0F);
    const TRectF Seen = Camera->GetFrustum();
    const TPointF At = Camera->GetDisplacement();
    return {Seen.Left + At.X, Seen.Top + At.Y, Seen.Right + At.X, Seen.Bottom + At.Y};
  }

 private:
  TScene& FScene;
  const TRef<ICamera> FCamera;
  const TRef<IViewport> FViewport;
  std::vector<std::pair<TRef<INode>, TModeSet>> FModes;
  std::vector<std::pair<TRef<TBeacon>, Beacons::TBeaconVisualizationSet>> FLooks;
};

TMap& GetMap(TScene& AScene, int AIndex) {
  const std::vector<TMap*> Maps = NodesOf<TMap>(&AScene);
  if (AIndex < 0 || static_cast<std::size_t>(AIndex) >= Maps.size())
    throw EGeneralError(fmt::format("there is no map {}; the project has {}", AIndex, Maps.size()));
  return *Maps[static_cast<std::size_t>(AIndex)];
}

TRectF GetRect(TMap& AMap, float AMargin) {
  TRectF Result = AMap.GetGlobalRect();
  Result.Inflate(AMargin, AMargin);
  if (Result.IsEmpty() || !std::isfinite(Result.GetWidth()) || !std::isfinite(Result.GetHeight()))
    throw EGeneralError(
        fmt::format("{}: the map has no area, so it cannot be drawn", AMap.GetName()));
  return Result;
}

float ToRadians(int ADegrees) {
  return static_cast<float>(ADegrees * std::numbers::pi / 180.0);
}

/// What an upright rectangle must measure to hold a turned one.
TPointF SizeAround(const TRectF& ARect, int ADegrees) {
  if (ADegrees == 0) return {ARect.GetWidth(), ARect.GetHeight()};
  const float Cos = std::abs(std::cos(ToRadians(ADegrees)));
  const float Sin = std::abs(std::sin(ToRadians(ADegrees)));
  return {ARect.GetWidth() * Cos + ARect.GetHeight() * Sin,
          ARect.GetWidth() * Sin + ARect.GetHeight() * Cos};
}

TPictureSize GetPixels(const TMap& AMap, TPointF ASize, int AWidth) {
  const double Height = std::max(1.0, std::round(static_cast<double>(AWidth) * ASize.Y / ASize.X));
  if (AWidth < 1 || AWidth > MaxPictureSide || Height > MaxPictureSide ||
      AWidth * Height > static_cast<double>(MaxPicturePixels))
    throw EGeneralError(fmt::format(
        "{}: a picture of {} x {:.0f} pixels is too large; draw it less wide, at most {} pixels a "
        "side and {} in all",
        AMap.GetName(),
        AWidth,
        Height,
        MaxPictureSide,
        MaxPicturePixels));
  return {AWidth, static_cast<int>(Height)};
}

}  // namespace

TFloorPicture DrawFloor(TScene& AScene, int AMapIndex, int AWidth, const TFloorOptions& AOptions) {
  TMap& Map = GetMap(AScene, AMapIndex);
  const TRectF Rect = GetRect(Map, AOptions.Margin);
  const TPictureSize Pixels = GetPixels(Map, SizeAround(Rect, AOptions.Rotation), AWidth);
  TDrawing Drawing(Pixels.Width, Pixels.Height);
  Drawing.Clear(AOptions.Background);
  TSceneView View(AScene);
  const TRectF Seen = View.Look(Rect, ToRadians(AOptions.Rotation), Pixels);
  for (TMap* Other : NodesOf<TMap>(&AScene)) Show(*Other, Other == &Map);
  ApplyMapLook(Map, AOptions.Shown);
  AScene.PaintScene(New<Canvas::TWyxLayer>(&Drawing), Canvas::CreateWyxCanvas());
  return {Drawing.GetPicture(), Seen};
}

int FloorWidth(TScene& AScene, int AMapIndex, int ALongSide, const TFloorOptions& AOptions) {
  const TRectF Rect = GetRect(GetMap(AScene, AMapIndex), AOptions.Margin);
  if (Rect.GetWidth() >= Rect.GetHeight()) return ALongSide;
  const float Width = static_cast<float>(ALongSide) * Rect.GetWidth() / Rect.GetHeight();
  return std::max(1, static_cast<int>(std::lround(Width)));
}

}  // namespace Wayfence
