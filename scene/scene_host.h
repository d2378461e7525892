// A scene that lives on a control.
#pragma once

#include "platform/controls/control.h"
#include "scene/System.Beacon.Fencing.Scene.h"

namespace System::Beacon::Fencing::Scene {

/// Paints a scene on a control, repaints what becomes invalid, and gives the scene the pointer and
/// the control's size. Takes the control's handlers of painting, resizing and the pointer's button
/// and moves; the wheel, keys and the rest stay the application's.
///
/// When the size changes, the camera's frustum grows or shrinks to the right and to the bottom, so
/// that what is seen keeps its size and place. At first its height is fitted to the control.
///
/// Scene thread only. Keeps the scene. The control may go first.
class TSceneHost final : public TComponent {
 public:
  TSceneHost(TControl& AControl, const TRef<IScene>& AScene);
  ~TSceneHost() override;

  IScene& GetScene() const noexcept { return *FScene; }
  /// Nothing once the control has gone.
  TControl* GetControl() const noexcept { return FControl; }

 protected:
  void Notification(TComponent* AComponent, TOperation AOperation) override;

 private:
  void Attach();
  void Detach();
  void FitCamera(TPointF AOldSize, TPointF ANewSize);
  void Paint(TObject* ASender, TDrawing* ADrawing, const TRectF& ARect);
  void Resized(TObject* ASender);
  void PointerDown(TObject* ASender, const TPointF& APoint);
  void PointerMove(TObject* ASender, const TPointF& APoint, bool ADragged);
  void PointerUp(TObject* ASender, const TPointF& APoint);

  TControl* FControl;
  const TRef<IScene> FScene;
  const TRef<Canvas::IInvalidateRegion> FRegion;
  TRef<Canvas::ICanvas> FCanvas;
};

}  // namespace System::Beacon::Fencing::Scene
