#include "platform/beacons/simulated/shadow_field.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "platform/beacons/simulated/fixed_math.h"

namespace System::Beacon {
namespace {

/// A wave number times the correlation length. The spectrum of an exponential correlation in the
/// plane has the distribution 1 − 1/√(1 + k²) over it.
double DrawWaveNumber(TRandomStream& AStream) {
  constexpr double Smallest = 1e-3;  // leaves out waves of less than a hundredth of the length
  const double Rest = std::max(1.0 - AStream.NextDouble(), Smallest);
  return std::sqrt(1.0 / (Rest * Rest) - 1.0);
}

}  // namespace

TShadowField::TShadowField(double ACorrelationLength, TRandomStream AStream) {
  const double TurnsAMetre = 1.0 / (2.0 * std::numbers::pi * ACorrelationLength);
  for (TWave& Wave : FWaves) {
    const double Number = DrawWaveNumber(AStream) * TurnsAMetre;
    const TNormalPair Direction = DrawDirection(AStream);
    Wave.X = Direction.A * Number;
    Wave.Y = Direction.B * Number;
    Wave.Phase = AStream.NextDouble();
    Wave.PhaseALevel = AStream.NextDouble();
  }
}

double TShadowField::GetValue(const TRadioPlace& APlace) const {
  double Sum = 0.0;
  for (const TWave& Wave : FWaves)
    Sum += CosineOfTurns(APlace.X * Wave.X + APlace.Y * Wave.Y + Wave.Phase +
                         APlace.Level * Wave.PhaseALevel);
  return Sum * std::sqrt(2.0 / static_cast<double>(FWaves.size()));
}

}  // namespace System::Beacon
