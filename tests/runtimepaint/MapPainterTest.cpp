// The runtime map that shows a project on a control.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

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

TEST(MapPainter, PaintsPartsThatAddUpToTheWholePicture) {
  for (const float Scale : {1.0F, 1.5F}) {
    TShownMap Map(Scale);
    std::mt19937 Random(3);
    const auto Point = [&Random] {
      return TPointF{static_cast<float>(Random() % 200) / 10,
                     static_cast<float>(Random() % 120) / 10};
    };
    for (int Step = 0; Step < 120; ++Step) {
      const std::size_t Floor = Random() % 2;
      TFencingMap& Shown = Map.Record.Maps[Floor];
      const TRef<IDesignBeacon> Beacon =
          Shown.BeaconList[Random() % Shown.BeaconList.GetLength()].DesignBeacon;
      Map.Painter.SetRawPosition(Point());
      Map.Painter.SetPathPosition(Point());
      if (Step % 3 == 0) Map.Painter.HighLightZone(Shown.Zones[Random() % Shown.Zones.GetLength()]);
      if (Step % 4 == 0)
        Map.Painter.ChangeBeaconColor(Beacon, {static_cast<std::uint32_t>(0xFF000000U | Random())});
      if (Step % 5 == 0) Beacon->SetSignalDistance(static_cast<float>(Random() % 5));
      if (Step % 30 == 0) Map.Painter.SetMapIndex(static_cast<std::int32_t>(Floor));
      if (Step % 40 == 0) Map.Painter.SetRotation(static_cast<std::int32_t>(Random() % 360) - 180);
      if (Step % 50 == 0) Map.Control.Resize(static_cast<float>(300 + Random() % 300), 250);
      Map.Control.Update();
      if (Step % 10 != 0) continue;
      TOffscreenControl Whole(
          Map.Control.GetLocalRect().Right, Map.Control.GetLocalRect().Bottom, Scale);
      Whole.SetOnPaint(Map.Control.GetOnPaint());
      Whole.Update();
      ASSERT_EQ(CountDifferent(Map.Control.GetDrawing(), Whole.GetDrawing(), 32), 0)
          << "step " << Step;
    }
  }
}

TEST(MapPainter, PaintsTwoSmallSquaresForAMarkerThatMoves) {
  TShownMap Map;
  Map.Painter.SetRawPosition({1, 1});
  Map.Control.Update();
  std::vector<float> Areas;
  const auto Paint = [&](TObject* ASender, TDrawing* ADrawing, const TRectF& ARect) {
    Areas.push_back(ADrawing->GetClip().GetWidth() * ADrawing->GetClip().GetHeight());
    Map.Painter.ControlPaint(ASender, ADrawing, ARect);
  };
  Map.Control.SetOnPaint(Paint);
  Map.Painter.SetRawPosition({19, 11});
  Map.Control.Update();
  ASSERT_EQ(Areas.size(), 2U);
  constexpr float Side = 75;  // two metres and the margins
  for (const float Area : Areas) EXPECT_LT(Area, Side * Side);

  Areas.clear();
  Map.Painter.HighLightZone(nullptr);  // as they are
  Map.Control.Resize(300, 200);
  Map.Control.Update();
  Map.Control.Update();
  EXPECT_EQ(Areas.size(), 1U) << "the view that follows the size asks for no other paint";
}

TEST(MapPainter, RefusesWhatItCannotDoAndChangesNothing) {
  constexpr const char* NoMap = "There is no map information loaded";
  constexpr const char* NoAngle = "Angle should be between -180 and 180 degrees";
  TBeaconFencingMapPainter Empty;
  TShownMap Map;
  TDrawing Drawing(10, 10);
  const TRectF Rect{0, 0, 10, 10};
  constexpr TPointF Point{1, 1};
  struct TCase {
    std::function<void()> Call;
    const char* Message;
  };
  for (const TCase& C : {
           TCase{[&] { Empty.GetRawPosition(); }, NoMap},
           TCase{[&] { Empty.GetPathPosition(); }, NoMap},
           TCase{[&] { Empty.SetRawPosition(Point); }, NoMap},
           TCase{[&] { Empty.SetPathPosition(Point); }, NoMap},
           TCase{[&] { Empty.SetMapIndex(0); }, NoMap},
           TCase{[&] { Empty.SetRotation(200); }, NoMap},
           TCase{[&] { Empty.ControlPaint(nullptr, &Drawing, Rect); },
                 "Control property has not been set"},
           TCase{[&] { Map.Painter.SetRotation(181); }, NoAngle},
           TCase{[&] { Map.Painter.SetRotation(-181); }, NoAngle},
           TCase{[&] { Map.Painter.SetMapIndex(2); }, "2 is not a valid map index"},
           TCase{[&] { Map.Painter.SetMapIndex(-1); }, "-1 is not a valid map index"},
           TCase{[&] { Map.Painter.ControlPaint(nullptr, nullptr, Rect); },
                 "Cannot paint to a nil canvas"},
           TCase{[&] { Map.Painter.SetXmlData("<bundle/>"); },
                 "project text: there is no scene: the entry 'project' is missing"},
       }) {
    EXPECT_EQ(Raised<EGeneralError>(C.Call), C.Message);
  }
  TProjectBuilder Bad("House");
  Bad.AddMap("Ground", 10, 10).AddZone("Hall", {0, 0, 4, 4})->SetDescriptionList(":?:?:");
  EXPECT_TRUE(Raised<EConvertError>([&] {
                Map.Painter.SetXmlData(TextOf(Bad));
              }).starts_with("Ground > Zones > Hall: its DescriptionList cannot be read"));

  EXPECT_EQ(Map.Painter.GetXmlData(), ExampleText());
  EXPECT_TRUE(Map.Painter.GetProjectInformation().Maps.IsSameAs(Map.Record.Maps));
  EXPECT_EQ(Map.Painter.GetProjectInformation().CurrentMapIndex, 0);
  EXPECT_FALSE(Map.Control.IsDamaged());
}

TEST(MapPainter, ReplacesTheProjectWithItsText) {
  TShownMap Map;
  const TRef<Scene::IScene> First = Map.Painter.GetScene();
  Map.Painter.SetXmlData(ExampleText());
  EXPECT_EQ(Map.Painter.GetScene(), First);

  // Another scene that is made meanwhile is nobody's but its maker's.
  TRef<Scene::TScene> Stranger;
  const Scene::TCreatedObjectEvent MakeStranger = [&Stranger](Scene::INode* ANode) {
    if (!Stranger && Supports<TMap>(ANode)) Stranger = New<Scene::TScene>();
  };
  TProjectBuilder Small("Hut");
  Small.AddMap("Floor", 3, 2);
  const std::string SmallText = TextOf(Small);
  Scene::TSceneRegistry::Connect(MakeStranger);
  Map.Painter.SetXmlData(SmallText);
  Scene::TSceneRegistry::Disconnect(MakeStranger);
  const TFencingProject Hut = Map.Painter.GetProjectInformation();
  EXPECT_EQ(Hut.ProjectName, "Hut");
  EXPECT_EQ(Hut.Maps.GetLength(), 1U);
  EXPECT_EQ(First->GetInvalidateRegion(), nullptr);
  EXPECT_TRUE(Map.Control.IsDamaged());
  ASSERT_TRUE(Stranger);
  EXPECT_FALSE(Stranger->GetCamera() || Stranger->GetBundle() || Stranger->GetInvalidateRegion());

  Map.Painter.SetXmlData("");
  EXPECT_TRUE(Map.Painter.GetProjectInformation().Maps.IsEmpty());
  EXPECT_FALSE(Map.Painter.GetScene() || Map.Painter.GetCamera());
  EXPECT_EQ(Map.Record.Maps[0].Zones[0]->GetCenterInGlobalSpace(), (TPointF{3, 6}));
}

TEST(MapPainter, ShowsWhatTheOptionsTell) {
  struct TCase {
    TFencingMapOptions Options;
    const char* Shown;
  };
  TShownMap Map;
  for (const TCase& C : {TCase{{}, ""},
                         TCase{{ColorBeacon, HighlightZones}, ""},
                         TCase{{ShowBeacons}, "disc "},
                         TCase{{ShowBeaconSignal}, ""},
                         TCase{{ShowBeacons, ShowBeaconSignal}, "disc signal "},
                         TCase{{ShowZones, ShowPosition}, "zone raw "},
                         TCase{{ShowPaths, ShowPositionInPath}, "path path-position "},
                         TCase{Everything, "disc signal zone path raw path-position "}}) {
    Map.Painter.SetMapOptions(C.Options);
    const auto IsShown = [](const IInterface* ANode) {
      return dynamic_cast<const Scene::INode&>(*ANode).GetMode().Contains(Scene::TMode::Visible);
    };
    const auto& Record = Map.Record;
    const TFencingMap& Upper = Record.Maps[1];
    const auto Look =
        dynamic_cast<const TMapBeacon&>(*Upper.BeaconList[0].DesignBeacon).GetVisualizationMode();
    const std::int32_t Count = Map.Painter.GetScene()->GetChildCount();
    std::string Shown;
    if (Look.Contains(TBeaconVisualizationMode::SolidCircle)) Shown += "disc ";
    if (Look.Contains(TBeaconVisualizationMode::SignalDistance)) Shown += "signal ";
    if (IsShown(Upper.Zones[0].Get())) Shown += "zone ";
    if (IsShown(Record.GlobalPath[0].Path.Get())) Shown += "path ";
    if (IsShown(Map.Painter.GetScene()->GetChildAt(Count - 2).Get())) Shown += "raw ";
    if (IsShown(Map.Painter.GetScene()->GetChildAt(Count - 1).Get())) Shown += "path-position ";
    EXPECT_EQ(Shown, C.Shown);
  }
}

TEST(MapPainter, HighlightsTheGivenZonesOnly) {
  TShownMap Map;
  const auto Opacities = [&Map] {
    std::string Result;
    for (const TFencingMap& Floor : Map.Record.Maps)
      for (const TRef<IDesignZone>& Zone : Floor.Zones)
        Result += fmt::format("{} ", dynamic_cast<Scene::ISceneNode&>(*Zone).GetOpacity());
    return Result;
  };
  const std::array Two{Map.Zone("Lobby"), Map.Zone("Workshop")};
  Map.Painter.HighLightZones(Two);
  EXPECT_EQ(Opacities().substr(0, 22), "0.75 0.5 0.5 0.5 0.75 ");
  const TRef<IDesignZone> Kitchen = Map.Zone("Kitchen");
  Map.Painter.HighLightZone(Kitchen);
  EXPECT_EQ(Opacities().substr(0, 21), "0.5 0.5 0.75 0.5 0.5 ");

  // What others have changed meanwhile is set right, also when the same zones are given.
  Map.Painter.HighLightZones({&Kitchen, 1});
  dynamic_cast<Scene::ISceneNode&>(*Map.Zone("Lobby")).SetOpacity(1.0F);
  const auto Added = New<TZone>();
  Added->SetOpacity(0.25F);
  const auto& Moved = dynamic_cast<Scene::ISceneNode&>(*Map.Zone("Workshop"));
  Moved.GetParent()->AddChild(Added);
  Moved.GetParent()->RemoveChild(dynamic_cast<Scene::INode*>(Map.Zone("Workshop").Get()));
  Map.Painter.HighLightZone(Kitchen);
  EXPECT_EQ(Opacities().substr(0, 21), "0.5 0.5 0.75 0.5 0.5 ");
  EXPECT_EQ(Added->GetOpacity(), 0.5F);
  Map.Painter.HighLightZones(Two);
  EXPECT_EQ(Opacities().substr(0, 21), "0.75 0.5 0.5 0.5 0.5 ") << "one is on no map any more";
}

TEST(MapPainter, TurnsFitsAndChangesFloors) {
  TShownMap Map;
  const TRectF Floor = Map.Record.Maps[0].Map->GetGlobalRect();
  const auto ExpectAt = [&Map](TPointF APoint, TPointF AFraction) {
    const TRectF Screen = Map.Control.GetLocalRect();
    const TPointF Seen = Map.OnScreen(APoint);
    EXPECT_NEAR(Seen.X / Screen.Right, AFraction.X, 0.02F);
    EXPECT_NEAR(Seen.Y / Screen.Bottom, AFraction.Y, 0.02F);
  };
  ExpectAt({0, 6}, {0, 0.5F});
  Map.Painter.SetRotation(180);
  ExpectAt({0, 6}, {1, 0.5F});
  Map.Painter.SetRotation(0);
  for (const TPointF Size : {TPointF{300, 300}, TPointF{800, 200}}) {
    Map.Control.Resize(Size.X, Size.Y);
    Map.Control.Update();
    for (const TPointF Corner : {TPointF{Floor.Left, Floor.Top}, {Floor.Right, Floor.Bottom}})
      EXPECT_TRUE(Map.Control.GetLocalRect().Contains(Map.OnScreen(Corner)));
    ExpectAt(Floor.GetCentre(), {0.5F, 0.5F});
  }

  const auto IsShown = [&Map](std::size_t AIndex) {
    return dynamic_cast<Scene::INode&>(*Map.Record.Maps[AIndex].Map)
        .GetMode()
        .Contains({Scene::TMode::Visible, Scene::TMode::Active});
  };
  Map.Painter.SetMapIndex(1);
  EXPECT_TRUE(!IsShown(0) && IsShown(1));
  EXPECT_EQ(Map.Painter.GetProjectInformation().CurrentMapIndex, 1);

  TBeaconFencingMapPainter NotAsked;
  NotAsked.SetXmlData(ExampleText());
  NotAsked.SetMapIndex(0);
  EXPECT_EQ(Raised<EGeneralError>([&] { NotAsked.SetMapIndex(1); }), "1 is not a valid map index");
  NotAsked.SetRotation(90);
  EXPECT_EQ(NotAsked.GetCamera()->GetDisplacement(), (TPointF{10, 6}));
}

TEST(MapPainter, LetsItsControlGoFirst) {
  TBeaconFencingMapPainter Painter;
  {
    TOffscreenControl Control(100, 100);
    Painter.SetControl(&Control);
    Painter.SetXmlData(ExampleText());
  }
  EXPECT_EQ(Painter.GetControl(), nullptr);
  Painter.SetRawPosition({1, 2});
  EXPECT_EQ(Painter.GetRawPosition(), (TPointF{1, 2}));
}

/// Everything that threads read of a record while it is shown.
float ReadAll(const TFencingProject& ARecord) {
  float Sum = 0.0F;
  for (const TPathNodeInfo& Info : ARecord.GlobalPath)
    Sum += Info.Node->GetCenterInGlobalSpace().X + Info.Path->GetPathGlobalPoints()[0].X;
  for (const TFencingMap& Map : ARecord.Maps) {
    Sum += Map.Map->GetGlobalRect().Right;
    Sum += static_cast<float>(Map.GetZonesOverPoint({3, 3}).GetLength());
    for (const TRef<IDesignZone>& Zone : Map.Zones) Sum += Zone->GetGlobalRect().Right;
    for (const TFencingBeacon& Beacon : Map.BeaconList)
      Sum += Beacon.DesignBeacon->GetCenterInGlobalSpace().X;
  }
  return Sum;
}

TEST(MapPainter, LetsThreadsReadRecordsWhileItShowsThemAndWhenItIsGone) {
  auto Map = std::make_unique<TShownMap>();
  const TFencingProject Record = Map->Record;
  const float Expected = ReadAll(Record);
  std::atomic<bool> IsDone = false;
  std::atomic<int> Rounds = 0, Wrong = 0;
  std::thread Reader([&] {
    while (!IsDone || Rounds == 0) {
      Wrong += ReadAll(Record) == Expected ? 0 : 1;
      ++Rounds;
    }
  });
  for (int I = 0; I < 20; ++I) {
    Map->Painter.SetRawPosition({static_cast<float>(I), 5});
    Map->Painter.HighLightZone(Record.Maps[0].Zones[static_cast<std::size_t>(I) % 5]);
    Map->Painter.ChangeBeaconColor(Record.Maps[0].BeaconList[0].DesignBeacon, {0xFF00FF00});
    Record.Maps[0].BeaconList[0].DesignBeacon->SetSignalDistance(static_cast<float>(I));
    Map->Painter.SetMapIndex(I % 2);
    Map->Control.Update();
  }
  Map->Painter.SetXmlData("");
  Map.reset();
  IsDone = true;
  Reader.join();
  EXPECT_EQ(Wrong, 0);
}

}  // namespace
}  // namespace System::Beacon::Fencing
