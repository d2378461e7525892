// When the map of a component followed the device to another floor.
#pragma once

#include <optional>
#include <vector>

#include "apps/wayfence/truth.h"

namespace Wayfence {

/// From when on a component shows a map.
struct TShownMap {
  double Seconds = 0.0;
  int Map = 0;
};

/// The device came to another floor.
struct TFloorChange {
  double Seconds = 0.0;
  int From = 0;
  int To = 0;
  /// Seconds after which the right map was shown; 0 when it was already, nothing when it was not
  /// before the device went on to the next floor.
  std::optional<double> Delay;
};

/// Every change of the floor in the truth. `AShown` in the order of time; nothing is shown before
/// its first entry.
std::vector<TFloorChange> FindFloorChanges(const TTruth& ATruth,
                                           const std::vector<TShownMap>& AShown);

}  // namespace Wayfence
