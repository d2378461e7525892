// Threads, events, monitors and the hand-off to the main thread.
//
// Two runtimes stand behind this header: operating-system threads, and the simulation of
// simulation.h. Every wait of the main thread serves the hand-offs of all threads until it is over.
// An application without a message loop calls `ServeHandOffs` regularly, or blocks its main
// thread in any wait of this header. A program that does neither leaves every thread that reports
// an event waiting for ever: that is not a fault of the library, and no time-out hides it. The
// simulation reports it, by name, after ten seconds of real time without progress.
#pragma once

#include <atomic>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/method.h"
#include "platform/object.h"
#include "platform/time.h"

namespace System {

struct TThreadRecord;
class THandOffGate;

/// A thread of the library. Constructed suspended; `Start` runs `Execute` on a new thread.
/// A class that overrides `Execute` calls `TerminateAndWait` first thing in its destructor.
class TThread : public TObject {
 public:
  explicit TThread(std::string AName);
  ~TThread() override;

  /// Starts a suspended thread; a started one is left alone. Raises `std::system_error` when the
  /// system gives no thread; it is then still suspended.
  void Start();
  /// Asks the thread to end; `Execute` looks at `GetTerminated`.
  void Terminate() noexcept;
  bool GetTerminated() const noexcept { return FTerminated.load(std::memory_order_acquire); }
  bool GetStarted() const noexcept { return FRecord != nullptr; }
  /// Whether `Execute` has returned (or never ran).
  bool GetFinished() const noexcept;
  /// Blocks until `Execute` has returned; at once when the thread was never started. Called by
  /// the thread's owner, never by the thread itself.
  void WaitFor();
  void TerminateAndWait();
  /// Whether the caller runs on this thread.
  bool IsCurrent() const noexcept;

  /// Runs `ABody` on the main thread and returns when it has run: at once on the main thread
  /// itself, else the calling thread waits until the main thread serves hand-offs. What a body
  /// raises is raised by the main thread's next `ServeHandOffs`, not here.
  static void Synchronize(const std::function<void()>& ABody);
  /// The same for a body that belongs to `AGate`; false, without running it, when the gate is
  /// closed or is closed before the main thread comes to it.
  static bool Synchronize(THandOffGate& AGate, const std::function<void()>& ABody);

  /// A suspended thread that runs `ABody`.
  static std::unique_ptr<TThread> CreateAnonymousThread(std::function<void()> ABody);

 protected:
  /// What the thread does. An exception that leaves it ends the process.
  virtual void Execute() = 0;

 private:
  struct TCompletion;

  const std::string FName;
  std::atomic<bool> FTerminated{false};
  std::shared_ptr<TThreadRecord> FRecord;    // owner's thread
  std::shared_ptr<TCompletion> FCompletion;  // shared with the running body
};

/// Whether the caller is on the main thread: the one that ran the static initialisation, or the
/// one that last called `AdoptMainThread`.
bool IsMainThread() noexcept;

/// Names a thread of any kind, as long as it lives.
using TThreadId = const TThreadRecord*;
TThreadId CurrentThreadId();
/// Whether the caller acts for a thread: it runs on it, or runs a hand-off that the thread waits
/// for. Whoever does must not wait for the thread.
bool IsActingFor(TThreadId AThread);

/// Who is told when something has failed on a thread of the library. The sender is that thread or
/// the object that it works for. Called on that thread; what the handler hands over to the main
/// thread may disable components, but destroy nothing that would wait for the thread. Empty by
/// default: the failure then shows by what the thread's owner documents.
using TApplicationExceptionEvent = TMethod<void(TObject* ASender, const std::exception& AError)>;
/// Any thread.
void SetApplicationExceptionHandler(TApplicationExceptionEvent AHandler);
/// Tells the handler.
void HandleApplicationException(TObject* ASender, const std::exception& AError);
/// The same with the exception that is being handled, whatever its class.
void HandleCurrentException(TObject* ASender);
/// Gives a body the exception that is being handled; one that is no `std::exception` becomes an
/// `EGeneralError`.
void WithCurrentException(const std::function<void(const std::exception&)>& ABody);

/// Makes the calling thread the main thread. Only while no hand-off is waiting.
void AdoptMainThread() noexcept;

/// Serves the hand-offs that wait for the main thread, at most for `AMilliseconds` when none is
/// waiting (0: never waits). True when at least one was served. Main thread only.
/// Raises what a handler raised, after the thread that reported has been released.
bool ServeHandOffs(std::int64_t AMilliseconds = 0);

/// Called on the reporting thread whenever a hand-off begins to wait, so that an application with a
/// message loop of its own can post itself a message and call `ServeHandOffs` from it. Empty by
/// default. Set before the first component is enabled. What it raises is raised by the next
/// `ServeHandOffs`.
void SetHandOffHook(std::function<void()> AHook);

/// Through which the handlers of one component are handed over. Open at creation.
/// Closed when the component is disabled: what waits is dropped and its threads released, and
/// nothing enters any more. Main thread only, except where said.
class THandOffGate {
 public:
  THandOffGate() = default;
  THandOffGate(const THandOffGate&) = delete;
  THandOffGate& operator=(const THandOffGate&) = delete;
  ~THandOffGate();

  void Open();
  void Close();
  /// Any thread.
  bool IsOpen() const noexcept { return FIsOpen.load(std::memory_order_acquire); }
  /// Whether a handler of this component is on the call stack of the main thread.
  bool IsInHandler() const noexcept { return FDepth > 0; }
  /// Runs on the main thread each time the outermost handler has returned.
  void SetAfterHandler(std::function<void()> ABody) { FAfterHandler = std::move(ABody); }

 private:
  friend class THandOffQueue;
  void Run(const std::function<void()>& ABody);
  void Enter() noexcept { ++FDepth; }
  void Leave();

  std::atomic<bool> FIsOpen{true};
  int FDepth = 0;  // main thread only
  std::function<void()> FAfterHandler;
};

/// A manual-reset event: once set, every wait comes back until it is reset. Any thread.
class TEvent : public TObject {
 public:
  explicit TEvent(const char* AName = "event") : FName(AName) {}
  ~TEvent() override = default;

  void SetEvent();
  void ResetEvent() noexcept;
  bool IsSet() const noexcept;
  /// True when the event was set; false when the time ran out first.
  bool WaitFor(std::int64_t AMilliseconds);
  bool WaitUntil(TTicks ADeadline);

 private:
  const char* const FName;   // static text, shown in deadlock reports
  mutable std::mutex FLock;  // guards FIsSet, FWaiting
  bool FIsSet = false;
  std::vector<TThreadRecord*> FWaiting;
};

/// A lock that one thread may enter repeatedly; blocking goes through the platform, so that the
/// main thread serves hand-offs while it waits. Any thread.
class TMonitor : public TObject {
 public:
  explicit TMonitor(const char* AName = "monitor") : FName(AName) {}
  ~TMonitor() override = default;

  void Enter();
  /// False when the time ran out first.
  bool TryEnter(std::int64_t AMilliseconds);
  void Exit();

 private:
  bool EnterUntil(TTicks ADeadline);
  bool TakeIfFree(TThreadRecord& AThread);

  const char* const FName;  // static text, shown in deadlock reports
  std::mutex FLock;         // guards FOwner, FDepth, FWaiting
  TThreadRecord* FOwner = nullptr;
  int FDepth = 0;
  std::vector<TThreadRecord*> FWaiting;
};

/// Holds a monitor for the length of a block.
class TMonitorLock {
 public:
  explicit TMonitorLock(TMonitor& AMonitor) : FMonitor(AMonitor) { FMonitor.Enter(); }
  ~TMonitorLock() { FMonitor.Exit(); }
  TMonitorLock(const TMonitorLock&) = delete;
  TMonitorLock& operator=(const TMonitorLock&) = delete;

 private:
  TMonitor& FMonitor;
};

}  // namespace System
