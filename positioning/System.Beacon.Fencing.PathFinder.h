// Shortest routes over the graph of a project's walkable paths, across maps.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <span>
#include <utility>

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
/// but holds the links only. Indexes are checked: outside there are no links. Copies share the
/// storage, which never changes: `Assign` makes a new one.
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

  /// The rows without their storage, for fast walks; valid while the matrix is left alone.
  class TRows {
   public:
    std::int32_t GetLength() const { return FLength; }
    /// The links of a node, by the number of the other node.
    std::span<const TLink> GetLinks(std::int32_t ARow) const {
      if (ARow < 0 || ARow >= FLength) return {};
      return {FLinks + FFirst[ARow], FLinks + FFirst[ARow + 1]};
    }

   private:
    friend class TContiguityMatrix;
    const std::int32_t* FFirst = nullptr;
    const TLink* FLinks = nullptr;
    std::int32_t FLength = 0;
  };

  std::int32_t GetLength() const { return GetRows().GetLength(); }
  TRow operator[](std::int32_t ARow) const { return TRow(GetRows().GetLinks(ARow)); }
  TRows GetRows() const;
  /// The largest weight that a route can use.
  double GetLongestLink() const { return FLongestLink; }

  /// Builds the matrix anew. Links to nodes that are not there, and links of weight 0 (two nodes
  /// in one place of one map), are left out. Linear in nodes and links, but for sorting each row.
  void Assign(const TArray<TPathPoint>& APoints, const TArray<TPathEdge>& AEdges);

 private:
  TArray<std::int32_t> FFirst;  // row r is FLinks[FFirst[r]] to FLinks[FFirst[r + 1]]
  TArray<TLink> FLinks;
  double FLongestLink = 0.0;
};

/// The last route of a calculator, common to the calculator and all its copies. Read on any thread,
/// also while a route is calculated.
class TSharedRoute {
 public:
  TSharedRoute(const TSharedRoute&) = default;
  ~TSharedRoute() = default;

  /// What the last route is now; routes to come leave it alone.
  TArray<TRouteStep> Get() const;
  operator TArray<TRouteStep>() const { return Get(); }
  bool IsEmpty() const { return Get().IsEmpty(); }

 private:
  friend class TRouteCalculator;
  struct TCell {
    std::mutex Lock;  // guards Route
    TArray<TRouteStep> Route;
  };

  TSharedRoute() = default;
  TSharedRoute& operator=(const TSharedRoute&) = default;
  void Set(TArray<TRouteStep> ARoute) const;

  std::shared_ptr<TCell> FCell;  // none while there is no graph
};

/// Finds the shortest route between two nodes (Dijkstra, 1959). Among routes of
/// equal length it finds the one that always goes on from the lowest node number. Nothing raises.
/// Copies are cheap: they share the graph, the last route and the memory of the searches, which
/// wait for each other. The input arrays are shared with the caller and are not to be changed
/// before the next `Initialize`. Any thread, but for the two operations that take a graph.
class TRouteCalculator {
 public:
  /// What a link between two maps costs, whatever the positions.
  static constexpr double CostBetweenMaps = 1000.0;
  /// Routes are shorter than this.
  static constexpr double Unreached = 2147483647.0;

  /// Takes a new graph, on which there is no last route yet. Copies made before keep the old one.
  void Initialize(const TArray<TPathPoint>& APointsList, const TArray<TPathEdge>& APathEdgesList);
  /// Builds the matrix of the arrays that are there anew; the last route is kept.
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
  TSharedRoute LastCalculatedPath;  ///< from the start node to the target

 private:
  struct TSearch;

  bool Contains(std::int32_t ANode) const;
  TArray<TRouteStep> Follow(std::span<const std::int32_t> APredecessors,
                            std::int32_t ATarget) const;

  TArray<TPathPoint> FPathPoints;
  TArray<TPathEdge> FPathEdges;
  std::shared_ptr<TSearch> FSearch;  // none while there is no graph
};

}  // namespace System::Beacon::Fencing
