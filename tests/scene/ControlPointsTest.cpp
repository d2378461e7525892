// Shapes of control points: what they announce, bound, contain, connect and draw.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "platform/errors.h"
#include "positioning/System.Beacon.Fencing.Math.h"
#include "scene/System.Beacon.Fencing.Scene.Shapes.h"
#include "scene/canvas/System.Beacon.Fencing.Canvas.Wyx.h"
#include "support/pictures.h"

namespace System::Beacon::Fencing::Scene {
namespace {

using TPoints = std::vector<TPointF>;

/// Points that are joined, without nodes at them.
class TLines final : public TConnectedControlPointsShape {
 public:
  void AddNodeConnections(std::span<const TStringPair>) override {}
  TNodeConnections GetNodeConnections() override { return {}; }
  TPathNodes GetControlPointNodes() override { return {}; }
  void AdjustNodes() override {}
};

template <class T>
TRef<T> Make(const TPoints& APoints) {
  const TRef<T> Result = New<T>();
  for (const TPointF Point : APoints) Result->AddControlPoint(Point);
  return Result;
}

std::string Text(const TRectF& R) {
  return fmt::format("{},{},{},{}", R.Left, R.Top, R.Right, R.Bottom);
}

class TLoggedRegion final : public TInterfacedObject, public virtual Canvas::IInvalidateRegion {
 public:
  explicit TLoggedRegion(std::string* ALog) : FLog(ALog) {}
  void InvalidateRect(const TRectF& R) override { *FLog += "paint " + Text(R) + "; "; }
  void Invalidate() override { *FLog += "paint all; "; }

 private:
  std::string* FLog;
};

TEST(TControlPointsShape, AnnouncesPointsThenTheRectangleAndRepaintsBothPlaces) {
  std::string Log;
  const TRef<TScene> Scene = New<TScene>();
  const TRef<TPolygonShape> Shape = New<TPolygonShape>();
  Scene->AddChild(Shape);
  Scene->SetInvalidator(New<TLoggedRegion>(&Log));
  Shape->ConnectWillMove([&](ISceneNode*) { Log += "will; "; });
  Shape->ConnectDidMove([&](ISceneNode*) { Log += "did; "; });
  Shape->ConnectControlPointsChange(
      [&](IControlPointsShape*, bool AResized) { Log += AResized ? "resized; " : "points; "; });
  Shape->ConnectRectChange([&](ISceneNode*, const TRectF& AOld, const TRectF& ANew) {
    Log += Text(AOld) + ">" + Text(ANew) + "; ";
  });
  TPolygonShape& S = *Shape;
  const auto Expect = [&](const char* AText) { EXPECT_EQ(std::exchange(Log, {}), AText); };
  const auto Set = [&](const TPoints& APoints) { S.SetControlPoints(APoints); };
  constexpr float Infinity = std::numeric_limits<float>::infinity();

  S.AddControlPoint({0, 0});
  Expect("resized; 0,0,0,0>0,0,0,0; paint -5,-5,5,5; ");
  S.AddControlPoint({10, 0});
  Expect("resized; 0,0,0,0>0,0,10,0; paint -5,-5,15,5; ");
  S.AddControlPoint({10, 10});
  Expect("resized; 0,0,10,0>0,0,10,10; paint -5,-5,15,15; ");
  S.AddControlPoint({5, 5});
  Expect("resized; paint -5,-5,15,15; ");
  S.SetControlPointAt(3, {6, 7});
  Expect("points; paint -5,-5,15,15; ");
  S.RemoveControlPoint(3);
  Expect("resized; paint -5,-5,15,15; ");
  S.SetControlPointAt(2, {8, 30});
  Expect("points; 0,0,10,10>0,0,10,30; paint -5,-5,15,35; ");
  S.RemoveControlPoint(2);
  Expect("resized; 0,0,10,30>0,0,10,0; paint -5,-5,15,5; ");
  S.SetDisplacement({20, 2});
  Expect("will; points; did; paint -5,-5,35,7; ");
  S.SetRect({20, 2, 40, 9});  // has no height to be stretched
  Expect("points; 20,2,30,2>20,2,40,2; paint 15,-3,45,7; ");
  Set({{40, 2}, {20, 2}});
  Expect("points; paint 15,-3,45,7; ");
  S.AddControlPointAtIndex(1, {30, 12});
  Expect("");
  S.SetRect({0, 0, 10, 100});
  Expect("points; 20,2,40,12>0,0,10,100; paint -5,-5,45,105; ");
  Set({{3, 4}});
  Expect("resized; 0,0,10,100>3,4,3,4; paint -5,-5,15,105; ");
  S.SetRect({10, 10, 30, 20});  // a single point goes to the centre
  Expect("paint -2,-1,25,20; ");
  S.AddControlPoint({Infinity, 5});
  S.AddControlPointAtIndex(2, {5, 5});
  S.SetControlPointAt(1, {1, 1});
  S.SetControlPointAt(0, {1, -Infinity});
  S.RemoveControlPoint(1);
  S.SetDisplacement({Infinity, 0});
  S.SetRect({0, 0, Infinity, 1});
  Set({{1, Infinity}});
  Expect("");
  S.RemoveControlPoints();
  Expect("resized; 20,15,20,15>0,0,0,0; paint -5,-5,25,20; ");
  S.SetRect({0, 0, 1, 1});
  Expect("");
}

TEST(TPolygonShape, KnowsWhetherItsOutlineCrossesItselfAndContainsPointsAccordingly) {
  const TPoints Bow{{0, 0}, {10, 10}, {10, 0}, {0, 10}};
  const TPoints Corner{{0, 0}, {10, 0}, {10, 10}, {8, 10}, {8, 2}, {0, 2}};
  const TPoints Closing{{5, 5}, {0, 0}, {10, 0}, {5, -5}};  // only the last side crosses another
  struct TCase {
    const char* Name;
    TPoints Points;
    bool IsCrossedWhenAdded;
    bool IsCrossedWhenSet;
    TPointF Inside;
    TPointF Outside;
  };
  for (const TCase& C :
       {TCase{"bow", Bow, true, true, {2, 5}, {5, 2}},
        TCase{"closing", Closing, false, true, {4, 2}, {7, 2}},
        TCase{"corner", Corner, false, false, {9, 9}, {4, 5}},
        TCase{"triangle", {{0, 0}, {10, 10}, {10, 0}}, false, false, {8, 3}, {3, 8}},
        TCase{"none", {}, false, false, {}, {0, 0}}}) {
    SCOPED_TRACE(C.Name);
    const auto Shape = Make<TPolygonShape>(C.Points);
    EXPECT_EQ(Shape->IsComplex(), C.IsCrossedWhenAdded);
    Shape->SetControlPoints(C.Points);
    EXPECT_EQ(Shape->IsComplex(), C.IsCrossedWhenSet);
    EXPECT_EQ(Shape->ContainsLocalPoint(C.Inside), !C.Points.empty());
    EXPECT_FALSE(Shape->IsUnderGlobalPoint(C.Outside));
  }
  const auto Shape = Make<TPolygonShape>(Corner);
  Shape->SetControlPointAt(3, {12, -5});
  EXPECT_TRUE(Shape->IsComplex());
  Shape->SetControlPointAt(3, {8, 10});
  EXPECT_FALSE(Shape->IsComplex());
  Shape->SetCommands(std::vector<std::uint8_t>{0, 1});  // the other lines are not there
  Shape->SetControlPoints(Bow);
  EXPECT_FALSE(Shape->IsComplex());
  TPoints Many(1000);
  for (std::size_t I = 0; I < Many.size(); ++I) Many[I] = {static_cast<float>(I), 0.0F};
  const auto Long = Make<TPolygonShape>(Many);
  EXPECT_FALSE(Long->IsComplex());
  Long->AddControlPoint({0, 5});
  EXPECT_TRUE(Long->IsComplex());
}

TEST(TPolygonShape, RefusesAnyCommandButZeroAndOne) {
  const auto Shape = Make<TPolygonShape>({{0, 0}, {1, 0}});
  const auto Set = [&](const std::vector<std::int32_t>& ACommands) {
    Shape->SetProperty("Commands", TValue::From(ACommands));
  };
  Set({0, 0, 1});
  EXPECT_THROW(Set({1, 256}), EGeneralError);
  EXPECT_THROW(Set({-1}), EGeneralError);
  EXPECT_EQ(Shape->GetProperty("Commands").As<std::vector<std::int32_t>>(),
            (std::vector<std::int32_t>{0, 0, 1}));
}

TEST(TConnectedControlPointsShape, IsFoundNearPointsAndOnConnections) {
  const auto Shape = Make<TLines>({{0, 0}, {100, 0}, {100, 100}, {50, 50}});
  const auto Closest = [&](TPointF P) { return Shape->GetClosestPointToGlobalPoint(P, true); };
  EXPECT_TRUE(IsNoPoint(Closest({1, 1})));
  EXPECT_EQ(Shape->GetClosestControlPointIndex({75, 75}), 2);
  Shape->SetConnections(TConnections{{0, 9}, {0, 1}, {1, 2}});
  EXPECT_EQ(Closest({50, 20}), (TPointF{50, 0}));
  EXPECT_EQ(Closest({120, 50}), (TPointF{100, 50}));
  struct TCase {
    TPointF Point;
    bool IsUnder;
  };
  for (const TCase& C : {TCase{{50, 0.009F}, true},
                         TCase{{50, 0.02F}, false},
                         TCase{{3, 3.9F}, true},
                         TCase{{0, 5}, false},
                         TCase{{54, 52}, true}}) {
    EXPECT_EQ(Shape->IsUnderGlobalPoint(C.Point), C.IsUnder) << C.Point.X << "," << C.Point.Y;
  }
  EXPECT_EQ(Shape->GetConnectionIndex(2, 1, false), 2);
  EXPECT_EQ(Shape->GetConnectionIndex(2, 1, true), -1);
}

TEST(TScene, GivesAShapeToANodeThatStandsForOne) {
  struct TProxy final : public TLayer, public virtual IShapeProxy {
    TRef<IShape> GetShape() const override { return Shape; }
    void SetShape(const TRef<IShape>& AShape) override { Shape = AShape; }
    TRef<IShape> Shape;
  };
  const TRef<TProxy> Empty = New<TProxy>(), Filled = New<TProxy>();
  const TRef<IShape> Lines = Make<TLines>({{0, 0}, {1, 1}});
  Filled->SetShape(Lines);
  New<TScene>()->SetChildren({TRef<INode>(Empty), TRef<INode>(Filled)});
  EXPECT_TRUE(Empty->Shape);
  EXPECT_EQ(Filled->Shape, Lines);
}

TEST(ControlPoints, AreDrawnAsOutlinesDashesAndLines) {
  const TRef<TScene> Scene = New<TScene>();
  const TRef<TCamera> Camera = New<TCamera>();
  Camera->SetFrustum({0, 0, 20, 15});
  Scene->SetCamera(Camera);
  Scene->GetViewport()->SetScreenSize(200, 150);
  const TRef<TRectangle> Ground = New<TRectangle>();
  Ground->SetRect({0, 0, 20, 15});
  const auto Zone = Make<TPolygonShape>({{1, 1}, {9, 1}, {9, 6}, {5, 3}, {1, 6}});
  Zone->SetFillColor(TAlphaColor{0xFFAA1122});
  Zone->SetOpacity(0.5F);
  Zone->AddChild(Make<TPolygonShape>({{4, 1.5F}, {6, 1.5F}, {5, 2.5F}}));
  const auto Ring = Make<TPolygonShape>({{11, 1}, {19, 1}, {19, 6}, {12, 2}, {15, 2}, {15, 3}});
  Ring->SetCommands(std::vector<std::uint8_t>{0, 1, 1, 0, 1, 1, 1});
  Ring->SetFillColor(TAlphaColor{0xFFFFE080});
  Ring->SetStrokeColor(TAlphaColor{0xFF0000FF});
  Ring->SetStrokeThickness(3);
  const auto Open = Make<TPolygonShape>({{11, 8}, {15, 14}, {19, 8}});
  Open->SetCloseContour(false);
  Open->SetEnableFill(false);
  const auto Paths = Make<TLines>({{1, 8}, {5, 8}, {5, 12}, {9, 12}});
  Paths->SetConnections(TConnections{{0, 1}, {1, 2}, {2, 0}, {2, 3}, {3, 7}});
  class TDashes final : public TControlPointsShape {
    IControlPointsShape* AsControlPointShape() override { return this; }
  };
  const auto Dashes = Make<TDashes>({{1, 14}, {6, 13}, {10, 14}});
  Dashes->SetDrawPolylines(true);
  Scene->SetChildren({TRef<INode>(Ground),
                      TRef<INode>(Zone),
                      TRef<INode>(Ring),
                      TRef<INode>(Open),
                      TRef<INode>(Paths),
                      TRef<INode>(Dashes),
                      TRef<INode>(Make<TDashes>({{0, 0}, {20, 15}}))});
  TDrawing Drawing(200, 150);
  const auto Canvas = New<Canvas::TWyxCanvas>();
  Scene->PaintScene(New<Canvas::TWyxLayer>(&Drawing), Canvas);
  ExpectPicture(Drawing.GetPicture(), "scene_control_points");
}

// ---------------------------------------------------------------- against a model

/// The same as plainly as can be: every point has a number of its own, by which it is connected.
struct TModel {
  struct TPoint {
    int Number;
    TPointF Place;
  };
  std::vector<TPoint> Points;
  std::vector<std::uint8_t> Commands;
  std::vector<std::pair<int, int>> Connections;
  int LastNumber = 0;

  void Insert(std::ptrdiff_t AIndex, TPointF APlace) {
    Points.insert(Points.begin() + AIndex, {++LastNumber, APlace});
    const bool IsFirst = Commands.empty();
    Commands.insert(Commands.begin() + (IsFirst ? 0 : std::max<std::ptrdiff_t>(AIndex, 1)),
                    IsFirst ? 0 : 1);
  }
  void Remove(std::ptrdiff_t AIndex) {
    const int Number = Points.begin()[AIndex].Number;
    Points.erase(Points.begin() + AIndex);
    Commands.erase(Commands.begin() + AIndex);
    std::erase_if(Connections,
                  [&](const auto& C) { return C.first == Number || C.second == Number; });
  }
  std::int32_t IndexOf(int ANumber) const {
    const auto Found = std::find_if(
        Points.begin(), Points.end(), [&](const TPoint& P) { return P.Number == ANumber; });
    return static_cast<std::int32_t>(Found - Points.begin());
  }
  TRectF Bounds() const {
    if (Points.empty()) return {};
    const TPointF First = Points.front().Place;
    TRectF R{First.X, First.Y, First.X, First.Y};
    for (const TPoint& P : Points)
      R = {std::min(R.Left, P.Place.X),
           std::min(R.Top, P.Place.Y),
           std::max(R.Right, P.Place.X),
           std::max(R.Bottom, P.Place.Y)};
    return R;
  }
};

TEST(ControlPoints, StayInStepWithAPlainModel) {
  enum TChoice { Add, AddMore, Insert, Set, MoveUp, MoveDown, Connect, Remove, RemoveMore };
  std::mt19937 Random(7);
  const auto Below = [&](std::size_t ALimit) {
    return static_cast<std::int32_t>(Random() % ALimit);
  };
  const auto Polygon = New<TPolygonShape>();
  const auto Lines = New<TLines>();
  TModel Model;
  TRectF Announced;
  Polygon->ConnectRectChange(
      [&](ISceneNode*, const TRectF&, const TRectF& ANew) { Announced = ANew; });
  for (int Step = 0; Step < 20000; ++Step) {
    const TPointF Place{static_cast<float>(Below(20)), static_cast<float>(Below(20))};
    const TPointF Delta{1, -1};
    const std::size_t Count = Model.Points.size();
    const std::int32_t I = Count > 0 ? Below(Count) : 0;
    const auto Choice = static_cast<TChoice>(Below(Count > 12 ? RemoveMore + 3 : RemoveMore));
    for (TControlPointsShape* Shape : {static_cast<TControlPointsShape*>(Polygon.Get()),
                                       static_cast<TControlPointsShape*>(Lines.Get())}) {
      if (Choice <= AddMore) Shape->AddControlPoint(Place);
      if (Choice == Insert) Shape->AddControlPointAtIndex(I, Place);
      if (Choice == Set) Shape->SetControlPointAt(I, Place);
      if (Choice == MoveUp) Shape->SetDisplacement(Delta);
      if (Choice == MoveDown) Shape->SetDisplacement(Delta * -1.0F);
      if (Choice >= Remove) Shape->RemoveControlPoint(I);
    }
    if (Choice <= AddMore) Model.Insert(static_cast<std::ptrdiff_t>(Count), Place);
    if (Choice == Insert) Model.Insert(I, Place);
    if (Choice == Set && Count > 0) Model.Points.begin()[I].Place = Place;
    if (Choice == MoveUp || Choice == MoveDown)
      for (auto& P : Model.Points) P.Place = P.Place + Delta * (Choice == MoveUp ? 1.0F : -1.0F);
    if (Choice == Connect && Count > 0) {
      const std::int32_t Other = Below(Count);
      Lines->ConnectControlPoints(I, Other);
      Model.Connections.emplace_back(Model.Points.begin()[I].Number,
                                     Model.Points.begin()[Other].Number);
    }
    if (Choice >= Remove && Count > 0) Model.Remove(I);

    TConnections Connections;
    for (const auto& [From, To] : Model.Connections)
      Connections.emplace_back(Model.IndexOf(From), Model.IndexOf(To));
    ASSERT_EQ(Lines->GetConnections(), Connections) << Step;
    ASSERT_EQ(Polygon->GetCommands(), Model.Commands) << Step;
    ASSERT_EQ(Lines->GetRect(), Model.Bounds()) << Step;
    // Insertions and moves are not announced as changes of the rectangle.
    if (Choice >= Insert && Choice <= MoveDown && Choice != Set) Announced = Model.Bounds();
    ASSERT_EQ(Announced, Polygon->GetRect()) << Step;
    ASSERT_EQ(Polygon->GetRect(), Model.Bounds()) << Step;
  }
}

}  // namespace
}  // namespace System::Beacon::Fencing::Scene
