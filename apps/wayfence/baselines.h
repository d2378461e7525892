// Simple ways to a position, to compare an estimate with. Places and distances are in metres.
#pragma once

#include <cstddef>
#include <vector>

#include "platform/geometry.h"

namespace Wayfence {

/// A beacon that is heard at some time.
struct THeardBeacon {
  System::TPointF Place;
  double Distance = 0.0;
};
/// Nearest first.
using THeardBeacons = std::vector<THeardBeacon>;

/// Every strength of a recording, by time. One thread at a time.
class TStrengthLog {
 public:
  /// `ASPC` is the propagation constant.
  TStrengthLog(std::vector<System::TPointF> APlaces, double ASPC)
      : FPlaces(std::move(APlaces)), FSPC(ASPC) {}

  /// `ALoss` is the power at 1 m less the strength, dB. Times, seconds, do not run backwards.
  void Add(double ASeconds, std::size_t ABeacon, double ALoss) {
    FStrengths.push_back({ASeconds, ABeacon, ALoss});
  }

  /// What was heard in the two seconds that end with the last strength up to `ASeconds`, each
  /// beacon at 10^(mean loss / 10 · SPC). Empty when nothing was heard before.
  THeardBeacons GetHeard(double ASeconds) const;

 private:
  struct TStrength {
    double Seconds;
    std::size_t Beacon;
    double Loss;
  };

  const std::vector<System::TPointF> FPlaces;
  const double FSPC;
  std::vector<TStrength> FStrengths;
};

// Of one beacon or more:

/// The place of the nearest beacon.
System::TPointF NearestPlace(const THeardBeacons& AHeard);
/// The mean place of the four nearest beacons, weighted by 1 / distance.
System::TPointF WeightedCentroid(const THeardBeacons& AHeard);
/// The point whose distances to all beacons differ least from the measured ones: the sum of the
/// squared relative differences is minimised (Levenberg, 1944; Marquardt, 1963), from the weighted
/// centroid on. With fewer than three beacons the centroid itself. Never outside `AArea`.
System::TPointF LeastSquaresPlace(const THeardBeacons& AHeard, const System::TRectF& AArea);

}  // namespace Wayfence
