// Where a simulated receiver is, over time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/time.h"

namespace System::Beacon {

/// A place in a building: metres, and the storey.
struct TRadioPlace {
  double X = 0.0;
  double Y = 0.0;
  std::int32_t Level = 0;

  bool operator==(const TRadioPlace&) const = default;
};

/// A way through a building. Between two of its points on one level the receiver moves in a
/// straight line; between points of different levels it stays at the first until the second is due.
/// Does not change.
class TReceiverPath {
 public:
  struct TPoint {
    TTicks Time = 0;
    TRadioPlace Place;
  };
  static constexpr std::size_t MaxPoints = 1'000'000;
  static constexpr TTicks LongestTime = TicksPerSecond * 7 * 86'400;
  static constexpr double MaxMetres = 1e6;  // from the origin

  /// From time 0 on, in the order of time. Raises `EBeaconSourceError` when there is no point, or
  /// one outside these bounds.
  explicit TReceiverPath(std::vector<TPoint> APoints);

  /// Before the first point and after the last one it is where that is.
  TRadioPlace GetPlace(TTicks ATime) const;
  TTicks GetEnd() const { return FPoints.back().Time; }
  const std::vector<TPoint>& GetPoints() const { return FPoints; }

 private:
  std::vector<TPoint> FPoints;
};

}  // namespace System::Beacon
