// What the map component gets of a scene.
#include "runtimepaint/project_extraction.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "map/project_builder.h"
#include "runtimepaint/monitored_regions.h"

namespace System::Beacon::Fencing {
namespace {

using Scene::TMode;
using namespace Scene::Beacons;
using TMapBeacon = Scene::Beacons::TBeacon;

constexpr const char* UUID1 = "11111111-1111-1111-1111-111111111111";
constexpr const char* UUID2 = "22222222-2222-2222-2222-222222222222";

/// "kind uuid major minor manufacturer", "*" for any; Eddystone: "2 namespace instance".
std::string TextOf(const TBeaconsRegion& ARegion) {
  const auto Number = [](auto A) { return A ? std::to_string(*A) : std::string("*"); };
  const auto Kind = static_cast<int>(ARegion.KindofBeacon);
  const TEddysUIDRegion& UID = ARegion.EddysUIDRegion;
  if (ARegion.KindofBeacon == TKindofBeacon::Eddystone)
    return fmt::format("2 {} {}; ", UID.GetNamespaceST().substr(18), UID.GetInstanceST());
  const TiBAltBeaconRegion& Part = ARegion.iBAltBeaconRegion;
  const std::string Numbers = Number(Part.Major) + " " + Number(Part.Minor);
  return fmt::format(
      "{} {} {} {}; ", Kind, GUIDToString(Part.GUID)[1], Numbers, Part.ManufacturerID);
}

struct TSpec {
  TKindofBeacon Kind;
  const char* Identity;  // a UUID, or the last two digits of a namespace
  int Major;             // or the instance
  int Minor = 0;
  const char* MID = "-1";
};

TRef<TMapBeacon> Make(const TSpec& ASpec) {
  const TRef<TMapBeacon> Result = New<TMapBeacon>();
  Result->SetKindofBeacon(ASpec.Kind);
  Result->SetManufacturerID(ASpec.MID);
  if (ASpec.Kind == TKindofBeacon::Eddystone) {
    Result->SetEddyNamespace(fmt::format("{:0>20}", ASpec.Identity));
    Result->SetEddyInstance(fmt::format("{:012}", ASpec.Major));
    return Result;
  }
  Result->SetGUID(StringToGUID(fmt::format("{{{}}}", ASpec.Identity)));
  Result->SetMajor(ASpec.Major);
  Result->SetMinor(ASpec.Minor);
  return Result;
}

TEST(MonitoredRegions, WidenAsFarAsTheirBeaconsNeed) {
  constexpr auto Both = TKindofBeacon::iBeaconAltBeacon, IBeacon = TKindofBeacon::iBeacon,
                 Eddystone = TKindofBeacon::Eddystone;
  struct TCase {
    std::vector<TSpec> Beacons;
    const char* Regions;
  };
  for (const TCase& C :
       {TCase{{{Both, UUID1, 1, 7}}, "3 1 1 7 -1; "},
        TCase{{{Both, UUID1, 1, 7}, {Both, UUID1, 1, 8}}, "3 1 1 * -1; "},
        TCase{{{Both, UUID1, 1, 7}, {Both, UUID1, 2, 8}, {Both, UUID1, 1, 9}}, "3 1 * * -1; "},
        TCase{{{Both, UUID1, 1, 7, "4C"}, {Both, UUID1, 1, 8, "004C"}}, "3 1 1 * 76; "},
        TCase{{{Both, UUID1, 1, 7, "4C"}, {Both, UUID1, 1, 8}}, "3 1 1 * -1; "},
        TCase{{{Both, UUID1, 1, 7}, {IBeacon, UUID1, 1, 8}, {Both, UUID2, 1, 7}},
              "3 1 1 7 -1; 0 1 1 8 -1; 3 2 1 7 -1; "},
        TCase{{{Eddystone, "AB", 1}, {Eddystone, "AB", 1}}, "2 AB 000000000001; "},
        TCase{{{Eddystone, "AB", 1}, {Eddystone, "AB", 2}, {Eddystone, "CD", 1}},
              "2 AB ; 2 CD 000000000001; "},
        TCase{{{Both, UUID1, 65536, 0}, {Both, UUID1, 0, -1}}, ""}}) {
    TMonitoredRegions Regions;
    for (const TSpec& Spec : C.Beacons) Regions.Add(*Make(Spec));
    std::string Text;
    for (const TBeaconsRegion& Region : Regions.GetRegions()) Text += TextOf(Region);
    EXPECT_EQ(Text, C.Regions);
  }
}

TEST(ProjectExtraction, TakesMapsPathsAndPointsOfInterestInOrder) {
  TProjectBuilder Builder("House");
  Builder.Connect("Up", "Down");  // stands before the maps
  TMapBuilder Ground = Builder.AddMap("Ground", 10, 10);
  TMapBuilder Roof = Builder.AddMap("Roof", 10, 10);
  Describe(*Ground.AddZone("Hall", {0, 0, 4, 4}), "door", "open");
  Ground.AddBeacon("B1", {1, 2}, UUID1, 1, 1);
  Ground.AddPath("P", {{"Up", {2, 2}}, {"Kitchen", {8, 2}}});
  Roof.AddCircularZone("Pool", {5, 5}, 2);
  Roof.AddPath("Q", {{"Down", {2, 2}}, {"Chair", {9, 9}}});
  TFencingProject Project = ExtractProject(*Builder.GetScene());

  std::string Pois;
  for (const TBeaconFencingPOI& Poi : Project.PoiList.PoiList)
    Pois += fmt::format("{} {} at {},{}; ", Poi.Name, Poi.MapIndex, Poi.Position.X, Poi.Position.Y);
  EXPECT_EQ(Pois,
            "Up 0 at 2,2; Kitchen 0 at 8,2; Down 1 at 2,2; Chair 1 at 9,9; B1 0 at 1,2; "
            "Hall 0 at 2,2; Pool 1 at 5,5; ");
  EXPECT_EQ(Project.PoiList.FindPOIByKey("door").GetLength(), 1U);
  EXPECT_EQ(Project.Graph.GetPathEdges().GetLength(), 3U);
  EXPECT_EQ(Project.CurrentMapIndex, 0);
  EXPECT_TRUE(Ground.GetMap()->GetMode().Contains(TMode::Visible));
  EXPECT_FALSE(Roof.GetMap()->GetMode().ContainsSomeMode({TMode::Visible, TMode::Active}));
  EXPECT_TRUE(Project.RouteTo(3, {1, 1}));
  EXPECT_EQ(Project.Graph.LastCalculatedPath.Get().GetLength(), 3U);
  EXPECT_EQ(Project.Maps[0].PointBelongsZone({1, 1})->GetName(), "Hall");

  EXPECT_EQ(ExtractProject(*New<Scene::TScene>()).CurrentMapIndex, 0);
}

}  // namespace
}  // namespace System::Beacon::Fencing
