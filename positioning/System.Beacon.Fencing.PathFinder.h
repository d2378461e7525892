// Shortest routes over the graph of a project's walkable paths, across maps.
#pragma once

#include <cstdint>
#include <span>
#include <utility>
#include <vector>

#include "platform/array.h"
#include "platform/geometry.h"

namespace System::Beacon::Fencing {

/// A node: its position on its map (map units), and the map's index. Its number is its place.
using TPathPoint = std::pair<TPointF, std::int32_t>;
/// An undirected link between two node numbers.
using TPathEdge = std::pair<std::int32_t, std::int32_t>;
/// A step of a route: node number and map index.
using TRouteStep = std::pair<std::int32_t, std::int32_t>;

/// The weights of all links: `M[a][b]`, 0 where there is no link. Reads like a dense n × n matrix,
/// but holds the links only. Indexes are checked: outside there are no links.
class TContiguityMatrix {
 public:
  /// One link of a row.
  struct TLink {
    std::int32_t Node;
    double Weight;
  };
  class TRow {
   public:
    explicit TRow(std::span<const TLink> ALinks) : FLinks(ALinks) {}
    double operator[](std::int32_t AColumn) const;

   private:
    std::span<const TLink> FLinks;
  };

  std::int32_t GetLength() const { return static_cast<std::int32_t>(FFirst.size()) - 1; }
  TRow operator[](std::int32_t ARow) const { return TRow(GetLinks(ARow)); }
  /// The links of a node, by the number of the other node.
  std::span<const TLink> GetLinks(std::int32_t ARow) const;

  /// Builds the matrix anew. Links to nodes that are not there, and links of weight 0 (two nodes
  /// in one place of one map), are left out. Linear in nodes and links, but for sorting each row.
  void Assign(const TArray<TPathPoint>& APoints, const TArray<TPathEdge>& AEdges);

 private:
  std::vector<std::int32_t> FFirst = {0};  // row r is FLinks[FFirst[r]] to FLinks[FFirst[r + 1]]
  std::vector<TLink> FLinks;
};

/// Finds the shortest route between two nodes (Dijkstra, 1959, with a binary heap). Among routes of
/// equal length it finds the one that always goes on from the lowest node number. Nothing raises.
/// One thread at a time; the input arrays are shared with the caller and are not to be changed
/// before the next `Initialize`.
class TRouteCalculator {
 public:
  /// What a link between two maps costs, whatever the positions.
  static constexpr double CostBetweenMaps = 1000.0;

  void Initialize(const TArray<TPathPoint>& APointsList, const TArray<TPathEdge>& APathEdgesList);
  void CreateGraphMatrix();

  /// True when both points are nodes of their maps, exactly; the route is then in
  /// `LastCalculatedPath`, which is left alone otherwise.
  bool CalculatePath(TPointF AInitialPoint,
                     TPointF ADestinyPoint,
                     std::int32_t AInitialMap,
                     std::int32_t ADestinyMap);
  /// Between node numbers; numbers outside the graph give the empty route, an unreachable target
  /// the route of the target alone. A route that was the last one is not searched again.
  void CalculateMinimalPath(std::int32_t AInitialPoint, std::int32_t ADestinyPoint);
  /// The nearest node of a map; 0 when there is none.
  std::int32_t ClosestPointIndex(TPointF APoint, std::int32_t AMapIndex) const;
  /// Follows the predecessors (-1: none) back from the target. `AInitialNode` is not consulted.
  void ReconstructPath(std::span<const std::int32_t> APredecessorList,
                       std::int32_t AInitialNode,
                       std::int32_t ADestinyNode);

  static double Distance(TPointF A, TPointF B);
  /// The truncated distance from a point to its foot on a segment, the foot in whole units; -1 for
  /// a segment without length, -2 when the foot is on the first end or outside the segment.
  static std::int32_t DistanceToPointLine(TPointF APoint, TPointF ASegmentP1, TPointF ASegmentP2);

  const TArray<TPathPoint>& GetPathPoints() const { return FPathPoints; }
  const TArray<TPathEdge>& GetPathEdges() const { return FPathEdges; }

  TContiguityMatrix ContiguityMatrix;
  TArray<TRouteStep> LastCalculatedPath;  ///< from the start node to the target

 private:
  bool Contains(std::int32_t ANode) const;
  void Search(std::int32_t AStart, std::int32_t ATarget);

  struct TNodeState {
    double Distance;
    bool IsDone;
  };
  using TCandidate = std::pair<double, std::int32_t>;  // distance, node

  TArray<TPathPoint> FPathPoints;
  TArray<TPathEdge> FPathEdges;
  TPathEdge FLastSearch{-1, -1};  // start and target of FLastRoute
  TArray<TRouteStep> FLastRoute;
  // Kept between searches for their memory.
  std::vector<TNodeState> FStates;
  std::vector<std::int32_t> FPredecessors;
  std::vector<TCandidate> FCandidates;
};

}  // namespace System::Beacon::Fencing
