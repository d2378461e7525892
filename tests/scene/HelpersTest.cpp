// Corners, matrices, aligned values, cameras that are aimed.
#include "scene/System.Beacon.Fencing.Scene.Helpers.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <string>

#include "scene/System.Beacon.Fencing.Scene.Shapes.h"

namespace System::Beacon::Fencing::Scene {
namespace {

constexpr float Inf = std::numeric_limits<float>::infinity();
const TCorners Square = TCornersHelper::GetCorners({0, 0, 10, 10});
const TCorners Mirrored = TCornersHelper::GetCorners({10, 0, 0, 10});
const TCorners Rhombus{{TPointF{5, 0}, {10, 5}, {5, 10}, {0, 5}}};
const TCorners Point = TCornersHelper::GetCorners({4, 4, 4, 4});
const TCorners Line = TCornersHelper::GetCorners({0, 4, 10, 4});

/// A coordinate to two decimals, -0 as 0.
float Plain(float AValue) {
  return std::round(AValue * 100.0F) / 100.0F + 0.0F;
}
std::string Text(TPointF P) {
  return fmt::format("{},{}", Plain(P.X), Plain(P.Y));
}
std::string Text(const TCorners& C) {
  std::string Result;
  for (const TPointF& P : C.Points) Result += Text(P) + " ";
  return Result;
}
std::string Text(const TRectF& R) {
  return fmt::format("{},{} {},{}", Plain(R.Left), Plain(R.Top), Plain(R.Right), Plain(R.Bottom));
}

TEST(TCornersHelper, ContainsThePointsBetweenItsEdges) {
  for (const TPointF P : {TPointF{0, 0}, {10, 10}, {9, 1}}) {
    EXPECT_TRUE(TCornersHelper::Contains(Square, P) && TCornersHelper::Contains(Mirrored, P));
  }
  for (const TPointF P : {TPointF{10.1F, 5}, {5, -0.1F}}) {
    EXPECT_FALSE(TCornersHelper::Contains(Square, P) || TCornersHelper::Contains(Mirrored, P));
  }
  EXPECT_TRUE(TCornersHelper::Contains(Rhombus, {5, 9}));
  EXPECT_FALSE(TCornersHelper::Contains(Rhombus, {1, 1}));
  EXPECT_FALSE(TCornersHelper::Contains(Line, {5, 4}));
}

TEST(TCornersHelper, ExpandMovesEachEdgeOutwards) {
  const TRectF Each{1, 2, 3, 4};
  EXPECT_EQ(Text(TCornersHelper::Expand(Square, Each)), "-1,-2 13,-2 13,14 -1,14 ");
  EXPECT_EQ(Text(TCornersHelper::Expand(Mirrored, Each)), "11,-2 -3,-2 -3,14 11,14 ");
  EXPECT_EQ(Text(TCornersHelper::Expand(Square, {-1, -1, -1, -1})), "1,1 9,1 9,9 1,9 ");
  const float D = std::numbers::sqrt2_v<float>;
  EXPECT_EQ(Text(TCornersHelper::Expand(Rhombus, {D, D, D, D})), "5,-2 12,5 5,12 -2,5 ");
  EXPECT_EQ(Text(TCornersHelper::Expand(Point, Each)), Text(Point));
  EXPECT_EQ(Text(TCornersHelper::Expand(Line, Each)), Text(Line));
}

TEST(TCornersHelper, GetIntersectionIsTheNearestOne) {
  struct TCase {
    TPointF From, To;
    const char* Expected;
  };
  for (const TCase& C : {TCase{{-5, 5}, {20, 5}, "0,5"},
                         {{20, 5}, {-5, 5}, "10,5"},
                         {{5, 5}, {5, 30}, "5,10"},
                         {{2, 2}, {8, 8}, "7,7"},
                         {{-5, 0}, {20, 0}, "0,0"},
                         {{-5, -5}, {20, -5}, "7,7"}}) {
    TPointF Result{7, 7};
    const bool IsMet = TCornersHelper::GetIntersection(C.From, C.To, Square, Result);
    EXPECT_EQ(Text(Result), C.Expected);
    EXPECT_EQ(IsMet, Text(Result) != "7,7");
  }
}

TEST(TMatrixHelper, TakesApartWhatWasPutTogether) {
  const float Quarter = std::numbers::pi_v<float> / 2.0F;
  const TMatrix Matrix =
      TMatrix::Scaling(2, 3) * TMatrix::Rotation(Quarter) * TMatrix::Translation(10, 20);
  TPointF Translation, Scaling;
  float Rotation = 0.0F;
  TMatrixHelper::GetSRT(Matrix, Translation, Rotation, Scaling);
  EXPECT_EQ(Text(Translation) + " " + Text(Scaling), "10,20 2,3");
  EXPECT_FLOAT_EQ(Rotation, Quarter);
  EXPECT_EQ(Text(TMatrixHelper::MultiplyNormal(Matrix, {1, 1})), "-3,2");
  EXPECT_EQ(Text(TCornersHelper::CreateCorners({-1, -1, 1, 1}, {5, 5}, {0, 2}, {-1, 0})),
            "6,3 6,7 4,7 4,3 ");
}

TEST(TValueHelper, AlignsToPartsOfOne) {
  EXPECT_EQ(Text(TValueHelper::AlignValue({1.13F, -0.38F}, 4)), "1.25,-0.5");
  EXPECT_EQ(Text(TValueHelper::AlignValue({12, 18}, 0.1F)), "10,20");
  for (const float Step : {0.0F, Inf, -Inf, std::nanf("")}) {
    EXPECT_EQ(TValueHelper::AlignValue(1.13F, Step), 1.13F) << Step;
  }
}

TEST(TCameraHelper, FocusFillsTheScreenWithARectangle) {
  struct TCase {
    TRectF Rect;
    TPointF Screen;
    float Factor;
    const char* Expected;
  };
  for (const TCase& C : {TCase{{0, 0, 100, 50}, {200, 100}, 1.0F, "50,25: -50,-25 50,25"},
                         {{0, 0, 100, 50}, {200, 100}, 1.2F, "50,25: -60,-30 60,30"},
                         {{0, 0, 100, 50}, {300, 100}, 1.0F, "50,25: -75,-25 75,25"},
                         {{0, 0, 100, 50}, {100, 100}, 1.0F, "50,25: -50,-50 50,50"},
                         {{0, 0, 100, 50}, {0, 100}, 1.0F, "50,25: 0,0 1,1"},
                         {{0, 0, 100, 50}, {200, 100}, 0.0F, "50,25: 0,0 1,1"},
                         {{4, 0, 4, 50}, {200, 100}, 1.0F, "4,25: 0,0 1,1"},
                         {{0, 0, Inf, 50}, {200, 100}, 1.0F, "0,0: 0,0 1,1"}}) {
    const TRef<TScene> Scene = New<TScene>();
    const TRef<TCamera> Camera = New<TCamera>();
    Camera->SetRect({0, 0, 1, 1});
    const auto Aim = [&] {
      return Text(Camera->GetDisplacement()) + ": " + Text(Camera->GetFrustum());
    };
    Scene->GetViewport()->SetScreenSize(C.Screen.X, C.Screen.Y);
    TCameraHelper::FocusRect(Camera.Get(), Scene.Get(), C.Rect, C.Factor);
    EXPECT_EQ(Aim(), C.Expected);
    const TRef<TRectangle> Node = New<TRectangle>();
    Node->SetRect(C.Rect);
    Scene->SetCamera(Camera);
    TCameraHelper::FocusNode(Camera.Get(), nullptr, Node.Get(), C.Factor);
    EXPECT_EQ(Aim(), C.Expected);
  }
}

TEST(TSceneHelper, FiltersNamesByTheModesOfTheirNodes) {
  const TRef<TScene> Scene = New<TScene>();
  const auto Add = [&Scene](const char* AName, TModeSet AMode) {
    const TRef<TRectangle> Node = New<TRectangle>();
    Node->SetName(AName);
    Node->SetMode(AMode);
    Scene->AddChild(Node);
  };
  Add("Both", {TMode::Visible, TMode::Active});
  Add("Edited", {TMode::Edit});
  Add("Shown", {TMode::Visible});
  Add("both", {});
  const TNames Names{"Shown", "nobody", "edited", "BOTH", "Shown"};
  EXPECT_EQ(TSceneHelper::FilterObjectsWithMode({TMode::Visible}, Scene.Get(), Names),
            (TNames{"Shown", "BOTH", "Shown"}));
}

}  // namespace
}  // namespace System::Beacon::Fencing::Scene
