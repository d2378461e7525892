#include "platform/threads.h"

#include <algorithm>
#include <utility>

#include "platform/errors.h"
#include "platform/handoffs.h"
#include "platform/runtime.h"

namespace System {
namespace {

TTicks DeadlineIn(std::int64_t AMilliseconds) {
  constexpr std::int64_t Longest = NoDeadline / TicksPerMillisecond;
  if (AMilliseconds >= Longest) return NoDeadline;
  return After(Ticks(), std::max<std::int64_t>(AMilliseconds, 0) * TicksPerMillisecond);
}

void RemoveOne(std::vector<TThreadRecord*>& AThreads, const TThreadRecord* AThread) {
  AThreads.erase(std::find(AThreads.begin(), AThreads.end(), AThread));
}

class TAnonymousThread final : public TThread {
 public:
  explicit TAnonymousThread(std::function<void()> ABody)
      : TThread("anonymous thread"), FBody(std::move(ABody)) {}
  ~TAnonymousThread() override { TerminateAndWait(); }

 protected:
  void Execute() override { FBody(); }

 private:
  std::function<void()> FBody;
};

}  // namespace

void Sleep(std::int64_t AMilliseconds) {
  BlockUntil(DeadlineIn(AMilliseconds), "its sleep to end", [] { return false; });
}

// ---------------------------------------------------------------- TThread

struct TThread::TCompletion {
  TEvent Ended{"a thread to end"};
  std::atomic<bool> HasEnded{false};
  std::atomic<std::thread::id> Id{};
};

TThread::TThread(std::string AName) : FName(std::move(AName)) {}

TThread::~TThread() {
  if (!GetFinished()) FatalError("thread '" + FName + "' was destroyed while it was running");
  WaitFor();
}

void TThread::Start() {
  if (GetStarted()) return;
  FCompletion = std::make_shared<TCompletion>();
  try {
    FRecord = Runtime().Start(FName, [this, Completion = FCompletion] {
      Completion->Id.store(std::this_thread::get_id(), std::memory_order_release);
      Execute();
      Completion->HasEnded.store(true, std::memory_order_release);
      Completion->Ended.SetEvent();
    });
  } catch (...) {
    FCompletion.reset();
    throw;
  }
}

void TThread::Terminate() noexcept {
  FTerminated.store(true, std::memory_order_release);
}

bool TThread::GetFinished() const noexcept {
  return !FCompletion || FCompletion->HasEnded.load(std::memory_order_acquire);
}

void TThread::WaitFor() {
  if (IsCurrent()) FatalError("thread '" + FName + "' was made to wait for itself");
  if (!FRecord || !FRecord->Handle.joinable()) return;
  if (!GetFinished() && IsActingFor(FRecord.get()))
    FatalError("thread '" + FName + "' was to be waited for by what it has handed over");
  FCompletion->Ended.WaitUntil(NoDeadline);
  // A hand-off that was served meanwhile may have waited for the same thread.
  if (FRecord->Handle.joinable()) FRecord->Handle.join();
}

void TThread::TerminateAndWait() {
  Terminate();
  WaitFor();
}

bool TThread::IsCurrent() const noexcept {
  return !GetFinished() &&
         FCompletion->Id.load(std::memory_order_acquire) == std::this_thread::get_id();
}

void TThread::Synchronize(const std::function<void()>& ABody) {
  if (IsMainThread())
    ABody();
  else
    THandOffQueue::Instance().Send(nullptr, ABody);
}

bool TThread::Synchronize(THandOffGate& AGate, const std::function<void()>& ABody) {
  if (IsMainThread()) return THandOffQueue::RunHere(&AGate, ABody);
  return THandOffQueue::Instance().Send(&AGate, ABody);
}

std::unique_ptr<TThread> TThread::CreateAnonymousThread(std::function<void()> ABody) {
  return std::make_unique<TAnonymousThread>(std::move(ABody));
}

TThreadId CurrentThreadId() {
  return &Runtime().Current();
}

bool IsActingFor(TThreadId AThread) {
  return AThread == CurrentThreadId() ||
         (IsMainThread() && THandOffQueue::Instance().IsServing(AThread));
}

// ---------------------------------------------------------------- TEvent

void TEvent::SetEvent() {
  const std::lock_guard Guard(FLock);
  FIsSet = true;
  for (TThreadRecord* Thread : FWaiting) Runtime().Unpark(*Thread);
}

void TEvent::ResetEvent() noexcept {
  const std::lock_guard Guard(FLock);
  FIsSet = false;
}

bool TEvent::IsSet() const noexcept {
  const std::lock_guard Guard(FLock);
  return FIsSet;
}

bool TEvent::WaitFor(std::int64_t AMilliseconds) {
  return WaitUntil(DeadlineIn(AMilliseconds));
}

bool TEvent::WaitUntil(TTicks ADeadline) {
  TThreadRecord& Self = Runtime().Current();
  {
    const std::lock_guard Guard(FLock);
    if (FIsSet) return true;
    FWaiting.push_back(&Self);
  }
  const bool Result = BlockUntil(ADeadline, FName, [this] { return IsSet(); });
  const std::lock_guard Guard(FLock);
  RemoveOne(FWaiting, &Self);
  return Result;
}

// ---------------------------------------------------------------- TMonitor

bool TMonitor::TakeIfFree(TThreadRecord& AThread) {
  const std::lock_guard Guard(FLock);
  if (FOwner && FOwner != &AThread) return false;
  FOwner = &AThread;
  ++FDepth;
  return true;
}

bool TMonitor::EnterUntil(TTicks ADeadline) {
  TThreadRecord& Self = Runtime().Current();
  if (TakeIfFree(Self)) return true;
  {
    const std::lock_guard Guard(FLock);
    FWaiting.push_back(&Self);
  }
  const bool Result = BlockUntil(ADeadline, FName, [&] { return TakeIfFree(Self); });
  const std::lock_guard Guard(FLock);
  RemoveOne(FWaiting, &Self);
  return Result;
}

void TMonitor::Enter() {
  EnterUntil(NoDeadline);
}

bool TMonitor::TryEnter(std::int64_t AMilliseconds) {
  return EnterUntil(DeadlineIn(AMilliseconds));
}

void TMonitor::Exit() {
  const std::lock_guard Guard(FLock);
  if (FOwner != &Runtime().Current())
    FatalError("a monitor was left by a thread that had not entered it");
  if (--FDepth > 0) return;
  FOwner = nullptr;
  for (TThreadRecord* Thread : FWaiting) Runtime().Unpark(*Thread);
}

}  // namespace System
