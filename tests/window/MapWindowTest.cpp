// The live map in a window: driven by real keys, and by an application that does everything.
#include "apps/wayfence/map_window.h"

#include <gtest/gtest.h>

#include "apps/wayfence/example_project.h"
#include "support/environment.h"
#include "support/live_map_stress.h"
#include "window/x_display.h"

namespace Wayfence {
namespace {

using namespace System;
using namespace System::Beacon::Fencing;

class MapWindow : public WindowTest {};

TEST_F(MapWindow, ShowsTheMapThatKeysChange) {
  const std::string Text = MakeExampleProject().MakeBundle()->SerializeToXML();
  TBeaconMapFencing Shown(nullptr), Expected(nullptr);
  TMapWindow Window("office", Shown, {600, 400});
  TOffscreenControl Control(600, 400);
  TMapView View(Control, Expected);
  for (TBeaconMapFencing* Map : {&Shown, &Expected}) {
    Map->SetXMLMap(Text);
    Map->SetMapOptions({TFencingMapOption::ShowZones});
  }
  const xcb_window_t Found = Find("office");
  struct TCase {
    const char* Key;
    std::uint8_t Code;
  };
  for (const auto& [Key, Code] :
       {TCase{"", 0}, TCase{"PageUp", 112}, TCase{"R", 27}, TCase{"B", 56}, TCase{"H", 43}}) {
    if (Code != 0) Display->TypeKey(Found, Code);
    if (Code != 0) Control.KeyDown({.Key = Key});
    View.Refresh();
    EXPECT_TRUE(Shows(Found, Control)) << Key;
  }
  Display->TypeKey(Found, 9);  // Escape
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
