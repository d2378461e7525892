// Run files and the pictures of floors in them.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <string>

#include "apps/run_lines.h"
#include "apps/wayfence/floor_picture.h"
#include "platform/files.h"
#include "support/raised.h"

namespace Wayfence {
namespace {

using namespace System;
using namespace System::Beacon::Fencing;
using namespace System::Beacon::Fencing::Scene::Beacons;
namespace Scene = System::Beacon::Fencing::Scene;

constexpr std::uint32_t Red = 0xFFFF0000, Blue = 0xFF0000FF, Green = 0xFF00FF00, White = 0xFFFFFFFF;

/// Two floors, 10 by 5 and 5 by 10, with a zone in the upper left quarter of the first.
TProjectBuilder MakeFloors() {
  TProjectBuilder Result("Floors");
  TMapBuilder Wide = Result.AddMap("Wide", 10, 5), High = Result.AddMap("High", 5, 10);
  Wide.GetMap()->SetFillColor(TAlphaColor{Red});
  High.GetMap()->SetFillColor(TAlphaColor{Blue});
  const auto Zone = Wide.AddZone("Quarter", {0, 0, 5, 2.5F});
  Zone->SetFillColor(TAlphaColor{Green});
  Zone->SetOpacity(1);
  return Result;
}

std::uint32_t PixelAt(const TFloorPicture& APicture, float AX, float AY) {
  const auto [Width, Height] = APicture.Picture->GetSize();
  const TRectF& Rect = APicture.Rect;
  const auto Column =
      static_cast<std::size_t>((AX - Rect.Left) / Rect.GetWidth() * static_cast<float>(Width));
  const auto Row =
      static_cast<std::size_t>((AY - Rect.Top) / Rect.GetHeight() * static_cast<float>(Height));
  return APicture.Picture->GetPixels()[Row * static_cast<std::size_t>(Width) + Column];
}

TEST(FloorPicture, ShowsOneFloorAndLeavesTheSceneAsItWas) {
  const TProjectBuilder Project = MakeFloors();
  Scene::TScene& Floors = *Project.GetScene();
  const TFencingProject Record = ExtractProject(Floors);  // shows the first map, hides the second
  const auto Camera = New<Scene::TCamera>();
  Floors.SetCamera(Camera);
  const TFloorPicture Wide = DrawFloor(Floors, 0, 200);
  EXPECT_EQ(Wide.Picture->GetSize(), (TPictureSize{200, 100}));
  EXPECT_EQ(PixelAt(Wide, 2, 1), Green);
  EXPECT_EQ(PixelAt(Wide, 8, 4), Red);
  EXPECT_EQ(PixelAt(DrawFloor(Floors, 0, 200, {.Shown = {}}), 2, 1), Red);

  const TFloorOptions Framed{.Margin = 1};
  EXPECT_EQ(FloorWidth(Floors, 1, 240, Framed), 140);
  const TFloorPicture High = DrawFloor(Floors, 1, 140, Framed);
  EXPECT_EQ(High.Picture->GetSize(), (TPictureSize{140, 240}));
  EXPECT_EQ(PixelAt(High, 2.5F, 9.5F), Blue);
  EXPECT_EQ(PixelAt(High, -0.5F, -0.5F), White);

  EXPECT_TRUE(IsSame(Floors.GetCamera().Get(), Camera.Get()));
  const auto IsShown = [&](int AMap) {
    return Supports<Scene::INode>(Record.Maps[static_cast<std::size_t>(AMap)].Map)
        ->GetMode()
        .Contains(Scene::TMode::Visible);
  };
  EXPECT_TRUE(IsShown(0));
  EXPECT_FALSE(IsShown(1));
}

TEST(FloorPicture, RefusesWhatCannotBeDrawn) {
  TProjectBuilder Project = MakeFloors();
  Project.AddMap("Flat", 5, 5).GetMap()->SetRect({0, 0, 5, 0});
  struct TCase {
    int Map, Width;
    const char* Message;
  };
  for (const TCase& C : {TCase{3, 10, "there is no map 3; the project has 3"},
                         TCase{-1, 10, "there is no map -1"},
                         TCase{2, 10, "Flat: the map has no area"},
                         TCase{0, 0, "Wide: a picture of 0 x 1 pixels"},
                         TCase{1, 20'000, "High: a picture of 20000 x 40000 pixels is too large"}})
    EXPECT_TRUE(Raised<EGeneralError>([&] {
                  DrawFloor(*Project.GetScene(), C.Map, C.Width);
                }).starts_with(C.Message))
        << C.Message;
}

class RunFileTest : public testing::Test {
 protected:
  void TearDown() override { std::filesystem::remove(File); }

  const std::string File = testing::TempDir() + fmt::format("wayfence-{}.run", getpid());
};

/// A floor with a zone of each kind, and another zone of a name that the first floor has.
TProjectBuilder MakeZones() {
  TProjectBuilder Result("Zones");
  TMapBuilder Ground = Result.AddMap("Ground", 20, 10), Upper = Result.AddMap("Upper", 20, 10);
  TDrawing Drawing(8, 4);
  Ground.SetPicture("ground.png", EncodePng(*Drawing.GetPicture()));
  Ground.AddZone("Hall", {1, 2, 5, 6});
  Ground.AddCircularZone("Till", {10, 5}, 2);
  constexpr std::array<TPointF, 3> Corners{{{12, 1}, {18, 1}, {18, 8}}};
  Ground.AddPathZone("Corner", Corners);
  Ground.AddPath("Way", {{"Door", {1, 1}}, {"Desk", {4, 1}}});
  Upper.AddZone("Hall", {0, 0, 20, 10});
  Upper.AddEddystone("Lamp", {3, 4}, "00112233445566778899", "000000000001");
  return Result;
}

TEST_F(RunFileTest, HoldsTheFloorsAndWhatStandsOnThem) {
  WriteRun(File, MakeZones(), {});
  const TRunRecord Run = ReadRun(File);
  ASSERT_EQ(Run.Maps.size(), 2U);
  EXPECT_TRUE(Run.Maps[0].Picture.starts_with("data:image/png;base64,"));
  EXPECT_LT(Run.Maps[0].PictureRect.Left, 0.0F);
  EXPECT_EQ(Run.Maps[1].Picture, "") << "a floor without a picture of its own";
  ASSERT_EQ(Run.Zones.size(), 4U);
  EXPECT_EQ(Run.Zones[0].Outline, (std::vector<TPointF>{{1, 2}, {5, 2}, {5, 6}, {1, 6}}));
  for (const TPointF& Point : Run.Zones[1].Outline)
    EXPECT_NEAR(std::hypot(Point.X - 10, Point.Y - 5), 2.0, 0.01);
  EXPECT_EQ(Run.Zones[2].Outline, (std::vector<TPointF>{{12, 1}, {18, 1}, {18, 8}}));
  ASSERT_EQ(Run.Edges.size(), 1U);
  EXPECT_EQ(Run.Edges[0].To, (TPointF{4, 1}));
  ASSERT_EQ(Run.Beacons.size(), 1U);
  EXPECT_EQ(Run.Beacons[0].Map, 1);
  EXPECT_EQ(Run.Beacons[0].Identity, "Eddystone 00112233445566778899 000000000001");
}

TEST_F(RunFileTest, GivesSignalsAndTruthToTheirBeaconAndMap) {
  const TProjectBuilder Zones = MakeZones();
  const TFencingProject Project = ExtractProject(*Zones.GetScene());
  TRunWriter Writer(File, *Zones.GetScene(), Project, "a test");
  Writer.Truth(2.0, 1, {3, 4});
  Writer.Signal(1.5, *Project.Maps[1].BeaconList[0].DesignBeacon, -71, -1.0);
  Writer.Signal(1.0, *New<TBeacon>(), -50, 1.0);  // of no map
  Writer.Close();
  const TRunRecord Run = ReadRun(File);
  ASSERT_EQ(Run.Signals.size(), 1U);
  EXPECT_EQ(Run.Signals[0].Rssi, -71);
  ASSERT_EQ(Run.Truth.size(), 1U);
  EXPECT_EQ(Run.Truth[0].Map, 1);
  EXPECT_EQ(Run.End, 2.0);
}

TEST_F(RunFileTest, FindsTheZoneThatAnEventMeans) {
  WriteRun(File,
           MakeZones(),
           {R"({"time": 1, "event": "ZoneEnter", "zone": "Hall"})",
            R"({"time": 2, "event": "MapChange", "from": 0, "to": 1})",
            R"({"time": 3, "event": "ZoneExit", "zone": "Hall"})",
            R"({"time": 4, "event": "ZoneEnter", "zone": "Hall"})",
            R"({"time": 5, "event": "ZoneExit", "zone": "Hall", "map": 1})",
            R"({"time": 6, "event": "ZoneEnter", "zone": "Cellar"})",
            "",
            R"({"time": 7, "event": "Whatever", "zone": 1})"});
  const TRunRecord Run = ReadRun(File);
  std::string Zones;
  for (const TRunRecord::TEvent& Event : Run.Events) Zones += fmt::format("{} ", Event.Zone);
  EXPECT_EQ(Zones, "0 -1 0 3 3 -1 ");
  EXPECT_EQ(Run.End, 7.0);
}

TEST_F(RunFileTest, IsReadUpToALineThatWasInterrupted) {
  WriteRun(File, MakeZones(), {R"({"time": 1, "event": "ZoneEnter", "zone": "Hall"})"});
  const std::string Whole = ReadWholeFile(File, 1 << 20);
  for (const auto& [Rest, Line] :
       {std::pair{"{\"time\": 2, \"ev", 3}, {R"({"time": 1, "event": "X"})", 0}}) {
    const TRunRecord Run = ParseRun(Whole + Rest, File);
    EXPECT_EQ(Run.TornLine, Line);
    EXPECT_EQ(Run.Events.size(), 1U);
  }
}

TEST_F(RunFileTest, IsNotMadeOfWhatCannotBeReadAgain) {
  ReplaceFile(File, "an earlier run");
  for (const auto& [Name, Right, Message] :
       {std::tuple{std::string(MaxRunNameSize, '\x01'), 5.0F, ""},
        {std::string(MaxRunNameSize + 1, 'a'), 5.0F, "the name 'aaaa"},
        {std::string("far"), 2e7F, "something of the project lies at 20000000; a"}}) {
    TProjectBuilder Project("Bounds");
    TMapBuilder Map = Project.AddMap("Map", 10, 10);
    Map.AddZone(Name, {0, 0, Right, 5});
    Map.AddBeacon("B", {1, 1}, "11111111-1111-1111-1111-111111111111", 2'000'000'000, 1);
    const TFencingProject Record = ExtractProject(*Project.GetScene());
    const auto Write = [&] { TRunWriter(File, *Project.GetScene(), Record, "a test").Close(); };
    if (*Message == '\0') {
      Write();
      EXPECT_EQ(ReadRun(File).Zones[0].Name, Name);
    } else {
      const std::string Before = ReadWholeFile(File, 1 << 20);
      EXPECT_TRUE(Raised<EGeneralError>(Write).starts_with(Message)) << Message;
      EXPECT_EQ(ReadWholeFile(File, 1 << 20), Before);
    }
  }
}

TEST_F(RunFileTest, RefusesWhatIsDamagedWithItsPlace) {
  WriteRun(File, MakeZones(), {});
  const std::string Header = ReadWholeFile(File, 1 << 20);
  const auto Changed = [&](const std::string& AFrom, const std::string& ATo) {
    std::string Result = Header;
    return Result.replace(Result.find(AFrom), AFrom.size(), ATo);
  };
  struct TCase {
    std::string Text;
    std::string Message;
  };
  for (const TCase& C :
       {TCase{"", ":1: this is no JSON"},
        TCase{"[1]", ":1: this is no JSON object"},
        TCase{Changed("\"run\": 1", "\"run\": 2"), ":1: this is no run file that is understood"},
        TCase{Changed("data:image", "http://x"), ":1: 'picture' is no PNG picture"},
        TCase{Changed(";base64,", ";base64,AAAA"), ":1: "},
        TCase{Changed("\"Meters\"", "\"Miles\""), ":1: 'units' is not Centimeters"},
        TCase{Changed("\"map\": 0", "\"map\": 2"), ":1: 'map' is no number from 0 to 1"},
        TCase{Changed("[1.000, 2.000]", "[1.000]"), ":1: 'outline' is not [x, y]"},
        TCase{Changed("[1.000, 2.000]", "[1e99, 0]"), ":1: 'outline' holds what is no coordinate"},
        TCase{Header + "{\"time\": 1,\n", ":2: this is no JSON"},
        TCase{Header + R"({"event": "Signal"})", ":2: 'time' is missing"},
        TCase{Header + R"({"time": -1, "event": "Signal"})", ":2: 'time' is no number from 0"},
        TCase{Header + R"({"time": 1, "event": "Signal", "beacon": 1, "rssi": -60})",
              ":2: 'beacon' is no number from 0 to 0"},
        TCase{Header + R"({"time": 1, "event": "Signal", "beacon": 0, "rssi": -60.5})",
              ":2: 'rssi' is no whole number"},
        TCase{Header + "\n" + R"({"time": 1, "event": "Position", "map": 0, "x": "1", "y": 0})",
              ":3: 'x' holds what is no coordinate"},
        TCase{Header + "{\"time\": 1" + std::string(MaxRunLineSize, ' '),
              ":2: the line is longer"}}) {
    ReplaceFile(File, C.Text);
    const std::string Message = Raised<EFileError>([&] { ReadRun(File); });
    EXPECT_TRUE(Message.starts_with(File + C.Message)) << C.Message << " is not " << Message;
  }
}

}  // namespace
}  // namespace Wayfence
