#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

#include "positioning/System.Beacon.Fencing.PathFinder.h"
#include "positioning/node_queue.h"
#include "positioning/segment_foot.h"

namespace System::Beacon::Fencing {
namespace {

bool IsNode(std::int32_t ANode, std::size_t ACount) {
  return ANode >= 0 && static_cast<std::size_t>(ANode) < ACount;
}

}  // namespace

// ---------------------------------------------------------------- TSharedRoute

TArray<TRouteStep> TSharedRoute::Get() const {
  if (!FCell) return {};
  const std::lock_guard Guard(FCell->Lock);
  return FCell->Route;
}

void TSharedRoute::Set(TArray<TRouteStep> ARoute) const {
  if (!FCell) return;
  const std::lock_guard Guard(FCell->Lock);
  std::swap(FCell->Route, ARoute);
}

// ---------------------------------------------------------------- TSearch

/// The last question and its answer, and the memory of the searches.
struct TRouteCalculator::TSearch {
  void Run(const TContiguityMatrix& AMatrix, std::int32_t AStart, std::int32_t ATarget);

  std::mutex Lock;             // guards everything below
  TPathEdge Question{-1, -1};  // start and target
  TArray<TRouteStep> Answer;
  std::vector<double> Distances;
  std::vector<std::int32_t> Predecessors;
  TNodeQueue Queue;
};

/// Nodes leave the queue by distance, then by number: the order in which a walk over all nodes
/// would pick them. Entries that a shorter way has overtaken are skipped.
void TRouteCalculator::TSearch::Run(const TContiguityMatrix& AMatrix,
                                    std::int32_t AStart,
                                    std::int32_t ATarget) {
  const TContiguityMatrix::TRows Rows = AMatrix.GetRows();
  const auto Count = static_cast<std::size_t>(Rows.GetLength());
  Distances.assign(Count, Unreached);
  Predecessors.assign(Count, -1);
  Distances[AStart] = 0.0;
  Queue.Clear(AMatrix.GetLongestLink());
  Queue.Push(0.0, AStart);
  for (TNodeQueue::TEntry Entry{}; Queue.Pop(Entry) && Entry.Node != ATarget;) {
    const auto [Distance, Node] = Entry;
    if (Distance != Distances[Node]) continue;
    for (const auto& [Neighbour, Weight] : Rows.GetLinks(Node)) {
      const double Longer = Distance + Weight;
      if (!(Longer < Distances[Neighbour])) continue;
      Distances[Neighbour] = Longer;
      Predecessors[Neighbour] = Node;
      Queue.Push(Longer, Neighbour);
    }
  }
}

// ---------------------------------------------------------------- TRouteCalculator

void TRouteCalculator::Initialize(const TArray<TPathPoint>& APointsList,
                                  const TArray<TPathEdge>& APathEdgesList) {
  FPathPoints = APointsList;
  FPathEdges = APathEdgesList;
  LastCalculatedPath.FCell = std::make_shared<TSharedRoute::TCell>();
  CreateGraphMatrix();
}

void TRouteCalculator::CreateGraphMatrix() {
  FSearch = std::make_shared<TSearch>();
  ContiguityMatrix.Assign(FPathPoints, FPathEdges);
}

bool TRouteCalculator::CalculatePath(TPointF AInitialPoint,
                                     TPointF ADestinyPoint,
                                     std::int32_t AInitialMap,
                                     std::int32_t ADestinyMap) {
  const TPathPoint Start{AInitialPoint, AInitialMap}, Target{ADestinyPoint, ADestinyMap};
  std::int32_t StartNode = -1, TargetNode = -1, Number = 0;
  for (const TPathPoint& Point : FPathPoints) {
    if (Point == Start) StartNode = Number;
    if (Point == Target) TargetNode = Number;
    if (StartNode >= 0 && TargetNode >= 0) break;
    ++Number;
  }
  if (StartNode < 0 || TargetNode < 0) return false;
  CalculateMinimalPath(StartNode, TargetNode);
  return true;
}

void TRouteCalculator::CalculateMinimalPath(std::int32_t AInitialPoint,
                                            std::int32_t ADestinyPoint) {
  const bool HasMatrix =
      static_cast<std::size_t>(ContiguityMatrix.GetLength()) == FPathPoints.GetLength();
  if (!HasMatrix || !Contains(AInitialPoint) || !Contains(ADestinyPoint))
    return LastCalculatedPath.Set({});
  const TPathEdge Question{AInitialPoint, ADestinyPoint};
  const std::lock_guard Guard(FSearch->Lock);
  if (Question != FSearch->Question) {
    FSearch->Run(ContiguityMatrix, AInitialPoint, ADestinyPoint);
    FSearch->Answer = Follow(FSearch->Predecessors, ADestinyPoint);
    FSearch->Question = Question;
  }
  LastCalculatedPath.Set(FSearch->Answer);
}

std::int32_t TRouteCalculator::ClosestPointIndex(TPointF APoint, std::int32_t AMapIndex) const {
  std::int32_t Result = 0, Number = 0;
  double Smallest = std::numeric_limits<double>::max();
  for (const auto& [Point, Map] : FPathPoints) {
    if (Map == AMapIndex && Distance(Point, APoint) < Smallest) {
      Smallest = Distance(Point, APoint);
      Result = Number;
    }
    ++Number;
  }
  return Result;
}

void TRouteCalculator::ReconstructPath(std::span<const std::int32_t> APredecessorList,
                                       std::int32_t,
                                       std::int32_t ADestinyNode) {
  LastCalculatedPath.Set(Follow(APredecessorList, ADestinyNode));
}

TArray<TRouteStep> TRouteCalculator::Follow(std::span<const std::int32_t> APredecessors,
                                            std::int32_t ATarget) const {
  std::vector<TRouteStep> Route;
  // A list that runs in a circle ends when it has passed every node.
  for (std::int32_t Node = ATarget; Contains(Node) && Route.size() < FPathPoints.GetLength();
       Node = IsNode(Node, APredecessors.size()) ? APredecessors[Node] : -1)
    Route.emplace_back(Node, FPathPoints[Node].second);
  std::reverse(Route.begin(), Route.end());
  return TArray<TRouteStep>(std::move(Route));
}

double TRouteCalculator::Distance(TPointF A, TPointF B) {
  const long double Dx = static_cast<long double>(A.X) - B.X;
  const long double Dy = static_cast<long double>(A.Y) - B.Y;
  return static_cast<double>(std::sqrt(Dx * Dx + Dy * Dy));
}

std::int32_t TRouteCalculator::DistanceToPointLine(TPointF APoint,
                                                   TPointF ASegmentP1,
                                                   TPointF ASegmentP2) {
  constexpr std::int32_t NoLength = -1, NoFoot = -2;
  const double Length = Distance(ASegmentP2, ASegmentP1);
  if (Length < 1E-12) return NoLength;
  const std::optional<TPointF> Foot = FootOnSegment(APoint, ASegmentP1, ASegmentP2);
  return Foot ? Truncated(Distance(APoint, *Foot)) : NoFoot;
}

bool TRouteCalculator::Contains(std::int32_t ANode) const {
  return IsNode(ANode, FPathPoints.GetLength());
}

}  // namespace System::Beacon::Fencing
