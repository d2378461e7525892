#include "platform/simulation.h"

#include <fmt/format.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <vector>

#include "platform/errors.h"
#include "platform/handoffs.h"
#include "platform/random.h"
#include "platform/runtime.h"

namespace System {
namespace {

using TState = TThreadRecord::TState;

constexpr auto SilenceBeforeReport = std::chrono::seconds(10);  // of real time

thread_local TThreadRecord* CurrentThread = nullptr;
std::atomic<bool> SimulationRuns{false};

std::string Describe(const TThreadRecord& AThread) {
  switch (AThread.State) {
    case TState::Runnable:
      return fmt::format("  '{}' is ready to run\n", AThread.Name);
    case TState::Running:
      return fmt::format("  '{}' is running\n", AThread.Name);
    case TState::Parked:
      return fmt::format("  '{}' waits for {}\n", AThread.Name, AThread.WaitsFor);
    case TState::Ended:
      return fmt::format("  '{}' has ended and was not waited for\n", AThread.Name);
  }
  return {};
}

}  // namespace

class TSimulation::TRuntime final : public IRuntime {
 public:
  explicit TRuntime(const TSimulationOptions& AOptions)
      : FOrder(~AOptions.Seed), FStartTime(AOptions.StartTime) {
    FMain = std::make_shared<TThreadRecord>();
    FMain->Name = "main thread";
    FMain->State = TState::Running;
    FThreads.push_back(FMain);
    CurrentThread = FMain.get();
  }

  ~TRuntime() override {
    std::unique_lock Guard(FLock);
    DropEnded();
    if (FThreads.size() > 1) Report("the simulation ended while threads were left", true);
    CurrentThread = nullptr;
  }

  std::shared_ptr<TThreadRecord> Start(const std::string& AName,
                                       std::function<void()> ABody) override {
    auto Record = std::make_shared<TThreadRecord>();
    Record->Name = AName;
    std::unique_lock Guard(FLock);
    DropEnded();
    FThreads.reserve(FThreads.size() + 1);
    Record->Handle = std::thread([this, Record, Body = std::move(ABody)] {
      CurrentThread = Record.get();
      AwaitFirstTurn(*Record);
      Body();
      End(*Record);
    });
    FThreads.push_back(Record);
    return Record;
  }

  void Park(TTicks ADeadline, const char* AWaitsFor) override {
    std::unique_lock Guard(FLock);
    TThreadRecord& Self = Current();
    if (!Self.HasPermit) {
      Self.State = TState::Parked;
      Self.Deadline = ADeadline;
      Self.WaitsFor = AWaitsFor;
      TThreadRecord& Next = ChooseNext();
      if (&Next != &Self) {
        Next.Wake.notify_one();
        AwaitTurn(Self, Guard);
      }
    }
    Self.HasPermit = false;
  }

  void Unpark(TThreadRecord& AThread) override {
    const std::lock_guard Guard(FLock);
    AThread.HasPermit = true;
    if (AThread.State == TState::Parked) AThread.State = TState::Runnable;
  }

  TThreadRecord& Current() override {
    if (!CurrentThread)
      FatalError(
          "a thread that the simulation did not start used the platform; "
          "start it as a TThread");
    return *CurrentThread;
  }

  TTicks Ticks() noexcept override { return FTicks.load(std::memory_order_relaxed); }
  double Now() noexcept override {
    return FStartTime + static_cast<double>(Ticks()) / (86'400.0 * TicksPerSecond);
  }

 private:
  void AwaitFirstTurn(TThreadRecord& ASelf) {
    std::unique_lock Guard(FLock);
    AwaitTurn(ASelf, Guard);
  }

  void AwaitTurn(TThreadRecord& ASelf, std::unique_lock<std::mutex>& AGuard) {
    const auto HasTurn = [&ASelf] { return ASelf.State == TState::Running; };
    std::uint64_t SeenSwitches = FSwitches;
    while (!ASelf.Wake.wait_for(AGuard, SilenceBeforeReport, HasTurn)) {
      AGuard.unlock();  // the queue wakes threads with its own lock held
      const bool HandOffsWait = THandOffQueue::Instance().GetWaitingCount() > 0;
      AGuard.lock();
      if (HandOffsWait && SeenSwitches == FSwitches && FMain->State == TState::Running)
        ReportSilence();
      SeenSwitches = FSwitches;
    }
  }

  void End(TThreadRecord& ASelf) {
    const std::lock_guard Guard(FLock);
    ASelf.State = TState::Ended;
    ChooseNext().Wake.notify_one();
  }

  /// Makes one ready thread the running one. Time moves only when none is ready.
  TThreadRecord& ChooseNext() {
    std::size_t Ready = CountReady();
    if (Ready == 0) {
      JumpToEarliestDeadline();
      Ready = CountReady();
    }
    std::uint32_t Turn = FOrder.NextBelow(static_cast<std::uint32_t>(Ready));
    for (const auto& Thread : FThreads)
      if (Thread->State == TState::Runnable && Turn-- == 0) {
        Thread->State = TState::Running;
        ++FSwitches;
        return *Thread;
      }
    FatalError("the simulation lost its threads");
  }

  std::size_t CountReady() const {
    return static_cast<std::size_t>(
        std::count_if(FThreads.begin(), FThreads.end(), [](const auto& AThread) {
          return AThread->State == TState::Runnable;
        }));
  }

  void JumpToEarliestDeadline() {
    TTicks Earliest = NoDeadline;
    for (const auto& Thread : FThreads)
      if (Thread->State == TState::Parked) Earliest = std::min(Earliest, Thread->Deadline);
    if (Earliest == NoDeadline) Report("deadlock: every thread waits, none with a deadline", true);
    FTicks.store(std::max(Earliest, Ticks()), std::memory_order_relaxed);
    for (const auto& Thread : FThreads)
      if (Thread->State == TState::Parked && Thread->Deadline <= Earliest)
        Thread->State = TState::Runnable;
  }

  void ReportSilence() {
    if (FHasReported) return;
    FHasReported = true;
    Report(
        "the main thread has not served hand-offs for 10 s; "
        "call ServeHandOffs, or wait with the waits of the platform",
        false);
  }

  void Report(const char* AWhat, bool AIsFatal) {
    std::string Text = fmt::format("{}\n", AWhat);
    for (const auto& Thread : FThreads) Text += Describe(*Thread);
    if (AIsFatal) FatalError(Text);
    std::fprintf(stderr, "wayfence: %s", Text.c_str());
  }

  void DropEnded() {
    std::erase_if(FThreads, [](const auto& AThread) {
      return AThread->State == TState::Ended && !AThread->Handle.joinable();
    });
  }

  std::mutex FLock;  // guards all below and the simulation's part of every thread record
  std::vector<std::shared_ptr<TThreadRecord>> FThreads;  // in order of their start
  std::shared_ptr<TThreadRecord> FMain;
  TRandomStream FOrder;  // independent of the numbers that `Random` draws under the same seed
  std::uint64_t FSwitches = 0;
  bool FHasReported = false;
  std::atomic<TTicks> FTicks{0};  // written under FLock, read anywhere
  const double FStartTime;
};

TSimulation::TSimulation(const TSimulationOptions& AOptions) {
  if (!IsMainThread()) FatalError("a simulation was started outside the main thread");
  if (SimulationRuns.exchange(true)) FatalError("a simulation was started inside another one");
  THandOffQueue::Instance().SetMainThread(nullptr);
  SeedRandom(AOptions.Seed);
  FRuntime = std::make_unique<TRuntime>(AOptions);
  UseRuntime(FRuntime.get());
}

TSimulation::~TSimulation() {
  UseRuntime(nullptr);
  THandOffQueue::Instance().SetMainThread(nullptr);
  FRuntime.reset();
  SimulationRuns.store(false);
}

bool TSimulation::IsRunning() noexcept {
  return SimulationRuns.load();
}

}  // namespace System
