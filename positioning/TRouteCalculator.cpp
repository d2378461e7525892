#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <utility>

#include "positioning/System.Beacon.Fencing.PathFinder.h"

namespace System::Beacon::Fencing {
namespace {

constexpr double Unreached = 2147483647.0;

bool IsNode(std::int32_t ANode, std::size_t ACount) {
  return ANode >= 0 && static_cast<std::size_t>(ANode) < ACount;
}

double WeightOf(const TPathPoint& A, const TPathPoint& B) {
  return A.second == B.second ? TRouteCalculator::Distance(A.first, B.first)
                              : TRouteCalculator::CostBetweenMaps;
}

/// Towards 0, and into the range of the result.
double Truncated(double AValue) {
  constexpr double Limit = std::numeric_limits<std::int32_t>::max();
  return std::isnan(AValue) ? 0.0 : std::trunc(std::clamp(AValue, -Limit, Limit));
}

}  // namespace

// ---------------------------------------------------------------- TContiguityMatrix

double TContiguityMatrix::TRow::operator[](std::int32_t AColumn) const {
  const auto Found = std::lower_bound(
      FLinks.begin(), FLinks.end(), AColumn, [](const TLink& ALink, std::int32_t ANode) {
        return ALink.Node < ANode;
      });
  return Found != FLinks.end() && Found->Node == AColumn ? Found->Weight : 0.0;
}

std::span<const TContiguityMatrix::TLink> TContiguityMatrix::GetLinks(std::int32_t ARow) const {
  if (ARow < 0 || ARow >= GetLength()) return {};
  const auto First = static_cast<std::size_t>(FFirst[ARow]);
  return {FLinks.data() + First, static_cast<std::size_t>(FFirst[ARow + 1]) - First};
}

void TContiguityMatrix::Assign(const TArray<TPathPoint>& APoints, const TArray<TPathEdge>& AEdges) {
  const std::size_t Count = APoints.GetLength();
  std::vector<std::size_t> Degrees(Count + 1, 0);  // then: where each row begins
  const auto ForEachLink = [&](auto&& AVisit) {
    for (const auto& [A, B] : AEdges)
      if (IsNode(A, Count) && IsNode(B, Count) && A != B) AVisit(A, B), AVisit(B, A);
  };
  ForEachLink([&](std::int32_t A, std::int32_t) { ++Degrees[A + 1]; });
  for (std::size_t I = 0; I < Count; ++I) Degrees[I + 1] += Degrees[I];
  std::vector<TLink> Links(Degrees[Count]);
  std::vector<std::size_t> Next(Degrees.begin(), Degrees.end());
  ForEachLink([&](std::int32_t A, std::int32_t B) {
    Links[Next[A]++] = {B, WeightOf(APoints[A], APoints[B])};
  });

  FLinks.clear();
  FFirst.assign(1, 0);
  for (std::size_t Row = 0; Row < Count; ++Row) {
    const auto First = Links.begin() + static_cast<std::ptrdiff_t>(Degrees[Row]);
    const auto Last = Links.begin() + static_cast<std::ptrdiff_t>(Degrees[Row + 1]);
    std::sort(First, Last, [](const TLink& A, const TLink& B) { return A.Node < B.Node; });
    for (auto I = First; I != Last; ++I)
      if (I->Weight != 0.0 && (I == First || I->Node != (I - 1)->Node)) FLinks.push_back(*I);
    FFirst.push_back(static_cast<std::int32_t>(FLinks.size()));
  }
}

// ---------------------------------------------------------------- TRouteCalculator

void TRouteCalculator::Initialize(const TArray<TPathPoint>& APointsList,
                                  const TArray<TPathEdge>& APathEdgesList) {
  FPathPoints = APointsList;
  FPathEdges = APathEdgesList;
  CreateGraphMatrix();
}

void TRouteCalculator::CreateGraphMatrix() {
  ContiguityMatrix.Assign(FPathPoints, FPathEdges);
  FLastSearch = {-1, -1};
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
  if (!Contains(AInitialPoint) || !Contains(ADestinyPoint)) {
    LastCalculatedPath = {};
    return;
  }
  const TPathEdge Wanted{AInitialPoint, ADestinyPoint};
  if (Wanted != FLastSearch) {
    Search(AInitialPoint, ADestinyPoint);
    FLastSearch = Wanted;
    FLastRoute = LastCalculatedPath;
  }
  LastCalculatedPath = FLastRoute;
}

/// Nodes leave the heap by distance, then by number: the order in which a walk over all nodes would
/// pick them. Entries that a shorter way has overtaken are skipped.
void TRouteCalculator::Search(std::int32_t AStart, std::int32_t ATarget) {
  constexpr std::greater<> Later;
  FStates.assign(FPathPoints.GetLength(), {Unreached, false});
  FPredecessors.assign(FPathPoints.GetLength(), -1);
  FCandidates.assign(1, {0.0, AStart});
  FStates[AStart].Distance = 0.0;
  while (!FCandidates.empty()) {
    std::pop_heap(FCandidates.begin(), FCandidates.end(), Later);
    const std::int32_t Node = FCandidates.back().second;
    FCandidates.pop_back();
    TNodeState& State = FStates[Node];
    if (std::exchange(State.IsDone, true)) continue;
    if (Node == ATarget) break;
    for (const auto& [Neighbour, Weight] : ContiguityMatrix.GetLinks(Node)) {
      TNodeState& Other = FStates[Neighbour];
      const double Distance = State.Distance + Weight;
      if (Other.IsDone || !(Distance < Other.Distance)) continue;
      Other.Distance = Distance;
      FPredecessors[Neighbour] = Node;
      FCandidates.emplace_back(Distance, Neighbour);
      std::push_heap(FCandidates.begin(), FCandidates.end(), Later);
    }
  }
  ReconstructPath(FPredecessors, AStart, ATarget);
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
  std::vector<TRouteStep> Route;
  // A list that runs in a circle ends when it has passed every node.
  for (std::int32_t Node = ADestinyNode; Contains(Node) && Route.size() < FPathPoints.GetLength();
       Node = IsNode(Node, APredecessorList.size()) ? APredecessorList[Node] : -1)
    Route.emplace_back(Node, FPathPoints[Node].second);
  std::reverse(Route.begin(), Route.end());
  LastCalculatedPath = TArray<TRouteStep>(std::move(Route));
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
