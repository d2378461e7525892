#include <gtest/gtest.h>

#include <vector>

#include "platform/random.h"
#include "positioning/System.Beacon.Fencing.PathFinder.h"

namespace System::Beacon::Fencing {
namespace {

using TRoute = std::vector<TRouteStep>;

TRoute RouteOf(const TRouteCalculator& ACalculator) {
  const TArray<TRouteStep> Route = ACalculator.LastCalculatedPath;
  return {Route.begin(), Route.end()};
}

/// The search over a dense matrix, picking the next node by a walk over all.
TRoute SearchDensely(const TArray<TPathPoint>& APoints,
                     const TArray<TPathEdge>& AEdges,
                     std::int32_t AStart,
                     std::int32_t ATarget) {
  const auto Count = static_cast<std::int32_t>(APoints.GetLength());
  std::vector<std::vector<double>> M(Count, std::vector<double>(Count, 0.0));
  for (const auto& [A, B] : AEdges)
    M[A][B] = M[B][A] = APoints[A].second == APoints[B].second
                            ? TRouteCalculator::Distance(APoints[A].first, APoints[B].first)
                            : 1000.0;
  std::vector<double> Distances(Count, 2147483647.0);
  std::vector<bool> Done(Count, false);
  std::vector<std::int32_t> Predecessors(Count, -1);
  Distances[AStart] = 0.0;
  for (std::int32_t Round = 0; Round < Count - 1; ++Round) {
    std::int32_t U = -1;
    for (std::int32_t V = 0; V < Count; ++V)
      if (!Done[V] && Distances[V] < 2147483647.0 && (U < 0 || Distances[V] < Distances[U])) U = V;
    if (U < 0 || U == ATarget) break;
    Done[U] = true;
    for (std::int32_t V = 0; V < Count; ++V)
      if (M[U][V] != 0.0 && !Done[V] && Distances[U] + M[U][V] < Distances[V]) {
        Predecessors[V] = U;
        Distances[V] = Distances[U] + M[U][V];
      }
  }
  TRoute Result;
  for (std::int32_t Node = ATarget; Node >= 0; Node = Predecessors[Node])
    Result.insert(Result.begin(), {Node, APoints[Node].second});
  return Result;
}

/// Nodes on a small grid of two maps: many links have the same length, many routes tie.
struct TRandomGraph {
  TArray<TPathPoint> Points;
  TArray<TPathEdge> Edges;

  explicit TRandomGraph(TRandomStream& ARandom) {
    const auto Below = [&ARandom](std::uint32_t ABound) {
      return static_cast<std::int32_t>(ARandom.NextBelow(ABound));
    };
    const std::int32_t Count = 2 + Below(40);
    std::vector<TPathPoint> Nodes;
    std::vector<TPathEdge> Links;
    for (std::int32_t I = 0; I < Count; ++I)
      Nodes.push_back({{static_cast<float>(Below(6)), static_cast<float>(Below(6))}, Below(2)});
    for (std::int32_t I = 0; I < 2 * Count; ++I)
      Links.emplace_back(Below(static_cast<std::uint32_t>(Count)),
                         Below(static_cast<std::uint32_t>(Count)));
    Points = TArray<TPathPoint>(Nodes);
    Edges = TArray<TPathEdge>(Links);
  }
};

TEST(TRouteCalculator, FindsTheRoutesOfTheDenseSearch) {
  TRandomStream Random(3);
  for (int Round = 0; Round < 4000; ++Round) {
    const TRandomGraph Graph(Random);
    TRouteCalculator Calculator;
    Calculator.Initialize(Graph.Points, Graph.Edges);
    const auto Count = static_cast<std::uint32_t>(Graph.Points.GetLength());
    for (int Query = 0; Query < 4; ++Query) {
      const auto Start = static_cast<std::int32_t>(Random.NextBelow(Count));
      const auto Target = static_cast<std::int32_t>(Random.NextBelow(Count));
      Calculator.CalculateMinimalPath(Start, Target);
      ASSERT_EQ(RouteOf(Calculator), SearchDensely(Graph.Points, Graph.Edges, Start, Target))
          << "round " << Round << ", from " << Start << " to " << Target;
    }
  }
}

/// Two floors: 0 - 1 - 2 on map 0, 3 on map 1 over node 2, 4 on its own.
struct TTwoFloors {
  TRouteCalculator Calculator;
  TTwoFloors() {
    Calculator.Initialize({{{0, 0}, 0}, {{3, 4}, 0}, {{3, 9}, 0}, {{3, 9}, 1}, {{50, 50}, 1}},
                          {{0, 1}, {1, 2}, {2, 3}, {7, 1}, {-1, 2}, {1, 1}});
  }
};

TEST(TContiguityMatrix, ReadsLikeADenseOne) {
  const TTwoFloors Graph;
  const TContiguityMatrix& M = Graph.Calculator.ContiguityMatrix;
  EXPECT_EQ(M.GetLength(), 5);
  const std::vector<std::vector<double>> Expected{
      {0, 5, 0, 0, 0}, {5, 0, 5, 0, 0}, {0, 5, 0, 1000, 0}, {0, 0, 1000, 0, 0}, {0, 0, 0, 0, 0}};
  for (std::int32_t A = 0; A < 5; ++A)
    for (std::int32_t B = 0; B < 5; ++B) EXPECT_EQ(M[A][B], Expected[A][B]) << A << " " << B;
  EXPECT_EQ(M[-1][0], 0.0);
  EXPECT_EQ(M[5][0], 0.0);
}

TEST(TRouteCalculator, AnswersTheCornerCasesByValue) {
  TTwoFloors Graph;
  TRouteCalculator& Calculator = Graph.Calculator;
  Calculator.CalculateMinimalPath(0, 3);
  EXPECT_EQ(RouteOf(Calculator), (TRoute{{0, 0}, {1, 0}, {2, 0}, {3, 1}}));
  Calculator.CalculateMinimalPath(1, 1);
  EXPECT_EQ(RouteOf(Calculator), (TRoute{{1, 0}}));
  Calculator.CalculateMinimalPath(0, 4);
  EXPECT_EQ(RouteOf(Calculator), (TRoute{{4, 1}}));
  EXPECT_FALSE(Calculator.CalculatePath({0, 0.001F}, {3, 9}, 0, 1));
  EXPECT_EQ(RouteOf(Calculator), (TRoute{{4, 1}}));
  EXPECT_TRUE(Calculator.CalculatePath({3, 9}, {3, 9}, 1, 0));
  EXPECT_EQ(RouteOf(Calculator), (TRoute{{3, 1}, {2, 0}}));
  for (const std::int32_t Outside : {-1, 5}) {
    Calculator.CalculateMinimalPath(0, Outside);
    EXPECT_TRUE(Calculator.LastCalculatedPath.IsEmpty());
  }
  EXPECT_EQ(Calculator.ClosestPointIndex({3, 5}, 0), 1);
  EXPECT_EQ(Calculator.ClosestPointIndex({3, 5}, 2), 0);
}

TEST(TRouteCalculator, KnowsTheLastRouteUntilTheGraphChanges) {
  TTwoFloors Graph;
  Graph.Calculator.CalculateMinimalPath(0, 2);
  const TArray<TRouteStep> First = Graph.Calculator.LastCalculatedPath;
  Graph.Calculator.CalculateMinimalPath(0, 2);
  EXPECT_TRUE(Graph.Calculator.LastCalculatedPath.Get().IsSameAs(First));
  Graph.Calculator.Initialize({{{0, 0}, 0}, {{3, 4}, 0}, {{3, 9}, 0}}, {{0, 2}});
  Graph.Calculator.CalculateMinimalPath(0, 2);
  EXPECT_EQ(RouteOf(Graph.Calculator), (TRoute{{0, 0}, {2, 0}}));
}

TEST(TRouteCalculator, CopiesShareTheLastRouteUntilOneTakesANewGraph) {
  TRouteCalculator Early;
  TTwoFloors Graph;
  Early = Graph.Calculator;
  Graph.Calculator.CalculateMinimalPath(0, 2);
  TRouteCalculator Late = Graph.Calculator;
  EXPECT_EQ(RouteOf(Early), (TRoute{{0, 0}, {1, 0}, {2, 0}}));
  EXPECT_TRUE(Early.LastCalculatedPath.Get().IsSameAs(Late.LastCalculatedPath));
  Late.CalculateMinimalPath(2, 3);
  EXPECT_EQ(RouteOf(Early), (TRoute{{2, 0}, {3, 1}}));
  Late.Initialize({{{0, 0}, 0}, {{0, 1}, 0}, {{0, 2}, 0}, {{0, 3}, 0}}, {{2, 0}, {0, 3}});
  EXPECT_TRUE(Late.LastCalculatedPath.IsEmpty());
  Late.CalculateMinimalPath(2, 3);
  EXPECT_EQ(RouteOf(Late), (TRoute{{2, 0}, {0, 0}, {3, 0}}));
  Early.CalculateMinimalPath(1, 3);
  EXPECT_EQ(RouteOf(Graph.Calculator), (TRoute{{1, 0}, {2, 0}, {3, 1}}));
  TRouteCalculator WithoutGraph;
  WithoutGraph.CalculateMinimalPath(0, 0);
  EXPECT_TRUE(WithoutGraph.LastCalculatedPath.IsEmpty());
}

TEST(DistanceToPointLine, TruncatesFootAndDistance) {
  struct TCase {
    TPointF P, A, B;
    std::int32_t Distance;
  };
  for (const TCase& C : {TCase{{5, 0}, {0, 0}, {10, 0}, 0},
                         TCase{{5, 3}, {0, 0}, {10, 0}, 3},
                         TCase{{5.6F, 0.9F}, {0, 0}, {10, 0}, 1},
                         TCase{{0, 3}, {0, 0}, {10, 0}, -2},
                         TCase{{-1, 0}, {0, 0}, {10, 0}, -2},
                         TCase{{11, 0}, {0, 0}, {10, 0}, -2},
                         TCase{{10, 2}, {0, 0}, {10, 0}, 2},
                         TCase{{1, 1}, {4, 4}, {4, 4}, -1}})
    EXPECT_EQ(TRouteCalculator::DistanceToPointLine(C.P, C.A, C.B), C.Distance) << C.P.X;
}

}  // namespace
}  // namespace System::Beacon::Fencing
