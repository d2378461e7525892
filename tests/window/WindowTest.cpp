// Windows on a display of their own, driven by real input.
#include "platform/controls/window.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "platform/controls/timer.h"
#include "scene/scene_host.h"
#include "support/raised.h"
#include "support/window_scene.h"
#include "window/x_display.h"

namespace System {
namespace {

using Beacon::Fencing::Scene::TSceneHost;
using Beacon::Fencing::Scene::TWindowScene;

constexpr std::uint8_t Left = 1, WheelAway = 4, Escape = 9;

TEST_F(WindowTest, ShowsASceneWhoseShapesThePointerDrags) {
  std::string Log;
  TWindowScene Scene(&Log), Expected;
  TWindow Window("shapes", 300, 200);
  const TSceneHost Host(Window, Scene.Scene);
  TOffscreenControl Control(300, 200);
  const TSceneHost ExpectedHost(Control, Expected.Scene);
  const xcb_window_t Shown = Find(Window.GetTitle());
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
  const xcb_window_t Shown = Find(Window.GetTitle());
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
