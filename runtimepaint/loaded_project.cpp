#include "runtimepaint/loaded_project.h"

#include <fmt/format.h>

#include "map/System.Beacon.Fencing.Scene.Beacons.h"
#include "platform/errors.h"
#include "runtimepaint/messages.h"
#include "runtimepaint/nodes_below.h"
#include "runtimepaint/project_reader.h"

namespace System::Beacon::Fencing {
namespace {

namespace Map = Scene::Beacons;
using Map::TBeaconVisualizationMode;
using Scene::TCameraHelper;
using Scene::TMode;

/// How much of the screen is left free around the scene.
constexpr float WholeSceneFactor = 1.01F;

void Show(Scene::INode& ANode, bool AIsShown) {
  constexpr std::array Modes{TMode::Visible};
  AIsShown ? ANode.EnableModes(Modes) : ANode.DisableModes(Modes);
}

Map::TBeaconVisualizationSet LookOfBeacons(TFencingMapOptions AOptions) {
  if (!AOptions.Contains(TFencingMapOption::ShowBeacons)) return {};
  if (!AOptions.Contains(TFencingMapOption::ShowBeaconSignal))
    return {TBeaconVisualizationMode::SolidCircle};
  return {TBeaconVisualizationMode::SolidCircle, TBeaconVisualizationMode::SignalDistance};
}

/// The record cannot be made of what does not pass this.
template <class TPlace>
void RequireReadableInformation(Scene::TScene& AScene) {
  for (const TRef<TPlace>& Place : NodesBelow<TPlace>(&AScene)) {
    try {
      Map::StringToDescriptionList(Place->GetInformationItems());
    } catch (const EConvertError& Error) {
      throw EConvertError(fmt::format(
          Messages::SDescriptionList, Messages::SProjectText, Place->GetName(), Error.what()));
    }
  }
}

TRef<Scene::TCamera> MakeCamera(Scene::TScene& AScene) {
  TRef<Scene::TCamera> Result = New<Scene::TCamera>();
  const TRectF Rect = AScene.GetRect();
  const float HalfWidth = Rect.GetWidth() / 2.0F, HalfHeight = Rect.GetHeight() / 2.0F;
  Result->SetDisplacement(Rect.GetCentre());
  Result->SetFrustum({-HalfWidth, -HalfHeight, HalfWidth, HalfHeight});
  AScene.SetCamera(Result);
  return Result;
}

TRef<TPositionMarker> MakeMarker(Scene::TScene& AScene) {
  TRef<TPositionMarker> Result = New<TPositionMarker>();
  Result->SetDisplacement(AScene.GetRect().GetCentre());
  AScene.AddChild(Result);
  return Result;
}

}  // namespace

TLoadedProject LoadProject(const std::string& AText, const TFencingOptions& AOptions) {
  TLoadedProject Result;
  Result.Canvas = New<Canvas::TWyxCanvas>();
  Result.Layer = New<Canvas::TWyxLayer>();
  Result.Bundle = CreateBundleForCanvas(Result.Canvas);
  Result.Bundle->UnserializeFromXML(AText);
  Result.Scene = ReadSceneOf(Result.Bundle, std::string(Messages::SProjectText));
  RequireReadableInformation<IDesignShape>(*Result.Scene);
  RequireReadableInformation<IDesignBeacon>(*Result.Scene);
  RequireReadableInformation<IDesignZone>(*Result.Scene);
  Result.Camera = MakeCamera(*Result.Scene);
  Result.Position = MakeMarker(*Result.Scene);
  Result.PathPosition = MakeMarker(*Result.Scene);
  Result.ApplyFencingOptions(AOptions);
  return Result;
}

void TLoadedProject::ApplyFencingOptions(const TFencingOptions& AOptions) const {
  Position->SetLook(AOptions.GetRawPositionColor(), AOptions.GetRawPositionRadius());
  PathPosition->SetLook(AOptions.GetPathPositionColor(), AOptions.GetPathPositionRadius());
}

void TLoadedProject::ApplyMapOptions(TFencingMapOptions AOptions) const {
  const bool ShowsZones = AOptions.Contains(TFencingMapOption::ShowZones);
  const bool ShowsPaths = AOptions.Contains(TFencingMapOption::ShowPaths);
  for (const TRef<IDesignMap>& Floor : NodesBelow<IDesignMap>(Scene.Get())) {
    auto* const Node = Supports<Scene::INode>(Floor);
    for (const TRef<Map::TBeacon>& Beacon : NodesBelow<Map::TBeacon>(Node))
      Beacon->SetVisualizationMode(LookOfBeacons(AOptions));
    for (const TRef<IDesignZone>& Zone : NodesBelow<IDesignZone>(Node))
      if (auto* const Shown = Supports<Scene::INode>(Zone)) Show(*Shown, ShowsZones);
    for (const TRef<Map::IMapPath>& Path : NodesBelow<Map::IMapPath>(Node)) Show(*Path, ShowsPaths);
  }
  Show(*Position, AOptions.Contains(TFencingMapOption::ShowPosition));
  Show(*PathPosition, AOptions.Contains(TFencingMapOption::ShowPositionInPath));
}

void TLoadedProject::FitInto(const TRectF& AScreen) const {
  Scene->GetViewport()->SetScreenSize(AScreen.GetWidth(), AScreen.GetHeight());
  TCameraHelper::FocusRect(Camera.Get(), Scene.Get(), Scene->GetRect(), WholeSceneFactor);
}

void TLoadedProject::SetControl(TControl* AControl) const {
  Scene->SetInvalidator(AControl ? Canvas::TWyxInvlaidator::Create(AControl) : nullptr);
}

}  // namespace System::Beacon::Fencing
