#include "positioning/calibration_round.h"

#include <utility>

namespace System::Beacon::Fencing {
namespace {

constexpr int Attempts = 40;
constexpr std::int64_t AttemptIntervalInMs = 250;
constexpr double LongestSightingInMetres = 1.6;
constexpr double FarthestEstimate = 300.0;  // calculator units

}  // namespace

TTrilateration::TRound::TRound(TTrilateration& ACalculator,
                               TCalibration& ACalibration,
                               TRef<IBeacon> ASighting)
    : TThread("automatic calibration"),
      FCalculator(ACalculator),
      FCalibration(ACalibration),
      FSighting(std::move(ASighting)),
      FPlace(ACalibration.GetPosition()),
      FExponent(1.0 / ACalculator.FSPC),
      FMotionThreshold(ACalculator.FMotionThreshold) {}

void TTrilateration::TRound::Execute() {
  for (int I = 0; I < Attempts && !TryAttempt(); ++I)
    if (FCalculator.FRoundsEnd.WaitFor(AttemptIntervalInMs)) break;
  const TMonitorLock Lock(FCalculator.FMonitorObj);
  FCalibration.FLastProximity = TBeaconProximity::Away;
  FCalibration.FIsInRound = false;
}

/// An attempt that raises is the last one.
bool TTrilateration::TRound::TryAttempt() noexcept {
  try {
    return Attempt();
  } catch (...) {
    return true;
  }
}

/// True when nothing is left to attempt.
bool TTrilateration::TRound::Attempt() {
  const TMonitorLock Lock(FCalculator.FMonitorObj);
  if (!FCalculator.FAutomaticCalibration) return true;
  if (!IsBesideBeacon()) return false;
  FCalculator.CalibrateAt(FPlace, FExponent, &FPlace);
  return true;
}

/// Whether the device stands still, nearest to the beacon and estimated near it.
bool TTrilateration::TRound::IsBesideBeacon() const {
  const auto& Beacons = FCalculator.FBeacons;
  if (Beacons.empty() || FCalculator.FMotionAverage > FMotionThreshold) return false;
  if (!FSighting || !IsSameBeacon(Beacons.front().BTBeacon.Get(), FSighting.Get())) return false;
  const double Metres = FSighting->GetDistance();
  return Metres >= 0.0 && Metres <= LongestSightingInMetres &&
         TRouteCalculator::Distance(FPlace, FCalculator.FEstimatedPosition) <= FarthestEstimate;
}

}  // namespace System::Beacon::Fencing
