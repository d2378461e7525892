#include "apps/wayfence/floor_picture.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "apps/wayfence/scene_walk.h"
#include "platform/errors.h"
#include "scene/canvas/System.Beacon.Fencing.Canvas.Wyx.h"

namespace Wayfence {

using namespace System;
using namespace System::Beacon::Fencing;
using namespace System::Beacon::Fencing::Scene;
using Beacons::TMap;

namespace {

/// Changes what a scene shows, and puts it back.
class TSceneView {
 public:
  explicit TSceneView(TScene& AScene)
      : FScene(AScene), FCamera(AScene.GetCamera()), FViewport(AScene.GetViewport()) {}
  TSceneView(const TSceneView&) = delete;
  TSceneView& operator=(const TSceneView&) = delete;
  ~TSceneView() {
    for (auto Changed = FModes.rbegin(); Changed != FModes.rend(); ++Changed)
      Changed->Node->SetMode(Changed->Mode);
    FScene.SetCamera(FCamera);
    FScene.SetViewport(FViewport);
  }

  void Look(const TRectF& ARect, TPictureSize ASize) {
    const auto Camera = New<TCamera>();
    Camera->SetFrustum(ARect);
    const auto Viewport = New<TViewport>();
    Viewport->SetScreenSize(static_cast<float>(ASize.Width), static_cast<float>(ASize.Height));
    FScene.SetCamera(Camera);
    FScene.SetViewport(Viewport);
  }
  void Show(INode& ANode, bool AIsShown) {
    TModeSet Mode = ANode.GetMode();
    if (Mode.Contains(TMode::Visible) == AIsShown) return;
    FModes.push_back({TRef<INode>(&ANode), Mode});
    AIsShown ? Mode.Enable(TMode::Visible) : Mode.Disable(TMode::Visible);
    ANode.SetMode(Mode);
  }
  template <class TLayerClass>
  void ShowLayers(INode& AMap, bool AIsShown) {
    for (TLayerClass* Layer : NodesOf<TLayerClass>(&AMap)) Show(*Layer, AIsShown);
  }

 private:
  struct TChange {
    TRef<INode> Node;
    TModeSet Mode;
  };

  TScene& FScene;
  const TRef<ICamera> FCamera;
  const TRef<IViewport> FViewport;
  std::vector<TChange> FModes;
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

TPictureSize GetSize(const TMap& AMap, const TRectF& ARect, int AWidth) {
  const double Height =
      std::max(1.0, std::round(static_cast<double>(AWidth) * ARect.GetHeight() / ARect.GetWidth()));
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

void ShowOnly(TSceneView& AView, TScene& AScene, TMap& AMap, const TFloorOptions& AOptions) {
  for (TMap* Other : NodesOf<TMap>(&AScene)) AView.Show(*Other, Other == &AMap);
  AView.ShowLayers<Beacons::TPathsLayer>(AMap, AOptions.ShowPaths);
  AView.ShowLayers<Beacons::TZonesLayer>(AMap, AOptions.ShowZones);
  AView.ShowLayers<Beacons::TBeaconsLayer>(AMap, AOptions.ShowBeacons);
}

}  // namespace

TFloorPicture DrawFloor(TScene& AScene, int AMapIndex, int AWidth, const TFloorOptions& AOptions) {
  TMap& Map = GetMap(AScene, AMapIndex);
  const TRectF Rect = GetRect(Map, AOptions.Margin);
  const TPictureSize Size = GetSize(Map, Rect, AWidth);
  TDrawing Drawing(Size.Width, Size.Height);
  Drawing.Clear(AOptions.Background);
  TSceneView View(AScene);
  View.Look(Rect, Size);
  ShowOnly(View, AScene, Map, AOptions);
  AScene.PaintScene(New<Canvas::TWyxLayer>(&Drawing), New<Canvas::TWyxCanvas>());
  return {Drawing.GetPicture(), Rect};
}

int FloorWidth(TScene& AScene, int AMapIndex, int ALongSide, const TFloorOptions& AOptions) {
  const TRectF Rect = GetRect(GetMap(AScene, AMapIndex), AOptions.Margin);
  if (Rect.GetWidth() >= Rect.GetHeight()) return ALongSide;
  const float Width = static_cast<float>(ALongSide) * Rect.GetWidth() / Rect.GetHeight();
  return std::max(1, static_cast<int>(std::lround(Width)));
}

}  // namespace Wayfence
