// The candidates of the particle filter.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "fencing/System.Beacon.Fencing.Types.h"
#include "platform/random.h"
#include "positioning/particle_kernel.h"

namespace System::Beacon::Fencing {

/// A beacon that particles are weighed with: where it is and how far away it was measured.
struct TMeasurement {
  TPointF Position;
  double Distance = 0.0;
};

/// The particles, calculator units. After a step all of them stand where the most likely one was;
/// as long as they do, one is kept for all. One thread at a time.
class TParticleCloud {
 public:
  /// Uniform numbers in [0, 1); nothing: the cloud draws from a stream of its own.
  explicit TParticleCloud(std::function<double()> ARandom);

  /// Particles that are added stand at the origin with weight 0. Raises `EGeneralError` for too
  /// many, and changes nothing.
  void SetLength(std::int32_t ALength);
  /// All over a rectangle, with weight 1.
  void Spread(const TRectF& ARect);
  /// All in one place, with weight 1.
  void PlaceAt(TPointF APoint);
  std::vector<TParticle> GetParticles() const;

  /// Moves the particles at random, weighs them and replaces all by the most likely one; tells
  /// where that is. The last 50 particles (the last half, rounded up, of fewer) move with the
  /// doubled spread. `ARelativeStdDev` is the deviation of a distance relative to it. When no
  /// particle has a weight, the one nearest to the first measured circle is taken. Raises
  /// `EGeneralError` for a deviation of 0, and changes nothing. Allocates in the first step only.
  TPointF Step(std::span<const TMeasurement> AMeasurements, double ASpread, double ARelativeStdDev);

 private:
  void Expand();
  void SetRoom(const TParticle& AFill);
  void DrawAll();
  double DrawAboveZero();
  void SetBeacons(std::span<const TMeasurement> AMeasurements, double ARelativeStdDev);
  std::int32_t NearestTo(const TMeasurement& ACircle) const;

  const TParticleKernel FKernel;
  const std::function<double()> FRandom;
  TRandomStream FSpreadStream;  // what a cloud is spread with, without given numbers
  TLaneGenerators FGenerators{};

  std::int32_t FLength = 0;
  bool FIsTogether = true;  // then FCommon stands for all
  TParticle FCommon;
  // In whole lanes; while the particles are together, positions are only room to work in.
  std::vector<float> FX, FY;
  std::vector<double> FP;
  std::vector<double> FU1, FU2;  // for given random numbers only
  std::vector<TParticleBeacon> FBeacons;
};

}  // namespace System::Beacon::Fencing
