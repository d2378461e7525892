#include "runtimepaint/loaded_project.h"

#include "runtimepaint/map_look.h"
#include "runtimepaint/messages.h"
#include "runtimepaint/nodes_below.h"
#include "runtimepaint/project_extraction.h"
#include "runtimepaint/project_reader.h"

namespace System::Beacon::Fencing {
namespace {

using Scene::TCameraHelper;

/// How much of the screen is left free around the scene.
constexpr float WholeSceneFactor = 1.01F;

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
  Result.Canvas = Canvas::CreateWyxCanvas();
  Result.Layer = New<Canvas::TWyxLayer>();
  Result.Bundle = CreateBundleForCanvas(Result.Canvas);
  Result.Bundle->UnserializeFromXML(AText);
  Result.Scene = ReadSceneOf(Result.Bundle, std::string(Messages::SProjectText));
  RequireReadableInformation(*Result.Scene);
  Result.ZoneHighlight = std::make_shared<TZoneHighlight>(*Result.Scene);
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
  for (const TRef<IDesignMap>& Floor : NodesBelow<IDesignMap>(Scene.Get()))
    if (auto* const Node = Supports<Scene::INode>(Floor)) ApplyMapLook(*Node, AOptions);
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
