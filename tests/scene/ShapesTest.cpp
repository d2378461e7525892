// Shapes: how they look, what contains a point, what they announce.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <utility>

#include "scene/System.Beacon.Fencing.Scene.Shapes.h"
#include "scene/canvas/System.Beacon.Fencing.Canvas.Wyx.h"
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

TEST(Shapes, DrawThemselvesThroughTheCameraWithStrokesInPixels) {
  const TRef<TScene> Scene = New<TScene>();
  const TRef<TCamera> Camera = New<TCamera>();
  Camera->SetFrustum({0, 0, 20, 15});
  Scene->SetCamera(Camera);
  Scene->GetViewport()->SetScreenSize(200, 150);
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
  Scene->SetChildren({TRef<INode>(Ground),
                      TRef<INode>(Turned),
                      TRef<INode>(Hollow),
                      TRef<INode>(Pale),
                      TRef<INode>(Circle),
                      TRef<INode>(Line),
                      TRef<INode>(Unseen)});
  Turned->AddChild(Make<TEllipse>({-0.5F, -0.5F, 0.5F, 0.5F}, {}, TAlphaColor{0xFF8A2BE2}));

  TDrawing Drawing(200, 150);
  const auto Canvas = New<Canvas::TWyxCanvas>();
  Scene->PaintScene(New<Canvas::TWyxLayer>(&Drawing), Canvas);
  ExpectPicture(Drawing.GetPicture(), "scene_shapes");
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

}  // namespace
}  // namespace System::Beacon::Fencing::Scene
