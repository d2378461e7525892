#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <utility>
#include <vector>

#include "positioning/System.Beacon.Fencing.PathFinder.h"

namespace System::Beacon::Fencing {
namespace {

constexpr double Unreached = 2147483647.0;

bool IsNode(std::int32_t ANode, std::size_t ACount) {
  return ANode >= 0 && static_cast<std::size_t>(ANode) < ACount;
}

/// Towards 0, and into the range of the result.
double Truncated(double AValue) {
  constexpr double Limit = std::numeric_limits<std::int32_t>::max();
  return std::isnan(AValue) ? 0.0 : std::trunc(std::clamp(AValue, -Limit, Limit));
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
  struct TNodeState {
    double Distance;
    bool IsDone;
  };
  using TCandidate = std::pair<double, std::int32_t>;  // distance, node

  void Run(TContiguityMatrix::TRows AMatrix, std::int32_t AStart, std::int32_t ATarget);

  std::mutex Lock;             // guards everything below
  TPathEdge Question{-1, -1};  // start and target
  TArray<TRouteStep> Answer;
  std::vector<TNodeState> States;
  std::vector<std::int32_t> Predecessors;
  std::vector<TCandidate> Candidates;
};

/// Nodes leave the heap by distance, then by number: the order in which a walk over all nodes would
/// pick them. Entries that a shorter way has overtaken are skipped.
void TRouteCalculator::TSearch::Run(TContiguityMatrix::TRows AMatrix,
                                    std::int32_t AStart,
                                    std::int32_t ATarget) {
  constexpr std::greater<> Later;
  const auto Count = static_cast<std::size_t>(AMatrix.GetLength());
  States.assign(Count, {Unreached, false});
  Predecessors.assign(Count, -1);
  Candidates.assign(1, {0.0, AStart});
  TNodeState* const Nodes = States.data();
  Nodes[AStart].Distance = 0.0;
  while (!Candidates.empty()) {
    std::pop_heap(Candidates.begin(), Candidates.end(), Later);
    const std::int32_t Node = Candidates.back().second;
    Candidates.pop_back();
    TNodeState& State = Nodes[Node];
    if (std::exchange(State.IsDone, true)) continue;
    if (Node == ATarget) break;
    for (const auto& [Neighbour, Weight] : AMatrix.GetLinks(Node)) {
      TNodeState& Other = Nodes[Neighbour];
      const double Distance = State.Distance + Weight;
      if (Other.IsDone || !(Distance < Other.Distance)) continue;
      Other.Distance = Distance;
      Predecessors[Neighbour] = Node;
      Candidates.emplace_back(Distance, Neighbour);
      std::push_heap(Candidates.begin(), Candidates.end(), Later);
    }
  }
}

// ---------------------------------------------------------------- TRouteCalculator

void TRouteCalculator::Initialize(const TArray<TPathPoint>& APointsList,
                                  const TArray<TPathEdge>& APathEdgesList) {
  TContiguityMatrix Matrix;
  Matrix.Assign(APointsList, APathEdgesList);
  TSharedRoute Route;
  Route.FCell = std::make_shared<TSharedRoute::TCell>();
  FSearch = std::make_shared<TSearch>();
  FPathPoints = APointsList;
  FPathEdges = APathEdgesList;
  ContiguityMatrix = Matrix;
  LastCalculatedPath = Route;
}

void TRouteCalculator::CreateGraphMatrix() {
  Initialize(FPathPoints, FPathEdges);
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
  if (!Contains(AInitialPoint) || !Contains(ADestinyPoint)) return LastCalculatedPath.Set({});
  const TPathEdge Question{AInitialPoint, ADestinyPoint};
  const std::lock_guard Guard(FSearch->Lock);
  if (Question != FSearch->Question) {
    FSearch->Run(ContiguityMatrix.GetRows(), AInitialPoint, ADestinyPoint);
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
  const double Dx = static_cast<double>(ASegmentP2.X) - ASegmentP1.X;
  const double Dy = static_cast<double>(ASegmentP2.Y) - ASegmentP1.Y;
  const double T = ((static_cast<double>(APoint.X) - ASegmentP1.X) * Dx +
                    (static_cast<double>(APoint.Y) - ASegmentP1.Y) * Dy) /
                   (Length * Length);
  if (!(T >= 1E-6 && T <= 1.0)) return NoFoot;
  const TPointF Foot{static_cast<float>(Truncated(ASegmentP1.X + T * Dx)),
                     static_cast<float>(Truncated(ASegmentP1.Y + T * Dy))};
  return static_cast<std::int32_t>(Truncated(Distance(APoint, Foot)));
}

bool TRouteCalculator::Contains(std::int32_t ANode) const {
  return IsNode(ANode, FPathPoints.GetLength());
}

}  // namespace System::Beacon::Fencing
