// The runtime of operating-system threads and clocks.
#include <atomic>
#include <chrono>

#include "platform/runtime.h"
#include "platform/time.h"

namespace System {
namespace {

using std::chrono::steady_clock;

thread_local std::shared_ptr<TThreadRecord> CurrentRecord;

TTicks SinceOrigin(steady_clock::time_point ATime) noexcept {
  return std::chrono::duration_cast<std::chrono::microseconds>(ATime.time_since_epoch()).count();
}

class TRealRuntime final : public IRuntime {
 public:
  std::shared_ptr<TThreadRecord> Start(const std::string& AName,
                                       std::function<void()> ABody) override {
    auto Record = std::make_shared<TThreadRecord>();
    Record->Name = AName;
    Record->Handle = std::thread([Record, Body = std::move(ABody)] {
      CurrentRecord = Record;
      Body();
    });
    return Record;
  }

  void Park(TTicks ADeadline, const char*) override {
    TThreadRecord& Self = Current();
    std::unique_lock Guard(Self.Lock);
    const auto HasPermit = [&Self] { return Self.HasPermit; };
    // A wait of more than a day is cut into days: clocks of the standard library overflow.
    const TTicks Today = After(Ticks(), 86'400 * TicksPerSecond);
    if (ADeadline == NoDeadline) {
      Self.Wake.wait(Guard, HasPermit);
    } else {
      const auto Until = std::chrono::microseconds(std::min(ADeadline, Today));
      Self.Wake.wait_until(Guard, steady_clock::time_point(Until), HasPermit);
    }
    Self.HasPermit = false;
  }

  void Unpark(TThreadRecord& AThread) override {
    const std::lock_guard Guard(AThread.Lock);
    AThread.HasPermit = true;
    AThread.Wake.notify_one();
  }

  TThreadRecord& Current() override {
    if (!CurrentRecord) {
      CurrentRecord = std::make_shared<TThreadRecord>();
      CurrentRecord->Name = "application thread";
    }
    return *CurrentRecord;
  }

  TTicks Ticks() noexcept override { return SinceOrigin(steady_clock::now()); }

  double Now() noexcept override {
    using TDays = std::chrono::duration<double, std::ratio<86400>>;
    return TDays(std::chrono::system_clock::now().time_since_epoch()).count();
  }
};

TRealRuntime& RealRuntime() noexcept {
  static TRealRuntime Instance;
  return Instance;
}

std::atomic<IRuntime*> RuntimeInUse{nullptr};

}  // namespace

IRuntime& Runtime() noexcept {
  IRuntime* const InUse = RuntimeInUse.load(std::memory_order_acquire);
  return InUse ? *InUse : RealRuntime();
}

void UseRuntime(IRuntime* ARuntime) noexcept {
  RuntimeInUse.store(ARuntime, std::memory_order_release);
}

TTicks Ticks() noexcept {
  return Runtime().Ticks();
}
double Now() noexcept {
  return Runtime().Now();
}

}  // namespace System
