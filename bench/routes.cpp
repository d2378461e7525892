// Routes, beside a search over a dense matrix and beside Boost.Graph.
#include <benchmark/benchmark.h>

#include <boost/graph/adjacency_list.hpp>
#include <boost/graph/dijkstra_shortest_paths.hpp>

#include "bench/plain_positioning.h"
#include "positioning/System.Beacon.Fencing.PathFinder.h"

namespace {

using namespace System;
using namespace System::Beacon::Fencing;

/// Corridors: nodes on a square grid, a little out of place, with three links each on average.
struct TCorridors {
  TArray<TPathPoint> Points;
  TArray<TPathEdge> Edges;
  std::vector<TPathEdge> Questions;

  explicit TCorridors(std::int32_t ACount) {
    TRandomStream Random(7);
    const auto Side = static_cast<std::int32_t>(std::sqrt(ACount));
    std::vector<TPathPoint> Nodes;
    std::vector<TPathEdge> Links;
    for (std::int32_t I = 0; I < ACount; ++I) {
      const auto X = static_cast<float>(I % Side + 0.4 * Random.NextDouble());
      const auto Y = static_cast<float>(I / Side + 0.4 * Random.NextDouble());
      Nodes.push_back({{X * 10.0F, Y * 10.0F}, 0});
      if (I % Side != 0) Links.emplace_back(I - 1, I);
      if (I >= Side && (I % 2 == 0 || I % Side == 0)) Links.emplace_back(I - Side, I);
    }
    Points = TArray<TPathPoint>(std::move(Nodes));
    Edges = TArray<TPathEdge>(std::move(Links));
    for (int I = 0; I < 64; ++I)
      Questions.emplace_back(Below(Random, ACount), Below(Random, ACount));
  }
  double WeightOf(const TPathEdge& AEdge) const {
    return TRouteCalculator::Distance(Points[AEdge.first].first, Points[AEdge.second].first);
  }

 private:
  static std::int32_t Below(TRandomStream& ARandom, std::int32_t ABound) {
    return static_cast<std::int32_t>(ARandom.NextBelow(static_cast<std::uint32_t>(ABound)));
  }
};

/// Asks the 64 questions one after the other, again and again.
template <class TAsk>
void AskAll(benchmark::State& AState, const TCorridors& ACorridors, TAsk&& AAsk) {
  std::size_t Next = 0;
  for (auto _ : AState) {
    AAsk(ACorridors.Questions[Next]);
    if (++Next == ACorridors.Questions.size()) Next = 0;
  }
}

void Route(benchmark::State& AState) {
  const TCorridors Corridors(static_cast<std::int32_t>(AState.range(0)));
  TRouteCalculator Calculator;
  Calculator.Initialize(Corridors.Points, Corridors.Edges);
  AskAll(AState, Corridors, [&](const TPathEdge& AQuestion) {
    Calculator.CalculateMinimalPath(AQuestion.first, AQuestion.second);
    benchmark::DoNotOptimize(&Calculator.LastCalculatedPath);
  });
}
BENCHMARK(Route)->Name("Route/ours")->Arg(100)->Arg(1000);
BENCHMARK(Route)->Name("Route beside Boost.Graph/ours")->RangeMultiplier(10)->Range(100, 100000);

void RoutePlainly(benchmark::State& AState) {
  const TCorridors Corridors(static_cast<std::int32_t>(AState.range(0)));
  std::vector<std::tuple<int, int, double>> Links;
  for (const TPathEdge& Edge : Corridors.Edges)
    Links.emplace_back(Edge.first, Edge.second, Corridors.WeightOf(Edge));
  const Bench::TPlainRoutes Routes(Corridors.Points.GetLength(), Links);
  AskAll(AState, Corridors, [&](const TPathEdge& AQuestion) {
    benchmark::DoNotOptimize(Routes.Search(AQuestion.first, AQuestion.second));
  });
}
BENCHMARK(RoutePlainly)->Name("Route/plain")->Arg(100)->Arg(1000);

struct TFound {};

/// Ends the search at the target.
class TStopAt : public boost::default_dijkstra_visitor {
 public:
  explicit TStopAt(std::size_t ATarget) : FTarget(ATarget) {}
  template <class TGraph>
  void examine_vertex(std::size_t ANode, const TGraph&) const {
    if (ANode == FTarget) throw TFound();
  }

 private:
  std::size_t FTarget;
};

void RouteByBoost(benchmark::State& AState) {
  using TGraph = boost::adjacency_list<boost::vecS,
                                       boost::vecS,
                                       boost::undirectedS,
                                       boost::no_property,
                                       boost::property<boost::edge_weight_t, double>>;
  const TCorridors Corridors(static_cast<std::int32_t>(AState.range(0)));
  TGraph Graph(Corridors.Points.GetLength());
  for (const TPathEdge& Edge : Corridors.Edges)
    boost::add_edge(Edge.first, Edge.second, Corridors.WeightOf(Edge), Graph);
  std::vector<std::size_t> Predecessors(Corridors.Points.GetLength());
  std::vector<double> Distances(Corridors.Points.GetLength());
  AskAll(AState, Corridors, [&](const TPathEdge& AQuestion) {
    try {
      boost::dijkstra_shortest_paths(Graph,
                                     static_cast<std::size_t>(AQuestion.first),
                                     boost::predecessor_map(Predecessors.data())
                                         .distance_map(Distances.data())
                                         .visitor(TStopAt(AQuestion.second)));
    } catch (const TFound&) {
    }
    benchmark::DoNotOptimize(Predecessors.data());
  });
}
BENCHMARK(RouteByBoost)
    ->Name("Route beside Boost.Graph/plain")
    ->RangeMultiplier(10)
    ->Range(100, 100000);

void RouteAgain(benchmark::State& AState) {
  const TCorridors Corridors(static_cast<std::int32_t>(AState.range(0)));
  TRouteCalculator Calculator;
  Calculator.Initialize(Corridors.Points, Corridors.Edges);
  for (auto _ : AState) {
    Calculator.CalculateMinimalPath(0, static_cast<std::int32_t>(AState.range(0)) - 1);
    benchmark::DoNotOptimize(&Calculator.LastCalculatedPath);
  }
}
BENCHMARK(RouteAgain)->Name("The same route again")->Arg(100000);

}  // namespace
