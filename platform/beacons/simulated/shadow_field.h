// Shadowing: how much the furniture of a building weakens a transmitter, from place to place.
#pragma once

#include <array>

#include "platform/beacons/simulated/receiver_path.h"
#include "platform/random.h"

namespace System::Beacon {

/// A random field over the places of a building, normally distributed with mean 0 and variance 1,
/// whose correlation between two places of one level d metres apart is exp(−d / correlation
/// length) (Gudmundson, 1991). Levels have fields of their own. A place has one value, for ever.
///
/// A sum of plane waves whose directions, lengths and phases are drawn once, after the spectrum of
/// that correlation (Shinozuka and Jan, 1972), so that every value takes the same short time.
class TShadowField {
 public:
  /// The length in metres, above 0.
  TShadowField(double ACorrelationLength, TRandomStream AStream);

  double GetValue(const TRadioPlace& APlace) const;

 private:
  struct TWave {
    double X = 0.0;  // turns a metre
    double Y = 0.0;
    double Phase = 0.0;        // turns
    double PhaseALevel = 0.0;  // turns
  };
  std::array<TWave, 32> FWaves;
};

}  // namespace System::Beacon
