// Projects made from floor plans and lists of beacons.
#include <gtest/gtest.h>

#include <array>
#include <nlohmann/json.hpp>
#include <string>

#include "support/program.h"

namespace Wayfence {
namespace {

using namespace System;
using nlohmann::json;

constexpr const char* UUID = "2F234454-CF6D-4A0F-ADF2-F4911BA9FFA6";

/// The text of a feature.
std::string Feature(const std::string& AProperties,
                    const std::string& AType,
                    const std::string& ACoordinates) {
  return fmt::format(
      R"({{"type": "Feature", "properties": {{{}}},
 "geometry": {{"type": "{}", "coordinates": {}}}}})",
      AProperties,
      AType,
      ACoordinates);
}

class ImportTest : public ProgramTest {
 protected:
  void WriteFiles() override {}

  void WritePlan(const std::string& AName, std::initializer_list<std::string> AFeatures) {
    ReplaceFile(Path(AName),
                fmt::format("{{\"type\": \"FeatureCollection\", \"features\": [\n{}]}}\n",
                            fmt::join(AFeatures, ",\n")));
  }

  /// The project that an import makes.
  json Import(const std::string& AArguments) {
    const TOutcome Outcome = Run("project import out.xml --overwrite " + AArguments);
    EXPECT_EQ(Outcome.ExitCode, 0) << Outcome.Messages;
    FMessages = Outcome.Messages;
    return Outcome.ExitCode == 0 ? json::parse(OutputOf("inspect out.xml")) : json();
  }
  void ExpectWarning(const std::string& AText) const {
    EXPECT_NE(FMessages.find(AText), std::string::npos) << FMessages;
  }

  std::string FMessages;
};

/// Rounded to a millimetre.
std::string Rounded(const json& ANumbers) {
  std::string Result;
  for (const json& Number : ANumbers) Result += fmt::format("{:.3f} ", Number.get<double>() + 1e-9);
  return Result;
}

TEST_F(ImportTest, APlanInMetresBecomesZonesPathsAndBeacons) {
  WritePlan(
      "hall.geojson",
      {Feature(R"("name": "Office", "seats": 4, "tags": ["a", {"b": 2}])",
               "Polygon",
               "[[[10, 20], [14, 20], [14, 23], [10, 23], [10, 20]]]"),
       Feature(R"("name": "Bay")",
               "MultiPolygon",
               "[[[[14, 20], [18, 20], [16, 23]]], [[[10, 23], [14, 24], [11, 25], [10, 23]],"
               " [[11, 24], [12, 24], [11, 24.5]]]]"),
       Feature(R"("name": "Hall", "width": 2)", "LineString", "[[11, 21], [13, 21], [13, 21.005]]"),
       Feature("", "MultiLineString", "[[[13.004, 20.995], [13, 24]], [[16, 24], [17, 24]]]"),
       Feature(R"("name": "Door", "category": "exit", "link": "Desk")", "Point", "[13, 24]"),
       Feature(R"("name": "Desk")", "Point", "[16, 24]"),
       Feature(R"("name": "Way out", "exit": 1)", "Point", "[13, 24]"),
       Feature(R"("name": "Desk")", "Point", "[17, 24]"),
       Feature(R"("name": "Lost")", "Point", "[12, 22]"),
       Feature(fmt::format(R"("uuid": "{}", "major": 1, "minor": 7, "power": -59)", UUID),
               "Point",
               "[18, 25]"),
       Feature(R"("namespace": "00112233445566778899", "instance": "000000000001")",
               "Point",
               "[10, 20]")});
  const json Project = Import("--geojson hall.geojson");
  const json& Map = Project["maps"][0];
  EXPECT_EQ(Map["name"], "hall");
  EXPECT_EQ(Map["units"], "Meters");
  EXPECT_EQ(Rounded(Map["rect"]), "0.000 0.000 8.000 5.000 ");
  ASSERT_EQ(Map["zones"].size(), 3U);
  EXPECT_EQ(Rounded(Map["zones"][0]["rect"]), "0.000 0.000 4.000 3.000 ");
  EXPECT_EQ(Map["zones"][2]["name"], "Bay 2");
  EXPECT_EQ(Map["beacons"][0]["name"], "hall beacon 1");
  EXPECT_EQ(Rounded(Map["beacons"][0]["at"]), "8.000 5.000 ");
  EXPECT_EQ(Map["beacons"][1]["kind"], "Eddystone");
  ASSERT_EQ(Project["graph"]["nodes"].size(), 4U);  // lines share 13, 21; two are called Desk
  EXPECT_EQ(Project["graph"]["edges"].size(), 4U);  // the last is the link
  ExpectWarning("hall.geojson:4: 'Bay': its holes are filled");
  EXPECT_EQ(Project["graph"]["edges"].back(), json({2, 3}));
  ExpectWarning("'Desk': hall.geojson:12 names a path node so, too");
  ExpectWarning("'Lost': a point that is no beacon and no point of a line is left out");

  std::string Information;
  for (const json& Poi : Project["pois"])
    for (const json& Entry : Poi.value("information", json::array()))
      Information += fmt::format("{}: {} = {}\n",
                                 Poi["name"].get<std::string>(),
                                 Entry["key"].get<std::string>(),
                                 Entry["value"].get<std::string>());
  for (const char* Line : {"Office: seats = 4\n",
                           "Office: tags = a, b: 2\n",
                           "Way out: category = exit\n",
                           "Way out: exit = 1\n",
                           "hall node 1: width = 2\n",
                           "hall beacon 1: power = -59\n"})
    EXPECT_NE(Information.find(Line), std::string::npos) << Line << "in\n" << Information;
}

TEST_F(ImportTest, DegreesBecomeMetresEastAndSouthOfTheUpperLeftCorner) {
  WritePlan("plan.geojson",
            {Feature(R"("type": "floor", "name": "Roof")",
                     "Polygon",
                     "[[[12, 60], [12.001, 60], [12.001, 60.001], [12, 60.001], [12, 60]]]")});
  // At 60.001 degrees a degree is 55,798.4 m east and 111,412.2 m north.
  const json Project = Import("--geojson plan.geojson");
  EXPECT_EQ(Project["maps"][0]["name"], "Roof");
  EXPECT_NEAR(Project["maps"][0]["rect"][2], 55.7984, 0.01);
  EXPECT_NEAR(Project["maps"][0]["rect"][3], 111.4122, 0.01);
}

TEST_F(ImportTest, FilesAndLevelsBecomeFloorsThatAListOfBeaconsFills) {
  const char* const Square = "[[[0, 0], [9, 0], [9, 6], [0, 6], [0, 0]]]";
  WritePlan("low.geojson",
            {Feature(R"("name": "A", "level": "10")", "Polygon", Square),
             Feature(R"("name": "B", "level": 9)", "Polygon", Square),
             Feature(R"("name": "C", "level": "9;10")", "Polygon", Square)});
  WritePlan("high.geojson", {Feature("", "Polygon", Square)});
  ReplaceFile(Path("beacons.csv"),
              fmt::format("name,x,y,map,uuid,major,minor,owner\nfirst,1,2,0,{0},1,1,\n"
                          "second,1,2,2,{0},1,2,\"us, them\"\nagain,1,2,2,{0},1,1,\n",
                          UUID));
  const json Project = Import(
      "--geojson low.geojson high.geojson --beacons beacons.csv --y-up "
      "--map high 'high (2)'");
  ASSERT_EQ(Project["maps"].size(), 3U);
  std::string Names;
  for (const json& Map : Project["maps"])
    Names += fmt::format(
        "{} {} {}, ", Map["name"].get<std::string>(), Map["zones"].size(), Map["beacons"].size());
  EXPECT_EQ(Names, "high 2 1, high (2) 2 0, high (3) 1 1, ");
  EXPECT_EQ(Rounded(Project["maps"][2]["beacons"][0]["at"]), "1.000 4.000 ");
  ExpectWarning("beacons.csv:4: the first of the beacons left out (1)");
  EXPECT_EQ(Import("--beacons beacons.csv --size 20x12")["maps"].size(), 3U);
}

TEST_F(ImportTest, RefusedFilesAreToldWithTheirPlaceAndWriteNothing) {
  const std::array Cases{
      std::pair{std::string("[1]"), "plan:1: this is no GeoJSON"},
      std::pair{std::string("{\"type\":\"FeatureCollection\"}"),
                "plan:1: \"features\" with an array"},
      std::pair{Feature("", "Circle", "[]"), "plan:2: there is no geometry of type 'Circle'"},
      std::pair{Feature("", "Polygon", "[[[0, 0], [1]]]"), "plan:2: a position is expected here"},
      std::pair{Feature("", "LineString", "[[0, 0], [1e300, 0]]"), "plan:2: a coordinate is"},
      std::pair{Feature("", "LineString", "[[0, 0], [1e999, 0]]"), "plan:2: "},
      std::pair{Feature("", "LineString", "[[0, 0], [5, 0]]"), "plan: floor 'plan' has no area"},
      std::pair{Feature("", "LineString", "[[0, 0], [5e8, 1]]"), "plan: floor 'plan' reaches"},
      std::pair{Feature("\"uuid\": \"x\"", "Point", "[0, 0]"), "plan:1: uuid: 'x' is no UUID"},
      std::pair{Feature("\"name\": \"a\\u0001\"", "Polygon", "[[[0, 0], [3, 0], [3, 1]]]"),
                "plan:1: byte 2 of the name 'a' is"},
      std::pair{std::string(40, '['), "plan:1: nested more than 32 levels deep"}};
  for (const auto& [Plan, Message] : Cases) {
    ReplaceFile(Path("plan"), Plan);
    ExpectRefusal(1, "project import out.xml --geojson plan", std::string("wayfence: ") + Message);
  }
  ReplaceFile(Path("list"), fmt::format("x,y,map,uuid,major,minor\n1,1,5000,{},1,1\n", UUID));
  ExpectRefusal(1, "project import out.xml --beacons list", "wayfence: list:2: map: '5000' is no");
  ReplaceFile(Path("plan"), Feature("", "LineString", "[[0, 0], [200, 9]]"));
  ExpectRefusal(1,
                "project import out.xml --geojson plan --coordinates degrees",
                "wayfence: plan: floor 'plan' reaches beyond 180 degrees");
  EXPECT_FALSE(std::filesystem::exists(Path("out.xml")));
  ExpectRefusal(2, "project import out.xml", "--geojson or --beacons is required");
}

}  // namespace
}  // namespace Wayfence
