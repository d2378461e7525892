// Shapes, of rectangles and of control points: how they look, what contains a point, what they
// announce, bound and connect.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "positioning/System.Beacon.Fencing.Math.h"
#include "scene/System.Beacon.Fencing.Scene.Shapes.h"
#include "scene/canvas/System.Beacon.Fencing.Canvas.Wyx.h"
#include "support/logged_region.h"
#include "support/pictures.h"

namespace System::Beacon::Fencing::Scene {
namespace {

template <class T>
TRef<T> Make(const TRectF& ARect,
             TPointF APlace = {},
             TAlphaColor AFill = TAlphaColor{0xFFFFFFFF}) {
  const TRef<T> Result = New<T>();
  Result->SetRect(ARect);
  Result->SetDisplacement(APlace);
  Result->SetFillColor(AFill);
  return Result;
}

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
TRef<T> MakeOf(const TPoints& APoints) {
  const TRef<T> Result = New<T>();
  for (const TPointF Point : APoints) Result->AddControlPoint(Point);
  return Result;
}

/// A scene of 20 by 15 units, 10 pixels each, looks like a picture that is kept.
void ExpectDrawn(const TNodes& ANodes, const std::string& APicture) {
  const TRef<TScene> Scene = New<TScene>();
  const TRef<TCamera> Camera = New<TCamera>();
  Camera->SetFrustum({0, 0, 20, 15});
  Scene->SetCamera(Camera);
  Scene->GetViewport()->SetScreenSize(200, 150);
  Scene->SetChildren(ANodes);
  TDrawing Drawing(200, 150);
  Scene->PaintScene(New<Canvas::TWyxLayer>(&Drawing), New<Canvas::TWyxCanvas>());
  ExpectPicture(Drawing.GetPicture(), APicture);
}

TEST(Shapes, DrawThemselvesThroughTheCameraWithStrokesInPixels) {
  const auto Ground = Make<TRectangle>({0, 0, 20, 15}, {}, TAlphaColor{0xFFF0F0E8});
  const auto Turned = Make<TRectangle>({-2, -1, 2, 1}, {5, 4}, TAlphaColor{0xFFFFA500});
  Turned->SetRotation(0.5F);
  const auto Hollow = Make<TRectangle>({0, 0, 4, 3}, {10, 2});
  Hollow->SetEnableFill(false);
  Hollow->SetStrokeThickness(4);
  Hollow->SetStrokeColor(TAlphaColor{0xFF0000FF});
  const auto Pale = Make<TEllipse>({0, 0, 6, 4}, {12, 3}, TAlphaColor{0xFF008000});
  Pale->SetOpacity(0.4F);
  const auto Circle = Make<TEllipse>({0, 0, 8, 4}, {2, 9}, TAlphaColor{0xFFFF0000});
  Circle->SetPerfectCircle(true);
  const auto Line = Make<TSegment>({0, 0, 5, 2}, {12, 10});
  const auto Unseen = Make<TRectangle>({0, 0, 20, 15});
  Unseen->SetMode({TMode::Active});
  Turned->AddChild(Make<TEllipse>({-0.5F, -0.5F, 0.5F, 0.5F}, {}, TAlphaColor{0xFF8A2BE2}));
  ExpectDrawn({Ground, Turned, Hollow, Pale, Circle, Line, Unseen}, "scene_shapes");
}

TEST(Shapes, ContainPointsAndKnowTheClosestOne) {
  const auto Rectangle = Make<TRectangle>({0, 0, 20, 10});
  const auto Ellipse = Make<TEllipse>({0, 0, 20, 10});
  const auto Upright = Make<TEllipse>({0, 0, 10, 20});
  const auto Circle = Make<TEllipse>({0, 0, 20, 10});
  Circle->SetPerfectCircle(true);
  const auto Flat = Make<TEllipse>({0, 5, 20, 5});
  const auto Line = Make<TSegment>({20, 0, 0, 10});
  struct TCase {
    TRef<TShapeBase> Shape;
    TPointF Point;
    bool IsInside;
    TPointF Closest;
  };
  for (const TCase& C : {TCase{Rectangle, {5, 5}, true, {5, 5}},
                         TCase{Rectangle, {25, -5}, false, {20, 0}},
                         TCase{Ellipse, {16, 5}, true, {16, 5}},
                         TCase{Ellipse, {10, -5}, false, {10, 0}},
                         TCase{Ellipse, {1, 1}, false, {3.0104F, 2.0F}},
                         TCase{Upright, {5, 30}, false, {5, 20}},
                         TCase{Circle, {10, 5}, true, {10, 5}},
                         TCase{Circle, {16, 5}, false, {15, 5}},
                         TCase{Flat, {30, 9}, false, {20, 5}},
                         TCase{Line, {15, 9}, true, {15, 9}}}) {
    SCOPED_TRACE(testing::Message()
                 << C.Shape->GetClassInfo().GetShortName() << " " << C.Point.X << "," << C.Point.Y);
    EXPECT_EQ(C.Shape->ContainsLocalPoint(C.Point), C.IsInside);
    const TPointF Closest = C.Shape->GetClosestPointToGlobalPoint(C.Point, true);
    EXPECT_TRUE(C.IsInside || C.Shape == Ellipse || Closest == C.Closest);
    if (C.IsInside) {
      EXPECT_EQ(Closest, C.Point);
    }
    C.Shape->SetDisplacement({100, 0});
    EXPECT_EQ(C.Shape->GetClosestPointToGlobalPoint(C.Point + TPointF{100, 0}, false), Closest);
    C.Shape->SetDisplacement({});
  }
}

TEST(Shapes, AnnounceTheirRectanglesAndBitmapPaths) {
  const auto Shape = Make<TRectangle>({0, 0, 10, 10});
  std::string Log;
  Shape->ConnectRectChange([&](ISceneNode*, const TRectF& AOld, const TRectF& ANew) {
    Log += fmt::format("{}>{}; ", AOld.GetWidth(), ANew.GetWidth());
  });
  Shape->ConnectPropertyChange(
      [&](INode*, const std::string& AName, const TValue& AOld, const TValue& ANew) {
        Log += AName + " " + AOld.As<std::string>() + ">" + ANew.As<std::string>() + "; ";
      });
  Shape->SetProperty("Width", TValue::From(20.0F));
  Shape->SetRect({0, 0, 20, 10});
  Shape->SetRect({0, 0, std::numeric_limits<float>::infinity(), 10});
  Shape->SetBitmapPath("a.png");
  Shape->SetBitmapPath("a.png");
  EXPECT_FALSE(Shape->InvalidatePropertyValue("b.png"));
  EXPECT_TRUE(Shape->InvalidatePropertyValue("A.png"));
  EXPECT_EQ(Log, "10>20; 20>20; BitmapPath >a.png; BitmapPath a.png>; BitmapPath >a.png; ");
}

// ---------------------------------------------------------------- shapes of control points

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
  S.AddControlPoint({10, 0});
  S.AddControlPoint({10, 10});
  Log.clear();
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
    const auto Shape = MakeOf<TPolygonShape>(C.Points);
    EXPECT_EQ(Shape->IsComplex(), C.IsCrossedWhenAdded);
    Shape->SetControlPoints(C.Points);
    EXPECT_EQ(Shape->IsComplex(), C.IsCrossedWhenSet);
    EXPECT_EQ(Shape->ContainsLocalPoint(C.Inside), !C.Points.empty());
    EXPECT_FALSE(Shape->IsUnderGlobalPoint(C.Outside));
  }
  const auto Shape = MakeOf<TPolygonShape>(Corner);
  Shape->SetControlPointAt(3, {12, -5});
  EXPECT_TRUE(Shape->IsComplex());
  Shape->SetControlPointAt(3, {8, 10});
  EXPECT_FALSE(Shape->IsComplex());
  Shape->SetCommands(std::vector<std::uint8_t>{0, 1});  // the other lines are not there
  Shape->SetControlPoints(Bow);
  EXPECT_FALSE(Shape->IsComplex());
  TPoints Many(1000);
  for (std::size_t I = 0; I < Many.size(); ++I) Many[I] = {static_cast<float>(I), 0.0F};
  const auto Long = MakeOf<TPolygonShape>(Many);
  EXPECT_FALSE(Long->IsComplex());
  Long->AddControlPoint({0, 5});
  EXPECT_TRUE(Long->IsComplex());
}

TEST(TConnectedControlPointsShape, IsFoundNearPointsAndOnConnections) {
  const auto Shape = MakeOf<TLines>({{0, 0}, {100, 0}, {100, 100}, {50, 50}});
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
  const TRef<IShape> Lines = MakeOf<TLines>({{0, 0}, {1, 1}});
  Filled->SetShape(Lines);
  New<TScene>()->SetChildren({TRef<INode>(Empty), TRef<INode>(Filled)});
  EXPECT_TRUE(Empty->Shape);
  EXPECT_EQ(Filled->Shape, Lines);
}

TEST(ControlPoints, AreDrawnAsOutlinesDashesAndLines) {
  const auto Ground = Make<TRectangle>({0, 0, 20, 15});
  const auto Zone = MakeOf<TPolygonShape>({{1, 1}, {9, 1}, {9, 6}, {5, 3}, {1, 6}});
  Zone->SetFillColor(TAlphaColor{0xFFAA1122});
  Zone->SetOpacity(0.5F);
  Zone->AddChild(MakeOf<TPolygonShape>({{4, 1.5F}, {6, 1.5F}, {5, 2.5F}}));
  const auto Ring = MakeOf<TPolygonShape>({{11, 1}, {19, 1}, {19, 6}, {12, 2}, {15, 2}, {15, 3}});
  Ring->SetCommands(std::vector<std::uint8_t>{0, 1, 1, 0, 1, 1, 1});
  Ring->SetFillColor(TAlphaColor{0xFFFFE080});
  Ring->SetStrokeColor(TAlphaColor{0xFF0000FF});
  Ring->SetStrokeThickness(3);
  const auto Open = MakeOf<TPolygonShape>({{11, 8}, {15, 14}, {19, 8}});
  Open->SetCloseContour(false);
  Open->SetEnableFill(false);
  const auto Paths = MakeOf<TLines>({{1, 8}, {5, 8}, {5, 12}, {9, 12}});
  Paths->SetConnections(TConnections{{0, 1}, {1, 2}, {2, 0}, {2, 3}, {3, 7}});
  class TDashes final : public TControlPointsShape {
    IControlPointsShape* AsControlPointShape() override { return this; }
  };
  const auto Dashes = MakeOf<TDashes>({{1, 14}, {6, 13}, {10, 14}});
  Dashes->SetDrawPolylines(true);
  ExpectDrawn({Ground, Zone, Ring, Open, Paths, Dashes, MakeOf<TDashes>({{0, 0}, {20, 15}})},
              "scene_control_points");
}

}  // namespace
}  // namespace System::Beacon::Fencing::Scene
