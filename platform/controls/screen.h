// The seam between windows and the window system. Main thread only, except where said.
#pragma once

#include <memory>
#include <string>

#include "platform/controls/damage.h"
#include "platform/drawing.h"
#include "platform/time.h"

namespace System {

class TWindow;

/// The window system's part of a window. Its destruction takes the window off the screen.
class IScreenWindow {
 public:
  virtual ~IScreenWindow() = default;

  virtual void SetTitle(const std::string& ATitle) = 0;
  /// In units of the pointer. The window system may decide otherwise.
  virtual void Resize(int AWidth, int AHeight) = 0;
  /// In pixels.
  virtual TPictureSize GetSize() const = 0;
  /// How many pixels a unit of the pointer is wide.
  virtual float GetScale() const = 0;
  /// Brings parts of a drawing, in whole pixels, on the screen; the others are there already.
  virtual void Show(const TDrawing& ADrawing, const TDamage& AParts) = 0;
};

class IScreen {
 public:
  virtual ~IScreen() = default;
  /// Raises `EGeneralError` in a library that was built without a window system.
  static IScreen& Instance();

  /// `AWindow` is told what happens to it. Raises `EGeneralError` when there is no display.
  virtual std::unique_ptr<IScreenWindow> Open(TWindow& AWindow,
                                              const std::string& ATitle,
                                              int AWidth,
                                              int AHeight) = 0;
  /// Tells windows what has happened; waits for something until the deadline, or for `Wake`.
  virtual void Process(TTicks ADeadline) = 0;
  /// Any thread.
  virtual void Wake() = 0;
};

}  // namespace System
