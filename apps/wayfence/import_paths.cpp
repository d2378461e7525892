#include "apps/wayfence/import_paths.h"

#include <fmt/format.h>

#include <cmath>
#include <numeric>
#include <set>

namespace Wayfence {
namespace {

constexpr double Tolerance = 0.01;  // metres

std::int64_t CellOf(double ACoordinate) {
  return static_cast<std::int64_t>(std::floor(ACoordinate / Tolerance));
}

/// Puts the lines of a floor together.
class TLineJoiner {
 public:
  explicit TLineJoiner(const TImportedFloor& AFloor) {
    for (const TImportedLine& Line : AFloor.Lines) AddLine(Line);
    MakeGraphs();
  }

  void Annotate(const TImportedLine& ALine) {
    const std::size_t First = *FIndex.Find(ALine.Points.front());
    TPathGraph& Graph = FGraphs[FGraphOf[First]];
    if (Graph.Name.empty()) Graph.Name = ALine.Thing.Name;
    Graph.Notes.push_back({FNodeOf[First], &ALine.Thing, nullptr});
  }

  /// False when the point lies on no line.
  bool Annotate(const TImportedPoint& APoint) {
    const std::optional<std::size_t> Vertex = FIndex.Find(APoint.Place);
    if (!Vertex) return false;
    FGraphs[FGraphOf[*Vertex]].Notes.push_back({FNodeOf[*Vertex], &APoint.Thing, &APoint});
    return true;
  }

  std::vector<TPathGraph> TakeGraphs() { return std::move(FGraphs); }

 private:
  void AddLine(const TImportedLine& ALine) {
    std::size_t Last = AddVertex(ALine.Points.front());
    for (const TPlace& Point : ALine.Points) {
      const std::size_t Next = AddVertex(Point);
      if (Next != Last) FEdges.insert(std::minmax(Last, Next));
      FRoot[RootOf(Next)] = RootOf(Last);
      Last = Next;
    }
  }

  std::size_t AddVertex(TPlace APlace) {
    const std::size_t Result = FIndex.Add(APlace);
    if (Result == FRoot.size()) FRoot.push_back(Result);
    return Result;
  }

  /// The vertex that stands for all that hang together with this one.
  std::size_t RootOf(std::size_t AVertex) {
    while (FRoot[AVertex] != AVertex) AVertex = FRoot[AVertex] = FRoot[FRoot[AVertex]];
    return AVertex;
  }

  void MakeGraphs() {
    std::vector<std::size_t> GraphOfRoot(FRoot.size(), FRoot.size());
    for (std::size_t I = 0; I < FRoot.size(); ++I) {
      std::size_t& Graph = GraphOfRoot[RootOf(I)];
      if (Graph == FRoot.size()) {
        Graph = FGraphs.size();
        FGraphs.emplace_back();
      }
      FGraphOf.push_back(Graph);
      FNodeOf.push_back(static_cast<std::int32_t>(FGraphs[Graph].Nodes.size()));
      FGraphs[Graph].Nodes.push_back(FIndex.GetPlaces()[I]);
    }
    for (const auto& [From, To] : FEdges)
      FGraphs[FGraphOf[From]].Edges.emplace_back(FNodeOf[From], FNodeOf[To]);
  }

  TPlaceIndex FIndex;
  std::vector<std::size_t> FRoot;  // of each vertex: one that it hangs together with
  std::set<std::pair<std::size_t, std::size_t>> FEdges;
  std::vector<TPathGraph> FGraphs;
  std::vector<std::size_t> FGraphOf;  // of each vertex
  std::vector<std::int32_t> FNodeOf;
};

}  // namespace

std::size_t TPlaceIndex::THash::operator()(const TCell& ACell) const noexcept {
  const auto X = static_cast<std::uint64_t>(ACell.first) * 0x9E3779B97F4A7C15ULL;
  const auto Y = static_cast<std::uint64_t>(ACell.second) * 0xC2B2AE3D27D4EB4FULL;
  return (X ^ (Y >> 29) ^ Y) * 0xFF51AFD7ED558CCDULL >> 16;
}

std::optional<std::size_t> TPlaceIndex::Find(TPlace APlace) const {
  for (std::int64_t X = CellOf(APlace.X) - 1; X <= CellOf(APlace.X) + 1; ++X)
    for (std::int64_t Y = CellOf(APlace.Y) - 1; Y <= CellOf(APlace.Y) + 1; ++Y) {
      const auto [First, Last] = FByCell.equal_range({X, Y});
      for (auto At = First; At != Last; ++At) {
        const TPlace& Other = FPlaces[At->second];
        if (std::hypot(Other.X - APlace.X, Other.Y - APlace.Y) <= Tolerance) return At->second;
      }
    }
  return std::nullopt;
}

std::size_t TPlaceIndex::Add(TPlace APlace) {
  if (const std::optional<std::size_t> Known = Find(APlace)) return *Known;
  FByCell.emplace(TCell{CellOf(APlace.X), CellOf(APlace.Y)}, FPlaces.size());
  FPlaces.push_back(APlace);
  return FPlaces.size() - 1;
}

std::vector<TPathGraph> JoinLines(const TImportedFloor& AFloor, TWarnings& AWarnings) {
  TLineJoiner Joiner(AFloor);
  for (const TImportedLine& Line : AFloor.Lines) Joiner.Annotate(Line);
  for (const TImportedPoint& Point : AFloor.Points)
    if (!Joiner.Annotate(Point))
      AWarnings.push_back(
          fmt::format("{}: '{}': a point that is no beacon and no point of a line is left out",
                      Point.Thing.Source,
                      Point.Thing.Name));
  return Joiner.TakeGraphs();
}

}  // namespace Wayfence
