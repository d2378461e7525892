// The seam between everything that blocks and the runtime that blocks it: operating-system
// threads, or a simulation in which one thread runs at a time. Used by the platform only;
// applications use threads.h and simulation.h.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "platform/time.h"

namespace System {

/// What a runtime knows of one thread. A thread blocks by parking and is woken by a permit:
/// a permit given to a thread that does not park lets its next park return at once.
struct TThreadRecord {
  std::string Name;
  std::thread Handle;  ///< empty for threads that the runtime did not start

  // Guarded by the runtime's lock in the simulation, by Lock in the real runtime.
  std::mutex Lock;
  std::condition_variable Wake;
  bool HasPermit = false;

  // Simulation only.
  enum class TState : std::uint8_t { Runnable, Running, Parked, Ended };
  TState State = TState::Runnable;
  TTicks Deadline = NoDeadline;
  const char* WaitsFor = "";
};

/// Starts, blocks and wakes threads, and tells the time. All operations on any thread.
class IRuntime {
 public:
  virtual ~IRuntime() = default;

  /// Starts a thread; it has ended when its body has returned and `Handle` can be joined.
  virtual std::shared_ptr<TThreadRecord> Start(const std::string& AName,
                                               std::function<void()> ABody) = 0;
  /// Blocks the calling thread until it has a permit (which is used up) or until the deadline.
  /// May return early; callers look at their condition again.
  virtual void Park(TTicks ADeadline, const char* AWaitsFor) = 0;
  virtual void Unpark(TThreadRecord& AThread) = 0;
  /// The record of the calling thread.
  virtual TThreadRecord& Current() = 0;

  virtual TTicks Ticks() noexcept = 0;
  virtual double Now() noexcept = 0;
};

/// The runtime that is in use: the real one unless a simulation is running.
IRuntime& Runtime() noexcept;

/// Puts another runtime in use (nothing: the real one). Only while no other thread runs.
void UseRuntime(IRuntime* ARuntime) noexcept;

/// Blocks the calling thread until `AIsReady` or the deadline; false when the deadline came first.
/// On the main thread hand-offs are served meanwhile.
bool BlockUntil(TTicks ADeadline, const char* AWaitsFor, const std::function<bool()>& AIsReady);

}  // namespace System
