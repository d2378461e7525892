// What tests of the position estimator hand to it.
#pragma once

#include "positioning/System.Beacon.Fencing.PositionCalculator.h"
#include "support/fake_beacon.h"
#include "support/fake_design.h"

namespace System::Beacon::Fencing {

/// Options with a few values of their own.
struct TEstimatorOptions : TParticleFilterOptions {
  explicit TEstimatorOptions(int AParticlesNumber, int ABeaconsToUse = 1) {
    SetParticlesNumber(AParticlesNumber);
    SetBeaconsToUse(ABeaconsToUse);
    SetSPC(0.5F);
  }
};

/// A beacon of `TestGUID` and the given minor at a place of its map, seen from so many metres;
/// nothing: not sighted.
inline TFencingBeacon NewFencingBeacon(int AMinor,
                                       TPointF ACentre,
                                       std::optional<double> ADistance = std::nullopt) {
  TFencingBeacon Result{nullptr, NewFakeDesignBeacon(TestGUID, AMinor, ACentre)};
  if (!ADistance) return Result;
  const TRef<TFakeBeacon> Sighting = NewFakeBeacon(AMinor);
  Sighting->Distance = *ADistance;
  Result.BTBeacon = Sighting;
  return Result;
}

}  // namespace System::Beacon::Fencing
