#include "scene/System.Beacon.Fencing.Scene.Helpers.h"

namespace System::Beacon::Fencing::Scene {
namespace {

/// The width of a scene's screen by its height; 0 when there is no screen.
float ScreenAspectRatio(IScene* AScene) {
  const TRef<IViewport> Viewport = AScene ? AScene->GetViewport() : nullptr;
  const TPointF Size = Viewport ? Viewport->GetScreenSize() : TPointF{};
  return Size.X > 0.0F && Size.Y > 0.0F ? Size.X / Size.Y : 0.0F;
}

/// The rectangle of the screen's shape that holds one of the camera's space. The direction in which
/// there is room is centred on the camera.
TRectF FrustumFor(const TRectF& ARect, float AnAspectRatio) {
  const float Width = ARect.GetWidth(), Height = ARect.GetHeight();
  if (AnAspectRatio > Width / Height) {
    const float HalfWidth = Height * AnAspectRatio / 2.0F;
    return {-HalfWidth, ARect.Top, HalfWidth, ARect.Bottom};
  }
  const float HalfHeight = Width / (2.0F * AnAspectRatio);
  return {ARect.Left, -HalfHeight, ARect.Right, HalfHeight};
}

TRectF ScaledAboutCentre(const TRectF& ARect, float AFactor) {
  const TPointF Centre = ARect.GetCentre();
  const float HalfWidth = ARect.GetWidth() / 2.0F * AFactor;
  const float HalfHeight = ARect.GetHeight() / 2.0F * AFactor;
  return {Centre.X - HalfWidth, Centre.Y - HalfHeight, Centre.X + HalfWidth, Centre.Y + HalfHeight};
}

}  // namespace

void TCameraHelper::FocusRect(ICamera* ACamera,
                              IScene* AScene,
                              const TRectF& ARect,
                              float AFactor) {
  if (!ACamera) return;
  const TRef<ICamera> Keep(ACamera);
  const TRectF Rect = ARect;  // handlers of the movement may change what it comes from
  const float AspectRatio = ScreenAspectRatio(AScene ? AScene : ACamera->GetScene());
  ACamera->SetDisplacement(Rect.GetCentre());
  if (Rect.IsEmpty() || !(AspectRatio > 0.0F) || !(AFactor > 0.0F)) return;
  const TRectF InCamera = TCornersHelper::GetRect(
      TCornersHelper::MultiplyRect(ACamera->GetInverseGlobalMatrix(), Rect));
  ACamera->SetFrustum(ScaledAboutCentre(FrustumFor(InCamera, AspectRatio), AFactor));
}

void TCameraHelper::FocusNode(ICamera* ACamera,
                              IScene* AScene,
                              const ISceneNode* ANode,
                              float AFactor) {
  if (ANode) FocusRect(ACamera, AScene, ANode->GetGlobalRect(), AFactor);
}

}  // namespace System::Beacon::Fencing::Scene
