// The route that a command shows.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "fencing/System.Beacon.Fencing.h"

namespace Wayfence {

/// Shows the way to a point of interest from the first position on. Main thread.
class TMapRoute {
 public:
  /// An empty name: no route. Raises `EGeneralError` when there is no such point.
  TMapRoute(System::Beacon::Fencing::TBeaconMapFencing& AComponent, const std::string& AName);

  /// Called at each position.
  void Begin();

 private:
  System::Beacon::Fencing::TBeaconMapFencing& FComponent;
  const std::string FName;
  std::optional<std::int32_t> FPoi;  // until the route is shown
};

}  // namespace Wayfence
