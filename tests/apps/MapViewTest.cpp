// The live map with a pointer and keys, shown nowhere and in a window.
#include "apps/wayfence/map_view.h"

#include <gtest/gtest.h>

#include <string>

#include "apps/wayfence/example_project.h"
#include "platform/controls/offscreen_control.h"
#include "support/pictures.h"

namespace Wayfence {
namespace {

using namespace System;
using namespace System::Beacon::Fencing;

struct TViewed {
  TViewed() {
    Map.SetXMLMap(MakeExampleProject().MakeBundle()->SerializeToXML());
    Map.SetMapOptions({TFencingMapOption::ShowBeacons,
                       TFencingMapOption::ShowZones,
                       TFencingMapOption::ShowPaths});
    Control.Update();
  }
  void Press(const std::string& AKey, bool AShift = false) {
    Control.KeyDown({.Key = AKey, .Shift = AShift});
  }
  TRef<Scene::IScene> GetScene() const {
    return dynamic_cast<TBeaconFencingMapPainter&>(Map.GetRuntimeMap()).GetScene();
  }
  TPointF At(TPointF APoint) const {
    return GetScene()->ViewportSpaceToGlobalSpace(nullptr, APoint);
  }

  TOffscreenControl Control{600, 400};
  TBeaconMapFencing Map{nullptr};
  TMapView View{Control, Map};
};

void ExpectNear(TPointF AFound, TPointF AnExpected) {
  EXPECT_NEAR(AFound.X, AnExpected.X, 0.02F);
  EXPECT_NEAR(AFound.Y, AnExpected.Y, 0.02F);
}

TEST(MapView, MovesAndZoomsWhereThePointerIs) {
  TViewed Viewed;
  const TPointF Point{450, 100};
  const TPointF Below = Viewed.At(Point), Middle = Viewed.At({300, 200});
  Viewed.Control.Wheel(Point, 3);
  ExpectNear(Viewed.At(Point), Below);
  EXPECT_LT(Viewed.At({600, 0}).X, 19.0F);
  Viewed.Control.PointerDown(Point);
  Viewed.Control.PointerMove({300, 200});
  Viewed.Control.PointerUp({300, 200});
  ExpectNear(Viewed.At({300, 200}), Below);
  Viewed.Control.PointerMove({10, 10});
  ExpectNear(Viewed.At({300, 200}), Below);
  Viewed.Press("R");
  Viewed.Press("Left");
  Viewed.Press("Right");
  Viewed.Press("R", true);
  Viewed.Press("F");
  ExpectNear(Viewed.At({300, 200}), Middle);
  for (int I = 0; I < 1000; ++I) Viewed.Control.Wheel(Point, 1);
  EXPECT_GT(Viewed.At({600, 0}).X - Viewed.At({0, 0}).X, 0.1F);
}

TEST(MapView, KeysChooseFloorsAndWhatIsShown) {
  TViewed Viewed;
  struct TCase {
    const char* Key;
    std::int32_t Floor;
  };
  for (const auto& [Key, Floor] : {TCase{"PageDown", 0},
                                   TCase{"PageUp", 1},
                                   TCase{"PageUp", 1},
                                   TCase{"1", 0},
                                   TCase{"2", 1},
                                   TCase{"9", 1}}) {
    Viewed.Press(Key);
    EXPECT_EQ(Viewed.Map.GetRuntimeMap().GetProjectInformation().CurrentMapIndex, Floor) << Key;
    EXPECT_EQ(Viewed.Map.GetMapIndex(), 0) << "the device stays where it is";
  }
  const std::string Rest = "   H: help", Look = "0:00:00   Upper floor (the device: Ground floor)";
  EXPECT_EQ(Viewed.View.GetStatus(), Look + Rest);
  Viewed.Map.SetMapIndex(1);
  Viewed.View.Refresh();
  EXPECT_EQ(Viewed.View.GetStatus(), "0:00:00   Upper floor" + Rest);
  const TFencingMapOptions Before = Viewed.Map.GetMapOptions();
  for (const char* Key : {"B", "S", "Z", "P"}) Viewed.Press(Key);
  EXPECT_EQ(Viewed.Map.GetMapOptions(), TFencingMapOptions{TFencingMapOption::ShowBeaconSignal});
  for (const char* Key : {"B", "S", "Z", "P"}) Viewed.Press(Key);
  EXPECT_EQ(Viewed.Map.GetMapOptions(), Before);
  bool IsClosed = false;
  Viewed.View.SetOnEscape([&IsClosed](TObject*) { IsClosed = true; });
  Viewed.Press("Escape");
  EXPECT_TRUE(IsClosed);
}

TEST(MapView, ShowsAProjectThatGoesAndItsHelp) {
  TViewed Viewed;
  Viewed.Press("H");
  Viewed.View.SetTime(3725);
  Viewed.View.Refresh();
  Viewed.Control.Update();
  ExpectPicture(Viewed.Control.GetDrawing().GetPicture(), "map_view_help");
  Viewed.Map.SetXMLMap("");
  for (const char* Key : {"PageUp", "R", "+", "Left", "B", "F", "H"}) Viewed.Press(Key);
  Viewed.Control.Wheel({1, 1}, 1);
  EXPECT_EQ(Viewed.View.GetStatus(), "no map");
  Viewed.Control.Update();
}

}  // namespace
}  // namespace Wayfence
