// The records through which the map component works on a project, the interfaces behind them, the
// events of the map component, and the option sets of both components.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "fencing/option_sets.h"
#include "platform/array.h"
#include "platform/atomic_value.h"
#include "platform/beacons/System.Beacon.h"
#include "platform/comparer.h"
#include "platform/components.h"
#include "platform/geometry.h"
#include "positioning/System.Beacon.Fencing.PathFinder.h"

namespace System::Beacon::Fencing {

/// The unit of a map's coordinates.
enum class TMeasureUnits : std::uint8_t { Centimeters, Meters, Inches };

// ---------------------------------------------------------------- design interfaces
//
// What a project's maps are made of, as the scene offers it. Positions and rectangles are in map
// units; a displacement is the place on the map, a centre that of the drawn shape in the space of
// all maps. The getters answer on any thread and take no lock that their caller could hold; the
// setters belong to the main thread.

struct TPathNodeInfo;

/// A node of a walkable path.
class IDesignShape : public virtual IInterface {
 public:
  virtual TPointF GetDisplacement() const = 0;
  virtual TPointF GetCenterInGlobalSpace() const = 0;
  virtual const std::string& GetName() const = 0;
  virtual TRectF GetGlobalRect() const = 0;
  virtual std::string GetInformationItems() const = 0;

 protected:
  ~IDesignShape() = default;
};

/// A zone of a map.
class IDesignZone : public virtual IInterface {
 public:
  virtual TPointF GetCenterInGlobalSpace() const = 0;
  virtual const std::string& GetName() const = 0;
  virtual bool IsUnderGlobalPoint(TPointF APoint) const = 0;
  virtual TRectF GetGlobalRect() const = 0;
  virtual std::string GetInformationItems() const = 0;

 protected:
  ~IDesignZone() = default;
};

/// A map: one floor.
class IDesignMap : public virtual IInterface {
 public:
  virtual const std::string& GetName() const = 0;
  virtual TRectF GetGlobalRect() const = 0;
  /// Shows the route over the nodes `APath` (numbers into `APoints`); an empty one shows nothing.
  virtual void HighLitCustomPath(std::span<const TPathNodeInfo> APoints,
                                 std::span<const std::int32_t> APath) = 0;

 protected:
  ~IDesignMap() = default;
};

/// What a map may tell beside: the unit of its coordinates.
class IDesignMapUnits : public virtual IInterface {
 public:
  virtual TMeasureUnits GetMeasureUnits() const = 0;

 protected:
  ~IDesignMapUnits() = default;
};

/// A walkable path of a map.
class IDesignMapPath : public virtual IInterface {
 public:
  virtual TArray<TPointF> GetPathGlobalPoints() const = 0;
  /// Pairs of indexes into the points.
  virtual TArray<TPathEdge> GetPathEdges() const = 0;
  virtual const std::string& GetName() const = 0;

 protected:
  ~IDesignMapPath() = default;
};

/// A beacon as placed on a map.
class IDesignBeacon : public virtual IInterface {
 public:
  virtual TGUID GetGUID() const = 0;
  virtual std::int32_t GetMajor() const = 0;
  virtual std::int32_t GetMinor() const = 0;
  virtual std::string GetManufacturerID() const = 0;
  /// The manufacturer id as a number, -1 for any.
  virtual std::int32_t GetMID() const = 0;
  virtual TKindofBeacon GetKindofBeacon() const = 0;
  /// 20 and 12 hexadecimal digits.
  virtual std::string GetEddyNamespace() const = 0;
  virtual std::string GetEddyInstance() const = 0;
  virtual std::string GetInformationItems() const = 0;
  /// Metres; 0 without a sighting.
  virtual void SetSignalDistance(float ADistance) = 0;
  virtual float GetSignalDistance() const = 0;
  virtual TPointF GetDisplacement() const = 0;
  virtual TPointF GetCenterInGlobalSpace() const = 0;
  virtual const std::string& GetName() const = 0;
  virtual TRectF GetGlobalRect() const = 0;
  /// Whether the estimator may use the beacon.
  virtual bool GetUseToPositioning() const = 0;
  virtual void SetUseToPositioning(bool AValue) = 0;

 protected:
  ~IDesignBeacon() = default;
};

// ---------------------------------------------------------------- small records

/// Days since 1 January 1970.
using TTime = double;

/// How many calculator units make one map unit: positions are estimated in hundredths.
inline constexpr float CalculatorUnitsPerMapUnit = 100.0F;

/// From map units to calculator units and back.
constexpr TPointF ToCalculator(TPointF APoint) {
  return APoint * CalculatorUnitsPerMapUnit;
}
constexpr TPointF ToMap(TPointF APoint) {
  return {APoint.X / CalculatorUnitsPerMapUnit, APoint.Y / CalculatorUnitsPerMapUnit};
}

/// A beacon of a map, and its latest sighting.
struct TFencingBeacon {
  TRef<IBeacon> BTBeacon;            ///< nothing until it is seen
  TRef<IDesignBeacon> DesignBeacon;  ///< nothing in an empty record
  TTime TimeStasmp = 0.0;            ///< of the last sighting that was stamped; 0: none
};
using TFencingBeacons = TArray<TFencingBeacon>;

/// A particle of the estimator: a position in calculator units and its weight.
struct TParticle {
  TPointF Position;
  double P = 0.0;
};

/// A straight piece of a walkable path; the unit is the owner's.
struct TSegment {
  TPointF P1;
  TPointF P2;
};
using TPathSegments = TArray<TSegment>;

/// What stands behind a node of the path graph.
struct TPathNodeInfo {
  TPointF GlobalPosition;  ///< map units
  std::int32_t MapIndex = -1;
  TRef<IDesignMap> Map;
  std::int32_t PathIndex = -1;
  TRef<IDesignMapPath> Path;
  std::int32_t NodeIndex = -1;
  TRef<IDesignShape> Node;
};

enum class TPOIType : std::uint8_t { poiPathNode, poiBeacon, poiZone };

/// A point of interest.
struct TBeaconFencingPOI {
  std::string Name;
  TPointF Position;                                         ///< map units
  TArray<std::pair<std::string, std::string>> Information;  ///< key, value
  std::int32_t MapIndex = 0;
  TPOIType PoiType = TPOIType::poiPathNode;
};

/// The points of interest of a project. Texts are compared with regard to case.
struct TBeaconFencingPOIList {
  void AddPOI(const TBeaconFencingPOI& APOI);
  /// A copy of the first point of that name; an empty record when there is none.
  TBeaconFencingPOI FindPOI(std::string_view AName) const;
  /// One entry for each piece of information whose key (value) contains the text: a point with two
  /// of them is there twice.
  TArray<TBeaconFencingPOI> FindPOIByKey(std::string_view AKey) const;
  TArray<TBeaconFencingPOI> FindPOIByValue(std::string_view AValue) const;

  TArray<TBeaconFencingPOI> PoiList;
};

/// What the runtime map shows.
enum class TFencingMapOption : std::uint8_t {
  ColorBeacon,
  HighlightZones,
  ShowPosition,
  ShowPositionInPath,
  ShowBeacons,
  ShowBeaconSignal,
  ShowZones,
  ShowPaths
};
using TFencingMapOptions = TSet<TFencingMapOption>;

/// Narrows down which zones a point may be in. Any thread.
class IZoneFinder : public virtual IInterface {
 public:
  /// The indexes, in ascending order, of the zones that may be under a point (map units); all
  /// others are not. False when it cannot tell, or knows other zones than these: then each has to
  /// be asked.
  virtual bool FindNear(const TArray<TRef<IDesignZone>>& AZones,
                        TPointF APoint,
                        std::vector<std::int32_t>& AnIndexes) const = 0;

 protected:
  ~IZoneFinder() = default;
};

// ---------------------------------------------------------------- orders of beacons

/// By the distances of the sightings, nearest first; then sightings whose distance is unknown; then
/// entries without a sighting. Distances are live: read them once where an order must hold still.
class TFencingBeaconComparer : public TComparer<TFencingBeacon> {
 public:
  int Compare(const TFencingBeacon& ALeft, const TFencingBeacon& ARight) const override;
};

/// By the distance between a point (calculator units) and the place of the beacon; entries without
/// a sighting last.
class TFencingBeaconToPointComparer : public TComparer<TFencingBeacon> {
 public:
  explicit TFencingBeaconToPointComparer(TPointF APoint) : FPoint(APoint) {}
  int Compare(const TFencingBeacon& ALeft, const TFencingBeacon& ARight) const override;

 private:
  const TPointF FPoint;
};

// ---------------------------------------------------------------- TFencingMap

/// One map with its beacons and zones. A value: copies share the elements of the arrays, so that
/// what one of them binds is seen by all. The operations may be called on any thread; who touches
/// elements of `BeaconList` directly while others bind does it inside its `WithLock`. No operation
/// holds that lock while an application handler runs.
struct TFencingMap {
  /// The first beacon that is the one of a sighting. It is bound to the sighting (and stamped with
  /// the current time when `AActiveTimeStamp` is true), in the list too. False, and an empty
  /// record, when there is none. A beacon that is bound already is recognised by its sighting,
  /// one that is not by its design identity.
  bool GetFencingBeaconFor(const TRef<IBeacon>& ABeacon,
                           TFencingBeacon& AFencingBeacon,
                           bool AActiveTimeStamp);
  /// The same by design identity alone; the binding stays as it is.
  bool GetFencingBeaconFor(const TGUID& AUUID,
                           std::uint16_t AMajor,
                           std::uint16_t AMinor,
                           TFencingBeacon& AFencingBeacon,
                           bool AActiveTimeStamp);
  /// How many beacons have a sighting that is alive.
  std::int32_t GetActiveBeaconsCount() const;
  /// The entry whose sighting is nearest, the first of several. While no distance is known, the
  /// last entry without its sighting; an empty record for an empty list.
  TFencingBeacon NearestBeacon() const;
  /// A copy of the list in the order of `TFencingBeaconComparer`; equal entries keep their order.
  TFencingBeacons OrderedBeaconList() const;
  /// A copy in the order of `TFencingBeaconToPointComparer`; empty for the point (0, 0).
  TFencingBeacons OrderedBeaconListTo(TPointF APoint) const;
  /// The first zone under a point (map units), or nothing.
  TRef<IDesignZone> PointBelongsZone(TPointF APoint) const;
  TArray<TRef<IDesignZone>> GetZonesOverPoint(TPointF APoint) const;

  TRef<IDesignMap> Map;
  TFencingBeacons BeaconList;
  TArray<TRef<IDesignZone>> Zones;
  TRef<IZoneFinder> ZoneFinder;  ///< of `Zones`; without one every zone is asked
};

// ---------------------------------------------------------------- TFencingProject

/// A loaded project: maps, the regions to look for, points of interest, the graph of walkable
/// paths and the last route. A value: copies share the elements of the arrays and the last route.
/// Positions are in map units. Sightings may be looked up and bound, and the current map and the
/// last route read, on any thread; routes are shown on the main thread. Indexes that are not there
/// answer false or nothing.
struct TFencingProject {
  /// The first map that has the beacon of a sighting: -1 and false when none has. Binds it.
  bool BeaconBelognsToProject(const TRef<IBeacon>& ABeacon,
                              std::int32_t& AMapIndex,
                              TFencingBeacon& AFencingBeacon,
                              bool AActiveTimeStamp);
  bool BeaconBelognsToProject(const TGUID& AUUID,
                              std::uint16_t AMajor,
                              std::uint16_t AMinor,
                              std::int32_t& AMapIndex,
                              TFencingBeacon& AFencingBeacon,
                              bool AActiveTimeStamp);
  bool BeaconBelongsToMap(const TRef<IBeacon>& ABeacon,
                          std::int32_t AIndex,
                          TFencingBeacon& AFencingBeacon);
  /// Binds a sighting to its beacon and returns that; an empty record when the project has none.
  TFencingBeacon AddBeaconInfo(const TRef<IBeacon>& ABeacon);
  /// The same look-up; the returned record has no sighting, the list keeps it. Whether the beacon
  /// is still present is told by the sighting itself.
  TFencingBeacon RemoveBeaconInfo(const TRef<IBeacon>& ABeacon);
  /// The index of the map with the nearest sighting, and its entry in `AFencingBeacon`, which is
  /// replaced only by a nearer one. While no distance is known anywhere, the last map (-1 without
  /// maps) and an entry without a sighting.
  std::int32_t NearestMap(TFencingBeacon& AFencingBeacon) const;
  /// One segment (map units) for every link between two nodes of the map, in link order.
  TPathSegments GetPathSegmentsForMap(std::int32_t AIndex) const;
  /// Raises `EComponentError` for an index without a map.
  void SetCurrentMapIndex(std::int32_t AValue);

  /// Routes from a position on the current map to the node nearest to a point of interest on its
  /// map, and shows the whole route on every map that has a node on it and nothing on the others.
  /// False, and the maps are left alone, when there is none. Main thread.
  bool RouteTo(std::int32_t APointIndex, TPointF ACurrentPosition);
  bool RouteTo(const TBeaconFencingPOI& APoi, TPointF ACurrentPosition);
  /// The same to a node of the graph; the two maps are not used.
  bool RouteTo(std::int32_t APointIndex,
               TPointF ACurrentPosition,
               std::int32_t ACurrentMap,
               std::int32_t ADestMap);
  /// Shows no route on any map; the last route is kept. Main thread.
  void ClearRoute();
  /// Whether a point lies on a segment of the last route, to the whole unit.
  bool IsPointInLastRoute(TPointF ACurrentPoint) const;
  /// Whether a position on the current map has arrived at a point of interest: within 1.5 units of
  /// a path node; of the nearest path node, or within 2 of the beacon; of the nearest path node, or
  /// well inside the zone.
  bool IsCloseToPoi(TPointF ACurrentPosition, std::int32_t APoiIndex) const;

  /// What the design interfaces are parts of: it stays whole as long as the record.
  TRef<IInterface> Source;
  std::string ProjectName;
  TArray<TFencingMap> Maps;
  TAtomicValue<std::int32_t> CurrentMapIndex;
  TArray<TBeaconsRegion> RegionsToMonitorize;
  TBeaconFencingPOIList PoiList;
  TRouteCalculator Graph;
  TArray<TPathNodeInfo> GlobalPath;  ///< one entry for each node of `Graph`
};

// ---------------------------------------------------------------- events of the map component
//
// Delivered on the main thread, but where said otherwise.

/// Lets the application compute a position, on the component's timer thread: `AManaged` true takes
/// the answers, calculator units.
/// `AMapLimit` and `APaths` are in map units.
using TCalcPositionEvent = TMethod<void(TObject* ASender,
                                        const TFencingBeacons& ABeaconList,
                                        const TParticleFilterOptions& AOptions,
                                        const TRectF& AMapLimit,
                                        const TPathSegments& APaths,
                                        bool& AManaged,
                                        TPointF& ANewPosition,
                                        TPointF& ANewPathPosition)>;
using TFencingZoneEnterEvent = TMethod<void(TObject* ASender, const TRef<IDesignZone>& AZone)>;
using TFencingBeaconProximityEvent = TMethod<void(TObject* ASender,
                                                  const TFencingBeacon& AFencingBeacon,
                                                  const TRef<IDesignZone>& AZone,
                                                  TBeaconProximity AProximity)>;
using TFencingBeaconEnterExitEvent =
    TMethod<void(TObject* ASender, const TFencingBeacon& AFencingBeacon)>;
using TFencingEddyBeaconURLEvent = TMethod<void(
    TObject* ASender, const TFencingBeacon& AFencingBeacon, const TEddystoneURL& AEddystoneURL)>;
using TFencingEddyBeaconTLMEvent = TMethod<void(
    TObject* ASender, const TFencingBeacon& AFencingBeacon, const TEddystoneTLM& AEddystoneTLM)>;
/// The filtered position, and the one that was fitted to the paths; whoever raises it tells the
/// unit and the thread.
using TEstimatedPositionEvent =
    TMethod<void(const TPointF& AEstimatedPoint, const TPointF& APointToPath)>;
/// Calculator units; the particles are there during the call only.
using TUpdatedParticlesEvent = TMethod<void(std::span<const TParticle> AParticles)>;
using TFencingMapChangeEvent = TMethod<void(
    TObject* ASender, std::int32_t ACurrentMapIndex, std::int32_t ANewMapIndex, bool& AAllow)>;
using TArrivedToPOIEvent = TMethod<void(TObject* ASender, const TBeaconFencingPOI& APOI)>;

}  // namespace System::Beacon::Fencing

namespace System {

template <>
struct TEnumNames<Beacon::Fencing::TFencingMapOption> {
  static constexpr std::string_view Type = "TFencingMapOption";
  static constexpr std::array<std::string_view, 8> Names{"ColorBeacon",
                                                         "HighlightZones",
                                                         "ShowPosition",
                                                         "ShowPositionInPath",
                                                         "ShowBeacons",
                                                         "ShowBeaconSignal",
                                                         "ShowZones",
                                                         "ShowPaths"};
};
template <>
struct TEnumNames<Beacon::Fencing::TPOIType> {
  static constexpr std::string_view Type = "TPOIType";
  static constexpr std::array<std::string_view, 3> Names{"poiPathNode", "poiBeacon", "poiZone"};
};
template <>
struct TEnumNames<Beacon::Fencing::TMeasureUnits> {
  static constexpr std::string_view Type = "TMeasureUnits";
  static constexpr std::array<std::string_view, 3> Names{"Centimeters", "Meters", "Inches"};
};

}  // namespace System
