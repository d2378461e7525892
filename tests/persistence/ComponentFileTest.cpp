#include "persistence/component_file.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "fencing/System.Beacon.Fencing.h"
#include "persistence/json_tree.h"
#include "platform/errors.h"
#include "platform/random.h"
#include "support/raised.h"
#include "support/scripted_source.h"

namespace System::Beacon::Fencing {
namespace {

constexpr const char* Example = R"({ "BaseBeaconGUID": "{2F234454-CF6D-4A0F-ADF2-F4911BA9FFA6}",
  "BeaconManagerOptions": { "ScanningTime": 400, "SPC": 0.25 },
  "Zones": [ { "DisplayName": "Lobby", "BeaconProximity": "Immediate",
               "BeaconList": [ { "Major": 1, "Minor": 7 },
                               { "KindofBeacon": "Eddystone",
                                 "EddyNamespace": "00112233445566778899" } ] } ],
  "Enabled": true })";

/// Reads into a component that does not start.
std::string Rewritten(std::string_view AText) {
  TBeaconZonesFencing Component;
  Component.SetDesigning(true);
  ReadComponent(Component, AText, "zones.json");
  return WriteComponent(Component);
}

/// With "'" for quotation marks.
std::string Quoted(std::string AText) {
  std::replace(AText.begin(), AText.end(), '\'', '"');
  return AText;
}

std::string RefusalOf(const std::string& AText) {
  return Raised<EFileError>([&] { Rewritten(Quoted(AText)); });
}

TEST(ComponentFile, StreamsAComponentInAndOut) {
  TBeaconZonesFencing Component;
  Component.SetDesigning(true);
  ReadComponent(Component, Example, "zones.json");
  ASSERT_EQ(Component.GetZones()->GetCount(), 1);
  const TBeaconItem& First = *Component.GetZones()->GetItems(0)->GetBeaconList()->GetItems(0);
  EXPECT_EQ(First.GetUUID(), "{2F234454-CF6D-4A0F-ADF2-F4911BA9FFA6}");
  std::string Written = WriteComponent(Component);
  EXPECT_TRUE(
      Written.starts_with(Quoted("{\n  'BeaconManagerOptions': {\n    'ScanningTime': 400")));
  std::erase_if(Written, [](char C) { return C == ' ' || C == '\n'; });
  EXPECT_EQ(Written,
            Quoted("{'BeaconManagerOptions':{'ScanningTime':400,'SPC':0.25},"
                   "'BaseBeaconGUID':'{2F234454-CF6D-4A0F-ADF2-F4911BA9FFA6}',"
                   "'Zones':[{'DisplayName':'Lobby','BeaconProximity':'Immediate',"
                   "'BeaconList':[{'Major':1,'Minor':7},"
                   "{'EddyNamespace':'00112233445566778899','KindofBeacon':'Eddystone'}]}],"
                   "'Enabled':true}"));
}

TEST(ComponentFile, LetterCaseOrderCommentsAndDefaultsChangeNothing) {
  const std::string Same =
      R"({ // Enabled comes last and base values come first, wherever they stand
    "Enabled": true,
    "Zones": [ { "BeaconList": [ { "Minor": 7, "Major": 1, "KindofBeacon": "ibeaconALTBEACON" },
                 { "EddyNamespace": "00112233445566778899", "KindofBeacon": "eddystone" } ],
                 "BeaconProximity": "immediate", /* or not */ "DisplayName": "Lobby" } ],
    "basebeaconguid": "{2f234454-cf6d-4a0f-adf2-f4911ba9ffa6}",
    "BEACONMANAGEROPTIONS": { "SPC": 25e-2, "scanningTIME": 400, "BeaconDeathTime": 20 } })";
  EXPECT_EQ(Rewritten(Same), Rewritten(Example));
}

/// Draws components of every shape.
void Randomise(TBeaconZonesFencing& AComponent, std::uint64_t ASeed) {
  TRandomStream Random(ASeed);
  const auto Below = [&Random](std::uint32_t ABound) { return Random.NextBelow(ABound); };
  const auto Guid = [&] {
    return fmt::format("{{00000000-0000-0000-0000-0000000000{:02X}}}", Below(3));
  };
  const auto Namespace = [&] { return fmt::format("{:020X}", Below(3)); };
  const auto Manufacturer = [&] { return std::vector<std::string>{"-1", "118", "004C"}[Below(3)]; };
  AComponent.SetBaseBeaconGUID(Guid());
  AComponent.SetBaseEddyNamespace(Namespace());
  AComponent.SetBaseManufacturerID(Manufacturer());
  AComponent.SetEnabled(Below(2) == 0);
  TBeaconManagerOptions& Options = *AComponent.GetBeaconManagerOptions();
  Options.SetSPC(static_cast<float>(Random.NextDouble()));
  Options.SetBeaconDeathTime(static_cast<int>(Below(3)) + 19);
  Options.SetMode(static_cast<TBeaconScanMode>(Below(2)));
  for (std::uint32_t I = Below(4); I > 0; --I) {
    TBeaconZoneItem& Zone = *AComponent.GetZones()->Add();
    if (Below(2) == 0) Zone.SetDisplayName("Zone \"1\" \\ \n ü");
    Zone.SetBeaconProximity(static_cast<TBeaconEditProximity>(Below(3)));
    for (std::uint32_t J = Below(4); J > 0; --J) {
      TBeaconItem& Item = *Zone.GetBeaconList()->Add();
      Item.SetMajor(static_cast<std::uint16_t>(Below(2) * 65535));
      Item.SetUUID(Guid());
      Item.SetEddyNamespace(Namespace());
      Item.SetManufacturerID(Manufacturer());
      Item.SetKindofBeacon(static_cast<TKindofBeacon>(Below(4)));
    }
  }
}

TEST(ComponentFile, WhatIsWrittenReadsBackTheSame) {
  for (std::uint64_t Seed = 1; Seed <= 300; ++Seed) {
    TBeaconZonesFencing First, Second;
    First.SetDesigning(true);
    Second.SetDesigning(true);
    Randomise(First, Seed);
    const std::string Text = WriteComponent(First);
    ReadComponent(Second, Text, "zones.json");
    ASSERT_EQ(WriteComponent(Second), Text) << "seed " << Seed;
    ASSERT_EQ(RegionsOfZones(*Second.GetZones()), RegionsOfZones(*First.GetZones()));
    ASSERT_EQ(Second.GetBeaconManagerOptions()->GetSPC(),
              First.GetBeaconManagerOptions()->GetSPC());
    ASSERT_EQ(Second.GetEnabled(), First.GetEnabled());
  }
}

TEST(ComponentFile, RefusalsNameFileLineAndProperty) {
  const std::vector<std::pair<const char*, std::string>> Cases{
      {"{ 'Zonen': [] }",
       "1: Zonen: there is no such property; there are Enabled, Zones, "
       "BeaconManagerOptions, BaseBeaconGUID, BaseManufacturerID, BaseEddyNamespace"},
      {"{\n 'Zones': {} }", "2: Zones: an array […] is expected here"},
      {"{\n 'Zones': [\n {},\n 5 ] }", "4: Zones[1]: an object {…} is expected here"},
      {"[]", "1: an object {…} is expected here"},
      {"{ 'Enabled': 1 }", "1: Enabled: true or false is expected here"},
      {"{ 'Enabled': null }", "1: Enabled: true or false is expected here"},
      {"{ 'OnZoneEnter': 'x' }",
       "1: OnZoneEnter: an event cannot be set in a file; connect its handler in code"},
      {"{ 'BaseBeaconGUID':\n 'x' }",
       "1: BaseBeaconGUID: 'x' is not a valid GUID value; it looks like "
       "{00112233-4455-6677-8899-AABBCCDDEEFF}"},
      {"{ 'BaseManufacturerID': 280 }", "1: BaseManufacturerID: a text in quotes is expected here"},
      {"{ 'BeaconManagerOptions': { 'ScanningTime': 0 } }",
       "1: BeaconManagerOptions.ScanningTime: Scanning time should be greater than 0"},
      {"{ 'BeaconManagerOptions': { 'ScanningTime': 1.5 } }",
       "1: BeaconManagerOptions.ScanningTime: a whole number from -2147483648 to "
       "2147483647 is expected here"},
      {"{ 'BeaconManagerOptions': { 'SPC': 1e39 } }",
       "1: BeaconManagerOptions.SPC: a number is expected here"},
      {"{ 'BeaconManagerOptions': { 'Mode': 'Fast' } }",
       "1: BeaconManagerOptions.Mode: one of \"Standard\", \"Alternative\" is expected "
       "here, not \"Fast\""},
      {"{ 'Zones': [ { 'BeaconList': [ {}, {\n'Major': 65536 } ] } ] }",
       "2: Zones[0].BeaconList[1].Major: a whole number from 0 to 65535 is expected "
       "here"},
      {"{ 'Zones': [ { 'BeaconList': [ { 'EddyInstance': '00' } ] } ] }",
       "1: Zones[0].BeaconList[0].EddyInstance: Invalid Eddystone instance"},
      {"{ 'Enabled': true,\n 'enabled': true }", "2: \"enabled\" stands here twice"},
      {"{ 'Zones': [\n",
       "2: this is no JSON: syntax error while parsing value - "
       "unexpected end of input; expected '[', '{', or a literal"},
  };
  for (const auto& [Text, Message] : Cases)
    EXPECT_EQ(RefusalOf(Text), "zones.json:" + Message) << Text;
}

TEST(ComponentFile, DepthSizeAndCountsAreBounded) {
  EXPECT_EQ(RefusalOf(std::string(100'000, '[')), "zones.json:1: nested more than 32 levels deep");
  std::string Members;
  for (int I = 0; I < 300; ++I) Members += fmt::format("\"m{}\": 0, ", I);
  EXPECT_EQ(RefusalOf("{" + Members), "zones.json:1: an object of more than 256 members");
  EXPECT_EQ(RefusalOf(std::string(MaxJsonSize + 1, ' ')), "zones.json: longer than 64 MiB");
}

TEST(ComponentFile, ARefusedTextLeavesTheComponentAsItWas) {
  TBeaconZonesFencing Component;
  Component.SetDesigning(true);
  ReadComponent(Component, Example, "zones.json");
  const std::string Before = WriteComponent(Component);
  const std::string Good = R"("BeaconManagerOptions": { "SPC": 0.75 }, "Zones": [], )";
  for (const char* Bad : {R"("Enabled": 5)",
                          R"("Zonen": [])",
                          R"("BaseEddyNamespace": "0")",
                          R"("BaseManufacturerID": "-1" ])"})
    EXPECT_NE(
        Raised<EFileError>([&] { ReadComponent(Component, "{" + Good + Bad + "}", "zones.json"); }),
        "nothing was raised");
  EXPECT_EQ(WriteComponent(Component), Before);
  EXPECT_FALSE(Component.GetComponentState().Contains(TComponentStateFlag::Loading));
}

TEST(ComponentFile, AnEnabledComponentStartsWhenItHasBeenReadWhole) {
  TBeaconZonesFencing Component;
  const auto Source = New<TScriptedSource>(std::vector<TSourceStep>());
  Source->OpenError = "no adapter";
  Component.SetSource(Source);
  EXPECT_EQ(Raised<EBeaconSourceError>([&] { ReadComponent(Component, Example, "zones.json"); }),
            "no adapter");
  EXPECT_FALSE(Component.GetEnabled());
  EXPECT_EQ(Component.GetZones()->GetCount(), 1);
}

TEST(ComponentFile, NumbersAreWrittenShortAndTextsAsUTF8) {
  TBeaconZonesFencing Component;
  Component.GetBeaconManagerOptions()->SetSPC(0.3F);
  Component.GetZones()->Add()->SetDisplayName("\xFF");
  const std::string Text = WriteComponent(Component);
  EXPECT_NE(Text.find("\"SPC\": 0.3\n"), std::string::npos) << Text;
  EXPECT_NE(Text.find("\"\xEF\xBF\xBD\""), std::string::npos) << Text;
}

TEST(ComponentFile, IsReplacedWholeOnDisk) {
  const auto Path = std::filesystem::path(testing::TempDir()) / "wayfence-component.json";
  TBeaconZonesFencing First, Second;
  First.GetZones()->Add()->SetDisplayName("Lobby");
  SaveComponentFile(First, Path);
  LoadComponentFile(Second, Path);
  EXPECT_EQ(WriteComponent(Second), WriteComponent(First));
  std::filesystem::remove(Path);
  EXPECT_EQ(Raised<EFileError>([&] { LoadComponentFile(Second, Path); }),
            Path.string() + ": the file cannot be opened: No such file or directory");
}

}  // namespace
}  // namespace System::Beacon::Fencing
