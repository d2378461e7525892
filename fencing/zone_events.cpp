// From sightings to zone events: the part of the zone component that runs on the reporting thread.
#include <limits>
#include <utility>

#include "fencing/System.Beacon.Fencing.h"

namespace System::Beacon::Fencing {
namespace {

/// For comparisons: an unknown distance is farther than every known one.
double ComparableDistance(const IBeacon& ABeacon) {
  const double Distance = ABeacon.GetDistance();
  return Distance < 0.0 ? std::numeric_limits<double>::infinity() : Distance;
}

}  // namespace

// ---------------------------------------------------------------- delivery

template <class TSignature, class... TArguments>
bool TCustomBeaconZonesFencing::DeliverItem(TEventSlot<TSignature>& ASlot,
                                            const TRef<IBeacon>& ABeacon,
                                            const TZoneMatch& AMatch,
                                            TArguments&... AArguments) {
  return Tell(ASlot, [&](const TMethod<TSignature>& AHandler) {
    TBeaconZoneItem* const Zone = AMatch.Zone->Get();
    TBeaconItem* const Item = AMatch.Item->Get();
    if (Zone && Item) AHandler(this, ABeacon, Zone, Item, AArguments...);
  });
}

bool TCustomBeaconZonesFencing::DeliverZone(
    TEventSlot<void(TObject*, const TRef<IBeacon>&, TBeaconZoneItem*)>& ASlot,
    const TRef<IBeacon>& ABeacon,
    const TZoneLink& AZone) {
  return Tell(ASlot, [&](const TZoneEnterEvent& AHandler) {
    if (TBeaconZoneItem* const Zone = AZone->Get()) AHandler(this, ABeacon, Zone);
  });
}

// ---------------------------------------------------------------- what the service reports

void TCustomBeaconZonesFencing::BeaconEnterEvent(TObject* ASender,
                                                 const TRef<IBeacon>& ABeacon,
                                                 const TBeaconList& ACurrentBeaconList) {
  SetCurrentBeaconList(ACurrentBeaconList);
  if (const TZoneMatch Match = FZones->FindMatch(ABeacon.Get())) {
    DeliverItem(FOnZoneBeaconEnter, ABeacon, Match);
    BeaconProximityChangeEvent(ASender, ABeacon, ABeacon->GetProximity());
  }
  Tell(FOnBeaconEnter,
       [&](const TBeaconEnterExitEvent& AHandler) { AHandler(this, ABeacon, ACurrentBeaconList); });
}

void TCustomBeaconZonesFencing::BeaconExitEvent(TObject* ASender,
                                                const TRef<IBeacon>& ABeacon,
                                                const TBeaconList& ACurrentBeaconList) {
  SetCurrentBeaconList(ACurrentBeaconList);
  if (const TZoneMatch Match = FZones->FindMatch(ABeacon.Get())) {
    BeaconProximityChangeEvent(ASender, ABeacon, TBeaconProximity::Away);
    DeliverItem(FOnZoneBeaconExit, ABeacon, Match);
  }
  Tell(FOnBeaconExit,
       [&](const TBeaconEnterExitEvent& AHandler) { AHandler(this, ABeacon, ACurrentBeaconList); });
}

void TCustomBeaconZonesFencing::BeaconProximityChangeEvent(TObject*,
                                                           const TRef<IBeacon>& ABeacon,
                                                           TBeaconProximity AProximity) {
  if (!GetEnabled()) return;
  if (const TZoneMatch Match = FZones->FindMatch(ABeacon.Get())) {
    DeliverItem(FOnZoneBeaconProximity, ABeacon, Match, AProximity);
    const TNearest Nearest = FindNearest();
    if (AProximity <= Match.Threshold)
      ComeInside(ABeacon, Match, Nearest);
    else
      GoOutside(ABeacon, Match, Nearest);
  }
  Tell(FOnBeaconProximity,
       [&](const TBeaconProximityEvent& AHandler) { AHandler(this, ABeacon, AProximity); });
}

void TCustomBeaconZonesFencing::BeaconEddystoneURLEvent(TObject*,
                                                        const TRef<IBeacon>& ABeacon,
                                                        const TEddystoneURL& AEddystoneURL) {
  if (!GetEnabled() || !FOnBeaconEddyURL.IsAssigned()) return;
  TEddystoneURL Copy = AEddystoneURL;
  if (const TZoneMatch Match = FZones->FindMatch(ABeacon.Get()))
    DeliverItem(FOnBeaconEddyURL, ABeacon, Match, Copy);
}

void TCustomBeaconZonesFencing::BeaconEddystoneTLMEvent(TObject*,
                                                        const TRef<IBeacon>& ABeacon,
                                                        const TEddystoneTLM& AEddystoneTLM) {
  if (!GetEnabled() || !FOnBeaconEddyTLM.IsAssigned()) return;
  TEddystoneTLM Copy = AEddystoneTLM;
  if (const TZoneMatch Match = FZones->FindMatch(ABeacon.Get()))
    DeliverItem(FOnBeaconEddyTLM, ABeacon, Match, Copy);
}

// ---------------------------------------------------------------- the current zone

TCustomBeaconZonesFencing::TNearest TCustomBeaconZonesFencing::FindNearest() const {
  TNearest Result;
  double Smallest = std::numeric_limits<double>::infinity();
  const TBeaconList Beacons = GetDetectedBeacons();
  for (const TRef<IBeacon>& Beacon : Beacons) {
    const double Distance = ComparableDistance(*Beacon);
    if (!(Distance < Smallest)) continue;
    TZoneMatch Match = FZones->FindMatch(Beacon.Get());
    if (!Match) continue;
    Smallest = Distance;
    Result = {Beacon, std::move(Match)};
  }
  return Result;
}

/// `ABeacon` is at or inside the threshold of its zone.
void TCustomBeaconZonesFencing::ComeInside(const TRef<IBeacon>& ABeacon,
                                           const TZoneMatch& AMatch,
                                           const TNearest& ANearest) {
  if (GetCurrentLink() == AMatch.Zone) {
    const bool IsNearest = !ANearest.Beacon || IsSame(ABeacon.Get(), ANearest.Beacon.Get());
    if (IsNearest || ComparableDistance(*ABeacon) >= ComparableDistance(*ANearest.Beacon)) return;
  }
  if (LeaveCurrentZone(ABeacon)) EnterZone(ABeacon, AMatch.Zone);
}

/// `ABeacon` is outside the threshold of its zone.
void TCustomBeaconZonesFencing::GoOutside(const TRef<IBeacon>& ABeacon,
                                          const TZoneMatch& AMatch,
                                          const TNearest& ANearest) {
  if (GetCurrentLink() == AMatch.Zone && AMatch.Zone != ANearest.Match.Zone &&
      !IsHeldByAnother(ABeacon, AMatch) && !LeaveCurrentZone(ABeacon))
    return;
  if (!ANearest.Beacon || ANearest.Match.Zone == GetCurrentLink() ||
      ANearest.Beacon->GetProximity() > ANearest.Match.Threshold)
    return;
  if (LeaveCurrentZone(ABeacon)) EnterZone(ANearest.Beacon, ANearest.Match.Zone);
}

bool TCustomBeaconZonesFencing::IsHeldByAnother(const TRef<IBeacon>& ABeacon,
                                                const TZoneMatch& AMatch) const {
  const TBeaconList Beacons = GetDetectedBeacons();
  for (const TRef<IBeacon>& Other : Beacons)
    if (!IsSame(Other.Get(), ABeacon.Get()) && Other->IsAlive() &&
        Other->GetProximity() <= AMatch.Threshold && FZones->ZoneHolds(*AMatch.Zone, *Other))
      return true;
  return false;
}

/// False when the component was stopped before the application heard of it: then it is still in the
/// zone, so that the exit is told after the next start.
bool TCustomBeaconZonesFencing::LeaveCurrentZone(const TRef<IBeacon>& ABeacon) {
  const TZoneLink Current = GetCurrentLink();
  if (!Current) return true;
  if (!DeliverZone(FOnZoneExit, ABeacon, Current)) return false;
  SetCurrentLink(nullptr);
  return true;
}

/// A component that is stopped before the application hears of the zone is in no zone, so that
/// the next start tells of it again.
void TCustomBeaconZonesFencing::EnterZone(const TRef<IBeacon>& ABeacon, const TZoneLink& AZone) {
  SetCurrentLink(AZone);
  if (!DeliverZone(FOnZoneEnter, ABeacon, AZone)) SetCurrentLink(nullptr);
}

TCustomBeaconZonesFencing::TZoneLink TCustomBeaconZonesFencing::GetCurrentLink() const {
  const std::lock_guard Guard(FStateLock);
  return FCurrentZone && FCurrentZone->Get() ? FCurrentZone : TZoneLink();
}

void TCustomBeaconZonesFencing::SetCurrentLink(TZoneLink ALink) {
  const std::lock_guard Guard(FStateLock);
  FCurrentZone = std::move(ALink);
}

void TCustomBeaconZonesFencing::SetCurrentBeaconList(const TBeaconList& AList) {
  const std::lock_guard Guard(FStateLock);
  FCurrentBeaconList = AList;
}

}  // namespace System::Beacon::Fencing
