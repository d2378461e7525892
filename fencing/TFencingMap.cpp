#include <algorithm>
#include <functional>
#include <utility>
#include <vector>

#include "fencing/System.Beacon.Fencing.Types.h"
#include "fencing/nearness.h"
#include "fencing/sighting_matcher.h"
#include "platform/time.h"

namespace System::Beacon::Fencing {
namespace {

/// Changes the first entry that matches and hands out a copy of it; false, and an empty record,
/// when there is none. What the copy held before is dropped after the lock has been left.
template <class TMatches, class TChange>
bool ChangeFirst(TFencingBeacons& AList,
                 TMatches&& AMatches,
                 TChange&& AChange,
                 TFencingBeacon& ACopy) {
  TFencingBeacon Copy;
  const bool IsFound = AList.WithLock([&] {
    TFencingBeacon* const Entry = std::find_if(AList.begin(), AList.end(), std::ref(AMatches));
    if (Entry == AList.end()) return false;
    AChange(*Entry);
    Copy = *Entry;
    return true;
  });
  ACopy = std::move(Copy);
  return IsFound;
}

std::vector<TFencingBeacon> SnapshotOf(const TFencingBeacons& AList) {
  std::vector<TFencingBeacon> Result;
  Result.reserve(AList.GetLength());
  AList.WithLock([&] { Result.assign(AList.begin(), AList.end()); });
  return Result;
}

/// A copy of a list, nearest entries first. How near each one is, is asked once: answers that
/// change meanwhile do not disturb the order.
template <class TNearnessOf>
TFencingBeacons NearestFirst(const TFencingBeacons& AList, TNearnessOf&& ANearnessOf) {
  std::vector<TFencingBeacon> Entries = SnapshotOf(AList);
  std::vector<std::pair<TNearness, std::uint32_t>> Keys;  // the place in the list decides ties
  Keys.reserve(Entries.size());
  for (const TFencingBeacon& Entry : Entries)
    Keys.emplace_back(ANearnessOf(Entry), static_cast<std::uint32_t>(Keys.size()));
  std::sort(Keys.begin(), Keys.end());

  std::vector<TFencingBeacon> Result;
  Result.reserve(Keys.size());
  for (const auto& [Nearness, Place] : Keys) Result.push_back(std::move(Entries[Place]));
  return TFencingBeacons(std::move(Result));
}

/// Calls an operation for each zone under a point, in order, as long as it answers true.
template <class TOperation>
void AskZones(const TFencingMap& AMap, TPointF APoint, TOperation&& AOperation) {
  const auto GoesOn = [&](const TRef<IDesignZone>& AZone) {
    return !AZone || !AZone->IsUnderGlobalPoint(APoint) || AOperation(AZone);
  };
  std::vector<std::int32_t> Near;
  if (AMap.ZoneFinder && AMap.ZoneFinder->FindNear(AMap.Zones, APoint, Near)) {
    std::all_of(Near.begin(), Near.end(), [&](std::int32_t AnIndex) {
      return GoesOn(AMap.Zones[static_cast<std::size_t>(AnIndex)]);
    });
    return;
  }
  std::all_of(AMap.Zones.begin(), AMap.Zones.end(), GoesOn);
}

}  // namespace

// ---------------------------------------------------------------- binding

bool TFencingMap::GetFencingBeaconFor(const TRef<IBeacon>& ABeacon,
                                      TFencingBeacon& AFencingBeacon,
                                      bool AActiveTimeStamp) {
  if (!ABeacon) {
    AFencingBeacon = {};
    return false;
  }
  const TTime Time = AActiveTimeStamp ? Now() : 0.0;
  TRef<IBeacon> Sighting = ABeacon;  // then the one that it replaces
  const auto Bind = [&](TFencingBeacon& AEntry) {
    std::swap(AEntry.BTBeacon, Sighting);
    if (AActiveTimeStamp) AEntry.TimeStasmp = Time;
  };
  return ChangeFirst(BeaconList, TSightingMatcher(*ABeacon), Bind, AFencingBeacon);
}

bool TFencingMap::GetFencingBeaconFor(const TGUID& AUUID,
                                      std::uint16_t AMajor,
                                      std::uint16_t AMinor,
                                      TFencingBeacon& AFencingBeacon,
                                      bool AActiveTimeStamp) {
  const TTime Time = AActiveTimeStamp ? Now() : 0.0;
  const auto IsWanted = [&](const TFencingBeacon& AEntry) {
    return AEntry.DesignBeacon && HasIdentity(*AEntry.DesignBeacon, AUUID, AMajor, AMinor);
  };
  const auto Stamp = [&](TFencingBeacon& AEntry) {
    if (AActiveTimeStamp) AEntry.TimeStasmp = Time;
  };
  return ChangeFirst(BeaconList, IsWanted, Stamp, AFencingBeacon);
}

// ---------------------------------------------------------------- reading

std::int32_t TFencingMap::GetActiveBeaconsCount() const {
  return BeaconList.WithLock([&] {
    return static_cast<std::int32_t>(
        std::count_if(BeaconList.begin(), BeaconList.end(), [](const TFencingBeacon& AEntry) {
          return AEntry.BTBeacon && AEntry.BTBeacon->IsAlive();
        }));
  });
}

TFencingBeacon TFencingMap::NearestBeacon() const {
  return BeaconList.WithLock([&]() -> TFencingBeacon {
    const TFencingBeacon* Nearest = nullptr;
    TNearness Smallest;
    for (const TFencingBeacon& Entry : BeaconList) {
      const TNearness Nearness = TNearness::OfSighting(Entry.BTBeacon.Get());
      if (!Nearness.IsKnown() || !(Nearness < Smallest)) continue;
      Nearest = &Entry;
      Smallest = Nearness;
    }
    if (Nearest) return *Nearest;
    if (BeaconList.IsEmpty()) return {};
    const TFencingBeacon& StandIn = *(BeaconList.end() - 1);
    return {nullptr, StandIn.DesignBeacon, StandIn.TimeStasmp};
  });
}

TFencingBeacons TFencingMap::OrderedBeaconList() const {
  return NearestFirst(BeaconList, [](const TFencingBeacon& AEntry) {
    return TNearness::OfSighting(AEntry.BTBeacon.Get());
  });
}

TFencingBeacons TFencingMap::OrderedBeaconListTo(TPointF APoint) const {
  if (APoint == TPointF{}) return {};
  return NearestFirst(BeaconList, [APoint](const TFencingBeacon& AEntry) {
    return TNearness::OfPlace(AEntry, APoint);
  });
}

// ---------------------------------------------------------------- zones

TRef<IDesignZone> TFencingMap::PointBelongsZone(TPointF APoint) const {
  TRef<IDesignZone> Result;
  AskZones(*this, APoint, [&Result](const TRef<IDesignZone>& AZone) {
    Result = AZone;
    return false;
  });
  return Result;
}

TArray<TRef<IDesignZone>> TFencingMap::GetZonesOverPoint(TPointF APoint) const {
  std::vector<TRef<IDesignZone>> Result;
  AskZones(*this, APoint, [&Result](const TRef<IDesignZone>& AZone) {
    Result.push_back(AZone);
    return true;
  });
  return TArray<TRef<IDesignZone>>(std::move(Result));
}

}  // namespace System::Beacon::Fencing
