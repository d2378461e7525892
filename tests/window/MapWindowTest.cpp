// The live map in a window, driven by real keys.
#include "apps/wayfence/map_window.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "apps/wayfence/example_project.h"
#include "platform/controls/offscreen_control.h"
#include "window/x_display.h"

namespace Wayfence {
namespace {

using namespace System;
using namespace System::Beacon::Fencing;

TEST(MapWindow, ShowsTheMapThatKeysChange) {
#ifdef __SANITIZE_THREAD__
  GTEST_SKIP() << "the window libraries start threads that ThreadSanitizer cannot follow";
#endif
  TXDisplay Display;
  if (!Display.GetProblem().empty()) GTEST_SKIP() << Display.GetProblem();
  setenv("SDL_VIDEODRIVER", "x11", 1);
  setenv("SDL_RENDER_DRIVER", "software", 1);
  setenv("SDL_FRAMEBUFFER_ACCELERATION", "0", 1);
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

}  // namespace
}  // namespace Wayfence
