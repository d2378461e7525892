#include <cmath>
#include <nlohmann/json.hpp>

#include "apps/wayfence/baselines.h"
#include "apps/wayfence/position_errors.h"
#include "apps/wayfence/power_source.h"
#include "apps/wayfence/truth.h"
#include "support/fake_beacon.h"
#include "support/program.h"

namespace Wayfence {
namespace {

using namespace System;
using namespace System::Beacon;

/// Beside a recording of a device that stands at (3, 4) among beacons in the corners of a square
/// of 10 m, between the 100th and the 130th second. The frames of a fifth beacon carry no power.
class Evaluate : public ProgramTest {
 protected:
  static constexpr const char* Files =
      "evaluate --beacons beacons.csv --source stand.log --truth truth.csv --size 10x10 ";

  void WriteFiles() override {
    ReplaceFile(Path("beacons.csv"),
                "name,x,y,map,kind,uuid,major,minor,namespace,instance,power\r\n"
                "\"north, \"\"west\"\"\",0,0,2,iBeacon,2F234454-CF6D-4A0F-ADF2-F4911BA9FFA6,1,1,,,"
                "-20\n\n"
                "b,10,0,2,AltBeacon,{2f234454-cf6d-4a0f-adf2-f4911ba9ffa6},1,2,,,-59\n"
                "c, 0 ,10,2,eddystone,,,,00000000000000000000,000000000001,-59\n"
                "d,10,10,2,,2F234454-CF6D-4A0F-ADF2-F4911BA9FFA6,1,4,,,-59\n"
                "e,3,4,2,iBeacon,2F234454-CF6D-4A0F-ADF2-F4911BA9FFA6,1,4,,,-59\n"
                "f,3,4,3,iBeacon,2F234454-CF6D-4A0F-ADF2-F4911BA9FFA6,1,5,,,-59\n"
                "g,5,5,2,iBeacon,2F234454-CF6D-4A0F-ADF2-F4911BA9FFA6,1,7,,,\n");
    WriteTruth(100, 130);
    ReplaceFile(Path("stand.log"), Recording(100, 130));
  }

  void WriteTruth(int ABegin, int AEnd) const {
    std::string Text = "t,x,y,map\n";
    for (double Seconds = ABegin; Seconds < AEnd; Seconds += 0.5)
      Text += fmt::format("{},3,4,2\n", Seconds);
    ReplaceFile(Path("truth.csv"), Text);
  }

  /// Where they have powers, those of b, c and d are -59 dBm at 1 m.
  static std::string Recording(int ABegin, int AEnd, bool AHasPowers = true) {
    const TEddystoneUID UID{{}, {0, 0, 0, 0, 0, 1}};
    const int Power = AHasPowers ? -59 : 127, PowerAtZero = AHasPowers ? -18 : 127;
    std::string Text;
    for (double Seconds = ABegin; Seconds < AEnd; Seconds += 0.5)
      Text += LogLine(Seconds, 1, RssiAt(0, 0), iBeaconPayload(TestGUID, 1, 1)) +
              LogLine(Seconds, 2, RssiAt(10, 0), AltBeaconPayload(0x118, TestGUID, 1, 2, Power)) +
              LogLine(Seconds, 3, RssiAt(0, 10), EddystoneUIDPayload(UID, PowerAtZero)) +
              LogLine(Seconds, 4, RssiAt(10, 10), iBeaconPayload(TestGUID, 1, 4, Power)) +
              LogLine(Seconds, 7, RssiAt(5, 5), iBeaconPayload(TestGUID, 1, 7, 127));
    return Text;
  }

  nlohmann::json ResultOf(const std::string& AArguments) const {
    return nlohmann::json::parse(OutputOf(Files + AArguments + " --json"));
  }

 private:
  /// Of a beacon with a power of -59 dBm, at (3, 4).
  static int RssiAt(double AX, double AY) {
    return static_cast<int>(std::lround(-59 - 20 * std::log10(std::hypot(AX - 3, AY - 4))));
  }
};

TEST_F(Evaluate, TellsHowFarPositionsAreOffAlikeEveryTime) {
  const std::string Arguments = std::string(Files) + "--json";
  const TOutcome Outcome = Run(Arguments);
  EXPECT_EQ(Outcome.ExitCode, 0);
  EXPECT_EQ(
      Outcome.Messages,
      "wayfence: beacons.csv:7: 1 beacon with the identity of one above; the first one counts\n"
      "wayfence: beacons.csv: 1 beacon left out, not on map 2 as the first one is\n"
      "wayfence: 60 frames without a power left out; the beacon file can give it\n");
  EXPECT_EQ(OutputOf(Arguments), Outcome.Output);
  EXPECT_NE(OutputOf(Arguments + " --seed 2"), Outcome.Output);

  const auto Result = nlohmann::json::parse(Outcome.Output);
  EXPECT_GE(Result["estimates"], 50);
  EXPECT_EQ(Result.size(), 6U);
  for (const char* Name : {"raw", "reported", "nearest", "centroid", "leastSquares"}) {
    const auto& Errors = Result[Name];
    ASSERT_EQ(Errors.size(), 6U) << Name;
    double Previous = 0.0;
    for (const char* Figure : {"median", "p75", "p90", "p95", "max"}) {
      EXPECT_LE(Previous, Errors[Figure]) << Name << " " << Figure;
      Previous = Errors[Figure];
    }
    EXPECT_LE(Errors["mean"], Errors["max"]) << Name;
  }
  EXPECT_EQ(Result["nearest"]["max"], 5.0);
  EXPECT_LT(Result["leastSquares"]["max"], 0.3);
  EXPECT_LT(Result["raw"]["median"], 2.0);
  EXPECT_NE(OutputOf(Files).find(" estimates, errors in metres\n"), std::string::npos);
}

TEST_F(Evaluate, SettingsReachTheEstimator) {
  ReplaceFile(Path("slow.json"), R"({ "UpdateInterval": 1000 })");
  ReplaceFile(Path("many.json"), "{ \"beaconstouse\": 5 } // more than have a distance");
  const int Estimates = ResultOf("")["estimates"];
  EXPECT_NEAR(int{ResultOf("--interval 1000")["estimates"]}, Estimates / 2.0, 2);
  EXPECT_NEAR(int{ResultOf("--options slow.json")["estimates"]}, Estimates / 2.0, 2);
  EXPECT_NEAR(int{ResultOf("--options slow.json --interval 500")["estimates"]}, Estimates, 2);
  const auto None = ResultOf("--options many.json");
  EXPECT_EQ(None["estimates"], 0);
  EXPECT_TRUE(None["raw"]["median"].is_null());
  EXPECT_NE(
      Run(std::string(Files) + "--options many.json")
          .Messages.find(
              "wayfence: no estimate: never were 5 listed beacons with a known distance heard at "
              "once\n"),
      std::string::npos);
}

TEST_F(Evaluate, APowerOfTheListServesWhereTheFrameHasNone) {
  const TOutcome Full = Run(Files);
  ReplaceFile(Path("stand.log"), Recording(100, 130, false));
  const TOutcome Bare = Run(Files);
  EXPECT_EQ(Bare.Output, Full.Output);
  EXPECT_EQ(Bare.Messages, Full.Messages);
}

TEST_F(Evaluate, DistancesAreKeptUntilTheDeathTime) {
  WriteTruth(100, 230);
  ReplaceFile(Path("stand.log"), Recording(100, 110) + Recording(220, 230));
  const int Estimates = ResultOf("")["estimates"];
  EXPECT_NEAR(int{ResultOf("--death-time 15")["estimates"]}, Estimates + 20, 2);
  EXPECT_NEAR(int{ResultOf("--death-time 100")["estimates"]}, Estimates + 190, 2);
}

TEST_F(Evaluate, AGapOfYearsIsPassedOver) {
  ReplaceFile(Path("stand.log"),
              LogLine(0, 9, -60, iBeaconPayload(TestGUID, 1, 1)) +
                  ReadWholeFile(Path("stand.log"), 1 << 20) +
                  LogLine(2e9, 9, -60, iBeaconPayload(TestGUID, 1, 1)));
  EXPECT_GE(ResultOf("")["estimates"], 50);
}

TEST_F(Evaluate, BeaconFilesAreRefusedWithThePlace) {
  struct TCase {
    const char* Text;
    const char* Message;
  };
  for (const TCase& C :
       {TCase{"\n\n", "3: the file is empty; its first line names the columns"},
        TCase{"x,y\n", "2: there is no beacon in this file"},
        TCase{"x,y,x\n", "1: column x is there twice"},
        TCase{"x,uuid\n", "1: there is no column y; there are x, uuid"},
        TCase{"x,y,uuid\n\n1,2\n", "3: 2 fields where the first line names 3 columns"},
        TCase{"x,y,uuid\n1,2,\"a\n\nb", "2: the closing quote of a field is missing"},
        TCase{"x,y,uuid\n1,\"2\n\"\n", "2: 2 fields where the first"},
        TCase{"x,y,uuid\n1,2,\"a\"b", "2: a comma or the end of the line is expected after"},
        TCase{"x,y\n1,2m\n", "2: y: '2m' is no number from -100000 to 100000"},
        TCase{"x,y\n1,1e9\n", "2: y: '1e9' is no number from -100000 to 100000"},
        TCase{"x,y,uuid\n1,2,abc\n", "2: uuid: 'abc' is no UUID"},
        TCase{"x,y,uuid,major\n1,2,2F234454-CF6D-4A0F-ADF2-F4911BA9FFA6,65536\n",
              "2: major: '65536' is no whole number from 0 to 65535"},
        TCase{"x,y,kind\n1,2,Wifi\n", "2: kind: 'Wifi' is none of iBeacon, AltBeacon"},
        TCase{"x,y,kind,power\n1,2,Eddystone,86\n",
              "2: power: '86' is no whole number from -127 to 85"},
        TCase{"x,y,kind,namespace\n1,2,Eddystone,00112233445566778899\n",
              "2: instance: '' does not have 12 hexadecimal digits"}}) {
    ReplaceFile(Path("beacons.csv"), C.Text);
    ExpectRefusal(1, Files, fmt::format("wayfence: beacons.csv:{}", C.Message));
  }
}

TEST_F(Evaluate, OtherRefusalsNameWhatIsWrong) {
  ReplaceFile(Path("plain.csv"),
              "x,y,uuid,major,minor\n1,2,2F234454-CF6D-4A0F-ADF2-F4911BA9FFA6,1,1\n");
  ReplaceFile(Path("notime.csv"), "x,y\n1,2\n");
  ReplaceFile(Path("bare.csv"), "0,1,1,0\n1,1,2,0\n");
  ReplaceFile(Path("other.csv"), "t;x;y\n0;1;1\n");
  ReplaceFile(Path("back.csv"), "t,x,y\n1,2,3\n0.9,2,3\n");
  ReplaceFile(Path("bad.json"), "{\n\"Beacons\": 3\n}");
  ReplaceFile(Path("text.json"), "3");
  struct TCase {
    int ExitCode;
    const char* Arguments;
    const char* Message;
  };
  const auto WithTheRest = [](std::string AArguments) {
    for (const std::string Needed : {"--truth truth.csv", "--source stand.log", "--size 10x10"})
      if (AArguments.find(Needed.substr(0, Needed.find(' '))) == std::string::npos)
        AArguments += " " + Needed;
    return "evaluate --beacons plain.csv " + AArguments;
  };
  for (const TCase& C :
       {TCase{
            1, "--truth missing.csv", "wayfence: missing.csv: the file cannot be opened: No such"},
        TCase{1, "--truth notime.csv", "wayfence: notime.csv:1: there is no column t; there are x"},
        TCase{1,
              "--truth bare.csv",
              "wayfence: bare.csv:1: column 1 is there twice; the first line has to name"},
        TCase{1,
              "--truth other.csv",
              "wayfence: other.csv:1: there is no column t; there are t;x;y; commas separate"},
        TCase{1, "--truth back.csv", "wayfence: back.csv:3: t: '0.9' is earlier than the row"},
        TCase{
            1, "--options bad.json", "wayfence: bad.json:2: ParticleFilterOptions.Beacons: there"},
        TCase{1, "--options text.json", "wayfence: text.json:1: ParticleFilterOptions: an object"},
        TCase{1, "--source bluez", "wayfence: bluez: nobody knows where a radio is"},
        TCase{2, "--size 10", "--size: '10' is not WIDTHxHEIGHT in metres"},
        TCase{2, "--size 10x", "--size: '10x' is not"},
        TCase{2, "--size 10x10m", "--size: '10x10m' is not"},
        TCase{2, "--size 0x10", "--size: '0x10': width and height are above 0"},
        TCase{2, "--size 10x-1", "--size: '10x-1': width and height"},
        TCase{2, "--size axb", "--size: 'axb' is not"},
        TCase{2, "--interval 0", "--interval: '0' is no whole number from 1"},
        TCase{2, "--spc nan", "--spc: 'nan' is no number from 0 to 10"},
        TCase{2, "--skip -1", "--skip: '-1' is no number from 0"}})
    ExpectRefusal(C.ExitCode, WithTheRest(C.Arguments), C.Message);
  ExpectRefusal(2, "evaluate --beacons beacons.csv", "--source is required");
  ExpectRefusal(1,
                std::string(Files) + "--options text.json",
                "wayfence: beacons.csv:7: 1 beacon with the identity of one above; the first one "
                "counts\n");
}

// ---------------------------------------------------------------- parts

TEST(Truth, LiesOnALineBetweenTwoRowsButNeverAcrossAJump) {
  const TTruth Truth({{10, {0, 0}, 0},
                      {11, {1, 0}, 0},
                      {12, {2, 0}, 0},
                      {17, {4, 0}, 0},     // slowly, and no pause among such rows: a walk
                      {40, {4.2F, 0}, 0},  // a pause, but it stays
                      {70, {8, 0}, 0},     // a pause
                      {71, {8, 0}, 0},
                      {71.25, {8.25F, 0}, 0},
                      {71.5, {9.5F, 0}, 0},  // too fast
                      {71.75, {9.5F, 0}, 1}});
  constexpr double None = -1.0;
  struct TCase {
    double Seconds;
    double Skip;
    double X;
  };
  for (const TCase& C : {TCase{8.9, 0, None},
                         TCase{9.5, 3, 0},
                         TCase{10.25, 3, 0.25},
                         TCase{12.5, 3, 2.2},
                         TCase{14, 3, None},
                         TCase{16.5, 3, 3.8},
                         TCase{40.5, 3, 4.2},
                         TCase{55, 0, None},
                         TCase{69.5, 0, 8},
                         TCase{69.5, 1, None},
                         TCase{70.5, 1, None},
                         TCase{71, 1, 8},
                         TCase{71.35, 1, 8.25},
                         TCase{71.45, 0, 9.5},
                         TCase{71.5, 1, None},
                         TCase{71.6, 0, 9.5},
                         TCase{71.7, 0, None},
                         TCase{72, 0, None}}) {
    const auto Place = Truth.GetPlace(C.Seconds, 0, C.Skip);
    EXPECT_NEAR(Place ? Place->X : None, C.X, 1e-5) << C.Seconds << " skip " << C.Skip;
  }
}

TEST(PowerSource, ChangesNothingButAPowerThatIsMissing) {
  const TEddystoneUID UID{{}, {0, 0, 0, 0, 0, 1}};
  const auto Listed = [&](TKindofBeacon AKind, std::uint16_t AMinor, int APower) {
    TListedBeacon::TRow Row;
    Row.Kind = AKind;
    Row.GUID = TestGUID;
    Row.Minor = AMinor;
    Row.UID = UID;
    Row.Power = APower;
    return New<TListedBeacon>(Row, 0);
  };
  const auto Joined = [](TPayload A, const TPayload& B) {
    A.insert(A.end(), B.begin(), B.end());
    return A;
  };
  const TPayload Bare = iBeaconPayload(TestGUID, 0, 1, NoPower);
  const TPayload Full = iBeaconPayload(TestGUID, 0, 1, -70);
  const TPayload CutShort(Bare.begin(), Bare.end() - 1);
  struct TCase {
    TPayload Given, Passed;
  };
  std::vector<TCase> Cases{{Joined({2, 1, 6}, Bare), Joined({2, 1, 6}, Full)},
                           {Joined(Bare, AltBeaconPayload(0x118, TestGUID, 0, 3, NoPower)),
                            Joined(Full, AltBeaconPayload(0x118, TestGUID, 0, 3, -100))},
                           {EddystoneUIDPayload(UID, NoPower), EddystoneUIDPayload(UID, 126)},
                           {Joined(Bare, CutShort), Joined(Full, CutShort)}};
  for (const TPayload& Kept : {iBeaconPayload(TestGUID, 0, 1, -20),
                               iBeaconPayload(TestGUID, 0, 2, NoPower),
                               EddystoneTLMPayload(3000),
                               CutShort,
                               Joined(Bare, TPayload(MaxPayloadSize)),
                               TPayload{}})
    Cases.push_back({Kept, Kept});
  std::vector<TSourceStep> Steps(Cases.size());
  for (std::size_t I = 0; I < Cases.size(); ++I) Steps[I].Payload = Cases[I].Given;
  TPowerSource Source(New<TScriptedSource>(Steps),
                      {Listed(TKindofBeacon::iBeacon, 1, -70),
                       Listed(TKindofBeacon::iBeacon, 2, NoPower),
                       Listed(TKindofBeacon::AltBeacon, 3, -100),
                       Listed(TKindofBeacon::Eddystone, 0, 85)});
  Source.Open();
  TAdvertisement Advertisement;
  for (const TCase& C : Cases) {
    ASSERT_EQ(Source.Next(Advertisement, NoDeadline), TSourceResult::Advertisement);
    EXPECT_EQ(BytesToHex(Advertisement.Payload), BytesToHex(C.Passed));
  }
}

TEST(Baselines, HearTheMeanOfTheTwoSecondsBeforeTheLastStrength) {
  TStrengthLog Log({{1, 0}, {2, 0}}, 0.5);
  Log.Add(10, 0, 99);
  Log.Add(12, 0, 20);
  Log.Add(12.5, 1, 10);
  Log.Add(13.9, 0, 40);
  Log.Add(20, 0, 0);
  EXPECT_TRUE(Log.GetHeard(9.9).empty());
  const THeardBeacons Heard = Log.GetHeard(19);
  ASSERT_EQ(Heard.size(), 2U);
  EXPECT_EQ(Heard[0].Place, (TPointF{2, 0}));
  EXPECT_NEAR(Heard[0].Distance, std::sqrt(10.0), 1e-12);
  EXPECT_NEAR(Heard[1].Distance, std::pow(10.0, 1.5), 1e-9);
  EXPECT_EQ(Log.GetHeard(20).size(), 1U);
}

TEST(Baselines, FindThePlace) {
  const TRectF Area{0, 0, 10, 10};
  const auto HeardFrom = [](TPointF APlace, std::vector<TPointF> ABeacons) {
    THeardBeacons Result;
    for (const TPointF Beacon : ABeacons)
      Result.push_back({Beacon, std::hypot(Beacon.X - APlace.X, Beacon.Y - APlace.Y)});
    return Result;
  };
  const std::vector<TPointF> Corners{{0, 0}, {0, 10}, {10, 0}, {10, 10}};
  for (const TPointF Place : {TPointF{3, 4}, TPointF{1, 0}, TPointF{9, 2}, TPointF{5, 5}}) {
    const TPointF Found = LeastSquaresPlace(HeardFrom(Place, Corners), Area);
    EXPECT_NEAR(std::hypot(Found.X - Place.X, Found.Y - Place.Y), 0, 1e-3) << Place.X;
  }
  EXPECT_EQ(LeastSquaresPlace(HeardFrom({20, 20}, Corners), Area), (TPointF{10, 10}));
  const THeardBeacons Line{{{0, 0}, 1}, {{4, 0}, 2}, {{8, 4}, 4}, {{8, 8}, 4}, {{99, 99}, 5}};
  EXPECT_EQ(NearestPlace(Line), (TPointF{0, 0}));
  EXPECT_EQ(WeightedCentroid(Line), (TPointF{3, 1.5F}));
  const THeardBeacons Two{{{0, 0}, 0}, {{4, 0}, 0.3}};
  EXPECT_EQ(LeastSquaresPlace(Two, Area), (TPointF{1, 0}));
}

TEST(PositionErrors, PercentilesLieBetweenTheErrorsInOrder) {
  TPositionErrors Errors;
  for (const float X : {9.0F, 1.0F, 4.0F, 2.0F}) Errors.Add({X, 0}, {0, 0});
  EXPECT_EQ(Errors.ToJson().ToText(),
            "{\"median\": 3.000, \"p75\": 5.250, \"p90\": 7.500, \"p95\": 8.250, \"max\": 9.000, "
            "\"mean\": 4.000}");
}

}  // namespace
}  // namespace Wayfence
