// Simulated walks: the command that writes them and the source that is one.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <vector>

#include "apps/wayfence/csv.h"
#include "map/project_builder.h"
#include "support/program.h"

namespace Wayfence {
namespace {

using namespace System;
using namespace System::Beacon::Fencing;
using namespace System::Beacon::Fencing::Scene::Beacons;

struct TTrueRow {
  double Seconds = 0.0;
  double X = 0.0;
  double Y = 0.0;
  int Map = 0;
};

class SimulateTest : public ProgramTest {
 protected:
  void WriteFiles() override { OutputOf("project new office.xml"); }

  void WriteWalk(const std::string& AText) const { ReplaceFile(Path("walk.json"), AText); }
  void Simulate(const std::string& AArguments) const {
    OutputOf("simulate " + AArguments + " --overwrite");
  }

  std::vector<TTrueRow> ReadTruth(const std::string& AFile) const {
    TCsvReader Csv(Path(AFile));
    std::vector<TTrueRow> Result;
    while (Csv.Next())
      Result.push_back({Csv.GetNumber("t", 0, 1e6),
                        Csv.GetNumber("x", -1e6, 1e6),
                        Csv.GetNumber("y", -1e6, 1e6),
                        Csv.GetInteger("map", 0, 9)});
    return Result;
  }
  std::string BytesOf(const std::string& AFile) const {
    return ReadWholeFile(Path(AFile), 1 << 24);
  }

  /// Nobody moves faster than that, but from one map to the other.
  static void ExpectSpeed(const std::vector<TTrueRow>& ARows, double ASpeed) {
    constexpr double Rounding = 0.0002;  // metres
    for (std::size_t I = 1; I < ARows.size(); ++I) {
      const TTrueRow& A = ARows[I - 1];
      const TTrueRow& B = ARows[I];
      EXPECT_GT(B.Seconds, A.Seconds);
      if (A.Map == B.Map) {
        EXPECT_LE(std::hypot(B.X - A.X, B.Y - A.Y), ASpeed * (B.Seconds - A.Seconds) + Rounding)
            << B.Seconds;
      }
    }
  }
  static void ExpectRow(const TTrueRow& ARow, double AX, double AY, int AMap) {
    EXPECT_NEAR(ARow.X, AX, 1e-3);
    EXPECT_NEAR(ARow.Y, AY, 1e-3);
    EXPECT_EQ(ARow.Map, AMap);
  }
};

std::size_t LinesOf(const std::string& AText) {
  return static_cast<std::size_t>(std::count(AText.begin(), AText.end(), '\n'));
}

TEST_F(SimulateTest, ExampleWalkClimbsTheStairsAndIsRecorded) {
  Simulate("office.xml office.walk.json -o walk.log");
  const std::vector<TTrueRow> Rows = ReadTruth("walk.truth.csv");
  ASSERT_GT(Rows.size(), 700U);
  EXPECT_EQ(Rows.front().Seconds, 0.0);
  ExpectRow(Rows.front(), 1, 6, 0);
  ExpectRow(Rows.back(), 6.5, 10, 1);
  ExpectSpeed(Rows, 1.2);
  const auto Climbed =
      std::find_if(Rows.begin(), Rows.end(), [](const TTrueRow& ARow) { return ARow.Map == 1; });
  ExpectRow(*(Climbed - 39), 19, 6, 0);  // eight seconds on the stairs, four of them on each map
  ExpectRow(*(Climbed + 39), 19, 6, 1);
  EXPECT_TRUE(std::all_of(Climbed, Rows.end(), [](const TTrueRow& ARow) { return ARow.Map == 1; }));
  const auto Table = [&](double AX, double AY) {
    return std::count_if(Rows.begin(), Rows.end(), [&](const TTrueRow& ARow) {
      return ARow.X == AX && ARow.Y == AY;
    });
  };
  EXPECT_NEAR(static_cast<double>(Table(9.5, 2.5)), 100, 2);  // ten seconds at the meeting table

  // Fourteen beacons, ten times a second or a little less, some of which are not heard.
  const std::size_t Frames = LinesOf(BytesOf("walk.log")) - 1;
  EXPECT_GT(Frames, 14U * 300U);
  EXPECT_LT(Frames, 14U * 755U);
  EXPECT_EQ(LinesOf(OutputOf("scan --source walk.log")), Frames);
}

TEST_F(SimulateTest, SeedDecidesTheRecordingInEveryFormat) {
  Simulate("office.xml office.walk.json -o first.log --seed 5");
  Simulate("office.xml office.walk.json -o again.log --seed 5 --truth truth.csv");
  Simulate("office.xml office.walk.json -o other.log --seed 6");
  Simulate("office.xml office.walk.json -o first.btsnoop --seed 5 --format btsnoop");
  EXPECT_EQ(BytesOf("first.log"), BytesOf("again.log"));
  EXPECT_EQ(BytesOf("first.truth.csv"), BytesOf("truth.csv"));
  EXPECT_NE(BytesOf("first.log"), BytesOf("other.log"));
  EXPECT_EQ(OutputOf("scan --source first.log"), OutputOf("scan --source first.btsnoop"));
}

TEST_F(SimulateTest, SourceIsHeardAsItsRecordingWouldBe) {
  const auto EventsOf = [&](const std::string& ASource) {
    const std::string Output = OutputOf("map office.xml --seed 5 --source " + ASource);
    return Output.substr(Output.find('\n'));  // the first line names the source
  };
  Simulate("office.xml office.walk.json -o walk.log --seed 5");
  const std::string Events = EventsOf("simulate:office.walk.json");
  EXPECT_NE(Events.find(R"("event": "MapChange", "from": 0, "to": 1)"), std::string::npos);
  EXPECT_EQ(EventsOf("log:walk.log"), Events);
}

TEST_F(SimulateTest, RandomWalkStaysOnThePaths) {
  WriteWalk(R"({"speed": 2, "interval": 0.25, "stairs": 3, "random": {"map": 1, "seconds": 900}})");
  Simulate("office.xml walk.json -o walk.log --seed 3");
  const std::vector<TTrueRow> Rows = ReadTruth("walk.truth.csv");
  EXPECT_EQ(Rows.size(), 3601U);
  EXPECT_EQ(Rows.back().Seconds, 900.0);
  EXPECT_EQ(Rows.front().Map, 1);
  ExpectSpeed(Rows, 2.0);
  // Halls along y = 6 with branches straight to rooms, and a slanted one to the reception desk.
  constexpr std::array Doors{std::array{9.5, 12.5, 16.5}, std::array{14.5, 6.5, 4.5}};
  const auto IsOnPath = [&](const TTrueRow& ARow) {
    const auto& Branches = Doors[static_cast<std::size_t>(ARow.Map)];
    return ARow.Y == 6.0 || std::find(Branches.begin(), Branches.end(), ARow.X) != Branches.end() ||
           (ARow.Map == 0 && std::abs(ARow.X - (ARow.Y / 1.5)) < 1e-3 && ARow.Y >= 4.5);
  };
  std::array<int, 2> Counts{};
  for (const TTrueRow& Row : Rows) {
    EXPECT_TRUE(IsOnPath(Row)) << Row.Seconds;
    ++Counts[static_cast<std::size_t>(Row.Map)];
  }
  EXPECT_GT(Counts[0], 100);
  EXPECT_GT(Counts[1], 100);
}

TEST_F(SimulateTest, UnitsOriginsAndPowersOfMapsCount) {
  TProjectBuilder Project("Units");
  TMapBuilder Ground = Project.AddMap("Ground", 2000, 1000);
  TMapBuilder Upper = Project.AddMap("Upper", 2000, 1000);
  for (const TMapBuilder& Map : {Ground, Upper})
    Map.GetMap()->SetMeasureUnits(TMeasureUnits::Centimeters);
  Upper.GetMap()->SetDisplacement({5000, 0});  // beside the other in the plan, above it in truth
  const auto Beacon =
      Upper.AddBeacon("Tag", {1000, 500}, "11111111-1111-1111-1111-111111111111", 1, 1);
  Beacon->SetKindofBeacon(System::Beacon::TKindofBeacon::AltBeacon);
  Describe(*Beacon, "power", "-70");
  Ground.AddPath("G", {{"A", {0, 500}}, {"B", {1000, 500}}});
  Upper.AddPath("U", {{"C", {1000, 500}}, {"D", {2000, 500}}});
  Project.Connect("B", "C");
  Project.Save(Path("units.xml"));
  WriteWalk(R"({"speed": 1, "stairs": 10, "interval": 1,
                "points": [{"map": 0, "x": 200, "y": 500, "wait": 1}, {"node": "D"}],
                "radio": {"shadowing": 0, "fading": 60, "loss": 0, "exponent": 2, "floorLoss": 10, "sensitivity": -127,
                          "floorHeight": 1, "walls": [{"map": 1, "from": [6500, 0],
                                                       "to": [6500, 1000], "loss": 20}]}})");
  Simulate("units.xml walk.json -o walk.log");
  // 1 s of waiting, 2 m back to the nearest node, 10 m, 10 s of stairs, 10 m
  const std::vector<TTrueRow> Rows = ReadTruth("walk.truth.csv");
  ASSERT_EQ(Rows.size(), 34U);
  ExpectRow(Rows.front(), 2, 5, 0);
  ExpectRow(Rows[3], 0, 5, 0);
  ExpectRow(Rows[13], 10, 5, 0);
  ExpectRow(Rows[19], 60, 5, 1);
  ExpectRow(Rows.back(), 70, 5, 1);

  const std::string Heard = OutputOf("scan --source walk.log");
  const auto StrengthAt = [&](std::size_t ALine) {
    std::size_t Begin = 0;
    for (; ALine > 0; --ALine) Begin = Heard.find('\n', Begin) + 1;
    const std::string Line = Heard.substr(Begin, Heard.find('\n', Begin) - Begin);
    EXPECT_NE(Line.find(R"("kind": "AltBeacon")"), std::string::npos) << Line;
    EXPECT_NE(Line.find(R"("txPower": -70)"), std::string::npos) << Line;
    return std::stoi(Line.substr(Line.find(R"("rssi": )") + 8));
  };
  const std::size_t Last = LinesOf(Heard) - 1;
  EXPECT_NEAR(StrengthAt(0), -70 - 10 - 18, 1);  // 8 m away, one floor below
  EXPECT_NEAR(StrengthAt(Last), -70 - 20 - 20, 1);
}

TEST_F(SimulateTest, WalksThatCannotBeTakenAreRefusedWithTheirPlace) {
  struct TCase {
    const char* Walk;
    const char* Message;
  };
  for (const TCase& Case : {
           TCase{"{}", "1: a walk has either points, one at least, or random"},
           {"[]", "1: a walk is an object"},
           {"{\"points\": [],\n\"sped\": 1}", "2: a walk has no member 'sped'; it has speed,"},
           {R"({"speed": 0, "points": [{"node": "Desk"}]})",
            "1: speed of a walk is a number from 0.01 to 100"},
           {R"({"speed": "fast"})", "1: speed of a walk is a number"},
           {R"({"points": {"node": "Desk"}})", "1: points of a walk is an array"},
           {"{\"points\": [{\"node\": \"Desk\"},\n{\"node\": \"Nowhere\"}]}",
            "2: there is no path node 'Nowhere' on a map"},
           {R"({"points": [{"node": "Desk", "x": 1}]})", "1: a point has either node, or map"},
           {R"({"points": [{"x": 1, "y": 1}]})", "1: a point has either node, or map, x and y"},
           {R"({"points": [{"map": 2, "x": 1, "y": 1}]})", "1: there is no map 2; the project has"},
           {R"({"points": [{"map": 0.5, "x": 1, "y": 1}]})", "1: map of a point is a whole number"},
           {R"({"points": [{"node": "Desk"}, {"map": 0, "x": 1, "y": 1}]})",
            "1: the walk is on map 1 and cannot go straight to map 0"},
           {R"({"random": {"map": 0}})", "1: random has no member 'seconds'"},
           {R"({"random": {"map": 7, "seconds": 5}})", "1: there is no map 7"},
           {R"({"points": [{"node": "Desk"}], "random": {"seconds": 5}})", "1: a walk has either"},
           {R"({"points": [{"node": "Desk"}], "radio": {"exponents": 2}})",
            "1: radio has no member 'exponents'; it has exponent, shadowing"},
           {R"({"points": [{"node": "Desk"}], "radio": {"loss": 2}})", "1: loss of radio"},
           {R"({"points": [{"node": "Desk"}], "radio": {"walls": [{"map": 0, "from": [1, 2]}]}})",
            "1: to of a wall is [x, y]"},
           {"{\"points\": [{\"node\": \"Desk\"}], \"radio\": {\"walls\": [\n{\"map\": 2, \"from\": "
            "[1, 2], \"to\": [1, 1]}]}}",
            "2: there is no map 2 for this wall"},
       }) {
    WriteWalk(Case.Walk);
    ExpectRefusal(1,
                  "simulate office.xml walk.json -o walk.log",
                  std::string("wayfence: walk.json:") + Case.Message);
    EXPECT_FALSE(std::filesystem::exists(Path("walk.log"))) << Case.Walk;
  }
  WriteWalk(
      R"({"points": [{"node": "Desk", "wait": 600000}, {"node": "Window", "wait": 600000}]})");
  ExpectRefusal(
      1, "simulate office.xml walk.json -o walk.log", "wayfence: the walk takes more than 7 days");
}

TEST_F(SimulateTest, FilesAndCommandsThatDoNotFitAreRefused) {
  TProjectBuilder Project("Beacons");
  TMapBuilder Map = Project.AddMap("Map", 10, 10);
  Project.Save(Path("none.xml"));
  Map.AddBeacon("B", {1, 1}, "11111111-1111-1111-1111-111111111111", 70000, 1);
  Project.Save(Path("wrong.xml"));
  WriteWalk(R"({"points": [{"map": 0, "x": 1, "y": 1}]})");
  ReplaceFile(Path("there.log"), "");
  for (const auto& [Arguments, Message] :
       {std::pair{"none.xml walk.json -o walk.log", "the project has no beacon"},
        {"wrong.xml walk.json -o walk.log", "the beacon 'B' cannot be simulated: its major"},
        {"office.xml walk.json -o there.log", "there.log: the file is there already"},
        {"office.xml missing.json -o walk.log", "missing.json"}})
    ExpectRefusal(1, std::string("simulate ") + Arguments, std::string("wayfence: ") + Message);
  ExpectRefusal(1,
                "scan --source simulate:walk.json",
                "wayfence: simulate:walk.json: a simulated walk needs");
}

}  // namespace
}  // namespace Wayfence
