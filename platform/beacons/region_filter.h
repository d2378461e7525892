// Which frames the registered regions accept.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "platform/beacons/System.Beacon.h"
#include "platform/beacons/frame.h"

namespace System::Beacon {

/// Answers in a time that does not grow with the number of regions, unless many share one UUID or
/// namespace. One thread at a time.
class TRegionFilter {
 public:
  void Assign(std::span<const TBeaconsRegion> ARegions, TKindofBeacons AKinds);
  /// Whether the frame, which carries an identity, is to be reported.
  bool Accepts(const TBeaconFrame& AFrame) const noexcept;
  /// Another number after every `Assign`, never 0.
  std::uint64_t GetGeneration() const noexcept { return FGeneration; }

 private:
  bool HasKind(TFrameKind AKind) const noexcept;

  std::vector<TBeaconsRegion> FRegions;
  std::vector<std::int32_t> FNextOfSameKey;  // parallel to FRegions, -1 at the end of a chain
  TIdentityTable<std::int32_t> FFirstOfKey;
  TKindofBeacons FKinds;
  std::uint64_t FGeneration = 1;
};

}  // namespace System::Beacon
