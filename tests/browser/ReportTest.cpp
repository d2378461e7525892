// The page of runs in a browser, as the address asks for it.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "apps/run_lines.h"
#include "support/program.h"

namespace Wayfence {
namespace {

using namespace System;
using namespace System::Beacon::Fencing;
using namespace System::Beacon::Fencing::Scene::Beacons;

constexpr const char* UUID = "11111111-1111-1111-1111-111111111111";
const std::string HostileZone = "</script><script>document.title='taken'</script>";
const std::string HostileBeacon = "\"'\\<!--\xE2\x80\xA8<script>{{runs}}";

std::string AsText(const std::string& AText) {
  std::string Result;
  for (const char Char : AText)
    Result += Char == '<' ? "&lt;" : Char == '>' ? "&gt;" : std::string(1, Char);
  return Result;
}

class ReportTest : public ProgramTest {
 protected:
  void SetUp() override {
#ifdef __SANITIZE_THREAD__
    GTEST_SKIP() << "the page is looked at in the other builds";
#endif
    if (std::system("command -v chromium > /dev/null") != 0)
      GTEST_SKIP() << "without chromium (Debian package chromium)";
    ProgramTest::SetUp();
  }
  void WriteFiles() override {
    TProjectBuilder Office("Office");
    TMapBuilder Ground = Office.AddMap("Ground", 10, 8), Upper = Office.AddMap("Upper", 10, 8);
    TDrawing Picture(100, 80);
    Ground.SetPicture("ground.png", EncodePng(*Picture.GetPicture()));
    Ground.AddZone(HostileZone, {0, 0, 5, 8});
    Ground.AddBeacon(HostileBeacon, {1, 1}, UUID, 1, 1);
    Upper.AddBeacon("Attic", {1, 1}, UUID, 2, 1);
    WriteRun(
        Path("office.run"),
        Office,
        {R"({"time": 2, "event": "ZoneEnter", "zone": ")" + HostileZone + R"("})",
         R"({"time": 12, "event": "Signal", "beacon": 0, "rssi": -63})",
         R"({"time": 12, "event": "Signal", "beacon": 1, "rssi": -88})",
         R"({"time": 12, "event": "Position", "map": 0, "x": 4, "y": 3, "pathX": 4, "pathY": 2})",
         R"({"time": 12.5, "event": "Truth", "map": 0, "x": 1, "y": 7})",
         R"({"time": 15, "event": "ZoneExit", "zone": ")" + HostileZone + R"("})",
         R"({"time": 16, "event": "ArrivedToPOI", "poi": "مكتب", "map": 0})",
         R"({"time": 20, "event": "MapChange", "from": 0, "to": 1})"});
    TProjectBuilder Small("Small");
    TMapBuilder Yard = Small.AddMap("Yard", 10, 10);
    Yard.GetMap()->SetMeasureUnits(TMeasureUnits::Centimeters);
    Yard.AddBeacon("Gate", {1, 1}, UUID, 1, 1);
    WriteRun(Path("small.run"),
             Small,
             {R"({"time": 100, "event": "Position", "map": 0, "x": 300, "y": 0})",
              R"({"time": 100, "event": "Truth", "map": 0, "x": 0, "y": 400})"});
    OutputOf("report office.run small.run -o page.html");
  }

  /// The page as it stands once its scripts have run.
  std::string PageAt(const std::string& AnAddress) const {
    const std::string Command = fmt::format(
        "timeout 100 chromium --headless --no-sandbox --disable-gpu --virtual-time-budget=2000 "
        "--user-data-dir='{}' --dump-dom 'file://{}#{}' > '{}' 2> /dev/null",
        Path("browser"),
        Path("page.html"),
        AnAddress,
        Path("dom"));
    EXPECT_EQ(std::system(Command.c_str()), 0) << Command;
    return ReadWholeFile(Path("dom"), 1 << 24);
  }
};

/// The text of the element of an id, up to the first element within it.
std::string TextOf(const std::string& APage, const std::string& AnId) {
  const std::size_t Id = APage.find("id=\"" + AnId + "\"");
  if (Id == std::string::npos) return "there is no " + AnId;
  const std::size_t Begin = APage.find('>', Id) + 1;
  return APage.substr(Begin, APage.find('<', Begin) - Begin);
}

TEST_F(ReportTest, TellsWhatWasSoAtTheTimeOfTheAddress) {
  struct TCase {
    const char* Address;
    std::vector<std::pair<const char*, std::string>> Texts;
  };
  const std::array Cases{
      TCase{"t=12.5",
            {{"project", "Office"},
             {"time", "12.5 s"},
             {"floor", "Ground"},
             {"zones", AsText(HostileZone)},
             {"position", "4.00, 3.00 m"},
             {"path", "4.00, 2.00 m"},
             {"truth", "1.00, 7.00 m"},
             {"error", "5.00 m, path 5.83 m"}}},
      TCase{"t=20.5&floor=1",
            {{"time", "20.0 s"},
             {"floor", "Upper"},
             {"zones", "none"},
             {"position", "4.00, 3.00 m, 8 s old"},
             {"truth", "not known"},
             {"error", "–"}}},
      TCase{"t=100&run=1",
            {{"project", "Small"},
             {"source", "a test, 1:40 min, 1 floor, 1 beacon"},
             {"time", "1:40.0"},
             {"position", "300, 0 cm"},
             {"error", "5.00 m, path 5.00 m"}}},
      TCase{"t=x&run=7&floor=-1", {{"project", "Office"}, {"position", "not yet known"}}}};
  for (const TCase& C : Cases) {
    const std::string Page = PageAt(C.Address);
    for (const auto& [Id, Text] : C.Texts) EXPECT_EQ(TextOf(Page, Id), Text) << C.Address;
    EXPECT_EQ(TextOf(Page, "problem"), "") << C.Address;
    EXPECT_EQ(Page.find("<title>taken"), std::string::npos) << C.Address;
  }
}

TEST_F(ReportTest, NamesTheBeaconsOfTheFloorAndListsEvents) {
  const std::string Page = PageAt("t=12.5");
  EXPECT_NE(Page.find(AsText(HostileBeacon) + "</span><span class=\"value\">−63 dBm"),
            std::string::npos);
  EXPECT_EQ(Page.find("Attic</span>"), std::string::npos);
  for (const std::string& Event : {"Entered " + AsText(HostileZone),
                                   std::string("Arrived at \u2068مكتب\u2069"),
                                   std::string("To Upper from Ground")})
    EXPECT_NE(Page.find("<span>" + Event + "</span>"), std::string::npos) << Event;
}

TEST_F(ReportTest, DrawsNoMoreOfAZoneThanCanBeSeen) {
  std::string Outline;
  for (int I = 0; I < 300'000; ++I)
    Outline +=
        fmt::format("[{:.6f},{:.6f}],", 5 + 5 * std::cos(I / 5e4), 5 + 5 * std::sin(I / 5e4));
  Outline.pop_back();
  const std::string Maps = R"("maps": [{"name": "", "rect": [0, 0, 10, 10], "units": "Meters"}])";
  ReplaceFile(
      Path("round.run"),
      R"({"run": 1, "project": "", "source": "", "beacons": [], "pois": [], "edges": [], )" + Maps +
          R"(, "zones": [{"name": "", "map": 0, "outline": [)" + Outline + "]}]}\n");
  OutputOf("report round.run -o round.html");
  const auto Size = std::filesystem::file_size(Path("round.html"));
  EXPECT_GT(Size, 200'000);  // a circle still
  EXPECT_LT(Size, 900'000);
}

TEST_F(ReportTest, LoadsNothingAndIsNotReplacedUnasked) {
  const std::string Page = ReadWholeFile(Path("page.html"), 1 << 24);
  EXPECT_NE(Page.find("default-src 'none'"), std::string::npos);
  for (const char* Loads :
       {"<link", "<img", "<iframe", " src=", " href=", "url(", "@import", "fetch("})
    EXPECT_EQ(Page.find(Loads), std::string::npos) << Loads;
  EXPECT_EQ(Page.find(HostileZone), std::string::npos);
  ExpectRefusal(1, "report office.run -o page.html", "wayfence: page.html: the file is there");
  ExpectRefusal(1, "report page.html -o other.html", "wayfence: page.html:1: this is no JSON");
  ExpectRefusal(2, "report office.run", "--output is required");
}

}  // namespace
}  // namespace Wayfence
