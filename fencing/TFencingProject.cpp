#include <fmt/format.h>

#include <utility>
#include <vector>

#include "fencing/System.Beacon.Fencing.Types.h"
#include "fencing/messages.h"
#include "fencing/nearness.h"
#include "platform/errors.h"

namespace System::Beacon::Fencing {
namespace {

// How far a position may be from what it has arrived at, map units.
constexpr double ReachOfNode = 1.5;
constexpr double ReachOfBeacon = 2.0;
constexpr double MarginOfZone = 1.0;

template <class T>
bool IsIndex(std::int32_t AIndex, const TArray<T>& AArray) {
  return AIndex >= 0 && static_cast<std::size_t>(AIndex) < AArray.GetLength();
}

/// Asks the maps in order until one has the beacon. The caller's record is written last: it may be
/// the one that keeps the sighting.
template <class TAsk>
bool AskMaps(TArray<TFencingMap>& AMaps,
             TAsk&& AAsk,
             std::int32_t& AMapIndex,
             TFencingBeacon& AFencingBeacon) {
  TFencingBeacon Found;
  AMapIndex = -1;
  for (std::size_t I = 0; I < AMaps.GetLength() && AMapIndex < 0; ++I)
    if (AAsk(AMaps[I], Found)) AMapIndex = static_cast<std::int32_t>(I);
  AFencingBeacon = std::move(Found);
  return AMapIndex >= 0;
}

std::span<const TPathNodeInfo> AllNodes(const TFencingProject& AProject) {
  return {AProject.GlobalPath.begin(), AProject.GlobalPath.end()};
}

/// The whole route for every map with a node on it: a map that was given its own nodes only would
/// draw a line between the one where the route leaves it and the one where it comes back.
void ShowRoute(const TFencingProject& AProject, const TArray<TRouteStep>& ARoute) {
  std::vector<std::int32_t> Nodes;
  std::vector<bool> IsOnRoute(AProject.Maps.GetLength());
  for (const auto& [Node, MapIndex] : ARoute) {
    Nodes.push_back(Node);
    if (IsIndex(MapIndex, AProject.Maps)) IsOnRoute[MapIndex] = true;
  }
  for (std::size_t I = 0; I < AProject.Maps.GetLength(); ++I) {
    const TRef<IDesignMap> Map = AProject.Maps[I].Map;
    if (!Map) continue;
    Map->HighLitCustomPath(
        AllNodes(AProject),
        IsOnRoute[I] ? std::span<const std::int32_t>(Nodes) : std::span<const std::int32_t>());
  }
}

/// Whether a position has reached the node that is nearest to a point of interest on its map.
bool IsAtNodeOf(const TBeaconFencingPOI& APoi, TPointF APosition, const TRouteCalculator& AGraph) {
  const TArray<TPathPoint>& Nodes = AGraph.GetPathPoints();
  const std::int32_t Node = AGraph.ClosestPointIndex(APoi.Position, APoi.MapIndex);
  return IsIndex(Node, Nodes) && Nodes[Node].second == APoi.MapIndex &&
         TRouteCalculator::Distance(APosition, Nodes[Node].first) < ReachOfNode;
}

/// Whether a position is in the zone of a point of interest, and nearer to the point than the edges
/// of a zone of that size around it would be.
bool IsWellInsideZoneOf(const TBeaconFencingPOI& APoi, TPointF APosition, const TFencingMap& AMap) {
  const TRef<IDesignZone> Zone = AMap.PointBelongsZone(APoi.Position);
  if (!Zone || Zone->GetName() != APoi.Name || !Zone->IsUnderGlobalPoint(APosition)) return false;
  const TRectF Rect = Zone->GetGlobalRect();
  const double HalfWidth = (static_cast<double>(Rect.Right) - Rect.Left) / 2.0;
  const double HalfHeight = (static_cast<double>(Rect.Bottom) - Rect.Top) / 2.0;
  const double Distance = TRouteCalculator::Distance(APosition, APoi.Position);
  return Distance < HalfWidth - MarginOfZone || Distance < HalfHeight - MarginOfZone;
}

}  // namespace

// ---------------------------------------------------------------- sightings

bool TFencingProject::BeaconBelognsToProject(const TRef<IBeacon>& ABeacon,
                                             std::int32_t& AMapIndex,
                                             TFencingBeacon& AFencingBeacon,
                                             bool AActiveTimeStamp) {
  const auto Ask = [&](TFencingMap& AMap, TFencingBeacon& AFound) {
    return AMap.GetFencingBeaconFor(ABeacon, AFound, AActiveTimeStamp);
  };
  return AskMaps(Maps, Ask, AMapIndex, AFencingBeacon);
}

bool TFencingProject::BeaconBelognsToProject(const TGUID& AUUID,
                                             std::uint16_t AMajor,
                                             std::uint16_t AMinor,
                                             std::int32_t& AMapIndex,
                                             TFencingBeacon& AFencingBeacon,
                                             bool AActiveTimeStamp) {
  const auto Ask = [&](TFencingMap& AMap, TFencingBeacon& AFound) {
    return AMap.GetFencingBeaconFor(AUUID, AMajor, AMinor, AFound, AActiveTimeStamp);
  };
  return AskMaps(Maps, Ask, AMapIndex, AFencingBeacon);
}

bool TFencingProject::BeaconBelongsToMap(const TRef<IBeacon>& ABeacon,
                                         std::int32_t AIndex,
                                         TFencingBeacon& AFencingBeacon) {
  if (IsIndex(AIndex, Maps))
    return Maps[AIndex].GetFencingBeaconFor(ABeacon, AFencingBeacon, false);
  AFencingBeacon = {};
  return false;
}

TFencingBeacon TFencingProject::AddBeaconInfo(const TRef<IBeacon>& ABeacon) {
  TFencingBeacon Result;
  std::int32_t MapIndex = -1;
  BeaconBelognsToProject(ABeacon, MapIndex, Result, false);
  return Result;
}

TFencingBeacon TFencingProject::RemoveBeaconInfo(const TRef<IBeacon>& ABeacon) {
  TFencingBeacon Result = AddBeaconInfo(ABeacon);
  Result.BTBeacon = nullptr;
  return Result;
}

std::int32_t TFencingProject::NearestMap(TFencingBeacon& AFencingBeacon) const {
  std::int32_t Result = -1;
  TNearness Smallest = TNearness::OfSighting(AFencingBeacon.BTBeacon.Get());
  for (std::size_t I = 0; I < Maps.GetLength(); ++I) {
    TFencingBeacon Nearest = Maps[I].NearestBeacon();
    const TNearness Nearness = TNearness::OfSighting(Nearest.BTBeacon.Get());
    if (Smallest.IsKnown() && !(Nearness < Smallest)) continue;
    if (!Nearness.IsKnown()) Nearest.BTBeacon = nullptr;  // lost since the map was asked
    AFencingBeacon = std::move(Nearest);
    Smallest = Nearness;
    Result = static_cast<std::int32_t>(I);
  }
  return Result;
}

// ---------------------------------------------------------------- maps and routes

TPathSegments TFencingProject::GetPathSegmentsForMap(std::int32_t AIndex) const {
  const TArray<TPathPoint>& Nodes = Graph.GetPathPoints();
  const auto IsOnMap = [&](std::int32_t ANode) {
    return IsIndex(ANode, Nodes) && Nodes[ANode].second == AIndex;
  };
  std::vector<TSegment> Result;
  for (const auto& [A, B] : Graph.GetPathEdges())
    if (IsOnMap(A) && IsOnMap(B)) Result.push_back({Nodes[A].first, Nodes[B].first});
  return TPathSegments(std::move(Result));
}

void TFencingProject::SetCurrentMapIndex(std::int32_t AValue) {
  if (!IsIndex(AValue, Maps))
    throw EComponentError(fmt::format(fmt::runtime(Messages::SInvalidMapIndex), AValue));
  CurrentMapIndex = AValue;
}

bool TFencingProject::RouteTo(std::int32_t APointIndex, TPointF ACurrentPosition) {
  return IsIndex(APointIndex, PoiList.PoiList) &&
         RouteTo(PoiList.PoiList[APointIndex], ACurrentPosition);
}

bool TFencingProject::RouteTo(const TBeaconFencingPOI& APoi, TPointF ACurrentPosition) {
  const std::int32_t Node = Graph.ClosestPointIndex(APoi.Position, APoi.MapIndex);
  return RouteTo(Node, ACurrentPosition, CurrentMapIndex, APoi.MapIndex);
}

bool TFencingProject::RouteTo(std::int32_t APointIndex,
                              TPointF ACurrentPosition,
                              std::int32_t,
                              std::int32_t) {
  const std::int32_t Start = Graph.ClosestPointIndex(ACurrentPosition, CurrentMapIndex);
  Graph.CalculateMinimalPath(Start, APointIndex);
  const TArray<TRouteStep> Route = Graph.LastCalculatedPath;
  if (Route.IsEmpty()) return false;
  ShowRoute(*this, Route);
  return true;
}

void TFencingProject::ClearRoute() {
  ShowRoute(*this, {});
}

bool TFencingProject::IsPointInLastRoute(TPointF ACurrentPoint) const {
  const TArray<TPathPoint>& Nodes = Graph.GetPathPoints();
  const TArray<TRouteStep> Route = Graph.LastCalculatedPath;
  for (std::size_t I = 1; I < Route.GetLength(); ++I) {
    const auto [A, MapOfA] = Route[I - 1];
    const auto [B, MapOfB] = Route[I];
    if (MapOfA == MapOfB && IsIndex(A, Nodes) && IsIndex(B, Nodes) &&
        TRouteCalculator::DistanceToPointLine(ACurrentPoint, Nodes[A].first, Nodes[B].first) == 0)
      return true;
  }
  return false;
}

bool TFencingProject::IsCloseToPoi(TPointF ACurrentPosition, std::int32_t APoiIndex) const {
  if (!IsIndex(APoiIndex, PoiList.PoiList)) return false;
  const TBeaconFencingPOI& Poi = PoiList.PoiList[APoiIndex];
  if (Poi.MapIndex != CurrentMapIndex) return false;
  const double Distance = TRouteCalculator::Distance(ACurrentPosition, Poi.Position);
  switch (Poi.PoiType) {
    case TPOIType::poiPathNode:
      return Distance < ReachOfNode;
    case TPOIType::poiBeacon:
      return Distance < ReachOfBeacon || IsAtNodeOf(Poi, ACurrentPosition, Graph);
    case TPOIType::poiZone:
      return IsAtNodeOf(Poi, ACurrentPosition, Graph) ||
             (IsIndex(Poi.MapIndex, Maps) &&
              IsWellInsideZoneOf(Poi, ACurrentPosition, Maps[Poi.MapIndex]));
  }
  return false;
}

}  // namespace System::Beacon::Fencing
