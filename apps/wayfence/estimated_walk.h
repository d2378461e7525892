// What a map component tells of a walk.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "apps/wayfence/floor_changes.h"
#include "apps/wayfence/zone_stays.h"
#include "fencing/System.Beacon.Fencing.h"

namespace Wayfence {

/// A position on a map, map units.
struct TMapEstimate {
  double Seconds = 0.0;
  int Map = 0;
  System::TPointF Raw;
  System::TPointF Path;
};

/// Notes positions, maps, zones and arrivals. Main thread; read when the component has stopped.
class TEstimatedWalk final : public System::TObject {
 public:
  using TZoneRef = System::TRef<System::Beacon::Fencing::IDesignZone>;
  /// Seconds of the clock of the truth.
  using TClock = std::function<double()>;

  /// Sets handlers of the component; goes before it.
  TEstimatedWalk(System::Beacon::Fencing::TCustomBeaconMapFencing& AComponent, TClock AClock);

  /// Called after a position was noted.
  std::function<void()> OnPosition;

  const std::vector<TMapEstimate>& GetEstimates() const noexcept { return FEstimates; }
  /// The first entry is the map that was shown from the start.
  const std::vector<TShownMap>& GetShownMaps() const noexcept { return FShownMaps; }
  /// In the order of time.
  std::vector<TStay> GetStays(const TZoneRef& AZone) const;
  /// When which point of interest was arrived at.
  const std::vector<std::pair<double, std::string>>& GetArrivals() const noexcept {
    return FArrivals;
  }

 private:
  const TClock FClock;
  std::vector<TMapEstimate> FEstimates;
  std::vector<TShownMap> FShownMaps;
  std::map<const System::TObject*, std::vector<TStay>> FStays;
  std::vector<std::pair<double, std::string>> FArrivals;
};

}  // namespace Wayfence
