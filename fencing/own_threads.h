// Which threads of a component are inside user code that is not handed to the main thread.
#pragma once

#include <algorithm>
#include <mutex>
#include <vector>

#include "platform/threads.h"

namespace System::Beacon::Fencing {

/// Any thread.
class TOwnThreads {
 public:
  /// Notes the calling thread as long as it lives.
  class TCall {
   public:
    explicit TCall(TOwnThreads& AThreads) : FThreads(AThreads) { FThreads.Enter(); }
    ~TCall() { FThreads.Leave(); }
    TCall(const TCall&) = delete;
    TCall& operator=(const TCall&) = delete;

   private:
    TOwnThreads& FThreads;
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
