// Which beacon of a map is the one of a sighting, which one is nearest, in which order they stand.
#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

#include "support/fake_beacon.h"
#include "support/fake_design.h"

namespace System::Beacon::Fencing {
namespace {

/// A map whose entry I has minor I and a sighting for each word: its distance, "?" when unknown,
/// "lost" for one that is not alive, or "-" for no sighting.
TFencingMap MapOf(const std::string& ADistances) {
  std::istringstream Words(ADistances);
  std::vector<TFencingBeacon> Entries;
  for (std::string Word; Words >> Word;) {
    const auto Minor = static_cast<int>(Entries.size());
    TFencingBeacon& Entry = Entries.emplace_back();
    Entry.DesignBeacon = NewFakeDesignBeacon(TestGUID, Minor);
    if (Word == "-") continue;
    const TRef<TFakeBeacon> Sighting = NewFakeBeacon(Minor);
    Sighting->Distance = Word == "?" || Word == "lost" ? -1.0 : std::stod(Word);
    Sighting->Alive = Word != "lost";
    Entry.BTBeacon = Sighting;
  }
  TFencingMap Result;
  Result.BeaconList = TFencingBeacons(std::move(Entries));
  return Result;
}

int MinorOf(const TFencingBeacon& AEntry) {
  return AEntry.DesignBeacon ? AEntry.DesignBeacon->GetMinor() : -1;
}

std::string MinorsOf(const TFencingBeacons& AList) {
  std::string Result;
  for (const TFencingBeacon& Entry : AList) Result += std::to_string(MinorOf(Entry));
  return Result;
}

/// How many neighbours of a list a comparer would swap.
int DisordersIn(const TFencingBeacons& AList, const TComparer<TFencingBeacon>& AComparer) {
  int Result = 0;
  for (std::size_t I = 1; I < AList.GetLength(); ++I)
    Result += AComparer.Compare(AList[I - 1], AList[I]) > 0 ? 1 : 0;
  return Result;
}

// ---------------------------------------------------------------- binding

TEST(TFencingMap, RecognisesABeaconThatIsNotBoundByTheKindOfTheSighting) {
  using K = TKindofBeacon;
  using TChange = void (*)(TFakeBeacon&);
  for (const auto& [What, Kind, Change, IsFound] :
       {std::tuple<const char*, K, TChange, bool>{"iBeacon", K::iBeacon, [](auto&) {}, true},
        {"AltBeacon", K::AltBeacon, [](auto&) {}, true},
        {"both", K::iBeaconAltBeacon, [](auto&) {}, true},
        {"Eddystone", K::Eddystone, [](auto& S) { S.GUID = {}; }, true},
        {"other UUID", K::iBeacon, [](auto& S) { S.GUID = {}; }, false},
        {"other major", K::iBeacon, [](auto& S) { S.Major = 8; }, false},
        {"other minor", K::AltBeacon, [](auto& S) { S.Minor = 8; }, false},
        {"other namespace", K::Eddystone, [](auto& S) { S.UID.Namespace[9] = 1; }, false},
        {"other instance", K::Eddystone, [](auto& S) { S.UID.Instance[5] = 1; }, false},
        {"no iBeacon view", K::iBeacon, [](auto& S) { S.OffersView = false; }, false},
        {"no AltBeacon view", K::AltBeacon, [](auto& S) { S.OffersView = false; }, false},
        {"no Eddystone view", K::Eddystone, [](auto& S) { S.OffersView = false; }, false}}) {
    TFencingMap Map = MapOf("- - -");
    Map.BeaconList[0].DesignBeacon = nullptr;
    const TRef<TFakeDesignBeacon> Design = NewFakeDesignBeacon(TestGUID, 9);
    Design->Major = 7;
    Design->EddyNamespace = "aabb2233445566778899";
    Design->EddyInstance = "0000000000fE";
    Map.BeaconList[2].DesignBeacon = Design;
    const TRef<TFakeBeacon> Sighting = NewFakeBeacon(9, Kind);
    Sighting->Major = 7;
    Sighting->UID.SetNamespace("AABB2233445566778899");
    Sighting->UID.SetInstance("0000000000FE");
    Change(*Sighting);
    TFencingBeacon Found{Sighting, Design};
    EXPECT_EQ(Map.GetFencingBeaconFor(Sighting, Found, false), IsFound) << What;
    EXPECT_EQ(IsSame(Found.DesignBeacon.Get(), Design.Get()), IsFound) << What;
    EXPECT_EQ(IsSame(Map.BeaconList[2].BTBeacon.Get(), Sighting.Get()), IsFound) << What;
  }
}

TEST(TFencingMap, RecognisesABoundBeaconByItsSightingAlone) {
  TFencingMap Map = MapOf("-");
  const TRef<TFakeBeacon> First = NewFakeBeacon(5, TKindofBeacon::Eddystone);
  First->UID.Instance[0] = 1;
  Map.BeaconList[0].BTBeacon = First;
  TFencingBeacon Found;
  EXPECT_FALSE(Map.GetFencingBeaconFor(NewFakeBeacon(0), Found, false));  // fits the design beacon
  EXPECT_FALSE(Map.GetFencingBeaconFor(NewFakeBeacon(0, First->Kind), Found, false));
  const TRef<TFakeBeacon> Again = NewFakeBeacon(6, First->Kind);
  Again->UID = First->UID;
  EXPECT_TRUE(Map.GetFencingBeaconFor(Again, Found, false));
  EXPECT_TRUE(IsSame(Map.BeaconList[0].BTBeacon.Get(), Again.Get()));
}

TEST(TFencingMap, StampsOnlyWhenAskedAndTellsAllCopies) {
  TFencingMap Map = MapOf("- -");
  Map.BeaconList[1].TimeStasmp = 3.0;
  TFencingMap Copy = Map;
  TFencingBeacon Found;
  ASSERT_TRUE(Copy.GetFencingBeaconFor(NewFakeBeacon(1), Found, false));
  EXPECT_EQ(Map.BeaconList[1].TimeStasmp, 3.0);
  EXPECT_EQ(Map.BeaconList[1].BTBeacon, Found.BTBeacon);
  // The record that is filled may be the one that keeps the sighting.
  ASSERT_TRUE(Copy.GetFencingBeaconFor(Found.BTBeacon, Found, true));
  EXPECT_GT(Map.BeaconList[1].TimeStasmp, 3.0);
  EXPECT_EQ(Map.BeaconList[1].TimeStasmp, Found.TimeStasmp);

  ASSERT_TRUE(Copy.GetFencingBeaconFor(TestGUID, 0, 0, Found, true));
  EXPECT_FALSE(Map.BeaconList[0].BTBeacon);
  EXPECT_GT(Map.BeaconList[0].TimeStasmp, 3.0);
  for (const bool IsByIdentity : {false, true}) {
    EXPECT_FALSE(IsByIdentity ? Copy.GetFencingBeaconFor(TestGUID, 1, 0, Found, true)
                              : Copy.GetFencingBeaconFor(nullptr, Found, true));
    EXPECT_EQ(MinorOf(Found), -1);
  }
}

// ---------------------------------------------------------------- distances

TEST(TFencingMap, OrdersByKnownDistanceThenUnknownThenUnseen) {
  struct TCase {
    const char *Distances, *Order;
    int Nearest;
    bool IsSeen;
    int Active;
  };
  for (const TCase& C : {TCase{"", "", -1, false, 0},
                         TCase{"- -", "01", 1, false, 0},
                         TCase{"- ? nan -", "1203", 3, false, 2},
                         TCase{"- lost 4 3 -", "32104", 3, true, 2},
                         TCase{"2 nan 0 inf 0 - 5", "2406315", 2, true, 6},
                         TCase{"inf -", "01", 0, true, 1}}) {
    const TFencingMap Map = MapOf(C.Distances);
    const TFencingBeacons Ordered = Map.OrderedBeaconList();
    EXPECT_EQ(MinorsOf(Ordered), C.Order) << C.Distances;
    EXPECT_EQ(DisordersIn(Ordered, TFencingBeaconComparer()), 0) << C.Distances;
    EXPECT_EQ(MinorOf(Map.NearestBeacon()), C.Nearest) << C.Distances;
    EXPECT_EQ(static_cast<bool>(Map.NearestBeacon().BTBeacon), C.IsSeen) << C.Distances;
    EXPECT_EQ(Map.GetActiveBeaconsCount(), C.Active) << C.Distances;
  }
}

TEST(TFencingMap, OrdersByTheDistanceToAPointInCalculatorUnits) {
  TFencingMap Map = MapOf("9 ? - 7 7 7 7");
  const TPointF Places[] = {{3, 4}, {2, 0}, {1, 0}, {NAN, 0}, {0, 0}, {2, 0}};
  for (int I = 0; I < 6; ++I)
    Map.BeaconList[I].DesignBeacon = NewFakeDesignBeacon(TestGUID, I, Places[I]);
  Map.BeaconList[6].DesignBeacon = nullptr;
  const TFencingBeacons Ordered = Map.OrderedBeaconListTo({100, 0});
  EXPECT_EQ(MinorsOf(Ordered), "14503-12");  // 1, 4 and 5 are all 100 away, "-1" is nowhere
  EXPECT_EQ(DisordersIn(Ordered, TFencingBeaconToPointComparer({100, 0})), 0);
  EXPECT_TRUE(Map.OrderedBeaconListTo({0, 0}).IsEmpty());
}

// ---------------------------------------------------------------- zones

TEST(TFencingMap, FindsZonesUnderAPointInTheirOrder) {
  TFencingMap Map;
  const TRef<IDesignZone> Hall = New<TFakeDesignZone>("Hall", TRectF{0, 0, 10, 10});
  const TRef<IDesignZone> Desk = New<TFakeDesignZone>("Desk", TRectF{2, 2, 4, 4});
  Map.Zones = {nullptr, Desk, Hall};
  EXPECT_EQ(Map.PointBelongsZone({3, 3}), Desk);
  EXPECT_EQ(Map.PointBelongsZone({5, 5}), Hall);
  EXPECT_FALSE(Map.PointBelongsZone({10, 5}));
  const TArray<TRef<IDesignZone>> Both = Map.GetZonesOverPoint({3, 3});
  EXPECT_EQ(std::vector(Both.begin(), Both.end()), (std::vector{Desk, Hall}));
}

}  // namespace
}  // namespace System::Beacon::Fencing
