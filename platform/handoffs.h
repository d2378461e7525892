// The queue of hand-offs to the main thread. Used by the platform only; see threads.h.
#pragma once

#include <cstdint>
#include <deque>
#include <exception>
#include <functional>
#include <mutex>

#include "platform/runtime.h"
#include "platform/threads.h"

namespace System {

/// One body that waits for the main thread; lives on the stack of the thread that waits for it.
struct THandOff {
  enum class TState : std::uint8_t { Waiting, Running, Done, Dropped };

  const std::function<void()>& Body;
  THandOffGate* Gate;
  TThreadRecord* Sender;
  THandOff* Outer = nullptr;       ///< the one that was running when this one began
  TState State = TState::Waiting;  // guarded by the queue's lock
};

/// All hand-offs of the process, first come first served.
class THandOffQueue {
 public:
  static THandOffQueue& Instance() noexcept;

  /// Queues a hand-off and blocks the calling thread until it has run or was dropped.
  bool Send(THandOffGate* AGate, const std::function<void()>& ABody);
  /// Runs one waiting hand-off. Main thread only. False when none waits. What the body raises is
  /// kept for `TakeError`.
  bool ServeOne();
  /// How many hand-offs have been run so far. Main thread only.
  std::uint64_t GetServedCount() const noexcept { return FServed; }
  /// Whether a hand-off of a thread is running. Main thread only.
  bool IsServing(const TThreadRecord* ASender) const noexcept;
  /// Drops what waits for a gate and releases the senders.
  void Drop(THandOffGate& AGate);
  /// Runs a body on the main thread itself, inside its gate.
  static bool RunHere(THandOffGate* AGate, const std::function<void()>& ABody);

  /// The first error of a handler since the last call, or nothing.
  std::exception_ptr TakeError() noexcept;

  /// Names the record to wake when a hand-off is sent; none while no main thread has blocked yet.
  void SetMainThread(TThreadRecord* AThread);
  void SetHook(std::function<void()> AHook);
  /// What the main thread has not served yet, for reports.
  std::size_t GetWaitingCount() const;

 private:
  void Finish(THandOff& AHandOff, THandOff::TState AState);
  void Perform(THandOff& AHandOff) noexcept;
  void KeepError(const std::function<void()>& ABody) noexcept;

  mutable std::mutex FLock;  // guards FWaiting, FMain, FHook, FError
  std::deque<THandOff*> FWaiting;
  TThreadRecord* FMain = nullptr;
  std::function<void()> FHook;
  std::exception_ptr FError;
  THandOff* FRunning = nullptr;  // main thread only, like FServed
  std::uint64_t FServed = 0;
};

}  // namespace System
