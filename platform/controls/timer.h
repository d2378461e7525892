// The timer of controls: calls a handler again and again on the main thread.
#pragma once

#include <cstdint>

#include "platform/method.h"
#include "platform/object.h"
#include "platform/time.h"

namespace System {

/// Calls its handler every so many milliseconds while it is enabled. Main thread only; misuse on
/// another thread ends the process.
///
/// Whoever runs the loop of the main thread has timers fire:
///
///     TTimer::ServeDue();
///     WaitForInputUntil(TTimer::NextDeadline());
///
/// Nothing else does, the waits of threads.h least of all: a handler never runs in the middle of
/// another piece of the program that did not ask for it. Handlers may change, enable and destroy
/// any timer, their own included.
class TTimer : public TObject {
 public:
  TTimer() = default;
  TTimer(const TTimer&) = delete;
  TTimer& operator=(const TTimer&) = delete;
  ~TTimer() override;

  void SetOnTimer(TMethod<void()> AHandler);
  /// Enabling begins a new interval. Disabled at first.
  void SetEnabled(bool AValue);
  bool GetEnabled() const noexcept { return FEnabled; }
  /// Milliseconds, 1000 at first; with 0 the timer does not fire. Another value begins a new
  /// interval.
  void SetInterval(std::uint32_t AMilliseconds);
  std::uint32_t GetInterval() const noexcept { return FInterval; }

  /// Fires what is due, the longest due first, each timer once at most: intervals that were missed
  /// are gone, and the next one begins when the timer fires. What a handler raises is raised here;
  /// the timers after it fire at the next call.
  static void ServeDue();
  /// When the next timer is due; `NoDeadline` when none is running.
  static TTicks NextDeadline() noexcept;

 private:
  static TTimer* Earliest() noexcept;
  void Restart();
  void Start();
  void Stop() noexcept;

  TMethod<void()> FOnTimer;
  std::uint32_t FInterval = 1000;
  bool FEnabled = false;
  TTicks FDeadline = NoDeadline;
  // The chain of running timers, in the order in which they were started.
  TTimer* FPrevious = nullptr;
  TTimer* FNext = nullptr;
  bool FIsRunning = false;
};

}  // namespace System
