// wayfence evaluate with a project, and its parts.
#include <nlohmann/json.hpp>
#include <sstream>

#include "apps/wayfence/floor_changes.h"
#include "apps/wayfence/zone_stays.h"
#include "platform/drawing.h"
#include "support/fake_beacon.h"
#include "support/fake_design.h"
#include "support/program.h"

namespace Wayfence {
namespace {

using namespace System;
using namespace System::Beacon;
using namespace System::Beacon::Fencing;

/// The example project, its walk and a recording of it.
class EvaluateProject : public ProgramTest {
 protected:
  void WriteFiles() override {
    OutputOf("project new office.xml");
    OutputOf("simulate office.xml office.walk.json -o walk.log");
  }
  static constexpr const char* Files = "evaluate office.xml --source walk.log --truth ";

  nlohmann::json ResultOf(const std::string& AArguments) const {
    return nlohmann::json::parse(OutputOf(Files + AArguments + " --json"));
  }
};

TEST_F(EvaluateProject, TellsTheSameOfAWalkEveryTime) {
  const std::string Arguments = std::string(Files) + "walk.truth.csv --json --picture ";
  const std::string Output = OutputOf(Arguments + "first.png");
  EXPECT_EQ(OutputOf(Arguments + "second.png"), Output);
  const std::string Picture = ReadWholeFile(Path("first.png"), 1 << 24);
  EXPECT_EQ(ReadWholeFile(Path("second.png"), 1 << 24), Picture);
  const auto [Width, Height] = ReadPictureSize(Picture, "first.png");
  EXPECT_GT(Width, 1600);  // two floors beside each other
  EXPECT_LT(Height, Width);

  const auto Result = nlohmann::json::parse(Output);
  EXPECT_GE(Result["estimates"], 140);
  EXPECT_GT(Result["onRightMap"], 0.9);
  EXPECT_LT(Result["path"]["median"], 6.0);
  EXPECT_EQ(Result["floors"]["changes"], 1);
  EXPECT_EQ(Result["zones"]["stays"], 4);
  EXPECT_FALSE(Result.contains("arrivals"));
  EXPECT_TRUE(ResultOf("walk.truth.csv --route Bookshelf")["arrivals"].is_array());
}

/// A clock that was set, a damaged time: the last advertisement comes 54 years after the others.
TEST_F(EvaluateProject, PassesOverALongSilence) {
  const std::string Walk = ReadWholeFile(Path("walk.log"), 1 << 24);
  const TPayload Last = iBeaconPayload(TestGUID, 1, 1);
  ReplaceFile(Path("walk.log"), Walk + LogLine(1000, 1, -60, Last));
  ReplaceFile(Path("jump.log"), Walk + LogLine(1.7e9, 1, -60, Last));
  std::vector<std::string> Recordings{"jump.log"};
#ifdef WAYFENCE_HAS_PCAP
  OutputOf("record jump.pcap --source jump.log --format pcap");
  Recordings.emplace_back("jump.pcap");
#endif
  const std::string Expected = OutputOf(std::string(Files) + "walk.truth.csv");
  for (const std::string& Recording : Recordings) {
    const TOutcome Outcome =
        Run("evaluate office.xml --truth walk.truth.csv --source " + Recording);
    EXPECT_EQ(Outcome.Output, Expected) << Recording;
    EXPECT_EQ(
        Outcome.Messages,
        "wayfence: the recording is silent for 472222.2 hours after 80.885 s; that was passed "
        "over\n");
    const std::string Map = OutputOf("map office.xml --source " + Recording);
    EXPECT_NE(Map.find("{\"time\": 1699999999.998, \"event\": \"Finished\""), std::string::npos);
    EXPECT_EQ(OutputOf("map office.xml --source " + Recording), Map);
  }
}

TEST_F(EvaluateProject, SaysWhyNothingComesOfARun) {
  ReplaceFile(Path("other.log"), LogLine(0, 9, -60, iBeaconPayload(TGUID(), 1, 1)));
  ReplaceFile(Path("eight.json"), R"({"ParticleFilterOptions": {"BeaconsToUse": 8}})");
  const std::string Project = ReadWholeFile(Path("office.xml"), 1 << 24);
  std::string Lost = Project;
  Lost.replace(Lost.find("\"ground.png\""), 12, "\"lost.png\"");
  ReplaceFile(Path("lost.xml"), Lost);
  struct TCase {
    const char* Arguments;
    const char* Message;
  };
  for (const TCase& C :
       {TCase{"office.xml --source walk.log", ""},
        TCase{"office.xml --source other.log", "none of the 1 advertisements came from a beacon"},
        TCase{"office.xml --source walk.log --component eight.json",
              "a position takes 8 beacons (BeaconsToUse), and fewer are used for positions here: "
              "'Upper floor' has 7\n"},
        TCase{"lost.xml --source walk.log",
              "Ground floor: its picture 'ground.png' is not in the bundle; add the file\n"}})
    for (const char* Command : {"map ", "evaluate --truth walk.truth.csv "}) {
      const TOutcome Outcome = Run(std::string(Command) + C.Arguments);
      EXPECT_EQ(Outcome.ExitCode, 0);
      const std::string Expected = *C.Message ? std::string("wayfence: ") + C.Message : "";
      EXPECT_EQ(Outcome.Messages.substr(0, Expected.size()), Expected) << Command << C.Arguments;
      EXPECT_EQ(Outcome.Messages.empty(), Expected.empty()) << Outcome.Messages;
    }
}

/// The truth is another one: always upstairs, among the books.
TEST_F(EvaluateProject, TellsOfWhatIsWrong) {
  ReplaceFile(Path("truth.csv"), "t,x,y,map\n0,6.5,10,1\n0.5,6.5,10,1\n9,6.5,10,1\n");
  const auto Result = ResultOf("truth.csv");
  EXPECT_EQ(Result["onRightMap"], 0.0);
  EXPECT_TRUE(Result["raw"]["median"].is_null());
  EXPECT_EQ(Result["zones"]["missedStays"],
            nlohmann::json::parse(R"([{"zone": "Library", "begin": 0.0, "end": 9.0}])"));
  EXPECT_GT(Result["zones"]["false"], 0);
}

TEST_F(EvaluateProject, RefusesWhatDoesNotBelongTogether) {
  ReplaceFile(Path("truth.csv"), "t,x,y,map\n0,1,1,0\n1,1,1,2\n");
  struct TCase {
    int ExitCode;
    const char* Arguments;
    const char* Message;
  };
  for (const TCase& C :
       {TCase{1, "office.xml --source walk.log", "wayfence: truth.csv: map 2 at 1.000 s is not in"},
        TCase{1, "office.xml --source bluez", "wayfence: bluez: nobody knows where a radio is"},
        TCase{1, "office.xml --source walk.log --route Moon", "wayfence: "},
        TCase{2, "--source walk.log", "PROJECT or --beacons is required"},
        TCase{2, "--source walk.log --beacons b.csv", "--beacons requires --size"},
        TCase{2, "office.xml --source walk.log --spc 1", "--spc requires --beacons"},
        TCase{2, "office.xml --source walk.log --beacons b.csv --size 1x1", "PROJECT excludes"}})
    ExpectRefusal(C.ExitCode, std::string("evaluate --truth truth.csv ") + C.Arguments, C.Message);
}

// ---------------------------------------------------------------- parts

TEST(FloorChanges, AreShownInTimeOrLateOrNever) {
  const TTruth Truth({{0, {}, 0}, {10, {}, 1}, {20, {}, 0}, {30, {}, 2}, {40, {}, 1}});
  const auto Changes = FindFloorChanges(Truth, {{-1, 0}, {12, 1}, {19, 0}, {31, 1}});
  std::string Delays;
  for (const TFloorChange& Change : Changes)
    Delays += fmt::format(
        "{}>{}:{} ", Change.From, Change.To, Change.Delay ? std::to_string(*Change.Delay) : "-");
  EXPECT_EQ(Delays, "0>1:2.000000 1>0:0.000000 0>2:- 2>1:0.000000 ");
}

/// "begin-end begin-" as stays; without an end it has none.
std::vector<TStay> StaysOf(const std::string& AText) {
  std::istringstream Text(AText);
  std::vector<TStay> Result;
  for (std::string Word; Text >> Word;) {
    const std::size_t Dash = Word.find('-');
    Result.push_back({std::stod(Word)});
    if (Dash + 1 < Word.size()) Result.back().End = std::stod(Word.substr(Dash + 1));
  }
  return Result;
}

TEST(ZoneStays, AreThoseInsideTheZoneOnItsMap) {
  const TFakeDesignZone Zone("Lobby", {0, 0, 300, 300});  // centimetres
  const TTruth Truth({{0, {1, 1}, 0},
                      {1, {2, 2}, 0},
                      {2, {4, 4}, 0},
                      {3, {2, 2}, 1},
                      {4, {1, 1}, 0},
                      {9, {2, 2}, 0}});
  EXPECT_EQ(FindStays(Truth, Zone, 0, 100), StaysOf("0-1 4-9"));
}

TEST(ZoneStays, AreMissedLateOrFalse) {
  struct TCase {
    const char* True;
    const char* Reported;
    const char* Figures;  // stays, missed, late, false; delays of entries and exits
  };
  for (const TCase& C :
       {TCase{"10-20", "12-23", "1 0 0 0 / 2 / 3"},
        TCase{"10-20", "7-12 14-", "1 0 0 0 / -3 /"},       // early, and never left
        TCase{"10-20", "4-30", "1 1 0 1 / /"},              // too early to mean this stay
        TCase{"10-20", "7-9", "1 1 0 0 / /"},               // over before it began
        TCase{"10-20", "16-24", "1 0 1 0 / 6 / 4"},         // late
        TCase{"10-20", "25-26", "1 0 1 0 / 15 / 6"},        // within the tolerance of its end
        TCase{"10-20", "25.5-26", "1 1 0 1 / /"},           // and beyond it
        TCase{"10-15", "", "0 0 0 0 / /"},                  // too short to be missed
        TCase{"10-15", "11-12", "0 0 0 0 / /"},             // which makes no entry false
        TCase{"10-20 22-30", "10-31", "2 1 0 0 / 0 / 11"},  // the second one was not told
        TCase{"10-20 22-30", "10-21.5 21.5-31", "2 0 0 0 / 0 -0.5 / 1.5 1"}}) {
    TZoneFigures Figures;
    JudgeZone("Lobby", StaysOf(C.True), StaysOf(C.Reported), 5.0, Figures);
    std::string Text = fmt::format(
        "{} {} {} {} /", Figures.Stays, Figures.Missed.size(), Figures.Late, Figures.False);
    for (const double Delay : Figures.EntryDelays) Text += fmt::format(" {:g}", Delay);
    Text += " /";
    for (const double Delay : Figures.ExitDelays) Text += fmt::format(" {:g}", Delay);
    EXPECT_EQ(Text, C.Figures) << C.True << " told as " << C.Reported;
  }
}

}  // namespace
}  // namespace Wayfence
