// A display of its own for a test, with real input: an X server without a screen, and a client that
// moves its pointer and looks at its windows.
#pragma once

#include <gtest/gtest.h>
#include <sys/types.h>
#include <xcb/xcb.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/controls/offscreen_control.h"
#include "platform/controls/window.h"
#include "platform/threads.h"

namespace System {

/// Applications that start in this process from now on are on this display.
class TXDisplay {
 public:
  /// Starts the server; `GetProblem` tells why it could not be.
  TXDisplay();
  ~TXDisplay();
  TXDisplay(const TXDisplay&) = delete;
  TXDisplay& operator=(const TXDisplay&) = delete;

  const std::string& GetProblem() const noexcept { return FProblem; }

  /// The window of a title, once it is shown; 0 when there is none.
  xcb_window_t FindWindow(const std::string& ATitle) const;
  /// Points are in the window.
  void MovePointer(xcb_window_t AWindow, int AnX, int AnY);
  /// Button 1 is the left one, 4 the wheel away from the user.
  void Press(std::uint8_t AButton) { Fake(XCB_BUTTON_PRESS, AButton); }
  void Release(std::uint8_t AButton) { Fake(XCB_BUTTON_RELEASE, AButton); }
  /// Presses and releases a key of a window, by its code on a PC.
  void TypeKey(xcb_window_t AWindow, std::uint8_t ACode);
  /// What a window manager sends for the cross in the title bar.
  void AskToClose(xcb_window_t AWindow);
  /// The pixels of a window as they are on the screen; none when it cannot be read.
  std::vector<std::uint32_t> GetPixels(xcb_window_t AWindow, int AWidth, int AHeight) const;

 private:
  void Connect(const std::string& ANumber);
  void Fake(std::uint8_t AType, std::uint8_t ADetail, int AnX = 0, int AnY = 0);
  xcb_atom_t GetAtom(const std::string& AName) const;

  FILE* FProgram;
  pid_t FServer = 0;
  xcb_connection_t* FConnection = nullptr;
  xcb_window_t FRoot = 0;
  std::string FProblem;
};

/// Tests of windows on a display of their own; skipped where there can be none.
class WindowTest : public testing::Test {
 protected:
  void SetUp() override {
#ifdef __SANITIZE_THREAD__
    GTEST_SKIP() << "the window libraries start threads that ThreadSanitizer cannot follow";
#endif
    Display.emplace();
    if (!Display->GetProblem().empty()) GTEST_SKIP() << Display->GetProblem();
    setenv("SDL_VIDEODRIVER", "x11", 1);
    setenv("SDL_RENDER_DRIVER", "software", 1);
    setenv("SDL_FRAMEBUFFER_ACCELERATION", "0", 1);  // the software renderer would still take GL
  }

  /// Serves the windows until something is so.
  static testing::AssertionResult Becomes(const std::function<bool()>& AIsSo) {
    const TTicks Deadline = After(Ticks(), 60 * TicksPerSecond);
    while (!AIsSo()) {
      if (Ticks() > Deadline) return testing::AssertionFailure() << "not within a minute";
      TWindow::ProcessEvents(10);
    }
    return testing::AssertionSuccess();
  }
  xcb_window_t Find(const std::string& ATitle) {
    xcb_window_t Result = 0;
    EXPECT_TRUE(Becomes([&] { return (Result = Display->FindWindow(ATitle)) != 0; }));
    return Result;
  }
  /// Whether what is on the screen is, or becomes, what a control that is not shown paints.
  testing::AssertionResult Shows(xcb_window_t AWindow, TOffscreenControl& AControl) {
    AControl.Update();
    const auto [Width, Height] = AControl.GetDrawing().GetSize();
    const auto Wanted = AControl.GetDrawing().GetPixels();
    return Becomes([&, W = Width, H = Height] {
      return std::ranges::equal(Display->GetPixels(AWindow, W, H), Wanted);
    });
  }

  std::optional<TXDisplay> Display;
};

}  // namespace System
