// Random numbers: one generator for the process, and streams split from it.
#pragma once

#include <array>
#include <cstdint>

#include "platform/guid.h"

namespace System {

/// An independent stream of random numbers (xoshiro256++; Blackman and Vigna, 2019), seeded
/// through splitmix64. The same seed gives the same numbers on every machine. One thread at a time.
class TRandomStream {
 public:
  explicit TRandomStream(std::uint64_t ASeed) noexcept;

  /// 64 random bits.
  std::uint64_t Next() noexcept;
  /// Uniform in [0, 1), in steps of 2^-53.
  double NextDouble() noexcept;
  /// Uniform in [0, ABound); `ABound` above 0.
  std::uint32_t NextBelow(std::uint32_t ABound) noexcept;

 private:
  std::array<std::uint64_t, 4> FState{};
};

/// Uniform in [0, 1) from the process-wide generator. Any thread.
double Random() noexcept;

/// A stream of its own, split from the process-wide generator. Any thread.
TRandomStream SplitRandomStream() noexcept;

/// A new random GUID (version 4), from a stream of its own. Any thread.
TGUID NewGUID() noexcept;

/// Restarts the process-wide generator, so that a run can be repeated. Without a call it starts
/// from the operating system's entropy; a simulation calls it with its own seed.
void SeedRandom(std::uint64_t ASeed) noexcept;

}  // namespace System
