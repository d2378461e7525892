// Starting and stopping what a component runs on other threads.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>

#include "platform/threads.h"

namespace System::Beacon::Fencing {

/// Turns a component on and off, also from inside its own handlers, for which a thread waits that
/// must end: there it only asks for the end, waits once the handler has returned, and starts again
/// after that when it was asked to. Main thread only.
class TRunSwitch {
 public:
  struct TSteps {
    std::function<void()> Begin;       ///< starts the threads; what it raises ends the start
    std::function<void()> AskToEnd;    ///< without waiting
    std::function<void()> WaitForEnd;  ///< the threads are gone when it returns
    /// What a start that failed leaves to be done, before it is stopped.
    std::function<void()> StartFailed;
    /// Whether the caller acts for one of the threads without having come through the gate. May be
    /// missing.
    std::function<bool()> IsInsideThread = {};
  };

  explicit TRunSwitch(TSteps ASteps);

  /// Stops what runs and starts; raises what `Begin` raises.
  void Start();
  /// Once it has returned, no handler is entered any more.
  void Stop();
  /// Stops for good: starts are ignored from now on.
  void Shut();
  /// Whether it was started, and neither stopped nor has the start failed.
  bool IsOn() const noexcept { return FIsOn; }
  /// Whether the threads cannot be waited for: a handler is on the call stack, or they are being
  /// started or waited for.
  bool IsBusy() const;
  /// Called by a thread when it has left what `IsInsideThread` told of: what was asked for there
  /// is done. Any thread.
  void ThreadHasLeft();
  /// Through which handlers are handed over: closed while stopped.
  THandOffGate& GetGate() noexcept { return FGate; }
  const THandOffGate& GetGate() const noexcept { return FGate; }

 private:
  enum class TPending : std::uint8_t { Nothing, Stop, Restart };

  class TChange;

  bool IsInsideThread() const { return FSteps.IsInsideThread && FSteps.IsInsideThread(); }
  void TryStart();
  void Begin();
  void Halt();
  void WaitForEnd();
  void DoPending();

  const TSteps FSteps;
  THandOffGate FGate;
  THandOffGate FServiceGate;  // always open: through it threads ask for what is pending
  std::atomic<bool> FIsAskedInside{false};
  TPending FPending = TPending::Nothing;  // something only while busy
  bool FIsChanging = false;               // threads are being started or waited for
  bool FIsOn = false;
  bool FIsShut = false;
};

/// Calls a handler on the main thread and waits for it: `ACall` is given the handler. False when
/// the component was stopped first: nothing more is to be delivered. A slot without a handler costs
/// one test. Any thread.
template <class TSignature, class TCall>
bool Deliver(THandOffGate& AGate, TEventSlot<TSignature>& ASlot, const TCall& ACall) {
  if (!ASlot.IsAssigned()) return AGate.IsOpen();
  const auto Body = [&] {
    // A copy, since the handler may be replaced while it runs.
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
    const TMethod<TSignature> Handler = ASlot.Get();
    ACall(Handler);
  };
  return TThread::Synchronize(AGate, std::cref(Body));
}

}  // namespace System::Beacon::Fencing
