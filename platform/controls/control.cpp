#include "platform/controls/control.h"

#include "platform/drawing.h"

namespace System {
namespace {

/// Calls a copy: a handler may put another one in its place.
template <class TEvent, class... TArguments>
void Call(TEvent AHandler, TArguments&&... AArguments) {
  AHandler(std::forward<TArguments>(AArguments)...);
}

}  // namespace

void TControl::PointerDown(const TPointF& APoint) {
  FIsPressed = true;
  Call(FOnPointerDown, this, APoint);
}

void TControl::PointerMove(const TPointF& APoint) {
  Call(FOnPointerMove, this, APoint, FIsPressed);
}

void TControl::PointerUp(const TPointF& APoint) {
  FIsPressed = false;
  Call(FOnPointerUp, this, APoint);
}

void TControl::PointerLeave() {
  Call(FOnPointerLeave, this);
}

void TControl::Wheel(const TPointF& APoint, float ASteps) {
  Call(FOnWheel, this, APoint, ASteps);
}

void TControl::KeyDown(const TKeyPress& AKey) {
  Call(FOnKeyDown, this, AKey);
}

void TControl::Paint(TDrawing& ADrawing) {
  Call(FOnPaint, this, &ADrawing, GetLocalRect());
}

void TControl::Resized() {
  Call(FOnResize, this);
}

bool TControl::CanClose() {
  bool Result = true;
  Call(FOnClose, this, Result);
  return Result;
}

}  // namespace System
