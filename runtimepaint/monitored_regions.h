// Which regions to look for, so that every beacon of a project is seen.
#pragma once

#include <cstddef>
#include <vector>

#include "fencing/System.Beacon.Fencing.Types.h"
#include "platform/beacons/identity.h"

namespace System::Beacon::Fencing {

/// Joins beacons of the same kind and UUID, or namespace, into one region, which widens as far as
/// it must. Kinds stay apart.
class TMonitoredRegions {
 public:
  /// A beacon that can match nothing enters no region: one with a major or minor outside 0 to
  /// 65535, or without an Eddystone identity.
  void Add(const IDesignBeacon& ABeacon);
  const std::vector<TBeaconsRegion>& GetRegions() const { return FRegions; }

 private:
  void AddEddystone(const IDesignBeacon& ABeacon);
  void AddiBAltBeacon(const IDesignBeacon& ABeacon);
  /// The region of a UUID or namespace; nothing, and room for it at the end, for a new one.
  TBeaconsRegion* Find(const TBeaconIdentity& AKey);

  std::vector<TBeaconsRegion> FRegions;
  TIdentityTable<std::size_t> FFound;
};

}  // namespace System::Beacon::Fencing
