// The runtime map that shows a project on a control.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <string>

#include "apps/wayfence/example_project.h"
#include "platform/controls/offscreen_control.h"
#include "runtimepaint/System.Beacon.Fencing.RuntimePaint.Painter.h"
#include "support/pictures.h"
#include "support/raised.h"

namespace System::Beacon::Fencing {
namespace {

using enum TFencingMapOption;
using namespace Scene::Beacons;
using TMapBeacon = Scene::Beacons::TBeacon;

constexpr TFencingMapOptions Everything{
    ShowPosition, ShowPositionInPath, ShowBeacons, ShowBeaconSignal, ShowZones, ShowPaths};

std::string TextOf(const TProjectBuilder& ABuilder) {
  return ABuilder.MakeBundle()->SerializeToXML();
}

const std::string& ExampleText() {
  static const std::string Text = TextOf(Wayfence::MakeExampleProject());
  return Text;
}

/// A painter on a control, with the example project.
struct TShownMap {
  explicit TShownMap(float AScale = 1.0F) : Control(600, 400, AScale) {
    Control.SetOnPaint(Bind<&TBeaconFencingMapPainter::ControlPaint>(&Painter));
    Painter.SetFencingOptions(&Options);
    Painter.SetControl(&Control);
    Painter.SetXmlData(ExampleText());
    Painter.SetMapOptions(Everything);
    Record = Painter.GetProjectInformation();
    Control.Update();
  }

  TRef<IDesignZone> Zone(const std::string& AName) {
    for (const TFencingMap& Map : Record.Maps)
      for (const TRef<IDesignZone>& Zone : Map.Zones)
        if (Zone->GetName() == AName) return Zone;
    return nullptr;
  }
  TPointF OnScreen(TPointF APoint) const {
    return Painter.GetScene()->GlobalSpaceToViewportSpace(nullptr, APoint);
  }

  TFencingOptions Options;
  TBeaconFencingMapPainter Painter;
  TOffscreenControl Control;
  TFencingProject Record;
};

TEST(MapPainter, DrawsTheExampleFloor) {
  TShownMap Map;
  Map.Options.SetRawPositionRadius(1.0F);
  Map.Options.SetRawPositionColor({0xFFE02020});
  Map.Painter.SetFencingOptions(&Map.Options);
  Map.Painter.SetRawPosition({8, 2});
  Map.Painter.SetPathPosition({8, 6});
  Map.Painter.HighLightZone(Map.Zone("Meeting room"));
  const TRef<IDesignBeacon> Near = Map.Record.Maps[0].BeaconList[0].DesignBeacon;
  Map.Painter.ChangeBeaconColor(Near, {0xFF20A020});
  Near->SetSignalDistance(2.5F);
  Map.Control.Update();
  ExpectPicture(Map.Control.GetDrawing().GetPicture(), "painter_floor");
}

}  // namespace
}  // namespace System::Beacon::Fencing
