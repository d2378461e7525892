// Where a beacon stands in an order by distance.
#pragma once

#include <compare>
#include <cstdint>

#include "fencing/System.Beacon.Fencing.Types.h"

namespace System::Beacon::Fencing {

/// The smaller, the nearer. Read once from what is live; holds still from then on.
struct TNearness {
  enum class TRank : std::uint8_t { Known, Unknown, Unseen };

  /// By the distance of a sighting, which may be nothing. A negative one, and one that is not a
  /// number, is unknown.
  static TNearness OfSighting(const IBeacon* ABeacon);
  /// By the distance between a point (calculator units) and the place of a beacon that was seen. A
  /// place that is nowhere is the farthest.
  static TNearness OfPlace(const TFencingBeacon& AEntry, TPointF APoint);

  bool IsKnown() const { return Rank == TRank::Known; }
  auto operator<=>(const TNearness&) const = default;

  TRank Rank = TRank::Unseen;
  double Distance = 0.0;  ///< 0 unless known
};

}  // namespace System::Beacon::Fencing
