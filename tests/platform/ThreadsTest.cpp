#include "platform/threads.h"

#include <gtest/gtest.h>

#include <numeric>
#include <optional>
#include <stdexcept>
#include <thread>

#include "platform/simulation.h"
#include "support/raised.h"

namespace System {
namespace {

using TThreads = std::vector<std::unique_ptr<TThread>>;

std::unique_ptr<TThread> StartThread(std::function<void()> ABody) {
  auto Result = TThread::CreateAnonymousThread(std::move(ABody));
  Result->Start();
  return Result;
}

void WaitForAll(const TThreads& AThreads) {
  for (const auto& Thread : AThreads) Thread->WaitFor();
}

/// Every test runs with real threads and with simulated ones.
class Threads : public testing::TestWithParam<bool> {
 protected:
  void SetUp() override {
    if (GetParam()) FSimulation.emplace();
  }
  void TearDown() override {
    SetHandOffHook({});
    FSimulation.reset();
  }

  std::optional<TSimulation> FSimulation;
};

INSTANTIATE_TEST_SUITE_P(, Threads, testing::Bool(), [](const auto& AInfo) {
  return AInfo.param ? "Simulated" : "Real";
});

// ---------------------------------------------------------------- hand-offs

TEST_P(Threads, HandOffsOfOneThreadRunOnTheMainThreadInTheirOrder) {
  constexpr int ThreadCount = 4, HandOffsEach = 25;
  std::array<std::vector<int>, ThreadCount> Served;
  TThreads Senders;
  for (auto& Mine : Served)
    Senders.push_back(StartThread([&Mine] {
      for (int I = 0; I < HandOffsEach; ++I)
        TThread::Synchronize([&] { Mine.push_back(IsMainThread() ? I : -1); });
    }));
  WaitForAll(Senders);
  std::vector<int> InOrder(HandOffsEach);
  std::iota(InOrder.begin(), InOrder.end(), 0);
  for (const auto& Mine : Served) EXPECT_EQ(Mine, InOrder);
}

TEST(SimulatedThreads, HandOffsOfAllThreadsRunFirstComeFirstServed) {
  for (std::uint64_t Seed = 1; Seed <= 20; ++Seed) {
    const TSimulation Simulation({.Seed = Seed});
    std::vector<int> Sent, Served;
    TThreads Senders;
    for (int Number = 0; Number < 3; ++Number)
      Senders.push_back(StartThread([&, Number] {
        for (int I = 0; I < 5; ++I) {
          Sent.push_back(Number);  // nobody else runs until this thread blocks
          TThread::Synchronize([&] { Served.push_back(Number); });
        }
      }));
    WaitForAll(Senders);
    EXPECT_EQ(Served, Sent) << "seed " << Seed;
  }
}

TEST_P(Threads, TheMainThreadRunsItsOwnHandOffsAtOnce) {
  int Ran = 0;
  TThread::Synchronize([&] { ++Ran; });
  EXPECT_EQ(Ran, 1);
  EXPECT_EQ(Raised<std::runtime_error>(
                [] { TThread::Synchronize([] { throw std::runtime_error("boom"); }); }),
            "boom");
}

TEST_P(Threads, EveryWaitOfTheMainThreadServesHandOffs) {
  TEvent Event, IsTaken, IsInside;
  TMonitor Monitor;
  const std::pair<const char*, std::function<void(TThread&)>> Waits[] = {
      {"event", [&](TThread&) { EXPECT_TRUE(Event.WaitFor(60'000)); }},
      {"monitor", [&](TThread&) { const TMonitorLock Lock(Monitor); }},
      {"thread", [](TThread& AOther) { AOther.WaitFor(); }},
      {"serving", [](TThread&) { EXPECT_TRUE(ServeHandOffs(60'000)); }},
  };
  for (const auto& [Name, Wait] : Waits) {
    Event.ResetEvent();
    IsTaken.ResetEvent();
    IsInside.ResetEvent();
    int Ran = 0;
    const auto Other = StartThread([&] {
      const TMonitorLock Lock(Monitor);
      IsTaken.SetEvent();
      IsInside.WaitUntil(NoDeadline);
      TThread::Synchronize([&] { ++Ran; });
      Event.SetEvent();
    });
    // The wait is itself inside a handler: serving nests.
    const auto Outer = StartThread([&, &Wait = Wait] {
      IsTaken.WaitUntil(NoDeadline);
      TThread::Synchronize([&] {
        IsInside.SetEvent();
        Wait(*Other);
      });
    });
    Outer->WaitFor();
    EXPECT_EQ(Ran, 1) << Name;
    Other->WaitFor();
  }
}

TEST_P(Threads, OneThreadMayBeWaitedForInsideTheWaitForIt) {
  TEvent Go;
  const auto Awaited = StartThread([&] { Go.WaitUntil(NoDeadline); });
  const auto Other = StartThread([&] {
    TThread::Synchronize([&] {
      Go.SetEvent();
      Awaited->WaitFor();
    });
  });
  Awaited->WaitFor();
  Other->WaitFor();
  EXPECT_TRUE(Awaited->GetFinished());
  EXPECT_FALSE(Awaited->IsCurrent());
}

TEST_P(Threads, WhatHandlersRaiseIsRaisedByTheNextServeHandOffs) {
  bool WentOn = false;
  StartThread([&] {
    TThread::Synchronize([] { throw std::runtime_error("the first"); });
    TThread::Synchronize([] { throw std::runtime_error("the second"); });
    WentOn = true;
  })->WaitFor();
  EXPECT_TRUE(WentOn);
  EXPECT_EQ(Raised<std::runtime_error>([] { ServeHandOffs(); }), "the first");
  EXPECT_FALSE(ServeHandOffs());
}

TEST_P(Threads, TheHookHearsOfEveryHandOffOnTheThreadThatReports) {
  std::atomic<int> Heard{0};
  SetHandOffHook([&] {
    Heard += IsMainThread() ? 100 : 1;
    throw std::runtime_error("hook");
  });
  int Ran = 0;
  StartThread([&] {
    for (int I = 0; I < 3; ++I) TThread::Synchronize([&] { ++Ran; });
  })->WaitFor();
  EXPECT_EQ(Heard, 3);
  EXPECT_EQ(Ran, 3);
  EXPECT_EQ(Raised<std::runtime_error>([] { ServeHandOffs(); }), "hook");
}

// ---------------------------------------------------------------- gates

TEST(THandOffGate, DropsWhatWaitsWhenItIsClosed) {
  THandOffGate Gate, Other;
  std::atomic<int> Waiting{0};
  SetHandOffHook([&] { ++Waiting; });
  bool WasRun = true, OtherWasRun = false;
  const auto Sender = StartThread([&] { WasRun = TThread::Synchronize(Gate, [] { FAIL(); }); });
  const auto Second = StartThread([&] { OtherWasRun = TThread::Synchronize(Other, [] {}); });
  while (Waiting < 2) std::this_thread::yield();
  Gate.Close();
  Sender->WaitFor();
  Second->WaitFor();
  SetHandOffHook({});
  EXPECT_FALSE(WasRun);
  EXPECT_TRUE(OtherWasRun);
}

TEST(THandOffGate, LetsNothingInOnceItIsClosed) {
  for (std::uint64_t Seed = 1; Seed <= 50; ++Seed) {
    const TSimulation Simulation({.Seed = Seed});
    THandOffGate Gate;
    int Entered = 0, Reported = 0;
    TThreads All;
    for (int I = 0; I < 2; ++I)
      All.push_back(StartThread([&] {
        for (int J = 0; J < 5; ++J)
          Reported += TThread::Synchronize(Gate, [&] {
            EXPECT_TRUE(Gate.IsOpen());
            ++Entered;
          });
      }));
    All.push_back(StartThread([&] { TThread::Synchronize([&] { Gate.Close(); }); }));
    WaitForAll(All);
    EXPECT_EQ(Reported, Entered);
    EXPECT_FALSE(TThread::Synchronize(Gate, [&] { ++Entered; }));
    Gate.Open();
    EXPECT_TRUE(TThread::Synchronize(Gate, [] {}));
  }
}

TEST_P(Threads, AGateTellsWhenItsOutermostHandlerHasReturned) {
  THandOffGate Gate;
  std::string Log;
  Gate.SetAfterHandler([&] { Log += Gate.IsInHandler() ? "inside " : "after "; });
  StartThread([&] {
    TThread::Synchronize(Gate, [&] {
      TThread::Synchronize(Gate, [&] { Log += "inner "; });
      Log += "outer ";
    });
  })->WaitFor();
  EXPECT_EQ(Log, "inner outer after ");
}

// ---------------------------------------------------------------- events, monitors, time

TEST_P(Threads, AnEventStaysSetForAllUntilItIsReset) {
  TEvent Event;
  std::atomic<int> Woken{0};
  TThreads Waiting;
  for (int I = 0; I < 3; ++I)
    Waiting.push_back(StartThread([&] { Woken += Event.WaitFor(600'000) ? 1 : 0; }));
  EXPECT_FALSE(Event.WaitFor(1));
  Event.SetEvent();
  WaitForAll(Waiting);
  EXPECT_EQ(Woken, 3);
  EXPECT_TRUE(Event.WaitFor(0));
  Event.ResetEvent();
  EXPECT_FALSE(Event.WaitFor(0));
  EXPECT_FALSE(Event.WaitFor(-5));
}

TEST_P(Threads, AMonitorIsLeftAsOftenAsItWasEntered) {
  TMonitor Monitor;
  const auto CanAnotherEnter = [&] {
    bool Result = false;
    StartThread([&] {
      Result = Monitor.TryEnter(1);
      if (Result) Monitor.Exit();
    })->WaitFor();
    return Result;
  };
  Monitor.Enter();
  EXPECT_TRUE(Monitor.TryEnter(0));
  EXPECT_FALSE(CanAnotherEnter());
  Monitor.Exit();
  EXPECT_FALSE(CanAnotherEnter());
  Monitor.Exit();
  EXPECT_TRUE(CanAnotherEnter());
}

TEST_P(Threads, AMonitorAdmitsOneThreadAtATime) {
  TMonitor Monitor;
  int Inside = 0, Entries = 0;  // guarded by Monitor
  TThreads All;
  for (int I = 0; I < 4; ++I)
    All.push_back(StartThread([&] {
      for (int J = 0; J < 50; ++J) {
        const TMonitorLock Lock(Monitor);
        EXPECT_EQ(++Inside, 1);
        ++Entries;
        if (J % 16 == 0) Sleep(1);
        --Inside;
      }
    }));
  WaitForAll(All);
  EXPECT_EQ(Entries, 200);
}

TEST_P(Threads, TheLongestWaitsDoNotOverflow) {
  for (const std::int64_t Longest : {std::numeric_limits<std::int64_t>::max(), NoDeadline / 1000}) {
    TEvent Event;
    const auto Setter = StartThread([&] {
      TThread::Synchronize([] {});
      Event.SetEvent();
    });
    EXPECT_TRUE(ServeHandOffs(Longest));
    EXPECT_TRUE(Event.WaitFor(Longest));
    Setter->WaitFor();
  }
}

// ---------------------------------------------------------------- misuse

TEST(ThreadsDeathTest, MisuseEndsTheProcessWithALineThatSaysWhatWasWrong) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const std::pair<const char*, void (*)()> Cases[] = {
      {"was made to wait for itself",
       [] {
         std::unique_ptr<TThread> Self;
         Self = TThread::CreateAnonymousThread([&] { Self->WaitFor(); });
         Self->Start();
         Self->WaitFor();
       }},
      {"thread 'hasty' was destroyed while it was running",
       [] {
         static TEvent Never;
         class THasty final : public TThread {
          public:
           THasty() : TThread("hasty") {}
           void Execute() override { Never.WaitUntil(NoDeadline); }
         };
         const TSimulation Simulation;  // where the thread has not begun yet: no race, but the line
         THasty Thread;
         Thread.Start();
       }},
      {"ServeHandOffs was called outside the main thread",
       [] { StartThread([] { ServeHandOffs(); })->WaitFor(); }},
      {"a monitor was left by a thread that had not entered it", [] { TMonitor().Exit(); }},
      {"destroyed inside one of its own event handlers",
       [] {
         auto Gate = std::make_unique<THandOffGate>();
         TThread::Synchronize(*Gate, [&] { Gate.reset(); });
       }},
  };
  for (const auto& [Message, Misuse] : Cases) EXPECT_DEATH(Misuse(), Message) << Message;
}

}  // namespace
}  // namespace System
