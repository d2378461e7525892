// From sightings to the events of the map component: what runs on the reporting thread.
#include <limits>

#include "fencing/map_fencing.h"
#include "fencing/tracked_project.h"

namespace System::Beacon::Fencing {
namespace {

/// The map of the nearest sighting that is alive, -1 for none.
std::int32_t MapOfNearestSighting(const TFencingProject& AProject) {
  double Smallest = std::numeric_limits<double>::max();
  std::int32_t Result = -1;
  for (std::size_t I = 0; I < AProject.Maps.GetLength(); ++I) {
    const TFencingBeacons& Beacons = AProject.Maps[I].BeaconList;
    Beacons.WithLock([&] {
      for (const TFencingBeacon& Entry : Beacons) {
        if (!Entry.BTBeacon || !Entry.BTBeacon->IsAlive()) continue;
        const double Distance = Entry.BTBeacon->GetDistance();
        if (!(Distance > 0.0 && Distance < Smallest)) continue;
        Smallest = Distance;
        Result = static_cast<std::int32_t>(I);
      }
    });
  }
  return Result;
}

/// The colour of a beacon by how near it is; nothing for an unknown one.
std::optional<TAlphaColor> ColorOf(TBeaconProximity AProximity) {
  switch (AProximity) {
    case TBeaconProximity::Immediate:
      return TAlphaColor{0xFF008000};  // green
    case TBeaconProximity::Near:
      return TAlphaColor{0xFFFFFF00};  // yellow
    case TBeaconProximity::Far:
      return TAlphaColor{0xFFFFA500};  // orange
    case TBeaconProximity::Away:
      return TAlphaColor{0xFFFF0000};  // red
    case TBeaconProximity::Unknown:
      break;
  }
  return {};
}

}  // namespace

// ---------------------------------------------------------------- enter and exit

void TCustomBeaconMapFencing::BeaconEnterEvent(TObject*,
                                               const TRef<IBeacon>& ABeacon,
                                               const TBeaconList& ACurrentBeaconList) {
  SetCurrentBeaconList(ACurrentBeaconList);
  ProcessIncomingBeacon(ABeacon);
}

void TCustomBeaconMapFencing::BeaconExitEvent(TObject*,
                                              const TRef<IBeacon>& ABeacon,
                                              const TBeaconList& ACurrentBeaconList) {
  SetCurrentBeaconList(ACurrentBeaconList);
  ProcessOutgoingBeacon(ABeacon);
}

void TCustomBeaconMapFencing::SetCurrentBeaconList(TBeaconList AList) {
  const std::lock_guard Guard(FStateLock);
  std::swap(FCurrentBeaconList, AList);
}

void TCustomBeaconMapFencing::ProcessIncomingBeacon(const TRef<IBeacon>& ABeacon) {
  const TLoadedRef Loaded = GetLoaded();
  const TFencingBeacon Beacon = Loaded->Project.AddBeaconInfo(ABeacon);
  if (Beacon.DesignBeacon)
    Tell(FOnBeaconEnter,
         [&](const TFencingBeaconEnterExitEvent& AHandler) { AHandler(this, Beacon); });
  CheckMapChange();
}

void TCustomBeaconMapFencing::ProcessOutgoingBeacon(const TRef<IBeacon>& ABeacon) {
  const TLoadedRef Loaded = GetLoaded();
  const TFencingBeacon Beacon = Loaded->Project.RemoveBeaconInfo(ABeacon);
  if (Beacon.DesignBeacon)
    Tell(FOnBeaconExit,
         [&](const TFencingBeaconEnterExitEvent& AHandler) { AHandler(this, Beacon); });
  CheckMapChange();
}

// ---------------------------------------------------------------- distance and proximity

void TCustomBeaconMapFencing::BeaconCalcDistancesEvent(
    TObject*, const TRef<IBeacon>& ABeacon, int ATxPower, int ARssi, double& ANewDistance) {
  const TLoadedRef Loaded = GetLoaded();
  if (Loaded->Calculators.empty()) return;
  TFencingBeacon Beacon;
  std::int32_t MapIndex = -1;
  if (!Loaded->Project.BeaconBelognsToProject(ABeacon, MapIndex, Beacon, true)) return;
  const TMapCalculator* const Entry = Loaded->GetCalculator(MapIndex);
  const TOwnThreads::TCall Call(FOwnThreads, FSwitch);
  double Distance = 0.0;
  if (Entry && Entry->Calculator->DoCalcutateBeaconDistance(ATxPower, ARssi, Beacon, Distance))
    ANewDistance = Distance;
}

void TCustomBeaconMapFencing::BeaconProximityChangeEvent(TObject*,
                                                         const TRef<IBeacon>& ABeacon,
                                                         TBeaconProximity AProximity) {
  const TLoadedRef Loaded = GetLoaded();
  TFencingMap* const Map = Loaded->GetCurrentMap();
  TFencingBeacon Beacon;
  if (!Map || !Map->GetFencingBeaconFor(ABeacon, Beacon, false)) return;
  if (const TMapCalculator* const Entry = Loaded->GetCurrentCalculator()) {
    const TOwnThreads::TCall Call(FOwnThreads, FSwitch);
    try {
      Entry->Calculator->DoBeaconProximityEvent(Beacon, AProximity);
    } catch (...) {
      HandleCurrentException(this);  // no calibration this time
    }
  }

  const auto Color = ColorOf(AProximity);
  if (Color && GetMapOptions().Contains(TFencingMapOption::ColorBeacon))
    OnMainThread(Loaded, [&] { FRuntimeMap->ChangeBeaconColor(Beacon.DesignBeacon, *Color); });

  if (!FOnBeaconProximity.IsAssigned()) return;
  const TPointF Position = Loaded->GetLastCalculatedPosition();
  const TRef<IDesignZone> Zone =
      Position == TPointF{} ? nullptr : Map->PointBelongsZone(ToMap(Position));
  Tell(FOnBeaconProximity, [&](const TFencingBeaconProximityEvent& AHandler) {
    AHandler(this, Beacon, Zone, AProximity);
  });
}

// ---------------------------------------------------------------- Eddystone frames

/// Hands a copy of a frame to the application when its beacon is one of the current map.
template <class TSignature, class TFrame>
void TCustomBeaconMapFencing::TellFrame(TEventSlot<TSignature>& ASlot,
                                        const TRef<IBeacon>& ABeacon,
                                        const TFrame& AFrame) {
  if (!ASlot.IsAssigned()) return;
  const TLoadedRef Loaded = GetLoaded();
  TFencingMap* const Map = Loaded->GetCurrentMap();
  TFencingBeacon Beacon;
  if (!Map || !Map->GetFencingBeaconFor(ABeacon, Beacon, false)) return;
  const TFrame Copy = AFrame;
  Tell(ASlot, [&](const TMethod<TSignature>& AHandler) { AHandler(this, Beacon, Copy); });
}

void TCustomBeaconMapFencing::BeaconEddystoneURLEvent(TObject*,
                                                      const TRef<IBeacon>& ABeacon,
                                                      const TEddystoneURL& AEddystoneURL) {
  TellFrame(FOnBeaconEddyURL, ABeacon, AEddystoneURL);
}

void TCustomBeaconMapFencing::BeaconEddystoneTLMEvent(TObject*,
                                                      const TRef<IBeacon>& ABeacon,
                                                      const TEddystoneTLM& AEddystoneTLM) {
  TellFrame(FOnBeaconEddyTLM, ABeacon, AEddystoneTLM);
}

// ---------------------------------------------------------------- the current map

void TCustomBeaconMapFencing::CheckMapChange() {
  constexpr std::int32_t ChecksThatCount = 4;
  const TLoadedRef Loaded = GetLoaded();
  const TMonitorLock Lock(FChangeMapLock);
  const std::int32_t Nearest = MapOfNearestSighting(Loaded->Project);
  if (Nearest != Loaded->LastNearestMap) Loaded->ChangeMapAttempts = 0;
  if (Nearest == -1 || Nearest == Loaded->Project.CurrentMapIndex) return;
  ++Loaded->ChangeMapAttempts;
  Loaded->LastNearestMap = Nearest;
  if (Loaded->ChangeMapAttempts <= ChecksThatCount) return;
  Loaded->ChangeMapAttempts = 0;
  ChangeMap(Loaded, Nearest);
}

void TCustomBeaconMapFencing::ChangeMap(const TLoadedRef& ALoaded, std::int32_t AMapIndex) {
  OnMainThread(ALoaded, [&] {
    if (ALoaded->Project.CurrentMapIndex == AMapIndex) return;  // the application was faster
    bool Allow = true;
    const TFencingMapChangeEvent Handler = FOnBeforeMapChange.Get();
    Handler(this, ALoaded->Project.CurrentMapIndex, AMapIndex, Allow);
    if (Allow && GetLoaded() == ALoaded) SetMapIndex(AMapIndex);
  });
}

}  // namespace System::Beacon::Fencing
