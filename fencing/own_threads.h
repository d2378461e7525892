// Which threads of a component are inside code that may hand over to the main thread past the
// component's gate: an application's handlers, calculators of its own.
#pragma once

#include <algorithm>
#include <mutex>
#include <vector>

#include "fencing/run_switch.h"
#include "platform/threads.h"

namespace System::Beacon::Fencing {

/// Any thread.
class TOwnThreads {
 public:
  /// Notes the calling thread as long as it lives. Then what the switch was asked for inside is
  /// done, which may wait for the main thread.
  class TCall {
   public:
    TCall(TOwnThreads& AThreads, TRunSwitch& ASwitch) : FThreads(AThreads), FSwitch(ASwitch) {
      FThreads.Enter();
    }
    ~TCall() {
      FThreads.Leave();
      FSwitch.ThreadHasLeft();
    }
    TCall(const TCall&) = delete;
    TCall& operator=(const TCall&) = delete;

   private:
    TOwnThreads& FThreads;
    TRunSwitch& FSwitch;
  };

  /// Whether the caller is, or acts for, a thread that was noted: it must not wait for it.
  bool IsActing() const {
    const std::lock_guard Guard(FLock);
    return std::any_of(FInside.begin(), FInside.end(), IsActingFor);
  }

 private:
  void Enter() {
    const std::lock_guard Guard(FLock);
    FInside.push_back(CurrentThreadId());
  }
  void Leave() {
    const std::lock_guard Guard(FLock);
    FInside.erase(std::find(FInside.begin(), FInside.end(), CurrentThreadId()));
  }

  mutable std::mutex FLock;  // guards FInside
  std::vector<TThreadId> FInside;
};

}  // namespace System::Beacon::Fencing
