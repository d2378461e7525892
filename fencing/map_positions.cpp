// From the distances of beacons to positions and zones: what runs on the timer thread and on the
// calculators' threads.
#include <algorithm>
#include <unordered_set>
#include <utility>
#include <vector>

#include "fencing/map_fencing.h"
#include "fencing/tracked_project.h"
#include "platform/time.h"

namespace System::Beacon::Fencing {

// ---------------------------------------------------------------- TBeaconFencingTimer

TCustomBeaconMapFencing::TBeaconFencingTimer::~TBeaconFencingTimer() {
  TerminateSoon();
  WaitFor();
}

TNotifyEvent TCustomBeaconMapFencing::TBeaconFencingTimer::GetOnIntervalPassed() const {
  const std::lock_guard Guard(FLock);
  return FOnIntervalPassed;
}

void TCustomBeaconMapFencing::TBeaconFencingTimer::SetOnIntervalPassed(TNotifyEvent AValue) {
  const std::lock_guard Guard(FLock);
  std::swap(FOnIntervalPassed, AValue);
}

void TCustomBeaconMapFencing::TBeaconFencingTimer::TerminateSoon() {
  Terminate();
  FWakeUp.SetEvent();
}

void TCustomBeaconMapFencing::TBeaconFencingTimer::Execute() {
  while (!GetTerminated()) {
    FWakeUp.WaitFor(GetUpdateInterval());
    if (GetTerminated()) return;
    const TNotifyEvent Handler = GetOnIntervalPassed();
    Handler(this);
  }
}

// ---------------------------------------------------------------- a step

namespace {

/// The place of the first beacon that was ever stamped, else of the first one; calculator units.
TPointF ReferencePoint(const TFencingBeacons& ABeacons) {
  constexpr double LongestAge = 3000.0;  // days
  const double Time = Now();
  const auto* const Stamped =
      std::find_if(ABeacons.begin(), ABeacons.end(), [Time](const TFencingBeacon& AEntry) {
        return Time - AEntry.TimeStasmp < LongestAge;
      });
  const TFencingBeacon& Reference = Stamped == ABeacons.end() ? ABeacons[0] : *Stamped;
  return ToCalculator(Reference.DesignBeacon->GetDisplacement());
}

}  // namespace

/// What raises is told; the next interval tries again.
void TCustomBeaconMapFencing::Tick(TObject* ASender) {
  const TOwnThreads::TCall Call(FOwnThreads, FSwitch);
  try {
    UpdateBeaconsPositionCalculator(ASender);
  } catch (...) {
    HandleCurrentException(ASender);
  }
}

void TCustomBeaconMapFencing::UpdateBeaconsPositionCalculator(TObject*) {
  CheckMapChange();
  const TLoadedRef Loaded = GetLoaded();
  const std::int32_t MapIndex = Loaded->Project.CurrentMapIndex;
  const TMapCalculator* const Entry = Loaded->GetCalculator(MapIndex);
  if (!Entry || !FSwitch.GetGate().IsOpen()) return;
  const TFencingMap& Map = *Loaded->GetMap(MapIndex);
  const TFencingBeacons Beacons = Map.OrderedBeaconList();
  if (CalcPosition(Loaded, MapIndex, Beacons) || Beacons.IsEmpty()) return;
  if (Loaded->CalculatorAtWork != MapIndex) Loaded->EndWork();
  Loaded->CalculatorAtWork = MapIndex;
  Entry->Calculator->SetOnEstimatingPosition(
      Bind<&TEstimateReceiver::Estimated>(Entry->Receiver.get()));
  Entry->Calculator->DoCalculateStep(Beacons, Map.OrderedBeaconListTo(ReferencePoint(Beacons)));
}

/// Asks the application for the position; false when it leaves that to the calculator.
bool TCustomBeaconMapFencing::CalcPosition(const TLoadedRef& ALoaded,
                                           std::int32_t AMapIndex,
                                           const TFencingBeacons& ABeacons) {
  TCalcPositionEvent Handler;
  TFilterOptionsRef Options;
  {
    const std::lock_guard Guard(FStateLock);
    Handler = FOnCalcPosition;
    Options = FFilterOptions;
  }
  if (!Handler) return false;
  bool IsManaged = false;
  TPointF Position, PathPosition;
  Handler(this,
          ABeacons,
          *Options,
          ALoaded->GetMap(AMapIndex)->Map->GetGlobalRect(),
          ALoaded->GetCalculator(AMapIndex)->Segments,
          IsManaged,
          Position,
          PathPosition);
  if (!IsManaged) return false;
  ALoaded->EndWork();
  TakeEstimate(ALoaded, AMapIndex, Position, PathPosition);
  return true;
}

// ---------------------------------------------------------------- an estimate

/// What an estimate changes on the display.
struct TCustomBeaconMapFencing::TDisplayChange {
  std::int32_t MapIndex = -1;
  TPointF Raw;   // map units
  TPointF Path;  // map units
  bool IsOffRoute = false;
  bool HasArrived = false;
};

void TCustomBeaconMapFencing::TakeEstimateOf(TTrackedProject& AProject,
                                             std::int32_t AMapIndex,
                                             const TPointF& AEstimatedPoint,
                                             const TPointF& APointToPath) {
  const TLoadedRef Loaded = AProject.shared_from_this();
  TakeEstimate(Loaded, AMapIndex, AEstimatedPoint, APointToPath);
}

void TCustomBeaconMapFencing::OnEstimatePosition(const TPointF& AEstimatedPoint,
                                                 const TPointF& APointToPath) {
  const TLoadedRef Loaded = GetLoaded();
  TakeEstimate(Loaded, Loaded->Project.CurrentMapIndex, AEstimatedPoint, APointToPath);
}

bool TCustomBeaconMapFencing::IsCurrent(const TLoadedRef& ALoaded, std::int32_t AMapIndex) const {
  return GetLoaded() == ALoaded && ALoaded->Project.CurrentMapIndex == AMapIndex;
}

/// An estimate counts as long as its map is the current one, which may change in every hand-off.
void TCustomBeaconMapFencing::TakeEstimate(const TLoadedRef& ALoaded,
                                           std::int32_t AMapIndex,
                                           TPointF AEstimatedPoint,
                                           TPointF APointToPath) {
  if (!FSwitch.GetGate().IsOpen() || !IsCurrent(ALoaded, AMapIndex)) return;
  ALoaded->SetLastPoints(AEstimatedPoint, APointToPath);
  TDisplayChange Change{
      .MapIndex = AMapIndex, .Raw = ToMap(AEstimatedPoint), .Path = ToMap(APointToPath)};
  FollowRoute(ALoaded, Change);
  Show(ALoaded, Change);
  const bool UsesPath = FZoneHighlightMetod.load() == TZoneHighlightMetod::PathPosition;
  CheckZones(ALoaded, AMapIndex, UsesPath ? Change.Path : Change.Raw);
  if (!IsCurrent(ALoaded, AMapIndex)) return;
  Tell(FOnPositionEstimated,
       [&](const TEstimatedPositionEvent& AHandler) { AHandler(Change.Raw, Change.Path); });
  ALoaded->SetLastCalculatedPosition(AEstimatedPoint);
}

void TCustomBeaconMapFencing::FollowRoute(const TLoadedRef& ALoaded, TDisplayChange& AChange) {
  const std::optional<std::int32_t> Route = ALoaded->GetRoute();
  if (!Route) return;
  const TFencingProject& Project = ALoaded->Project;
  AChange.IsOffRoute = !Project.IsPointInLastRoute(AChange.Path);
  const TBeaconFencingPOI& Poi = Project.PoiList.PoiList[static_cast<std::size_t>(*Route)];
  const TPointF Position = Poi.PoiType == TPOIType::poiPathNode ? AChange.Path : AChange.Raw;
  if (!Project.IsCloseToPoi(Position, *Route) || !IsCurrent(ALoaded, AChange.MapIndex) ||
      !ALoaded->TakeRoute(*Route))
    return;
  AChange.HasArrived =
      Tell(FOnArrivedToPOI, [&](const TArrivedToPOIEvent& AHandler) { AHandler(this, Poi); });
  if (!AChange.HasArrived) ALoaded->PutRouteBack(*Route);  // the application never heard of it
}

namespace {

/// The distance of a sighting, metres; 0 without one, and while it is not known.
float SignalOf(const IBeacon* ASighting) {
  return ASighting ? std::max(static_cast<float>(ASighting->GetDistance()), 0.0F) : 0.0F;
}

void ShowSignals(const TFencingMap& AMap) {
  using TSignal = std::pair<TRef<IDesignBeacon>, float>;
  std::vector<TSignal> Signals;
  Signals.reserve(AMap.BeaconList.GetLength());
  AMap.BeaconList.WithLock([&] {
    for (const TFencingBeacon& Entry : AMap.BeaconList)
      Signals.emplace_back(Entry.DesignBeacon, SignalOf(Entry.BTBeacon.Get()));
  });
  for (const auto& [Beacon, Distance] : Signals) Beacon->SetSignalDistance(Distance);
}

}  // namespace

void TCustomBeaconMapFencing::Show(const TLoadedRef& ALoaded, const TDisplayChange& AChange) {
  const TFencingMapOptions Options = GetMapOptions();
  const bool ShowsSignals = Options.Contains(TFencingMapOption::ShowBeaconSignal);
  const bool ShowsMarkers =
      FControl.load() && (Options.Contains(TFencingMapOption::ShowPosition) ||
                          Options.Contains(TFencingMapOption::ShowPositionInPath));
  if (!ShowsSignals && !ShowsMarkers && !AChange.IsOffRoute && !AChange.HasArrived) return;
  OnMainThread(ALoaded, [&] {
    if (AChange.HasArrived) ClearRoute();
    if (!IsCurrent(ALoaded, AChange.MapIndex)) return;
    if (const auto Route = ALoaded->GetRoute(); Route && AChange.IsOffRoute)
      ShowPathToNodeIndex(*Route);
    if (const TFencingMap* const Map = ALoaded->GetCurrentMap(); Map && ShowsSignals)
      ShowSignals(*Map);
    if (!GetPaintControl()) return;
    if (Options.Contains(TFencingMapOption::ShowPositionInPath))
      FRuntimeMap->SetPathPosition(AChange.Path);
    if (Options.Contains(TFencingMapOption::ShowPosition)) FRuntimeMap->SetRawPosition(AChange.Raw);
  });
}

// ---------------------------------------------------------------- zones

namespace {

using TZones = TArray<TRef<IDesignZone>>;

/// Zones are the same when they have the same name.
std::unordered_set<std::string> NamesOf(const TZones& AZones) {
  std::unordered_set<std::string> Result;
  for (const TRef<IDesignZone>& Zone : AZones) Result.insert(Zone->GetName());
  return Result;
}

}  // namespace

void TCustomBeaconMapFencing::CheckZonesEvent(const TPointF& APoint) {
  const TLoadedRef Loaded = GetLoaded();
  CheckZones(Loaded, Loaded->Project.CurrentMapIndex, ToMap(APoint));
}

/// `APoint` in map units. What the application could not be told of because the component was
/// stopped counts as not having happened.
void TCustomBeaconMapFencing::CheckZones(const TLoadedRef& ALoaded,
                                         std::int32_t AMapIndex,
                                         TPointF APoint) {
  const TFencingMap* const Map = ALoaded->GetMap(AMapIndex);
  const TZones Zones = Map ? Map->GetZonesOverPoint(APoint) : TZones();
  if (GetMapOptions().Contains(TFencingMapOption::HighlightZones))
    OnMainThread(ALoaded, [&] { FRuntimeMap->HighLightZones({Zones.begin(), Zones.end()}); });
  if (!IsCurrent(ALoaded, AMapIndex)) return;

  const TZones Last = ALoaded->GetLastZones();
  if (std::equal(Zones.begin(), Zones.end(), Last.begin(), Last.end())) return;
  const auto Names = NamesOf(Zones), LastNames = NamesOf(Last);
  const auto TellOf = [&](TEventSlot<void(TObject*, const TRef<IDesignZone>&)>& ASlot,
                          const TRef<IDesignZone>& AZone) {
    return Tell(ASlot, [&](const TFencingZoneEnterEvent& AHandler) { AHandler(this, AZone); });
  };
  std::vector<TRef<IDesignZone>> Untold;
  for (const TRef<IDesignZone>& Zone : Last)
    if (!Names.contains(Zone->GetName()) && !TellOf(FOnZoneExit, Zone)) Untold.push_back(Zone);
  std::vector<TRef<IDesignZone>> Told;
  for (const TRef<IDesignZone>& Zone : Zones)
    if (LastNames.contains(Zone->GetName()) || TellOf(FOnZoneEnter, Zone)) Told.push_back(Zone);
  Told.insert(Told.end(), Untold.begin(), Untold.end());
  ALoaded->SetLastZones(TZones(std::move(Told)));
}

}  // namespace System::Beacon::Fencing
