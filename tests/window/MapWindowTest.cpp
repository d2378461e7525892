// The live map in a window: driven by real keys, and by an application that does everything.
#include "apps/wayfence/map_window.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <optional>

#include "apps/wayfence/example_project.h"
#include "platform/controls/offscreen_control.h"
#include "support/environment.h"
#include "support/live_map_stress.h"
#include "window/x_display.h"

namespace Wayfence {
namespace {

using namespace System;
using namespace System::Beacon::Fencing;

class MapWindow : public testing::Test {
 protected:
  void SetUp() override {
#ifdef __SANITIZE_THREAD__
    GTEST_SKIP() << "the window libraries start threads that ThreadSanitizer cannot follow";
#endif
    OnDisplay.emplace();
    if (!OnDisplay->GetProblem().empty()) GTEST_SKIP() << OnDisplay->GetProblem();
    setenv("SDL_VIDEODRIVER", "x11", 1);
    setenv("SDL_RENDER_DRIVER", "software", 1);
    setenv("SDL_FRAMEBUFFER_ACCELERATION", "0", 1);
  }

  std::optional<TXDisplay> OnDisplay;
};

TEST_F(MapWindow, ShowsTheMapThatKeysChange) {
  TXDisplay& Display = *OnDisplay;
  const std::string Text = MakeExampleProject().MakeBundle()->SerializeToXML();
  TBeaconMapFencing Shown(nullptr), Expected(nullptr);
  TMapWindow Window("office", Shown, {600, 400});
  TOffscreenControl Control(600, 400);
  TMapView View(Control, Expected);
  for (TBeaconMapFencing* Map : {&Shown, &Expected}) {
    Map->SetXMLMap(Text);
    Map->SetMapOptions({TFencingMapOption::ShowZones});
  }
  xcb_window_t Found = 0;
  while ((Found = Display.FindWindow("office")) == 0) TWindow::ProcessEvents(10);
  struct TCase {
    const char* Key;
    std::uint8_t Code;
  };
  for (const auto& [Key, Code] :
       {TCase{"", 0}, TCase{"PageUp", 112}, TCase{"R", 27}, TCase{"B", 56}, TCase{"H", 43}}) {
    if (Code != 0) Display.TypeKey(Found, Code);
    if (Code != 0) Control.KeyDown({.Key = Key});
    View.Refresh();
    Control.Update();
    const auto IsShown = [&] {
      return std::ranges::equal(Display.GetPixels(Found, 600, 400),
                                Control.GetDrawing().GetPixels());
    };
    const TTicks Deadline = After(Ticks(), 60 * TicksPerSecond);
    while (!IsShown() && Ticks() < Deadline) TWindow::ProcessEvents(10);
    EXPECT_TRUE(IsShown()) << Key;
  }
  Display.TypeKey(Found, 9);  // Escape
  TWindow::Run();
  EXPECT_FALSE(Window.GetWindow().IsOpen());
}

TEST_F(MapWindow, StaysWholeWhateverTheApplicationDoes) {
  const TTicks End = Ticks() + FromEnvironment("WAYFENCE_STRESS_SECONDS", 2) * TicksPerSecond;
  TWindow Window("stress", 300, 200);
  TLiveMapStress Stress(7, {500, 4, 20}, Window);
  while (!HasFailure() && (Ticks() < End || Stress.GetPositionCount() < 50)) {
    Stress.Step();
    TWindow::ProcessEvents(1);
  }
}

}  // namespace
}  // namespace Wayfence
