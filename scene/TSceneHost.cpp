#include "scene/canvas/System.Beacon.Fencing.Canvas.Wyx.h"
#include "scene/scene_host.h"

namespace System::Beacon::Fencing::Scene {

TSceneHost::TSceneHost(TControl& AControl, const TRef<IScene>& AScene)
    : TComponent(nullptr),
      FControl(&AControl),
      FScene(AScene),
      FRegion(Canvas::TWyxInvlaidator::Create(&AControl)),
      FCanvas(Canvas::CreateWyxCanvas()) {
  FControl->FreeNotification(this);
  Attach();
  Resized(FControl);
  FControl->Repaint();
}

TSceneHost::~TSceneHost() {
  if (IsSame(FScene->GetInvalidateRegion().Get(), FRegion.Get())) FScene->SetInvalidator(nullptr);
  Detach();
}

void TSceneHost::Notification(TComponent* AComponent, TOperation AOperation) {
  TComponent::Notification(AComponent, AOperation);
  if (AOperation == TOperation::Remove && AComponent == FControl) FControl = nullptr;
}

void TSceneHost::Attach() {
  FScene->SetInvalidator(FRegion);
  FControl->SetOnPaint(Bind<&TSceneHost::Paint>(this));
  FControl->SetOnResize(Bind<&TSceneHost::Resized>(this));
  FControl->SetOnPointerDown(Bind<&TSceneHost::PointerDown>(this));
  FControl->SetOnPointerMove(Bind<&TSceneHost::PointerMove>(this));
  FControl->SetOnPointerUp(Bind<&TSceneHost::PointerUp>(this));
}

/// Leaves alone what was given to others since.
void TSceneHost::Detach() {
  if (!FControl) return;
  const auto IsOurs = [this](const TAnyMethod& AHandler) { return AHandler.GetReceiver() == this; };
  if (IsOurs(FControl->GetOnPaint())) FControl->SetOnPaint({});
  if (IsOurs(FControl->GetOnResize())) FControl->SetOnResize({});
  if (IsOurs(FControl->GetOnPointerDown())) FControl->SetOnPointerDown({});
  if (IsOurs(FControl->GetOnPointerMove())) FControl->SetOnPointerMove({});
  if (IsOurs(FControl->GetOnPointerUp())) FControl->SetOnPointerUp({});
  FControl->Repaint();
}

void TSceneHost::Paint(TObject*, TDrawing* ADrawing, const TRectF&) {
  FScene->PaintScene(New<Canvas::TWyxLayer>(ADrawing), FCanvas);
}

void TSceneHost::Resized(TObject*) {
  const TRef<IViewport> Viewport = FScene->GetViewport();
  if (!Viewport) return;
  const TRectF Rect = FControl->GetLocalRect();
  const TPointF OldSize = Viewport->GetScreenSize();
  Viewport->SetScreenSize(Rect.GetWidth(), Rect.GetHeight());
  FitCamera(OldSize, {Rect.GetWidth(), Rect.GetHeight()});
}

void TSceneHost::FitCamera(TPointF AOldSize, TPointF ANewSize) {
  const TRef<ICamera> Camera = FScene->GetCamera();
  if (!Camera) return;
  if (AOldSize.X <= 0 || AOldSize.Y <= 0)
    return Camera->SetFrustumAspectRatio(ANewSize.X / ANewSize.Y);
  TRectF Frustum = Camera->GetFrustum();
  Frustum.Right = Frustum.Left + Frustum.GetWidth() * ANewSize.X / AOldSize.X;
  Frustum.Bottom = Frustum.Top + Frustum.GetHeight() * ANewSize.Y / AOldSize.Y;
  Camera->SetFrustum(Frustum);
}

void TSceneHost::PointerDown(TObject*, const TPointF& APoint) {
  FScene->MouseDown(nullptr, APoint);
}

void TSceneHost::PointerMove(TObject*, const TPointF& APoint, bool ADragged) {
  FScene->MouseMove(nullptr, APoint, ADragged);
}

void TSceneHost::PointerUp(TObject*, const TPointF& APoint) {
  FScene->MouseUp(nullptr, APoint);
}

}  // namespace System::Beacon::Fencing::Scene
