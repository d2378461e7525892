// What commands write to, and what they leave alone.
#include <map>
#include <string>

#include "support/program.h"

namespace Wayfence {
namespace {

using namespace System;

class OutputFiles : public ProgramTest {
 protected:
  void WriteFiles() override {
    OutputOf("project new shop.xml");
    ReplaceFile(Path("walk.json"), R"({"random": {"map": 0, "seconds": 3}})");
    OutputOf("simulate shop.xml walk.json -o walk.log");
    ReplaceFile(Path("live.json"), "{}");
    std::filesystem::create_symlink("fresh", Path("link"));
  }
  std::map<std::string, std::string> Contents() const {
    std::map<std::string, std::string> Result;
    for (const auto& Entry : std::filesystem::directory_iterator(Path("")))
      if (const std::string Name = Entry.path().filename(); Name != "output" && Name != "messages")
        Result[Name] = Entry.is_regular_file() ? ReadWholeFile(Entry.path(), 1 << 24) : "";
    return Result;
  }
};

TEST_F(OutputFiles, NoCommandWritesOverWhatItReads) {
  OutputOf("map shop.xml --source walk.log --run walk.run");
  ReplaceFile(Path("rooms.json"), R"({"type": "FeatureCollection", "features": []})");
  ReplaceFile(Path("beacons.csv"), "x,y\n");
  std::filesystem::create_symlink("shop.xml", Path("other.xml"));
  std::filesystem::create_hard_link(Path("walk.log"), Path("same.log"));
  const std::string Map = "map shop.xml --source walk.log ";
  const std::string Evaluate = "evaluate shop.xml --source log:walk.log --truth walk.truth.csv ";
  const auto Before = Contents();
  for (const auto& [Arguments, File] :
       {std::pair<std::string, const char*>{"render shop.xml -o shop.xml", "shop.xml"},
        {"render shop.xml -o other.xml", "other.xml"},
        {Map + "--run ./shop.xml", "./shop.xml"},
        {Map + "--run same.log", "same.log"},
        {Map + "--component live.json --run live.json", "live.json"},
        {Map + "--run walk.truth.csv --truth walk.truth.csv", "walk.truth.csv"},
        {"map shop.xml --source simulate:walk.json --run walk.json", "walk.json"},
        {Evaluate + "--picture shop.xml", "shop.xml"},
        {Evaluate + "--picture walk.log", "walk.log"},
        {"record walk.log --source walk.log", "walk.log"},
        {"project import rooms.json --geojson rooms.json --overwrite", "rooms.json"},
        {"project import beacons.csv --beacons beacons.csv --overwrite", "beacons.csv"},
        {"bundle create shop.xml shop.xml --overwrite", "shop.xml"},
        {"report walk.run -o walk.run --overwrite", "walk.run"},
        {"simulate shop.xml walk.json -o walk.json --overwrite", "walk.json"}})
    ExpectRefusal(1, Arguments, std::string("wayfence: ") + File + ": this file is read; choose");
  for (const auto& [Output, Truth] : {std::pair{"x.log", "./x.log"}, {"link", "fresh"}})
    ExpectRefusal(1,
                  fmt::format("simulate shop.xml walk.json -o {} --truth {}", Output, Truth),
                  fmt::format("wayfence: {}: two things are to be written", Truth));
  EXPECT_EQ(Contents(), Before);
}

TEST_F(OutputFiles, ARunThatCannotBeginLeavesAnEarlierOne) {
  OutputOf("map shop.xml --source walk.log --run walk.run");
  const auto Before = Contents();
  FPrelude = "DBUS_SYSTEM_BUS_ADDRESS=unix:path=/nowhere";
  for (const char* Arguments : {"--source walk.log --truth missing.csv", "--source bluez"})
    ExpectRefusal(1, std::string("map shop.xml --run walk.run ") + Arguments, "wayfence: ");
  EXPECT_EQ(Contents(), Before);
  std::filesystem::resize_file(Path("walk.run"), Before.at("walk.run").size() - 5);
  EXPECT_TRUE(Run("report walk.run -o walk.html").Messages.starts_with("wayfence: walk.run:"));
}

TEST_F(OutputFiles, PicturesOfTwoRunsDoNotMix) {
  const std::string Map = "map shop.xml --source walk.log --every 1 --size 40x30 --frames ";
  OutputOf(Map + "frames");
  for (const char* Name : {"frame-0999.5.png", "frame-1.png", "frame-plan.png"})
    ReplaceFile(Path("frames/") + Name, "");
  ExpectRefusal(1, Map + "frames", "wayfence: frames: the folder holds pictures of an earlier run");
  ExpectRefusal(1, Map + "walk.log", "wayfence: walk.log: this is no folder");
  OutputOf(Map + "frames --overwrite");
  EXPECT_FALSE(std::filesystem::exists(Path("frames/frame-0999.5.png")));
  for (const char* Name : {"frame-1.png", "frame-plan.png"})
    EXPECT_TRUE(std::filesystem::exists(Path("frames/") + Name)) << Name;
}

}  // namespace
}  // namespace Wayfence
