// Windows on a display of their own, driven by real input.
#include "platform/controls/window.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/controls/offscreen_control.h"
#include "platform/controls/timer.h"
#include "platform/threads.h"
#include "scene/scene_host.h"
#include "support/raised.h"
#include "support/window_scene.h"
#include "window/x_display.h"

namespace System {
namespace {

using Beacon::Fencing::Scene::TSceneHost;
using Beacon::Fencing::Scene::TWindowScene;

constexpr std::uint8_t Left = 1, WheelAway = 4, Escape = 9;

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
  xcb_window_t Find(const TWindow& AWindow) {
    xcb_window_t Result = 0;
    EXPECT_TRUE(Becomes([&] { return (Result = Display->FindWindow(AWindow.GetTitle())) != 0; }));
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

TEST_F(WindowTest, ShowsASceneWhoseShapesThePointerDrags) {
  std::string Log;
  TWindowScene Scene(&Log), Expected;
  TWindow Window("shapes", 300, 200);
  const TSceneHost Host(Window, Scene.Scene);
  TOffscreenControl Control(300, 200);
  const TSceneHost ExpectedHost(Control, Expected.Scene);
  const xcb_window_t Shown = Find(Window);
  EXPECT_TRUE(Shows(Shown, Control));

  Display->MovePointer(Shown, 60, 60);
  EXPECT_TRUE(Becomes([&] { return Log.ends_with("enter box; "); })) << Log;
  Log.clear();
  Display->Press(Left);
  EXPECT_TRUE(Becomes([&] { return Log == "down box; "; })) << Log;
  Display->MovePointer(Shown, 360, 90);  // the window keeps the pointer
  EXPECT_TRUE(Becomes([&] { return Scene.Shapes[0]->GetDisplacement().X == 100; }));
  Display->MovePointer(Shown, 120, 90);
  Display->Release(Left);
  EXPECT_TRUE(Becomes([&] { return Log == "down box; up box; "; })) << Log;
  EXPECT_EQ(Scene.Shapes[0]->GetDisplacement(), (TPointF{20, 10}));
  Expected.Shapes[0]->SetDisplacement({20, 10});
  EXPECT_TRUE(Shows(Shown, Control));

  Window.Resize(400, 150);
  EXPECT_TRUE(Becomes([&] { return Window.GetLocalRect() == TRectF{0, 0, 400, 150}; }));
  Control.Resize(400, 150);
  EXPECT_TRUE(Shows(Shown, Control));
}

TEST_F(WindowTest, TellsWheelAndKeysAndAsksBeforeItCloses) {
  TWindow Window("input", 200, 100), Other("other", 50, 50);
  std::string Log;
  bool MayClose = false;
  Window.SetOnWheel([&](TObject*, const TPointF& APoint, float ASteps) {
    Log += fmt::format("wheel {},{} {} ", APoint.X, APoint.Y, ASteps);
  });
  Window.SetOnKeyDown([&](TObject*, const TKeyPress& AKey) { Log += AKey.Key; });
  Window.SetOnClose([&](TObject*, bool& ACanClose) {
    Log += " close?";
    ACanClose = MayClose;
  });
  Other.Close();
  const xcb_window_t Shown = Find(Window);
  Display->MovePointer(Shown, 30, 40);
  Display->Press(WheelAway);
  Display->Release(WheelAway);
  EXPECT_TRUE(Becomes([&] { return Log == "wheel 30,40 1 "; })) << Log;
  Display->TypeKey(Shown, Escape);
  EXPECT_TRUE(Becomes([&] { return Log == "wheel 30,40 1 Escape"; })) << Log;
  Display->AskToClose(Shown);
  EXPECT_TRUE(Becomes([&] { return Log == "wheel 30,40 1 Escape close?"; })) << Log;
  EXPECT_TRUE(Window.IsOpen());
  MayClose = true;
  Display->AskToClose(Shown);
  TWindow::Run();
  EXPECT_FALSE(Window.IsOpen());
}

TEST_F(WindowTest, IsWokenByThreadsAndTimersAndEndsItsLoopWhenToldTo) {
  TWindow Window("threads", 50, 50);
  TTimer Timer;
  Timer.SetInterval(1);
  Timer.SetOnTimer([] { TWindow::Quit(); });
  Timer.SetEnabled(true);
  TWindow::Run();
  Timer.SetEnabled(false);
  Window.SetOnPaint([&](TObject*, TDrawing*, const TRectF&) {
    if (Window.GetTitle() == "repainted") TWindow::Quit();
  });
  const auto Thread = TThread::CreateAnonymousThread([&Window] {
    for (int I = 0; I < 100; ++I) TThread::Synchronize([&] { Window.SetTitle("thread"); });
    TThread::Synchronize([&] {
      Window.SetTitle("repainted");
      Window.Repaint();
    });
  });
  Thread->Start();
  TWindow::Run();
  EXPECT_EQ(Window.GetTitle(), "repainted");
  EXPECT_TRUE(Window.IsOpen());
  Thread->WaitFor();
}

TEST(WindowWithoutADisplay, SaysWhatToDo) {
  unsetenv("DISPLAY");
  unsetenv("WAYLAND_DISPLAY");
  unsetenv("SDL_VIDEODRIVER");
  EXPECT_EQ(Raised<EGeneralError>([] { TWindow("none", 10, 10); }),
            "A window cannot be opened: there is no display; set DISPLAY or WAYLAND_DISPLAY to a "
            "display that can be reached, or draw without a window");
}

}  // namespace
}  // namespace System
