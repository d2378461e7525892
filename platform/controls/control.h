// What whoever paints on a control, asks it to repaint, or listens to its pointer needs to know of
// it.
#pragma once

#include <string>

#include "platform/components.h"
#include "platform/geometry.h"
#include "platform/method.h"

namespace System {

class TDrawing;

/// A key that was pressed, by the name that is printed on it ("A", "Left", "Escape", "+").
struct TKeyPress {
  std::string Key;
  bool Shift = false;
  bool Control = false;
  bool Alt = false;
};

/// `ARect` is the control's whole local rectangle. What has to be painted is the drawing's clip;
/// its matrix takes the control's units to pixels, and it is already filled with the background.
using TPaintEvent = TMethod<void(TObject* ASender, TDrawing* ADrawing, const TRectF& ARect)>;
using TPointerEvent = TMethod<void(TObject* ASender, const TPointF& APoint)>;
/// `ADragged`: the button is down, and went down on this control.
using TPointerMoveEvent = TMethod<void(TObject* ASender, const TPointF& APoint, bool ADragged)>;
/// Above 0 when the wheel is turned away from the user; parts of a step are possible.
using TWheelEvent = TMethod<void(TObject* ASender, const TPointF& APoint, float ASteps)>;
using TKeyEvent = TMethod<void(TObject* ASender, const TKeyPress& AKey)>;
/// The control stays open when the handler sets `ACanClose` to false.
using TCloseEvent = TMethod<void(TObject* ASender, bool& ACanClose)>;

/// A rectangle of a window, or one that is shown nowhere. Main thread only. Positions and
/// rectangles are in units of the pointer, from the upper left corner; on a dense screen a unit is
/// more than a pixel. A control must not be destroyed inside one of its handlers.
///
/// An application with windows of its own derives from this class, reports what happens with the
/// operations below, and paints by calling `Paint`.
class TControl : public TComponent {
 public:
  using TComponent::TComponent;

  /// (0, 0, width, height).
  virtual TRectF GetLocalRect() const = 0;
  /// Asks for a part of the control to be painted again, soon.
  virtual void RepaintRect(const TRectF& ARect) = 0;
  /// Asks for the whole control to be painted again, soon.
  virtual void Repaint() = 0;

  // What happens to the control. The button is the left one.
  void PointerDown(const TPointF& APoint);
  void PointerMove(const TPointF& APoint);
  void PointerUp(const TPointF& APoint);
  void PointerLeave();
  void Wheel(const TPointF& APoint, float ASteps);
  void KeyDown(const TKeyPress& AKey);
  bool IsPressed() const noexcept { return FIsPressed; }

  // Each has one handler at a time.
  const TPaintEvent& GetOnPaint() const noexcept { return FOnPaint; }
  void SetOnPaint(TPaintEvent AValue) { FOnPaint = std::move(AValue); }
  /// Called when the size or the density has changed; all will be painted again.
  const TNotifyEvent& GetOnResize() const noexcept { return FOnResize; }
  void SetOnResize(TNotifyEvent AValue) { FOnResize = std::move(AValue); }
  const TPointerEvent& GetOnPointerDown() const noexcept { return FOnPointerDown; }
  void SetOnPointerDown(TPointerEvent AValue) { FOnPointerDown = std::move(AValue); }
  const TPointerMoveEvent& GetOnPointerMove() const noexcept { return FOnPointerMove; }
  void SetOnPointerMove(TPointerMoveEvent AValue) { FOnPointerMove = std::move(AValue); }
  const TPointerEvent& GetOnPointerUp() const noexcept { return FOnPointerUp; }
  void SetOnPointerUp(TPointerEvent AValue) { FOnPointerUp = std::move(AValue); }
  const TNotifyEvent& GetOnPointerLeave() const noexcept { return FOnPointerLeave; }
  void SetOnPointerLeave(TNotifyEvent AValue) { FOnPointerLeave = std::move(AValue); }
  const TWheelEvent& GetOnWheel() const noexcept { return FOnWheel; }
  void SetOnWheel(TWheelEvent AValue) { FOnWheel = std::move(AValue); }
  const TKeyEvent& GetOnKeyDown() const noexcept { return FOnKeyDown; }
  void SetOnKeyDown(TKeyEvent AValue) { FOnKeyDown = std::move(AValue); }
  const TCloseEvent& GetOnClose() const noexcept { return FOnClose; }
  void SetOnClose(TCloseEvent AValue) { FOnClose = std::move(AValue); }

 protected:
  void Paint(TDrawing& ADrawing);
  void Resized();
  /// Whether the handler lets the control be closed.
  bool CanClose();

 private:
  TPaintEvent FOnPaint;
  TNotifyEvent FOnResize;
  TPointerEvent FOnPointerDown;
  TPointerMoveEvent FOnPointerMove;
  TPointerEvent FOnPointerUp;
  TNotifyEvent FOnPointerLeave;
  TWheelEvent FOnWheel;
  TKeyEvent FOnKeyDown;
  TCloseEvent FOnClose;
  bool FIsPressed = false;
};

}  // namespace System
