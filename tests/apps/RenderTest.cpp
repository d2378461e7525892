// Pictures of floors, as people ask for them.
#include "apps/wayfence/floor_picture.h"
#include "apps/wayfence/project_file.h"
#include "platform/controls/offscreen_control.h"
#include "runtimepaint/System.Beacon.Fencing.RuntimePaint.Painter.h"
#include "support/pictures.h"
#include "support/program.h"

namespace Wayfence {
namespace {

using namespace System;
using namespace System::Beacon::Fencing;

class RenderTest : public ProgramTest {
 protected:
  void WriteFiles() override { OutputOf("project new office.xml"); }
};

TEST_F(RenderTest, DrawsATurnedFloorWithARoute) {
  OutputOf(
      "render office.xml -o floor.png --map 1 --width 300 --rotation 20 --route Desk Bookshelf");
  ExpectPicture(LoadPicture(Path("floor.png")), "render_floor");
}

TEST_F(RenderTest, RefusesWhatThereIsNot) {
  ExpectRefusal(1, "render office.xml -o floor.png --map 2", "wayfence: there is no map 2");
  ExpectRefusal(1, "render office.xml -o floor.png --route Desk Sea", "wayfence: ");
  EXPECT_FALSE(std::filesystem::exists(Path("floor.png")));
}

TEST_F(RenderTest, LooksLikeTheLiveMap) {
  const TProjectFile Project = OpenProject(Path("office.xml"));
  for (const TFencingMapOptions Shown :
       {TFloorOptions().Shown,
        TFencingMapOptions{TFencingMapOption::ShowBeacons, TFencingMapOption::ShowBeaconSignal},
        TFencingMapOptions{}}) {
    const auto Floor = DrawFloor(*Project.Scene, 1, 240, {.Shown = Shown, .Rotation = 90});
    ASSERT_EQ(Floor.Picture->GetSize(), (TPictureSize{240, 400}));
    TBeaconFencingMapPainter Painter;
    TOffscreenControl Control(240, 400);
    Control.SetOnPaint(Bind<&TBeaconFencingMapPainter::ControlPaint>(&Painter));
    Painter.SetControl(&Control);
    Painter.SetXmlData(Project.Bundle->SerializeToXML());
    Painter.SetMapOptions(Shown);
    Painter.GetProjectInformation();
    Control.Update();  // from now on the size is known, and the view stays
    Painter.SetMapIndex(1);
    Painter.SetRotation(90);
    Control.Update();
    EXPECT_EQ(CountDifferent(*Floor.Picture, Control.GetDrawing()), 0);
  }
}

}  // namespace
}  // namespace Wayfence
