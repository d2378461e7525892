#include "platform/handoffs.h"

#include <algorithm>
#include <utility>

#include "platform/errors.h"

namespace System {
namespace {

std::atomic<std::thread::id> MainThreadId{std::this_thread::get_id()};

constexpr std::int64_t MaxWaitInMs = NoDeadline / TicksPerMillisecond;

}  // namespace

bool IsMainThread() noexcept {
  return MainThreadId.load(std::memory_order_relaxed) == std::this_thread::get_id();
}

void AdoptMainThread() noexcept {
  THandOffQueue::Instance().SetMainThread(nullptr);
  MainThreadId.store(std::this_thread::get_id(), std::memory_order_relaxed);
}

THandOffQueue& THandOffQueue::Instance() noexcept {
  static THandOffQueue Queue;
  return Queue;
}

bool THandOffQueue::Send(THandOffGate* AGate, const std::function<void()>& ABody) {
  THandOff HandOff{ABody, AGate, &Runtime().Current()};
  std::function<void()> Hook;
  {
    const std::lock_guard Guard(FLock);
    if (AGate && !AGate->IsOpen()) return false;
    FWaiting.push_back(&HandOff);
    if (FMain) Runtime().Unpark(*FMain);
    Hook = FHook;
  }
  if (Hook) KeepError(Hook);
  BlockUntil(NoDeadline, "the main thread to serve its hand-off", [&] {
    const std::lock_guard Guard(FLock);
    return HandOff.State >= THandOff::TState::Done;
  });
  return HandOff.State == THandOff::TState::Done;
}

bool THandOffQueue::ServeOne() {
  THandOff* HandOff = nullptr;
  {
    const std::lock_guard Guard(FLock);
    if (FWaiting.empty()) return false;
    HandOff = FWaiting.front();
    FWaiting.pop_front();
    HandOff->State = THandOff::TState::Running;
  }
  ++FServed;
  Perform(*HandOff);
  return true;
}

void THandOffQueue::Perform(THandOff& AHandOff) noexcept {
  THandOffGate* const Gate = AHandOff.Gate;
  if (Gate) Gate->Enter();
  AHandOff.Outer = std::exchange(FRunning, &AHandOff);
  KeepError(AHandOff.Body);
  FRunning = AHandOff.Outer;
  Finish(AHandOff, THandOff::TState::Done);
  if (Gate) KeepError([Gate] { Gate->Leave(); });
}

bool THandOffQueue::IsServing(const TThreadRecord* ASender) const noexcept {
  const THandOff* HandOff = FRunning;
  while (HandOff && HandOff->Sender != ASender) HandOff = HandOff->Outer;
  return HandOff != nullptr;
}

void THandOffQueue::KeepError(const std::function<void()>& ABody) noexcept {
  try {
    ABody();
  } catch (...) {
    const std::lock_guard Guard(FLock);
    if (!FError) FError = std::current_exception();
  }
}

bool THandOffQueue::RunHere(THandOffGate* AGate, const std::function<void()>& ABody) {
  if (!AGate) {
    ABody();
    return true;
  }
  if (!AGate->IsOpen()) return false;
  AGate->Run(ABody);
  return true;
}

void THandOffQueue::Finish(THandOff& AHandOff, THandOff::TState AState) {
  const std::lock_guard Guard(FLock);
  TThreadRecord& Sender = *AHandOff.Sender;
  AHandOff.State = AState;  // from here on the hand-off may be gone
  Runtime().Unpark(Sender);
}

void THandOffQueue::Drop(THandOffGate& AGate) {
  const std::lock_guard Guard(FLock);
  const auto Dropped =
      std::stable_partition(FWaiting.begin(), FWaiting.end(), [&AGate](const THandOff* AWaiting) {
        return AWaiting->Gate != &AGate;
      });
  for (auto I = Dropped; I != FWaiting.end(); ++I) {
    TThreadRecord& Sender = *(*I)->Sender;
    (*I)->State = THandOff::TState::Dropped;
    Runtime().Unpark(Sender);
  }
  FWaiting.erase(Dropped, FWaiting.end());
}

std::exception_ptr THandOffQueue::TakeError() noexcept {
  const std::lock_guard Guard(FLock);
  return std::exchange(FError, nullptr);
}

void THandOffQueue::SetMainThread(TThreadRecord* AThread) {
  const std::lock_guard Guard(FLock);
  FMain = AThread;
}

void THandOffQueue::SetHook(std::function<void()> AHook) {
  const std::lock_guard Guard(FLock);
  FHook = std::move(AHook);
}

std::size_t THandOffQueue::GetWaitingCount() const {
  const std::lock_guard Guard(FLock);
  return FWaiting.size();
}

bool BlockUntil(TTicks ADeadline, const char* AWaitsFor, const std::function<bool()>& AIsReady) {
  IRuntime& InUse = Runtime();
  const bool OnMain = IsMainThread();
  THandOffQueue& Queue = THandOffQueue::Instance();
  if (OnMain) Queue.SetMainThread(&InUse.Current());
  while (!AIsReady()) {
    if (OnMain && Queue.ServeOne()) continue;
    if (InUse.Ticks() >= ADeadline) return false;
    InUse.Park(ADeadline, AWaitsFor);
  }
  return true;
}

bool ServeHandOffs(std::int64_t AMilliseconds) {
  if (!IsMainThread()) FatalError("ServeHandOffs was called outside the main thread");
  THandOffQueue& Queue = THandOffQueue::Instance();
  const std::uint64_t Before = Queue.GetServedCount();
  const auto HasServed = [&] { return Queue.GetServedCount() != Before; };
  const TTicks Wait = std::clamp<std::int64_t>(AMilliseconds, 0, MaxWaitInMs) * TicksPerMillisecond;
  while (Queue.ServeOne()) continue;
  BlockUntil(After(Ticks(), Wait), "hand-offs to serve", HasServed);
  while (Queue.ServeOne()) continue;
  if (const std::exception_ptr Error = Queue.TakeError()) std::rethrow_exception(Error);
  return HasServed();
}

void SetHandOffHook(std::function<void()> AHook) {
  THandOffQueue::Instance().SetHook(std::move(AHook));
}

THandOffGate::~THandOffGate() {
  if (IsInHandler())
    FatalError(
        "a component was destroyed inside one of its own event handlers; "
        "destroy it after the handler has returned");
  Close();
}

void THandOffGate::Open() {
  FIsOpen.store(true, std::memory_order_release);
}

void THandOffGate::Close() {
  FIsOpen.store(false, std::memory_order_release);
  THandOffQueue::Instance().Drop(*this);
}

void THandOffGate::Run(const std::function<void()>& ABody) {
  Enter();
  try {
    ABody();
  } catch (...) {
    Leave();
    throw;
  }
  Leave();
}

void THandOffGate::Leave() {
  if (--FDepth == 0 && FAfterHandler) FAfterHandler();
}

}  // namespace System
