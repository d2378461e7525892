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
  /// A beacon whose major or minor is outside 0 to 65535 matches nothing and enters no region, nor
  /// does one whose Eddystone namespace or instance is no number of its length; one of zeros does.
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
