// Zones over a point, found and asked one by one.
#include "runtimepaint/zone_finder.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <random>
#include <thread>

#include "map/project_builder.h"
#include "runtimepaint/project_extraction.h"

namespace System::Beacon::Fencing {
namespace {

using namespace Scene::Beacons;

/// A zone that reaches beyond its rectangle.
class TWideZone final : public TZoneOf<Scene::TRectangle> {
 public:
  bool IsUnderGlobalPoint(TPointF APoint) const override { return APoint.X > 40.0F; }
};

/// Zones of all kinds on a floor of 50 by 50.
class TRandomZones {
 public:
  explicit TRandomZones(unsigned ASeed)
      : FRandom(ASeed), FBuilder("Zones"), FMap(FBuilder.AddMap("M", 50, 50)) {
    for (int I = 0; I < 60; ++I) AddZone(I);
    FShapes[0]->GetSceneParent()->AddChild(New<TWideZone>());
    Record = ExtractProject(*FBuilder.GetScene());
  }

  /// One zone moves, turns, grows; now and then all of them move with their map.
  void ChangeSomething() {
    Scene::IShape& Shape = *FShapes[FRandom() % FShapes.size()];
    const auto Points = Supports<Scene::IControlPointsShape>(&Shape);
    switch (FRandom() % 6) {
      case 0:
        Shape.SetRotation(Number(0, 6));
        break;
      case 1:
        Shape.SetScaling({Number(0.1F, 6), Number(0.1F, 2)});
        break;
      case 2:
        Shape.SetRect({0, 0, Number(0, 10), Number(0, 10)});
        break;
      case 3:
        if (Points) Points->SetControlPointAt(1, Point());
        break;
      case 4:
        Supports<Scene::IShape>(FMap.GetMap())->SetDisplacement({Number(-5, 5), Number(-5, 5)});
        break;
      default:
        Shape.SetDisplacement(Points ? TPointF{Number(-5, 5), Number(-5, 5)} : Point());
    }
  }
  void TakeOneOut() { FShapes[0]->Detach(); }
  TPointF Point() { return {Number(-10, 60), Number(-10, 60)}; }
  /// A corner of a zone.
  TPointF Corner() {
    return FShapes[FRandom() % FShapes.size()]->GetGlobalCorners().Points[FRandom() % 4];
  }

  TFencingProject Record;

 private:
  float Number(float AFrom, float ATo) {
    return std::uniform_real_distribution<float>(AFrom, ATo)(FRandom);
  }
  void AddZone(int AKind) {
    const std::string Name = fmt::format("Z{}", AKind);
    const TPointF At = Point();
    const std::array<TPointF, 3> Corners{At, At + TPointF{Number(0, 9), 1}, At + TPointF{2, 5}};
    if (AKind % 3 == 0)
      FShapes.emplace_back(FMap.AddZone(Name, {At.X, At.Y, At.X + Number(0, 9), At.Y + 3}));
    else if (AKind % 3 == 1)
      FShapes.emplace_back(FMap.AddCircularZone(Name, At, Number(0.1F, 6)));
    else
      FShapes.emplace_back(FMap.AddPathZone(Name, Corners));
  }

  std::mt19937 FRandom;
  TProjectBuilder FBuilder;
  TMapBuilder FMap;
  std::vector<TRef<Scene::IShape>> FShapes;
};

void ExpectSameAsWalk(const TFencingMap& AMap, TPointF APoint) {
  TFencingMap Walked = AMap;
  Walked.ZoneFinder = nullptr;
  const auto Found = AMap.GetZonesOverPoint(APoint), Expected = Walked.GetZonesOverPoint(APoint);
  ASSERT_EQ(std::vector(Found.begin(), Found.end()), std::vector(Expected.begin(), Expected.end()))
      << APoint.X << ", " << APoint.Y;
  ASSERT_EQ(AMap.PointBelongsZone(APoint), Walked.PointBelongsZone(APoint));
}

TEST(ZoneFinder, AnswersAsIfEveryZoneWereAsked) {
  for (unsigned Seed = 1; Seed <= 20; ++Seed) {
    TRandomZones Zones(Seed);
    const TFencingMap& Map = Zones.Record.Maps[0];
    std::vector<std::int32_t> Near;
    ASSERT_TRUE(Map.ZoneFinder->FindNear(Map.Zones, {20, 20}, Near));
    EXPECT_LT(Near.size(), 30U);
    for (int Step = 0; Step < 100; ++Step) {
      Zones.ChangeSomething();
      ExpectSameAsWalk(Map, Zones.Point());
      ExpectSameAsWalk(Map, Zones.Corner());
    }
    Near.clear();
    EXPECT_TRUE(Map.ZoneFinder->FindNear(Map.Zones, {20, 20}, Near));
    EXPECT_FALSE(Map.ZoneFinder->FindNear(Map.Zones.Copy(), {20, 20}, Near));
    Zones.TakeOneOut();
    for (int Step = 0; Step < 20; ++Step) ExpectSameAsWalk(Map, Zones.Point());
  }
}

TEST(ZoneFinder, IsAskedByThreadsWhileZonesMove) {
  TRandomZones Zones(1);
  const TFencingMap& Map = Zones.Record.Maps[0];
  std::atomic<bool> IsDone = false;
  std::atomic<int> Missed = 0;
  std::thread Reader([&] {
    std::vector<std::int32_t> Near;
    do {
      Near.clear();
      if (!Map.ZoneFinder->FindNear(Map.Zones, {20, 20}, Near) || Near.back() != 60) ++Missed;
    } while (!IsDone);
  });
  for (int Step = 0; Step < 2000; ++Step) Zones.ChangeSomething();
  IsDone = true;
  Reader.join();
  EXPECT_EQ(Missed, 0) << "the zone of unknown extent is always found";
}

}  // namespace
}  // namespace System::Beacon::Fencing
