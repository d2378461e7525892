// Clock readings of the running runtime, real or simulated.
#pragma once

#include <cstdint>
#include <limits>

namespace System {

/// Microseconds of the runtime's steady clock. The origin is arbitrary; only differences count.
using TTicks = std::int64_t;

inline constexpr TTicks TicksPerMillisecond = 1'000;
inline constexpr TTicks TicksPerSecond = 1'000'000;
/// A deadline that never comes.
inline constexpr TTicks NoDeadline = std::numeric_limits<TTicks>::max();

/// The steady clock, microseconds. Any thread.
TTicks Ticks() noexcept;

/// The date and time: days since 1 January 1970, UTC. Any thread.
double Now() noexcept;

/// Blocks the calling thread for a number of milliseconds; on the main thread hand-offs are
/// served meanwhile.
void Sleep(std::int64_t AMilliseconds);

/// `ATicks` moved by `ADuration` microseconds, without overflow at the far end.
constexpr TTicks After(TTicks ATicks, TTicks ADuration) noexcept {
  return ADuration > 0 && ATicks > NoDeadline - ADuration ? NoDeadline : ATicks + ADuration;
}

}  // namespace System
