// From the distances of beacons to positions and zones: what runs on the timer thread and on the
// calculators' threads.
#include <algorithm>
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
    try {
      Handler(this);
    } catch (const std::exception& Error) {
      HandleApplicationException(this, Error);
    }
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

void TCustomBeaconMapFencing::UpdateBeaconsPositionCalculator(TObject*) {
  CheckMapChange();
  const TLoadedRef Loaded = GetLoaded();
  const std::int32_t MapIndex = Loaded->Project.CurrentMapIndex;
  TMapCalculator* const Entry = Loaded->GetCalculator(MapIndex);
  if (!Entry || !FSwitch.GetGate().IsOpen()) return;
  const TFencingMap& Map = Loaded->Project.Maps[static_cast<std::size_t>(MapIndex)];
  const TFencingBeacons Beacons = Map.OrderedBeaconList();
  if (CalcPosition(Loaded, Map, *Entry, Beacons) || Beacons.IsEmpty()) return;

  // Estimates of one calculator at a time: the handler of another one is not running any more.
  if (TMapCalculator* const Other =
          Loaded->GetCalculator(std::exchange(Loaded->CalculatorAtWork, MapIndex));
      Other && Other != Entry)
    Other->Calculator->SetOnEstimatingPosition({});
  Entry->Calculator->SetOnEstimatingPosition(
      Bind<&TEstimateReceiver::Estimated>(Entry->Receiver.get()));
  Entry->Calculator->DoCalculateStep(Beacons, Map.OrderedBeaconListTo(ReferencePoint(Beacons)));
}

/// Asks the application for the position; false when it leaves that to the calculator.
bool TCustomBeaconMapFencing::CalcPosition(const TLoadedRef& ALoaded,
                                           const TFencingMap& AMap,
                                           const TMapCalculator& AEntry,
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
  {
    const TOwnThreads::TCall Call(FOwnThreads);
    Handler(this,
            ABeacons,
            *Options,
            AMap.Map->GetGlobalRect(),
            AEntry.Segments,
            IsManaged,
            Position,
            PathPosition);
  }
  if (!IsManaged) return false;
  AEntry.Calculator->SetOnEstimatingPosition({});
  TakeEstimate(ALoaded, Position, PathPosition);
  return true;
}

// ---------------------------------------------------------------- an estimate

/// What an estimate changes on the display.
struct TCustomBeaconMapFencing::TDisplayChange {
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
  if (GetLoaded() != Loaded || Loaded->Project.CurrentMapIndex != AMapIndex) return;
  TakeEstimate(Loaded, AEstimatedPoint, APointToPath);
}

void TCustomBeaconMapFencing::OnEstimatePosition(const TPointF& AEstimatedPoint,
                                                 const TPointF& APointToPath) {
  TakeEstimate(GetLoaded(), AEstimatedPoint, APointToPath);
}

void TCustomBeaconMapFencing::TakeEstimate(const TLoadedRef& ALoaded,
                                           TPointF AEstimatedPoint,
                                           TPointF APointToPath) {
  if (!FSwitch.GetGate().IsOpen()) return;
  ALoaded->SetLastPoints(AEstimatedPoint, APointToPath);
  TDisplayChange Change{.Raw = ToMap(AEstimatedPoint), .Path = ToMap(APointToPath)};
  FollowRoute(*ALoaded, Change);
  Show(ALoaded, Change);
  const bool UsesPath = FZoneHighlightMetod.load() == TZoneHighlightMetod::PathPosition;
  CheckZones(ALoaded, UsesPath ? Change.Path : Change.Raw);
  Tell(FOnPositionEstimated,
       [&](const TEstimatedPositionEvent& AHandler) { AHandler(Change.Raw, Change.Path); });
  ALoaded->SetLastCalculatedPosition(AEstimatedPoint);
}

void TCustomBeaconMapFencing::FollowRoute(TTrackedProject& ALoaded, TDisplayChange& AChange) {
  const std::optional<std::int32_t> Route = ALoaded.GetRoute();
  if (!Route) return;
  AChange.IsOffRoute = !ALoaded.Project.IsPointInLastRoute(AChange.Path);
  const TArray<TBeaconFencingPOI>& Points = ALoaded.Project.PoiList.PoiList;
  const TBeaconFencingPOI& Poi = Points[static_cast<std::size_t>(*Route)];
  const TPointF Position = Poi.PoiType == TPOIType::poiPathNode ? AChange.Path : AChange.Raw;
  if (!ALoaded.Project.IsCloseToPoi(Position, *Route) || !ALoaded.TakeRoute(*Route)) return;
  AChange.HasArrived =
      Tell(FOnArrivedToPOI, [&](const TArrivedToPOIEvent& AHandler) { AHandler(this, Poi); });
  if (!AChange.HasArrived) ALoaded.SetRoute(Route);  // stopped before the application heard of it
}

namespace {

void ShowSignals(const TFencingMap& AMap) {
  using TSignal = std::pair<TRef<IDesignBeacon>, float>;
  std::vector<TSignal> Signals;
  Signals.reserve(AMap.BeaconList.GetLength());
  AMap.BeaconList.WithLock([&] {
    for (const TFencingBeacon& Entry : AMap.BeaconList)
      Signals.emplace_back(
          Entry.DesignBeacon,
          Entry.BTBeacon ? static_cast<float>(Entry.BTBeacon->GetDistance()) : 0.0F);
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
    if (AChange.HasArrived)
      ClearRoute();
    else if (const auto Route = ALoaded->GetRoute(); Route && AChange.IsOffRoute)
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

bool HasZone(const TZones& AZones, const std::string& AName) {
  return std::any_of(AZones.begin(), AZones.end(), [&](const TRef<IDesignZone>& AZone) {
    return AZone->GetName() == AName;
  });
}

}  // namespace

void TCustomBeaconMapFencing::CheckZonesEvent(const TPointF& APoint) {
  CheckZones(GetLoaded(), ToMap(APoint));
}

/// `APoint` in map units. What the application could not be told of because the component was
/// stopped counts as not having happened.
void TCustomBeaconMapFencing::CheckZones(const TLoadedRef& ALoaded, TPointF APoint) {
  const TFencingMap* const Map = ALoaded->GetCurrentMap();
  const TZones Zones = Map ? Map->GetZonesOverPoint(APoint) : TZones();
  if (GetMapOptions().Contains(TFencingMapOption::HighlightZones))
    OnMainThread(ALoaded, [&] { FRuntimeMap->HighLightZones({Zones.begin(), Zones.end()}); });

  const TZones Last = ALoaded->GetLastZones();
  const auto TellOf = [&](TEventSlot<void(TObject*, const TRef<IDesignZone>&)>& ASlot,
                          const TRef<IDesignZone>& AZone) {
    return Tell(ASlot, [&](const TFencingZoneEnterEvent& AHandler) { AHandler(this, AZone); });
  };
  std::vector<TRef<IDesignZone>> Untold;
  for (const TRef<IDesignZone>& Zone : Last)
    if (!HasZone(Zones, Zone->GetName()) && !TellOf(FOnZoneExit, Zone)) Untold.push_back(Zone);
  std::vector<TRef<IDesignZone>> Told;
  for (const TRef<IDesignZone>& Zone : Zones)
    if (HasZone(Last, Zone->GetName()) || TellOf(FOnZoneEnter, Zone)) Told.push_back(Zone);
  Told.insert(Told.end(), Untold.begin(), Untold.end());
  ALoaded->SetLastZones(TZones(std::move(Told)));
}

}  // namespace System::Beacon::Fencing
