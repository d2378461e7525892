// Timers of the main thread, told by what fired when, in simulated milliseconds.
#include "platform/controls/timer.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

#include "platform/simulation.h"
#include "platform/threads.h"
#include "support/raised.h"

namespace System {
namespace {

struct TTimerTest : testing::Test {
  const TSimulation Simulation{};
  const TTicks Start = Ticks();
  std::string Log;

  std::int64_t Time() const { return (Ticks() - Start) / TicksPerMillisecond; }
  /// A running timer that writes down its name and the time, then acts.
  std::unique_ptr<TTimer> Timer(const std::string& AName,
                                std::uint32_t AInterval,
                                std::function<void()> AThen = {}) {
    auto Result = std::make_unique<TTimer>();
    Result->SetOnTimer([this, AName, Then = std::move(AThen)] {
      Log += fmt::format("{}{} ", AName, Time());
      if (Then) Then();
    });
    Result->SetInterval(AInterval);
    Result->SetEnabled(true);
    return Result;
  }
  /// The loop of a main thread, up to a time; what has fired meanwhile.
  std::string RunUntil(std::int64_t ATime) {
    const TTicks End = Start + ATime * TicksPerMillisecond;
    while (TTimer::NextDeadline() <= End) {
      Sleep((TTimer::NextDeadline() - Ticks()) / TicksPerMillisecond);
      TTimer::ServeDue();
    }
    Sleep(ATime - Time());
    return std::exchange(Log, {});
  }
};

TEST_F(TTimerTest, FiresEveryIntervalTheLongestDueFirst) {
  const auto A = Timer("a", 30), B = Timer("b", 20), C = Timer("c", 60);
  EXPECT_EQ(RunUntil(60), "b20 a30 b40 c60 a60 b60 ");
  A->SetEnabled(false);
  C->SetInterval(0);
  B->SetInterval(50);  // begins anew
  EXPECT_EQ(RunUntil(115), "b110 ");
  B->SetInterval(50);  // as it is
  EXPECT_EQ(RunUntil(160), "b160 ");
  B->SetEnabled(false);
  EXPECT_EQ(TTimer::NextDeadline(), NoDeadline);
}

TEST_F(TTimerTest, DoesNotCatchUpOnWhatWasMissed) {
  const auto A = Timer("a", 10);
  Sleep(95);  // fires nothing
  TTimer::ServeDue();
  TTimer::ServeDue();
  EXPECT_EQ(RunUntil(120), "a95 a105 a115 ");
}

TEST_F(TTimerTest, HandlersStopDestroyAndMakeTimers) {
  std::unique_ptr<TTimer> A, B, C, D;
  A = Timer("a", 10, [&] { B.reset(); });
  B = Timer("b", 10);
  C = Timer("c", 10, [&] {
    D = Timer("d", 5, [&] { D->SetEnabled(false); });
    C.reset();
  });
  EXPECT_EQ(RunUntil(20), "a10 c10 d15 a20 ");
}

TEST_F(TTimerTest, WhatAHandlerRaisesStopsNoTimer) {
  const auto A = Timer("a", 10, [] { throw std::runtime_error("a failed"); });
  const auto B = Timer("b", 10);
  Sleep(10);
  EXPECT_EQ(Raised<std::runtime_error>(TTimer::ServeDue), "a failed");
  TTimer::ServeDue();
  EXPECT_EQ(Log, "a10 b10 ");
  EXPECT_EQ(TTimer::NextDeadline(), Ticks() + 10 * TicksPerMillisecond);
}

}  // namespace
}  // namespace System
