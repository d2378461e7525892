// The commands that make, look into, check and pack projects.
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "map/project_builder.h"
#include "support/program.h"

namespace Wayfence {
namespace {

using namespace System;
using namespace System::Beacon::Fencing;
using namespace System::Beacon::Fencing::Scene::Beacons;
using TMapBeacon = Scene::Beacons::TBeacon;

constexpr const char* UUID = "11111111-1111-1111-1111-111111111111";

class ProjectTest : public ProgramTest {
 protected:
  void WriteFiles() override {}
};

TEST_F(ProjectTest, NewProjectIsRoutedPackedAndUnpacked) {
  OutputOf("project new office.xml");
  EXPECT_NE(ReadWholeFile(Path("office.walk.json"), 1 << 16).find("Bookshelf"), std::string::npos);
  ExpectRefusal(1, "project new office.xml", "wayfence: office.xml: the file is there already");
  EXPECT_EQ(OutputOf("check office.xml"), "");
  const std::string Route = OutputOf("route office.xml --from 17,1,0 --to Bookshelf");
  EXPECT_EQ(Route.substr(0, Route.find('\n')),
            R"({"node": "Coffee machine", "map": 0, "x": 16.500, "y": 2.000, "length": 0.000})");
  EXPECT_NE(Route.find(R"({"node": "Bookshelf", "map": 1, "x": 6.500, "y": 10.000, "length": )"),
            std::string::npos);

  const std::string Inspected = OutputOf("inspect office.xml");
  OutputOf("bundle extract office.xml unpacked");
  OutputOf("bundle create again.zip unpacked/project unpacked/ground.png unpacked/upper.png");
  OutputOf("bundle create folder/ unpacked/project unpacked/ground.png unpacked/upper.png");
  for (const auto& [Arguments, Message] :
       {std::pair{"bundle create office.xml again.zip", "office.xml: the file is there"},
        {"bundle create folder unpacked/project",
         "folder: the folder cannot be made: Directory not"},
        {"bundle create x.zip office.xml", "office.xml: this is a bundle already"},
        {"bundle create x.zip unpacked/ground.png", "unpacked/ground.png:1:1: "},
        {"check unpacked", "unpacked: this directory is no bundle"},
        {"render folder -o folder/MapId.txt", "folder/MapId.txt: this file is read"}})
    ExpectRefusal(1, Arguments, std::string("wayfence: ") + Message);
  EXPECT_EQ(OutputOf("inspect folder"), Inspected);
  EXPECT_EQ(OutputOf("inspect again.zip"), Inspected);
  EXPECT_EQ(OutputOf("inspect unpacked/project"), Inspected);
  EXPECT_EQ(OutputOf("check again.zip"), "");
  ExpectRefusal(1, "bundle extract again.zip unpacked", "wayfence: unpacked/ground.png: the file");
}

TEST_F(ProjectTest, RefusedProjectsSayWhatAndWhere) {
  const std::string Scene =
      "<object class = \"TScene\" qualified_class = "
      "\"System.Beacon.Fencing.Scene.Classes.TScene\">\n";
  const std::array Files{std::pair{"empty.xml", std::string()},
                         std::pair{"other.xml", std::string("<html></html>")},
                         std::pair{"upper.xml", std::string("<OBJECT/>")},
                         std::pair{"torn.xml", Scene + "<Opacity>1</Opacity>"},
                         std::pair{"value.xml", Scene + "<Opacity>thick</Opacity></object>"},
                         std::pair{"nothing.xml", std::string("<bundle></bundle>")},
                         std::pair{"damaged.zip", std::string("PK\3\4 and no more")}};
  for (const auto& [Name, Text] : Files) ReplaceFile(Path(Name), Text);
  for (const auto& [File, Message] :
       {std::pair{"missing.xml", "missing.xml"},
        {"empty.xml", "empty.xml:1:1"},
        {"other.xml", "other.xml: a project begins with <bundle> or <object>, not with <html>"},
        {"upper.xml", "upper.xml: the entry 'project' is no scene"},
        {"torn.xml", "torn.xml:1:1: <object> is not closed"},
        {"value.xml", "value.xml: project:2:1: <Opacity>"},
        {"nothing.xml", "nothing.xml: there is no scene: the entry 'project' is missing"},
        {"damaged.zip", "damaged.zip"}})
    ExpectRefusal(1, std::string("inspect ") + File, std::string("wayfence: ") + Message);
  for (const auto& [Arguments, Message] :
       {std::pair{"route a.xml --from here --to X", "--from: 'here' is not X,Y,MAP"},
        {"route a.xml --from nan,1,0 --to X", "--from: 'nan,1,0' is not X,Y,MAP"},
        {"render a.xml -o a.png --rotation 7.5", "--rotation: '7.5' is no whole number from -180"},
        {"project import a.xml --beacons b --size 0x0",
         "--size: '0x0': width and height are above"},
        {"project import a.xml --beacons b --size 1e9x1", "--size: '1e9x1': width and height are"},
        {"map a.xml --size 9000x9000",
         "--size: '9000x9000': width and height are whole numbers of pixels from 1 to 8192"},
        {"map a.xml --size 640x480x2", "--size: '640x480x2' is not WIDTHxHEIGHT in pixels"},
        {"map a.xml --every nan", "--every: 'nan' is no number from 0 to 1000000"},
        {"map a.xml --seed -1", "--seed: '-1' is no whole number from 0 to 18446744073709551615"},
        {"map a.xml --seed 18446744073709551616", "--seed: '18446744073709551616' is no whole"},
        {"map a.xml --seed ''", "--seed: '' is no whole number"},
        {"map a.xml --frames ''", "--frames: something is expected here"},
        {"map '' --route X", "PROJECT: something is expected here"}})
    ExpectRefusal(2, Arguments, Message);
}

/// A project with every fault that is looked for.
void BuildFaults(const std::string& AFileName) {
  TProjectBuilder Project("Faults");
  TMapBuilder Ground = Project.AddMap("Ground", 10, 10);
  Ground.GetMap()->SetMeasureUnits(TMeasureUnits::Centimeters);
  Ground.GetMap()->SetBitmapPath("missing.png");
  TMapBuilder Upper = Project.AddMap("Upper", 10, 10);
  Upper.GetMap()->SetRect({});
  std::string Id;
  Project.MakeBundle()->AddString("broken.png", "no picture", Id, false);
  Project.MakeBundle()->AddString("unused.txt", "text", Id, false);
  Upper.GetMap()->SetBitmapPath("broken.png");
  Project.AddMap("Attic", 10, 10);

  Ground.AddBeacon("far", {50, 5}, UUID, 1, 1);
  Ground.AddBeacon("same", {5, 5}, UUID, 1, 1);
  Ground.AddBeacon("large", {5, 6}, UUID, 70000, -1);
  Ground.AddBeacon("nobody", {5, 7}, "00000000-0000-0000-0000-000000000000", 1, 2);
  Ground.AddEddystone("nameless", {5, 8}, "00000000000000000000", "000000000001");
  Project.GetScene()->AddChild(New<TMapBeacon>());
  Ground.AddZone("twice", {0, 0, 1, 1});
  Ground.AddZone("twice", {50, 50, 60, 60});
  Ground.AddZone("flat", {1, 1, 1, 5});
  constexpr std::array<TPointF, 2> Two{{{1, 1}, {2, 2}}};
  Ground.AddPathZone("line", Two);
  constexpr std::array<TPointF, 4> Bow{{{0, 0}, {9, 9}, {9, 0}, {0, 9}}};
  Ground.AddPathZone("bow", Bow)->SetDescriptionList(":no Base64!:x:");
  const auto Moved = Ground.AddZone("moved", {3, 3, 5, 5});
  const auto Turned = New<TZone>();
  Turned->SetName("turned");
  Turned->SetRect({0, 0, 1, 1});
  Turned->SetRotation(1);
  Moved->AddChild(Turned);

  const auto Path = Ground.AddPath("path", {{"A", {1, 1}}, {"B", {2, 2}}, {"A", {30, 3}}});
  Path->ConnectControlPoints(0, 9);
  TMapBuilder::AddBranch(*Path, -1, {"alone", {4, 4}});
  Upper.AddPath("island", {{"C", {0, 0}}, {"D", {0, 0}}, {"b", {0, 0}}});
  Upper.AddPath("no path", {});
  Moved->SetBitmapPath("gone.png");
  Project.Connect("A", "Nowhere");
  Project.Connect("moved", "Connections");
  Ground.AddZone("hall", {0, 0, 1, 1});
  TMapBuilder::AddBranch(*Path, 0, {"Hall", {4, 4}});
  Project.Connect("C", "HALL");
  Project.MakeBundle()->AddFileWithEncode64(
      "twin.txt", Project.MakeBundle()->GetFileIdWithPath("unused.txt"), "");
  Project.Save(AFileName);
}

TEST_F(ProjectTest, CheckFindsEveryFault) {
  BuildFaults(Path("faults.xml"));
  const TOutcome Outcome = Run("check faults.xml");
  EXPECT_EQ(Outcome.ExitCode, 1);
  for (const char* Line :
       {"warning: Ground: the map is in Centimeters",
        "error: Ground: its picture 'missing.png' is not in the bundle",
        "error: Upper: the map has no area",
        "error: Upper: broken.png",
        "warning: unused.txt: nothing in the project uses this file",
        "warning: Attic: the map has no picture",
        "warning: Ground > Beacons > far: the beacon is at 50, 5, off its map",
        "error: Ground > Beacons > same: the beacon has the identity of 'Ground > Beacons > far'",
        "error: Ground > Beacons > large: Major 70000 is outside 0 to 65535",
        "error: Ground > Beacons > large: Minor -1 is outside 0 to 65535",
        "error: Ground > Beacons > nobody: the beacon has no UUID",
        "error: Ground > Beacons > nameless: the beacon has no Eddystone namespace",
        ": the beacon is on no map",
        "warning: Attic: 0 beacons are used for positions",
        "warning: Ground > Zones > twice: the zone lies off its map",
        "error: Ground > Zones > flat: the zone has no area",
        "error: Ground > Zones > line: the zone has fewer than three corners",
        "warning: Ground > Zones > bow: the outline of the zone crosses itself",
        "error: Ground > Zones > bow: its DescriptionList cannot be read",
        "warning: Ground > Zones > moved > turned: the node is turned or scaled under a parent",
        "error: Ground > Zones > moved: its picture 'gone.png' is not in the bundle",
        "error: unused.txt: the file has the id ",
        "error: Upper > Paths > no path: the path has no points",
        "warning: Upper > Paths > island > b: its name and that of 'Ground > Paths > path > B' "
        "differ",
        "error: Connections: the link 'moved' to 'Connections' leads to the TConnectingNodes "
        "'Connections', which is no place",
        "warning: Connections: the link 'moved' to 'Connections' leads to the TZone "
        "'Ground > Zones > moved', which is no path node",
        "error: Connections: the link 'C' to 'HALL' leads to the TZone 'Ground > Zones > hall', "
        "which "
        "hides the path node 'Ground > Paths > path > Hall'",
        "warning: Ground: 2 beacons and zones are called 'twice'",
        "error: Ground > Paths > path: the connection 0|9 names a point that is not there",
        "warning: Ground > Paths > path: points without a connection: 1",
        "warning: Ground > Paths > path: its point at 30, 3 is off the map",
        "error: Ground > Paths > path > A: the node has the name of 'Ground > Paths > path > A'",
        "error: Connections: the link 'A' to 'Nowhere' names 'Nowhere', which no node has",
        "warning: C: no route leads from 'A' to it"})
    EXPECT_NE(Outcome.Output.find(Line), std::string::npos) << Line << "\n" << Outcome.Output;
  ReplaceFile(Path("walk.log"), LogLine(0.0, 1, -60, {}));
  for (const char* Command : {"inspect faults.xml",
                              "route faults.xml --from 1,1,0 --to B",
                              "map faults.xml --source walk.log"})
    ExpectRefusal(
        1,
        Command,
        "wayfence: faults.xml: Ground > Zones > bow: its DescriptionList cannot be read: ");
}

TEST_F(ProjectTest, BundlesAreUnpackedWholeOrNotAtAll) {
  const auto Bundle = [this](const std::vector<const char*>& APaths) {
    const TRef<TBundle> Result = New<TBundle>(nullptr);
    std::string Id;
    for (const char* Path : APaths) Result->AddString(Path, "new", Id, false);
    ReplaceFile(Path("b.xml"), Result->SerializeToXML());
  };
  for (const char* File : {"z", "z.new", "file"}) ReplaceFile(Path(File), "mine");
  std::filesystem::create_directory(Path("folder"));
  for (const auto& [Paths, Message] :
       {std::pair<std::vector<const char*>, const char*>{{"a", "z"}, "./z: the file is"},
        {{"a", "folder"}, "./folder: a folder stands there"},
        {{"a", "a/b"}, "./a: a file is in the way of the folder of './a/b'"},
        {{"a", "file/b"}, "./file: a file is in the way"},
        {{"a", "x/y", "x/./y"}, "'x/y' and another path"},
        {{"a", "../b"}, "'../b' leads outside"}}) {
    Bundle(Paths);
    ExpectRefusal(1, "bundle extract b.xml .", std::string("wayfence: ") + Message);
    EXPECT_FALSE(std::filesystem::exists(Path("a")));
  }
  Bundle({"a/b", "z"});
  OutputOf("bundle extract b.xml . --overwrite");
  EXPECT_EQ(ReadWholeFile(Path("a/b"), 9) + ReadWholeFile(Path("z"), 9), "newnew");
  EXPECT_EQ(ReadWholeFile(Path("z.new"), 9), "mine");
}

TEST_F(ProjectTest, PicturesOfOneNameAreKeptApart) {
  const std::string Red = ReadWholeFile(WAYFENCE_SOURCE_DIR "/tests/pictures/far.png", 1 << 20);
  const std::string Plan = ReadWholeFile(WAYFENCE_SOURCE_DIR "/tests/pictures/plan.png", 1 << 20);
  TProjectBuilder Project("Pictures");
  std::string Paths;
  for (const auto& [Name, Bytes] :
       {std::pair{"plan.png", Red}, {"plan.png", Plan}, {"plan.png", Red}, {"project", Plan}})
    Paths += Project.AddMap("", 1, 1).SetPicture(Name, Bytes).GetMap()->GetBitmapPath() + " ";
  EXPECT_EQ(Paths, "plan.png plan-2.png plan.png project-2 ");
  const TRef<TBundle> Bundle = Project.MakeBundle();
  EXPECT_EQ(Bundle->GetStringForKey("plan.png"), Red);
  EXPECT_EQ(Bundle->GetStringForKey("plan-2.png"), Plan);
  EXPECT_TRUE(Bundle->GetStringForKey("project").starts_with("<object"));
}

}  // namespace
}  // namespace Wayfence
