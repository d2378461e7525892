#include <gtest/gtest.h>

#include "platform/beacons/captures/capture_builders.h"

namespace System::Beacon::CaptureTests {

namespace {

const std::string Good =
    R"({"t": 0.105, "address": "C4:BE:84:01:02:03", "rssi": -67, "adv": "0201061aFF"})";
const THeard GoodHeard{105'000, "C4:BE:84:01:02:03", -67, "0201061AFF"};

std::string LineWith(std::string_view AMember) {
  std::string Line = R"({"t": 0.105, "address": "C4:BE:84:01:02:03", "adv": "0201061AFF", )";
  return Line.append(AMember) + "}";
}

}  // namespace

TEST(AdvertisementLog, ReadsGoodLines) {
  const auto With = [](int ARssi, TTicks ATime = GoodHeard.Time) {
    return THeard{ATime, GoodHeard.Address, ARssi, GoodHeard.Payload};
  };
  const std::pair<std::string, THeard> Cases[] = {
      {Good, GoodHeard},
      {"  " + Good + " \t\r", GoodHeard},
      {LineWith(R"("rssi": null)"), With(UnknownRssi)},
      {LineWith(R"("rssi": 127)"), With(UnknownRssi)},
      {LineWith(R"("rssi": -127)"), With(-127)},
      {LineWith(R"("rssi": 20.0)"), With(20)},
      {LineWith(R"("more": {"t": [1, {"adv": "zz"}]}, "rssi": -67)"), GoodHeard},
      {LineWith(R"("t": -1)"), With(UnknownRssi, -1'000'000)},
      {LineWith(R"("t": 1e10)"), With(UnknownRssi, 10'000'000'000'000'000)},
      {LineWith(R"("t": 1795384174.123457)"), With(UnknownRssi, 1'795'384'174'123'457)},
      {R"({"t":0,"address":"c4:be:84:01:02:03","adv":""})",
       {0, "C4:BE:84:01:02:03", UnknownRssi, ""}},
  };
  for (const auto& [Line, Heard] : Cases) {
    EXPECT_EQ(ReadAllWell(OpenAdvertisementLog(TextBytes(Line))), std::vector<THeard>{Heard})
        << Line;
  }
}

TEST(AdvertisementLog, CountsBadLinesAndGoesOn) {
  const std::pair<std::string, std::string> Cases[] = {
      {"hello", "not a JSON object: wrong at column 1"},
      {"[1]", "not a JSON object"},
      {"5", "not a JSON object"},
      {"\"t\"", "not a JSON object"},
      {"null", "not a JSON object"},
      {Good + Good, "not a JSON object: wrong at column 79"},
      {Good.substr(0, Good.size() - 1), "not a JSON object: wrong at column 78"},
      {LineWith("\"x\": \"\xFF\""), "not a JSON object: wrong at column 73"},
      {std::string("{\0}", 3), "not a JSON object: wrong at column 2"},
      {"{}", "\"t\" is missing"},
      {R"({"t": 1, "adv": ""})", "\"address\" is missing"},
      {R"({"t": 1, "address": "C4:BE:84:01:02:03"})", "\"adv\" is missing"},
      {LineWith(R"("t": "1")"), "\"t\" is not a number"},
      {LineWith(R"("t": null)"), "\"t\" is not a number"},
      {LineWith(R"("t": 1e400)"), "a number is out of range"},
      {LineWith(R"("t": 1.1e10)"), "\"t\" is out of range"},
      {LineWith(R"("t": -99999999999999999999)"), "\"t\" is out of range"},
      {LineWith(R"("rssi": -128)"), "\"rssi\" is not a whole number from -127 to 20"},
      {LineWith(R"("rssi": 21)"), "\"rssi\" is not a whole number from -127 to 20"},
      {LineWith(R"("rssi": -67.5)"), "\"rssi\" is not a whole number from -127 to 20"},
      {LineWith(R"("rssi": true)"), "\"rssi\" is not a number"},
      {LineWith(R"("rssi": {})"), "\"rssi\" is not a number"},
      {LineWith(R"("address": "C4-BE-84-01-02-03")"),
       "\"address\" is not of the form C4:BE:84:01:02:03"},
      {LineWith(R"("address": 7)"), "\"address\" is not a string"},
      {LineWith(R"("adv": "020")"), "\"adv\" is not hexadecimal, two digits a byte"},
      {LineWith(R"("adv": "0G")"), "\"adv\" is not hexadecimal, two digits a byte"},
      {LineWith(R"("adv": [])"), "\"adv\" is not a string"},
      {LineWith("\"adv\": \"" + std::string(3302, '0') + "\""),
       "\"adv\" is longer than 1650 bytes"},
      {LineWith("\"x\": " + std::string(20, '[') + std::string(20, ']')), "nested too deeply"},
      {"{\"x\": " + std::string(60'000, '['), "nested too deeply"},
      {std::string(65'537, ' '), "line longer than 64 KiB"},
      {LineWith("\"x\": \"" + std::string(1'000'000, '0') + "\""), "line longer than 64 KiB"},
  };
  for (const auto& [Line, Problem] : Cases) {
    const auto Reader = OpenAdvertisementLog(TextBytes("# log\n\n" + Line + "\r\n" + Good));
    EXPECT_EQ(ReadAll(*Reader), std::vector<THeard>{GoodHeard}) << Line;
    EXPECT_EQ(Reader->GetProblems().First, std::vector<std::string>{"line 3: " + Problem}) << Line;
  }
}

TEST(AdvertisementLog, ReadsTheLongestLine) {
  std::string Line = Good;
  Line.insert(1, 65'536 - Line.size(), ' ');
  EXPECT_EQ(ReadAllWell(OpenAdvertisementLog(TextBytes(Line + "\n" + Line))),
            (std::vector<THeard>{GoodHeard, GoodHeard}));
}

TEST(AdvertisementLog, TakesItsStartFromAComment) {
  // The start is -1 when the comment states none.
  const std::pair<std::string, TTicks> Cases[] = {
      {"# start: 2026-11-22T21:49:34.123456Z", 1'795'384'174'123'456},
      {"# start: 2026-11-22T21:49:34.5Z\r", 1'795'384'174'500'000},
      {"# start: 2026-11-22T21:49:34Z", 1'795'384'174'000'000},
      {"# start: 1970-01-01T00:00:00Z", 0},
      {"# start: 2024-02-29T00:00:00Z", 1'709'164'800'000'000},
      {"# start: 2023-02-29T00:00:00Z", -1},
      {"# start: 2026-11-22T24:00:00Z", -1},
      {"# start: 2026-11-22T21:60:00Z", -1},
      {"# start: 2026-11-22T21:49:60Z", -1},
      {"# start: 2026-11-22T21:49:34.1234567Z", -1},
      {"# start: 2026-11-22T21:49:34.Z", -1},
      {"# start: 2026-11-22T21:49:34", -1},
      {"# start: 2026-11-22T21:49:34Z again", -1},
      {"# start: 2026-13-22T21:49:34Z", -1},
      {"# start: yesterday", -1},
      {"# started: 2026-11-22T21:49:34Z", -1},
      {Good + "\n# start: 2026-11-22T21:49:34Z", -1},
  };
  for (const auto& [Comment, Start] : Cases) {
    const auto Reader = OpenAdvertisementLog(TextBytes(Comment + "\n" + Good + "\n"));
    EXPECT_EQ(Reader->HasWallTime(), Start >= 0) << Comment;
    const TTicks Expected = std::max<TTicks>(Start, 0) + GoodHeard.Time;
    EXPECT_EQ(ReadAllWell(Reader).back().Time, Expected) << Comment;
  }
}

}  // namespace System::Beacon::CaptureTests
