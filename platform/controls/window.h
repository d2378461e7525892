// Windows on the screen, and the loop that serves them.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/controls/picture_control.h"

namespace System {

class IScreenWindow;

/// A window that can be resized and closed. Main thread only, in the real runtime; there may be
/// several. Sizes are in units of the pointer.
///
/// The first window sets the hand-off hook (`SetHandOffHook`), so that threads which report an
/// event are served at once; the last one takes it away.
class TWindow final : public TPictureControl {
 public:
  /// Shows the window. Raises `EGeneralError`, with what to do, where there is no display or the
  /// library was built without SDL2.
  TWindow(const std::string& ATitle, int AWidth, int AHeight, TComponent* AOwner = nullptr);
  ~TWindow() override;

  const std::string& GetTitle() const noexcept { return FTitle; }
  void SetTitle(const std::string& ATitle);
  /// The window system decides; `OnResize` tells when it has happened.
  void Resize(int AWidth, int AHeight);
  bool IsOpen() const noexcept { return FScreenWindow != nullptr; }
  /// Takes the window off the screen, for good, unless the handler of `OnClose` objects.
  void Close();
  /// Paints what is damaged and shows it. The loop does so after every turn.
  void Update();
  /// Called by the window system.
  void SizeChanged();

  /// The loop: handles input, runs hand-offs and timers, and paints once for all that has happened;
  /// sleeps when there is nothing to do. Returns when the last window was closed, or after `Quit`.
  /// What handlers raise leaves the loop; it may be entered again.
  static void Run();
  /// Ends the loop that is running, at the end of its turn.
  static void Quit() noexcept;
  /// For an application with a loop of its own: does what there is to do, then waits for more at
  /// most so long, and does that. Whether a window is open.
  static bool ProcessEvents(std::int64_t AMilliseconds = 0);

 private:
  std::string FTitle;
  std::unique_ptr<IScreenWindow> FScreenWindow;
};

}  // namespace System
