#include "platform/simulation.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <set>
#include <thread>

#include "platform/random.h"
#include "platform/threads.h"

namespace System {
namespace {

class TNamedThread final : public TThread {
 public:
  TNamedThread(std::string AName, std::function<void()> ABody)
      : TThread(std::move(AName)), FBody(std::move(ABody)) {
    Start();
  }
  ~TNamedThread() override { TerminateAndWait(); }

 protected:
  void Execute() override { FBody(); }

 private:
  const std::function<void()> FBody;
};

/// What three threads do, with the time and a random number at each step.
std::string TraceOf(std::uint64_t ASeed) {
  const TSimulation Simulation({.Seed = ASeed});
  std::string Result = GUIDToString(NewGUID());
  const auto Body = [&Result](char AName) {
    for (int I = 0; I < 10; ++I) {
      Result += fmt::format(" {}{}:{:.6f}", AName, Ticks(), Random());
      Sleep(I % 3 == 0 ? 2 : 1);
    }
  };
  const TNamedThread A("a", [&] { Body('a'); }), B("b", [&] { Body('b'); });
  Body('m');
  return Result;
}

TEST(TSimulation, TheSameSeedGivesTheSameRunAndOthersGiveOthers) {
  std::set<std::string> Orders;
  for (std::uint64_t Seed = 1; Seed <= 10; ++Seed) {
    const std::string Trace = TraceOf(Seed);
    EXPECT_EQ(TraceOf(Seed), Trace);
    std::string Order;
    for (const char C : Trace.substr(38))
      if (C == 'a' || C == 'b' || C == 'm') Order += C;
    EXPECT_EQ(Order.size(), 30U);
    Orders.insert(Order);
  }
  EXPECT_GT(Orders.size(), 5U);
}

TEST(TSimulation, TimeJumpsToTheEarliestDeadline) {
  const TSimulation Simulation({.StartTime = 20'500.25});
  EXPECT_EQ(Ticks(), 0);
  EXPECT_EQ(Now(), 20'500.25);
  std::string Log;
  const auto SleepAndLog = [&Log](std::int64_t AMilliseconds) {
    Sleep(AMilliseconds);
    Log += fmt::format("{} ", Ticks());
  };
  constexpr std::int64_t Year = 365 * 86'400'000LL;
  const TNamedThread Long("long", [&] { SleepAndLog(Year); });
  TEvent Event;
  {
    const TNamedThread A("a", [&] { SleepAndLog(3'000); }), B("b", [&] { SleepAndLog(1'000); });
    EXPECT_FALSE(Event.WaitFor(2'000));
    EXPECT_EQ(Ticks(), 2'000'000);
    EXPECT_FALSE(ServeHandOffs(500));
    EXPECT_EQ(Ticks(), 2'500'000);
  }
  SleepAndLog(0);
  EXPECT_EQ(Log, "1000000 3000000 3000000 ");
  SleepAndLog(Year);
  EXPECT_DOUBLE_EQ(Now(), 20'500.25 + 365.0 + 3.0 / 86'400.0);
}

TEST(TSimulation, TimeStandsStillWhileAThreadCanRun) {
  const TSimulation Simulation;
  TEvent Set;
  const TNamedThread Setter("setter", [&] {
    for (int I = 0; I < 100; ++I) TThread::Synchronize([] {});
    Set.SetEvent();
  });
  EXPECT_TRUE(Set.WaitFor(1));
  EXPECT_EQ(Ticks(), 0);
}

class TSimulationDeathTest : public testing::Test {
 protected:
  void SetUp() override { testing::FLAGS_gtest_death_test_style = "threadsafe"; }
};

TEST_F(TSimulationDeathTest, ADeadlockIsReportedWithWhatEachThreadWaitsFor) {
  const auto Deadlock = [] {
    const TSimulation Simulation;
    TMonitor Door("the door");
    TEvent Bell("the bell");
    const TNamedThread Holder("holder", [&] {
      Door.Enter();
      Bell.WaitUntil(NoDeadline);
    });
    Sleep(1);
    Door.Enter();
  };
  EXPECT_DEATH(Deadlock(),
               "wayfence: deadlock: every thread waits, none with a deadline\n"
               "  'main thread' waits for the door\n"
               "  'holder' waits for the bell");
}

TEST_F(TSimulationDeathTest, MisuseEndsTheProcessWithALineThatSaysWhatWasWrong) {
  const std::pair<const char*, void (*)()> Cases[] = {
      {"the simulation ended while threads were left\n.*'sleeper' waits for its sleep to end",
       [] {
         std::unique_ptr<TNamedThread> Sleeper;
         const TSimulation Simulation;
         Sleeper = std::make_unique<TNamedThread>("sleeper", [] { Sleep(10); });
         Sleep(1);
       }},
      {"a simulation was started inside another one", [] { const TSimulation A, B; }},
      {"a simulation was started outside the main thread",
       [] { std::thread([] { const TSimulation Simulation; }).join(); }},
      {"a thread that the simulation did not start used the platform",
       [] {
         const TSimulation Simulation;
         std::thread([] { Sleep(1); }).join();
       }},
  };
  for (const auto& [Message, Misuse] : Cases) EXPECT_DEATH(Misuse(), Message) << Message;
}

TEST(Random, StreamsAreRepeatableUniformAndIndependent) {
  const auto Draw = [] {
    SeedRandom(7);
    TRandomStream Split = SplitRandomStream(), Another = SplitRandomStream();
    std::vector<double> Result;
    for (int I = 0; I < 1'000; ++I)
      for (const double Value : {Random(), Split.NextDouble(), Another.NextDouble()})
        Result.push_back(Value);
    return Result;
  };
  const std::vector<double> Drawn = Draw();
  EXPECT_EQ(Draw(), Drawn);
  EXPECT_EQ(std::set<double>(Drawn.begin(), Drawn.end()).size(), Drawn.size());
  double Sum = 0.0;
  for (const double Value : Drawn) {
    ASSERT_GE(Value, 0.0);
    ASSERT_LT(Value, 1.0);
    Sum += Value;
  }
  EXPECT_NEAR(Sum / static_cast<double>(Drawn.size()), 0.5, 0.03);
}

TEST(Random, NewGUIDsAreOfVersion4) {
  SeedRandom(7);
  std::set<TGUID> Seen;
  for (int I = 0; I < 1'000; ++I) {
    const TGUID GUID = NewGUID();
    EXPECT_EQ(GUID.Bytes[6] >> 4, 4);
    EXPECT_EQ(GUID.Bytes[8] >> 6, 2);
    EXPECT_TRUE(Seen.insert(GUID).second);
  }
}

}  // namespace
}  // namespace System
