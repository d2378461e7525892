// The maps of a project as the storeys of one building.
#pragma once

#include <string_view>
#include <vector>

#include "fencing/System.Beacon.Fencing.Types.h"
#include "platform/beacons/simulated/receiver_path.h"

namespace Wayfence {

/// Between the maps of a project and the places of a simulated building, in metres. The maps are
/// storeys, the lowest first; their upper left corners are above one another. Does not change.
class TWalkFloors {
 public:
  explicit TWalkFloors(const System::Beacon::Fencing::TFencingProject& AProject);

  int GetCount() const { return static_cast<int>(FFloors.size()); }
  /// The map exists.
  System::Beacon::TRadioPlace ToBuilding(int AMap, double AX, double AY) const;
  System::Beacon::TRadioPlace ToBuilding(int AMap, System::TPointF APoint) const {
    return ToBuilding(AMap, static_cast<double>(APoint.X), static_cast<double>(APoint.Y));
  }
  /// The coordinates of the map, in metres; the level stays.
  System::Beacon::TRadioPlace ToMap(const System::Beacon::TRadioPlace& APlace) const;

 private:
  struct TFloor {
    double Left = 0.0;  // metres
    double Top = 0.0;
    double MetresAUnit = 1.0;
  };
  std::vector<TFloor> FFloors;
};

}  // namespace Wayfence
