// The commands that list what is seen: zones, scan, record.
#include <nlohmann/json.hpp>
#include <sstream>

#include "support/fake_beacon.h"
#include "support/program.h"

namespace Wayfence {
namespace {

using namespace System;
using namespace System::Beacon;

std::vector<nlohmann::json> LinesOf(const std::string& AText) {
  std::vector<nlohmann::json> Result;
  std::istringstream Stream(AText);
  for (std::string Line; std::getline(Stream, Line);) Result.push_back(nlohmann::json::parse(Line));
  return Result;
}

/// Beside a component file and a recording.
class Program : public ProgramTest {
 protected:
  void WriteFiles() override {
    ReplaceFile(Path("zones.json"), R"({
  "BaseBeaconGUID": "{2F234454-CF6D-4A0F-ADF2-F4911BA9FFA6}",
  "Zones": [ { "DisplayName": "Lobby \"A\"", "BeaconList": [ { "Minor": 1 }, { "Minor": 2 } ] },
             { "DisplayName": "Store", "BeaconList": [ { "KindofBeacon": "Eddystone",
                                                        "EddyInstance": "000000000001" } ] } ],
  "Enabled": true
})");
    ReplaceFile(Path("walk.log"), Recording());
  }

 private:
  static std::string Recording() {
    std::string Result = "# a short walk\n";
    const auto Hear = [&Result](
                          double ASeconds, int AAddress, int ARssi, const TPayload& APayload) {
      Result += LogLine(ASeconds, AAddress, ARssi, APayload);
    };
    Hear(10.0, 1, -59, iBeaconPayload(TestGUID, 0, 1));
    Hear(10.5, 2, -79, AltBeaconPayload(0x0118, TestGUID, 0, 2));
    Hear(11.0, 3, -54, EddystoneUIDPayload({{}, {0, 0, 0, 0, 0, 1}}));
    Hear(11.25, 3, -54, EddystoneURLPayload("a.b"));
    Hear(11.5, 3, -54, EddystoneTLMPayload(2'900));
    Hear(12.0, 9, -54, iBeaconPayload(TGUID{}, 7, 8, 127));
    Hear(12.5, 9, -54, {5, 0xFF, 0x4C, 0, 2, 0x15});
    Hear(40.0, 1, 127, iBeaconPayload(TestGUID, 0, 1));
    return Result;
  }
};

TEST_F(Program, ZonesPrintsTheEventsOfAWalkAlikeEveryTime) {
  const std::string Output = OutputOf("zones zones.json --source walk.log");
  EXPECT_EQ(OutputOf("zones zones.json --source log:walk.log"), Output);
  const auto Lines = LinesOf(Output);
  ASSERT_GT(Lines.size(), 5U);
  EXPECT_EQ(Lines.front()["event"], "Started");
  EXPECT_EQ(Lines.front()["regions"].size(), 2U);
  std::string Zones, Frames;
  for (const auto& Line : Lines) {
    const std::string Event = Line["event"];
    if (Event == "ZoneEnter" || Event == "ZoneExit")
      Zones += fmt::format("{} {} {}; ", Line["time"].dump(), Event, Line["zone"].dump());
    if (Line.contains("url")) Frames += Line["url"].dump() + "; ";
    if (Line.contains("voltage")) Frames += Line["voltage"].dump() + "; ";
  }
  EXPECT_EQ(Zones,
            "0.0 ZoneEnter \"Lobby \\\"A\\\"\"; 1.0 ZoneExit \"Lobby \\\"A\\\"\"; "
            "1.0 ZoneEnter \"Store\"; 6.5 ZoneExit \"Store\"; ");
  EXPECT_EQ(Frames, "\"https://a.b\"; 2.9; ");
  EXPECT_EQ(Output.substr(Output.rfind("{")),
            "{\"time\": 30.000, \"event\": \"Finished\", \"advertisements\": 8, \"sightings\": 6, "
            "\"malformed\": 1, \"seconds\": 30.000}\n");
}

TEST_F(Program, ZonesPrintsTheRegionsThatItWouldMonitor) {
  EXPECT_EQ(OutputOf("zones zones.json --regions"),
            "{\"kind\": \"iBeaconAltBeacon\", \"uuid\": "
            "\"{2F234454-CF6D-4A0F-ADF2-F4911BA9FFA6}\", \"major\": 0}\n"
            "{\"kind\": \"Eddystone\", \"namespace\": \"00000000000000000000\", "
            "\"instance\": \"000000000001\"}\n");
}

TEST_F(Program, ScanListsEveryFrameInAnyRegion) {
  EXPECT_EQ(
      OutputOf("scan --source walk.log"),
      R"({"time": 0.000, "event": "Sighting", "address": "C0:00:00:00:00:01", "kind": "iBeacon", "uuid": "{2F234454-CF6D-4A0F-ADF2-F4911BA9FFA6}", "major": 0, "minor": 1, "rssi": -59, "distance": 1.000, "proximity": "Near", "txPower": -59}
{"time": 0.500, "event": "Sighting", "address": "C0:00:00:00:00:02", "kind": "AltBeacon", "uuid": "{2F234454-CF6D-4A0F-ADF2-F4911BA9FFA6}", "major": 0, "minor": 2, "rssi": -79, "distance": 10.000, "proximity": "Far", "txPower": -59}
{"time": 1.000, "event": "Sighting", "address": "C0:00:00:00:00:03", "kind": "Eddystone", "namespace": "00000000000000000000", "instance": "000000000001", "rssi": -54, "distance": 0.562, "proximity": "Near", "txPower": -59}
{"time": 1.250, "event": "Sighting", "address": "C0:00:00:00:00:03", "kind": "Eddystone", "namespace": "00000000000000000000", "instance": "000000000001", "rssi": -54, "distance": 0.562, "proximity": "Near", "txPower": -41, "url": "https://a.b"}
{"time": 1.500, "event": "Sighting", "address": "C0:00:00:00:00:03", "kind": "Eddystone", "namespace": "00000000000000000000", "instance": "000000000001", "rssi": -54, "distance": 0.562, "proximity": "Near", "voltage": 2.900, "temperature": 0.000, "advertisements": 0, "uptime": 0.0}
{"time": 2.000, "event": "Sighting", "address": "C0:00:00:00:00:09", "kind": "iBeacon", "uuid": "{00000000-0000-0000-0000-000000000000}", "major": 7, "minor": 8, "rssi": -54, "proximity": "Away"}
{"time": 30.000, "event": "Sighting", "address": "C0:00:00:00:00:01", "kind": "iBeacon", "uuid": "{2F234454-CF6D-4A0F-ADF2-F4911BA9FFA6}", "major": 0, "minor": 1, "proximity": "Away", "txPower": -59}
)");
  EXPECT_EQ(LinesOf(OutputOf("scan --source walk.log --seconds 1.1")).size(), 3U);
}

TEST_F(Program, RecordWritesFilesThatScanReadsAlike) {
  std::vector<std::string> Formats{"log", "btsnoop"};
#ifdef WAYFENCE_HAS_PCAP
  Formats.emplace_back("pcap");
#endif
  const std::string Expected = OutputOf("scan --source walk.log");
  for (const std::string& Format : Formats) {
    OutputOf("record copy --source walk.log --format " + Format);
    EXPECT_EQ(OutputOf("scan --source copy"), Expected) << Format;
    EXPECT_EQ(OutputOf("scan --source " + Format + ":copy"), Expected) << Format;
  }
  const TOutcome Short = Run("record short --source walk.log --seconds 1.25");
  EXPECT_EQ(Short.Messages, "wayfence: 3 advertisements written to short\n");
  EXPECT_EQ(LinesOf(OutputOf("scan --source short")).size(), 3U);
}

TEST_F(Program, ADamagedRecordingIsReadAsFarAsItGoes) {
  ReplaceFile(Path("damaged.log"), ReadWholeFile(Path("walk.log"), 1 << 20) + "{\"t\": 5");
  const TOutcome Outcome = Run("scan --source damaged.log");
  EXPECT_EQ(Outcome.ExitCode, 0);
  EXPECT_EQ(Outcome.Output, OutputOf("scan --source walk.log"));
  EXPECT_TRUE(Outcome.Messages.starts_with("wayfence: 1 place of the recording could not be read:"))
      << Outcome.Messages;
}

TEST_F(Program, RefusalsAndWrongUsageHaveOneClearMessage) {
  ReplaceFile(Path("bad.json"), "{\n  \"Zones\": [,]\n}");
  ReplaceFile(Path("unknown.json"), "{\n  \"Zones\": [ { \"Name\": \"Lobby\" } ]\n}");
  ReplaceFile(Path("packed.gz"), "\x1F\x8B\x08 and so on");
  ReplaceFile(Path("empty.log"), "");
  ReplaceFile(Path("photo.log"), "\xFF\xD8\xFF\xE0 JFIF");
  struct TCase {
    int ExitCode;
    const char* Arguments;
    const char* Message;
  };
  const std::vector<TCase> Cases{
      {1, "scan --source missing.log", "wayfence: missing.log: cannot be opened: No such file"},
      {1, "scan --source log:missing.log", "wayfence: missing.log: cannot be opened: No such file"},
      {1, "scan --source radio:hci0", "wayfence: radio:hci0: cannot be opened: No such file"},
      {1, "scan --source .", "wayfence: .: is a folder"},
      {1, "scan --source packed.gz", "wayfence: packed.gz: is compressed (gzip); unpack it first"},
      {1, "scan --source empty.log", "wayfence: empty.log: the file is empty"},
      {1, "scan --source photo.log", "wayfence: photo.log: is no capture"},
      {1, "scan --source btsnoop:walk.log", "wayfence: walk.log: not a btsnoop file"},
      {1, "zones missing.json --source walk.log", "wayfence: missing.json: the file cannot be"},
      {1, "zones . --source walk.log", "wayfence: .: the file cannot be read: Is a directory"},
      {1, "zones bad.json --source walk.log", "wayfence: bad.json:2: this is no JSON"},
      {1, "zones bad.json --regions", "wayfence: bad.json:2: this is no JSON"},
      {1,
       "zones unknown.json --source walk.log",
       "wayfence: unknown.json:2: Zones[0].Name: there is no such property; there are DisplayName"},
      {1, "record ./walk.log --source log:walk.log", "wayfence: ./walk.log: this file is read"},
      {1, "record no/such/folder --source walk.log", "wayfence: no/such/folder: cannot be"},
      {2, "", "A subcommand is required"},
      {2, "zone", "wayfence: there is no command 'zone'; there are zones, scan, record, simulate"},
      {2,
       "bundle pack a",
       "wayfence: there is no command 'bundle pack'; there are create, list, ex"},
      {2, "zones", "FILE.json is required"},
      {2, "scan --speed 2 --source walk.log", "--speed: 2 not in {0,1}"},
      {2, "record copy --format wav --source walk.log", "--format: wav not in {log,btsnoop,pcap}"},
      {2, "scan --seconds -1 --source walk.log", "--seconds: '-1' is no number from 0"},
  };
  for (const TCase& C : Cases) ExpectRefusal(C.ExitCode, C.Arguments, C.Message);
  EXPECT_EQ(LinesOf(OutputOf("scan --source walk.log")).size(), 7U);
}

TEST_F(Program, OutputThatIsLostIsAnError) {
  if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "there is no full device";
  const TOutcome Outcome = Run("scan --source walk.log", "/dev/full");
  EXPECT_EQ(Outcome.ExitCode, 1);
  EXPECT_EQ(Outcome.Messages,
            "wayfence: standard output cannot be written to; the output is incomplete\n");
}

TEST_F(Program, HelpShowsAnExampleOfEveryCommand) {
  const std::string Commands = OutputOf("--help");
  for (const std::string Command : {"zones", "scan", "record", "evaluate"}) {
    EXPECT_NE(Commands.find("\n  " + Command + " "), std::string::npos) << Commands;
    const std::string Help = OutputOf(Command + " --help");
    EXPECT_NE(Help.find("Example:\n  wayfence " + Command + " "), std::string::npos) << Help;
  }
  EXPECT_NE(OutputOf("--version"), "");
}

}  // namespace
}  // namespace Wayfence
