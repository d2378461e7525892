// What whoever paints on a control, or asks it to repaint, needs to know of it.
#pragma once

#include "platform/components.h"
#include "platform/geometry.h"

namespace System {

/// A rectangle of a window, or one that is shown nowhere. Main thread only.
class TControl : public TComponent {
 public:
  using TComponent::TComponent;

  /// (0, 0, width, height), in the units of pointer positions.
  virtual TRectF GetLocalRect() const = 0;
  /// Asks for a part of the control to be painted again, soon.
  virtual void RepaintRect(const TRectF& ARect) = 0;
  /// Asks for the whole control to be painted again, soon.
  virtual void Repaint() = 0;
};

}  // namespace System
