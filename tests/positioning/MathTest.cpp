#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "platform/random.h"
#include "positioning/System.Beacon.Fencing.Math.h"

namespace System::Beacon::Fencing {
namespace {

using TOutline = std::vector<TPointF>;

const TOutline Square{{0, 0}, {10, 0}, {10, 10}, {0, 10}};
const TOutline FigureEight{{0, 0}, {10, 10}, {10, 0}, {0, 10}};

TOutline Reversed(const TOutline& AOutline) {
  return {AOutline.rbegin(), AOutline.rend()};
}

TEST(LinesIntersect, TakesLinesWithinTheToleranceForParallel) {
  for (const auto& [Rise, Meets] :
       {std::pair<float, bool>{0, false}, {5E-5F, false}, {2E-4F, true}, {1, true}}) {
    const TPointF Point = LinesIntersect({0, 0}, {1, 0}, {0, 1}, {1, 1 + Rise});
    EXPECT_EQ(IsNoPoint(Point), !Meets) << Rise;
    if (Meets) {
      EXPECT_FLOAT_EQ(Point.Y, 0.0F) << Rise;
    }
  }
}

TEST(LineIntersect, TellsCrossingCoincidentAndParallelLinesApart) {
  float T = 7, U = 8;
  EXPECT_FALSE(LineIntersect({0, 0}, {1, 0}, {0, 1}, {2, 0}, T, U));
  EXPECT_EQ(T, 7);
  EXPECT_EQ(U, 8);
  EXPECT_TRUE(LineIntersect({0, 0}, {1, 0}, {5, 0}, {2, 0}, T, U));
  EXPECT_EQ(T, std::numeric_limits<float>::infinity());
  EXPECT_EQ(U, T);
  EXPECT_TRUE(LineIntersect({0, 0}, {4, 0}, {1, -2}, {0, 8}, T, U));
  EXPECT_FLOAT_EQ(T, 0.25F);
  EXPECT_FLOAT_EQ(U, 0.25F);
}

TEST(SegmentIntersect, CountsTouchingEndsButNotOverlaps) {
  struct TCase {
    TPointF A, B, C, D;
    bool Crosses;
  };
  for (const TCase& C : {TCase{{0, 0}, {2, 2}, {0, 2}, {2, 0}, true},
                         TCase{{0, 0}, {1, 1}, {1, 1}, {2, 0}, true},
                         TCase{{0, 0}, {4, 0}, {2, 0}, {6, 0}, false},
                         TCase{{0, 0}, {1, 1}, {3, 0}, {0, 3}, false}})
    EXPECT_EQ(SegmentIntersect(C.A, C.B, C.C, C.D), C.Crosses);
}

TEST(FitInto, TouchesTheBoundsOnOneAxisAndIsCentred) {
  EXPECT_EQ(FitInto({0, 0, 100, 50}, {0, 0, 10, 10}), (TRectF{0, 2.5F, 10, 7.5F}));
  EXPECT_EQ(FitInto({0, 0, 1, 4}, {10, 10, 18, 18}), (TRectF{13, 10, 15, 18}));
  EXPECT_EQ(FitInto({1, 2, 3, 4}, {0, 0, 0, 10}), (TRectF{1, 2, 3, 4}));
  EXPECT_EQ(FitInto({5, 5, 5, 5}, {0, 0, 10, 10}), (TRectF{5, 5, 5, 5}));
  EXPECT_EQ(ConverToPositiveRect({3, 1, 2, 5}), (TRectF{2, 1, 3, 5}));
}

TEST(GetSegmentClosest, StaysOnTheSegment) {
  struct TCase {
    TPointF A, B, P, Closest;
  };
  for (const TCase& C : {TCase{{1, 1}, {1, 1}, {9, 9}, {1, 1}},
                         TCase{{0, 0}, {4, 0}, {9, 3}, {4, 0}},
                         TCase{{0, 0}, {4, 0}, {-1, 3}, {0, 0}},
                         TCase{{0, 0}, {4, 0}, {1, 3}, {1, 0}},
                         TCase{{0, 0}, {4, 0}, {NAN, 3}, {0, 0}}})
    EXPECT_EQ(GetSegmentClosest(C.A, C.B, C.P), C.Closest);
}

TEST(SmoothStep, EasesBetweenItsEdges) {
  struct TCase {
    float Edge0, Edge1, X, Value;
  };
  for (const TCase& C : {TCase{0, 10, 5, 0.5F},
                         TCase{0, 10, -1, 0},
                         TCase{0, 10, 11, 1},
                         TCase{2, 2, 1.9F, 0},
                         TCase{2, 2, 2, 1},
                         TCase{0, 1, 0.25F, 0.15625F}})
    EXPECT_FLOAT_EQ(SmoothStep(C.Edge0, C.Edge1, C.X), C.Value) << C.X;
}

TEST(Polygon, AnswersTheSameWhicheverWayItRuns) {
  EXPECT_NE(IsClockwise(Square), IsClockwise(Reversed(Square)));
  EXPECT_FALSE(IsClockwise({}));
  for (const TOutline& Outline : {Square, Reversed(Square)}) {
    EXPECT_TRUE(IsPointInPolygon(Outline, {3, 4}));
    EXPECT_TRUE(IsPointInPolygon(Outline, {0, 5}));
    EXPECT_FALSE(IsPointInPolygon(Outline, {-1, 5}));
    EXPECT_EQ(GetClosestPointToPolygon(Outline, {3, 4}), (TPointF{3, 4}));
    EXPECT_EQ(GetClosestPointToPolygon(Outline, {3, -4}), (TPointF{3, 0}));
    EXPECT_EQ(GetClosestPointToPolygonContour(Outline, {3, 4}), (TPointF{0, 4}));
  }
}

TEST(Polygon, TakesTheFirstOfEquallyNearEdges) {
  EXPECT_EQ(GetClosestSegmentInPolygonToPoint(Square, {5, 5}), 0);
  EXPECT_EQ(GetClosestSegmentInPolygonToPoint(Square, {1, 5}), 3);
}

TEST(Polygon, OfFewerThanThreePointsHasNoEdges) {
  const TOutline Line{{0, 0}, {10, 0}};
  EXPECT_EQ(GetClosestSegmentInPolygonToPoint(Line, {1, 1}), -1);
  EXPECT_TRUE(IsNoPoint(GetClosestPointToPolygon(Line, {1, 1})));
  EXPECT_TRUE(IsNoPoint(GetClosestPointToPolygonContour(Line, {1, 1})));
  EXPECT_FALSE(IsPointInPolygon(Line, {1, 0}));
  EXPECT_FALSE(IsPointInComplexPolygon({}, {1, 0}));
}

TEST(IsPointInComplexPolygon, SeesTheLobesOfAFigureEight) {
  for (const TPointF Inside : {TPointF{8, 5}, TPointF{2, 5}})
    EXPECT_TRUE(IsPointInComplexPolygon(FigureEight, Inside));
  for (const TPointF Outside : {TPointF{5, 1}, TPointF{5, 9}, TPointF{-1, 5}, TPointF{11, 5}})
    EXPECT_FALSE(IsPointInComplexPolygon(FigureEight, Outside));
  EXPECT_EQ(GetClosestPointToClosestPolygon(FigureEight, {2, 5}), (TPointF{2, 5}));
  EXPECT_EQ(GetClosestPointToClosestPolygon(FigureEight, {5, 4}), (TPointF{4.5F, 4.5F}));
}

/// The two tests agree on convex outlines where the nearest point of the outline is inside an edge
/// (at a corner, the side test looks at one of its two edges only).
TEST(Polygon, SideTestAndEvenOddRuleAgreeOnConvexOutlines) {
  TRandomStream Random(1);
  for (int Round = 0; Round < 2000; ++Round) {
    TOutline Outline;
    const int Corners = 3 + static_cast<int>(Random.NextBelow(6));
    for (int I = 0; I < Corners; ++I) {
      const double Angle = (I + 0.8 * Random.NextDouble()) * 2.0 * 3.141592653589793 / Corners;
      Outline.push_back(
          {static_cast<float>(10 * std::cos(Angle)), static_cast<float>(10 * std::sin(Angle))});
    }
    const TPointF P{static_cast<float>(24 * Random.NextDouble() - 12),
                    static_cast<float>(24 * Random.NextDouble() - 12)};
    const TPointF OnOutline = GetClosestPointToPolygonContour(Outline, P);
    if (std::find(Outline.begin(), Outline.end(), OnOutline) != Outline.end()) continue;
    if (std::hypot(OnOutline.X - P.X, OnOutline.Y - P.Y) < 1E-3) continue;
    EXPECT_EQ(IsPointInPolygon(Outline, P), IsPointInComplexPolygon(Outline, P))
        << "round " << Round << ", point " << P.X << " " << P.Y;
  }
}

}  // namespace
}  // namespace System::Beacon::Fencing
