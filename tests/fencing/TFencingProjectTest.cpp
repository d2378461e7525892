// A project: sightings among its maps, points of interest, routes, and all of it on many threads.
#include <gtest/gtest.h>

#include <limits>
#include <thread>

#include "platform/beacons/sighting.h"
#include "platform/random.h"
#include "support/estimator.h"
#include "support/raised.h"

namespace System::Beacon::Fencing {
namespace {

using TNodes = std::vector<std::int32_t>;

/// Three maps. On map 0 the nodes 0 - 1 - 2, on map 1 node 3 beside 2 and node 4 beside 0, on map 2
/// the lonely node 5. From 3 to 1 a route leads over map 0, from 2 to 4 too.
struct TProject {
  TFencingProject Project;
  std::array<TRef<TFakeDesignMap>, 3> Maps;

  TProject() {
    std::vector<TFencingMap> All;
    for (TRef<TFakeDesignMap>& Map : Maps) {
      Map = New<TFakeDesignMap>();
      All.emplace_back().Map = Map;
    }
    Project.Maps = TArray<TFencingMap>(std::move(All));
    Project.CurrentMapIndex = 0;
    Project.Graph.Initialize(
        {{{0, 0}, 0}, {{10, 0}, 0}, {{10, 20}, 0}, {{10, 20}, 1}, {{0, 0}, 1}, {{5, 5}, 2}},
        {{0, 1}, {1, 2}, {2, 3}, {0, 4}, {1, 77}, {-1, 0}});
    Project.GlobalPath.SetLength(6);
    Project.PoiList.AddPOI({"Printer", {9, 18}, {{"floor", "first"}, {"door", "left"}}, 1});
    Project.PoiList.AddPOI({"Desk", {30, 30}, {{"indoor", "yes"}}, 0, TPOIType::poiBeacon});
    Project.PoiList.AddPOI({"Hall", {25, 13}, {}, 0, TPOIType::poiZone});
    Project.PoiList.AddPOI({"Attic", {1, 1}, {}, 2});
  }

  void AddBeacon(std::size_t AMap, int AMinor, TRef<IBeacon> ASighting = nullptr) {
    Project.Maps[AMap].BeaconList.Append({ASighting, NewFakeDesignBeacon(TestGUID, AMinor)});
  }
  void AddZone(const char* AName, const TRectF& ARect) {
    Project.Maps[0].Zones = {New<TFakeDesignZone>(AName, ARect)};
  }
  std::vector<TNodes> Shown() const {
    return {Maps[0]->ShownPath, Maps[1]->ShownPath, Maps[2]->ShownPath};
  }
};

// ---------------------------------------------------------------- sightings

TEST(TFencingProject, BindsASightingOnTheFirstMapThatHasItsBeacon) {
  TProject P;
  P.AddBeacon(0, 1);
  P.AddBeacon(1, 2);
  P.AddBeacon(2, 2);
  TFencingProject Copy = P.Project;
  TFencingBeacon Found{NewFakeBeacon(2), nullptr};
  std::int32_t MapIndex = 7;
  EXPECT_TRUE(Copy.BeaconBelognsToProject(Found.BTBeacon, MapIndex, Found, true));
  EXPECT_EQ(MapIndex, 1);
  EXPECT_EQ(P.Project.Maps[1].BeaconList[0].BTBeacon, Found.BTBeacon);
  EXPECT_FALSE(P.Project.Maps[2].BeaconList[0].BTBeacon);
  EXPECT_TRUE(Copy.BeaconBelognsToProject(TestGUID, 0, 1, MapIndex, Found, false));
  EXPECT_EQ(MapIndex, 0);
  EXPECT_FALSE(Copy.BeaconBelognsToProject(NewFakeBeacon(3), MapIndex, Found, false));
  EXPECT_EQ(MapIndex, -1);
  EXPECT_FALSE(Found.DesignBeacon);

  for (const int Index : {-1, 0, 2, 3})
    EXPECT_EQ(Copy.BeaconBelongsToMap(NewFakeBeacon(2), Index, Found), Index == 2) << Index;

  const TRef<IBeacon> Sighting = NewFakeBeacon(1);
  EXPECT_TRUE(Copy.RemoveBeaconInfo(Sighting).DesignBeacon);
  EXPECT_FALSE(Copy.RemoveBeaconInfo(Sighting).BTBeacon);
  EXPECT_EQ(P.Project.Maps[0].BeaconList[0].BTBeacon, Sighting);
  EXPECT_EQ(Copy.AddBeaconInfo(Sighting).BTBeacon, Sighting);
  EXPECT_FALSE(Copy.AddBeaconInfo(NewFakeBeacon(3)).BTBeacon);
}

TEST(TFencingProject, TheNearestMapHasTheNearestKnownSighting) {
  constexpr double None = -2.0, Unknown = -1.0;
  struct TCase {
    std::array<double, 3> Distances;  // one beacon on each map
    double Before;                    // what the record holds
    std::int32_t Nearest;
    double Found;
  };
  for (const TCase& C : {TCase{{3, 2, 2}, None, 1, 2},
                         TCase{{None, Unknown, None}, None, 2, None},
                         TCase{{Unknown, 9, Unknown}, Unknown, 1, 9},
                         TCase{{3, 2, 2}, 2, -1, 2},
                         TCase{{3, None, 1}, 2, 2, 1}}) {
    const auto SightingAt = [](double ADistance) {
      return ADistance == None ? nullptr : NewFencingBeacon(0, {}, ADistance).BTBeacon;
    };
    TProject P;
    for (std::size_t I = 0; I < 3; ++I) P.AddBeacon(I, 0, SightingAt(C.Distances[I]));
    TFencingBeacon Found{SightingAt(C.Before), nullptr};
    EXPECT_EQ(P.Project.NearestMap(Found), C.Nearest);
    EXPECT_EQ(Found.BTBeacon ? Found.BTBeacon->GetDistance() : None, C.Found);
  }
}

TEST(TFencingProject, TheCurrentMapIsOneOfItsMaps) {
  TProject P;
  for (const std::int32_t Index : {-1, 3})
    EXPECT_EQ(Raised<EComponentError>([&] { P.Project.SetCurrentMapIndex(Index); }),
              std::to_string(Index) + " is not a valid map index");
  EXPECT_EQ(P.Project.CurrentMapIndex, 0);
}

// ---------------------------------------------------------------- points of interest

TEST(TBeaconFencingPOIList, FindsByNameAndByPiecesOfInformation) {
  const TBeaconFencingPOIList List = TProject().Project.PoiList;
  EXPECT_EQ(List.FindPOI("Desk").Position, (TPointF{30, 30}));
  EXPECT_EQ(List.FindPOI("desk").Name, "");
  const auto Names = [](const TArray<TBeaconFencingPOI>& APoints) {
    std::string Result;
    for (const TBeaconFencingPOI& Point : APoints) Result += Point.Name + " ";
    return Result;
  };
  EXPECT_EQ(Names(List.FindPOIByKey("oor")), "Printer Printer Desk ");
  EXPECT_EQ(Names(List.FindPOIByKey("Oor")), "");
  EXPECT_EQ(Names(List.FindPOIByValue("f")), "Printer Printer ");
}

TEST(TFencingProject, IsCloseToAPointOfInterestByItsType) {
  constexpr float NaN = std::numeric_limits<float>::quiet_NaN();
  struct TCase {
    const char* Poi;  // node, beacon, zone
    TPointF Place, Position;
    bool IsClose;
  };
  // The nearest node of all places is node 1 at (10, 0); the zone is 10 wide and 6 high.
  for (const TCase& C : {TCase{"node", {40, 10}, {41.49F, 10}, true},
                         TCase{"node", {40, 10}, {41.5F, 10}, false},
                         TCase{"node", {40, 10}, {10, 0}, false},
                         TCase{"beacon", {14, 0}, {14, 1.99F}, true},
                         TCase{"beacon", {14, 0}, {14, 2}, false},
                         TCase{"beacon", {14, 0}, {10, 1.49F}, true},
                         TCase{"beacon", {14, 0}, {10, 1.5F}, false},
                         TCase{"zone", {25, 3}, {10, 1.49F}, true},
                         TCase{"zone", {25, 3}, {25, 4.9F}, true},
                         TCase{"zone", {25, 3}, {28.9F, 3}, true},
                         TCase{"zone", {25, 3}, {29, 3}, false},
                         TCase{"zone", {21, 3}, {24.9F, 3}, true},
                         TCase{"zone", {21, 3}, {19.9F, 3}, false},
                         TCase{"other", {25, 3}, {25, 3}, false},
                         TCase{"zone", {31, 3}, {30.5F, 3}, false},
                         TCase{"node", {40, 10}, {NaN, 10}, false}}) {
    const std::string Type = C.Poi;
    TProject P;
    P.AddZone("zone", {20, 0, 30, 6});
    const TPOIType Kind = Type == "node"     ? TPOIType::poiPathNode
                          : Type == "beacon" ? TPOIType::poiBeacon
                                             : TPOIType::poiZone;
    P.Project.PoiList = {};
    P.Project.PoiList.AddPOI({Type, C.Place, {}, 0, Kind});
    EXPECT_EQ(P.Project.IsCloseToPoi(C.Position, 0), C.IsClose)
        << Type << " " << C.Position.X << " " << C.Position.Y;
    P.Project.SetCurrentMapIndex(1);
    EXPECT_FALSE(P.Project.IsCloseToPoi(C.Position, 0));
  }
  EXPECT_FALSE(TProject().Project.IsCloseToPoi({}, 4));
  TFencingProject Empty;
  Empty.PoiList.AddPOI({"zone", {}, {}, 0, TPOIType::poiZone});
  EXPECT_FALSE(Empty.IsCloseToPoi({}, 0));
}

// ---------------------------------------------------------------- routes

TEST(TFencingProject, ShowsTheWholeRouteOnEveryMapThatItTouches) {
  struct TCase {
    std::int32_t Map;
    TPointF From;
    std::int32_t Target;
    bool IsFound;
    std::vector<TNodes> Shown;
  };
  const TNodes There{3, 2, 1, 0, 4}, Short{1, 2}, Lonely{5};
  for (const TCase& C : {TCase{1, {9, 20}, 4, true, {There, There, {}}},
                         TCase{0, {9, 1}, 2, true, {Short, {}, {}}},
                         TCase{0, {9, 1}, 5, true, {{}, {}, Lonely}},
                         TCase{0, {9, 1}, 6, false, {{}, {}, {}}},
                         TCase{0, {9, 1}, -1, false, {{}, {}, {}}}}) {
    TProject P;
    P.Project.SetCurrentMapIndex(C.Map);
    EXPECT_EQ(P.Project.RouteTo(C.Target, C.From, 0, 0), C.IsFound) << C.Target;
    EXPECT_EQ(P.Shown(), C.Shown) << C.Target;
    for (const auto& Map : P.Maps) {
      EXPECT_EQ(Map->Showings, C.IsFound ? 1 : 0) << C.Target;
      EXPECT_EQ(Map->ShownPoints, C.IsFound ? 6U : 0U) << C.Target;
    }
    EXPECT_EQ(P.Project.Graph.LastCalculatedPath.IsEmpty(), !C.IsFound) << C.Target;
  }
}

TEST(TFencingProject, RoutesToPointsOfInterestAndForgetsThePicture) {
  TProject P;
  TFencingProject Copy = P.Project;
  EXPECT_TRUE(Copy.RouteTo(0, {0, 1}));  // node 3 is nearest to it on its map, though 4 is nearer
  EXPECT_EQ(P.Shown(), (std::vector<TNodes>{{0, 1, 2, 3}, {0, 1, 2, 3}, {}}));
  for (const std::int32_t Index : {-1, 4}) EXPECT_FALSE(Copy.RouteTo(Index, TPointF{0, 1}));
  for (const TPointF On : {TPointF{5, 0}, {10, 7.5F}})
    EXPECT_TRUE(P.Project.IsPointInLastRoute(On)) << On.X;
  for (const TPointF Off : {TPointF{5, 3}, {0, 0}, {12, 0}})
    EXPECT_FALSE(P.Project.IsPointInLastRoute(Off)) << Off.X;
  Copy.ClearRoute();
  EXPECT_EQ(P.Shown(), std::vector<TNodes>(3));
  EXPECT_TRUE(P.Project.IsPointInLastRoute({5, 0}));
  TProject Next;
  EXPECT_FALSE(Next.Project.IsPointInLastRoute({5, 0}));
  EXPECT_FALSE(TFencingProject().RouteTo(0, {}, 0, 0));
}

TEST(TFencingProject, HandsOutTheLinksWithinAMap) {
  const TProject P;
  const TPathSegments Segments = P.Project.GetPathSegmentsForMap(0);
  ASSERT_EQ(Segments.GetLength(), 2U);
  EXPECT_EQ(Segments[1].P1, (TPointF{10, 0}));
  EXPECT_EQ(Segments[1].P2, (TPointF{10, 20}));
  for (const int Map : {1, -1}) EXPECT_TRUE(P.Project.GetPathSegmentsForMap(Map).IsEmpty());
}

// ---------------------------------------------------------------- threads

constexpr std::uint32_t Beacons = 16;  // on each map

bool IsWhole(const TFencingBeacon& AEntry) {
  return AEntry.DesignBeacon &&
         (!AEntry.BTBeacon || AEntry.BTBeacon->GetMinor() == AEntry.DesignBeacon->GetMinor());
}

void BindAtRandom(TFencingProject AProject, std::uint64_t ASeed) {
  TRandomStream Random(ASeed);
  for (int Round = 0; Round < 2000; ++Round) {
    const std::uint32_t Minor = Random.NextBelow(3 * Beacons);
    TBeaconFrame Frame;
    Frame.Id = TestGUID.Bytes.data();
    Frame.Minor = static_cast<std::uint16_t>(Minor);
    const TRef<TSighting> Sighting = NewSighting(Frame);
    TFencingBeacon Found;
    std::int32_t MapIndex = -1;
    EXPECT_TRUE(AProject.BeaconBelognsToProject(Sighting, MapIndex, Found, Round % 2 == 0));
    EXPECT_EQ(MapIndex, static_cast<std::int32_t>(Minor / Beacons));
    EXPECT_TRUE(IsSame(Found.BTBeacon.Get(), Sighting.Get()));
    Sighting->SetDistance(static_cast<double>(Random.NextBelow(50)) - 2.0);
  }
}

void ReadOrders(const TFencingProject& AProject) {
  for (int Round = 0; Round < 300; ++Round) {
    TFencingBeacon Nearest;
    EXPECT_GE(AProject.NearestMap(Nearest), 0);
    EXPECT_TRUE(IsWhole(Nearest));
    for (const TFencingMap& Map : AProject.Maps) {
      EXPECT_LE(Map.GetActiveBeaconsCount(), static_cast<std::int32_t>(Beacons));
      for (const TFencingBeacons& List :
           {Map.OrderedBeaconList(), Map.OrderedBeaconListTo({100, 100})}) {
        EXPECT_EQ(List.GetLength(), Beacons);
        for (const TFencingBeacon& Entry : List) EXPECT_TRUE(IsWhole(Entry));
      }
    }
  }
}

void Route(TFencingProject AProject, std::int32_t ATarget) {
  for (int Round = 0; Round < 2000; ++Round)
    AProject.Graph.CalculateMinimalPath(Round % 3, ATarget);
}

void ReadRoutes(const TFencingProject& AProject) {
  for (int Round = 0; Round < 2000; ++Round) {
    const TArray<TRouteStep> Last = AProject.Graph.LastCalculatedPath;
    if (!Last.IsEmpty()) {
      EXPECT_EQ((Last.end() - 1)->second, 1);
    }
    AProject.IsPointInLastRoute({5, 0});
  }
}

TEST(TFencingProject, IsBoundReadAndRoutedOnManyThreads) {
  TProject P;
  for (std::uint32_t Minor = 0; Minor < 3 * Beacons; ++Minor)
    P.AddBeacon(Minor / Beacons, static_cast<int>(Minor));
  std::vector<std::thread> Threads;
  for (const std::uint64_t Seed : {1, 2}) Threads.emplace_back(BindAtRandom, P.Project, Seed);
  for (int I = 0; I < 2; ++I) Threads.emplace_back(ReadOrders, P.Project);
  for (const std::int32_t Target : {3, 4}) Threads.emplace_back(Route, P.Project, Target);
  Threads.emplace_back(ReadRoutes, P.Project);
  for (std::thread& Thread : Threads) Thread.join();
  EXPECT_FALSE(P.Project.Graph.LastCalculatedPath.IsEmpty());
}

}  // namespace
}  // namespace System::Beacon::Fencing
