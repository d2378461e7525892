// The inner loop of the particle filter: moves and weighs all particles in one pass. There is one
// version for every processor and one for those with AVX2; both perform the same operations in the
// same order and give the same bits.
#pragma once

#include <cstdint>

namespace System::Beacon::Fencing {

/// Particles are worked on so many at a time; arrays are padded to a multiple.
inline constexpr std::int32_t ParticleLanes = 4;

/// As many generators side by side as there are lanes (xoshiro256++; Blackman and Vigna, 2019),
/// word by word.
struct TLaneGenerators {
  std::uint64_t Words[4][ParticleLanes];
};

/// A beacon as particles are weighed with it; calculator units.
struct TParticleBeacon {
  double X;
  double Y;
  double Distance;  ///< measured
  double Scale;     ///< deviation × Scale is the argument of erfc
};

/// One pass over the particles. Arrays are the caller's.
struct TParticlePass {
  // What the particles are.
  std::int32_t Count;
  float* X;  ///< moved in place; `Count` rounded up to whole lanes
  float* Y;
  const double*
      P;  ///< weights, as long; null: all particles begin at `FromX`, `FromY` with `FromP`
  float FromX;
  float FromY;
  double FromP;

  // How they move: Gaussian steps, from particle `WideFrom` on with the doubled spread.
  double Spread;
  std::int32_t WideFrom;
  TLaneGenerators* Generators;
  const double* U1;  ///< uniform numbers in (0, 1) and [0, 1) to use instead of the generators, as
  const double* U2;  ///< long as the arrays; null: none

  // What they are weighed with.
  const TParticleBeacon* Beacons;
  std::int32_t BeaconCount;

  // Results.
  double Sum;         ///< of all weights
  double BestWeight;  ///< 0: no particle has a weight
  std::int32_t Best;  ///< the first particle with the best weight
};

using TParticleKernel = void (*)(TParticlePass& APass);

namespace Baseline {
void RunParticlePass(TParticlePass& APass);
}
namespace Avx2 {
/// Only where the processor has AVX2.
void RunParticlePass(TParticlePass& APass);
}  // namespace Avx2

/// The fastest version that this processor runs. The environment variable
/// WAYFENCE_KERNEL=baseline asks for the other one.
TParticleKernel ChooseParticleKernel();

}  // namespace System::Beacon::Fencing
