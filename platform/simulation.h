// The simulated runtime: threads and time under a seed.
#pragma once

#include <cstdint>
#include <memory>

namespace System {

/// How a simulation starts.
struct TSimulationOptions {
  std::uint64_t Seed = 1;    ///< fixes the order of switches and every random number
  double StartTime = 20000;  ///< `Now` at the start, days since 1 January 1970
};

/// While it lives, all threads of the library run simulated: one at a time, switching only where a
/// thread blocks, in an order fixed by the seed; when every thread is blocked, time jumps to the
/// earliest deadline. The same input and seed give the same events, bit for bit.
///
/// A loop that asks again and again without blocking (`ServeHandOffs(0)`, `Sleep(0)`) keeps all
/// others from running, and time from moving: give it a time to wait.
///
/// Made on the main thread before the first thread starts, and destroyed there after the last has
/// been waited for. When every thread waits without a deadline, or a thread is left over at the
/// end, a report of what each thread waits for goes to standard error and the process is aborted;
/// when hand-offs wait for ten seconds of real time while the main thread runs without
/// serving them, the report is printed once and the simulation goes on.
class TSimulation {
 public:
  explicit TSimulation(const TSimulationOptions& AOptions = {});
  ~TSimulation();
  TSimulation(const TSimulation&) = delete;
  TSimulation& operator=(const TSimulation&) = delete;

  /// Whether a simulation is running in this process.
  static bool IsRunning() noexcept;

 private:
  class TRuntime;
  std::unique_ptr<TRuntime> FRuntime;
};

}  // namespace System
