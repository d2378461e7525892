// The thread of the position estimator: one step at a time, its end, its handler, its failures.
#include <gtest/gtest.h>

#include <stdexcept>

#include "platform/simulation.h"
#include "support/estimator.h"
#include "support/raised.h"

namespace System::Beacon::Fencing {
namespace {

constexpr int Patience = 10'000;  // ms after which a thread counts as stuck
const std::string NoVariance = "Variance must be > 0.0 (but was 0.000000)";

TFencingBeacons BeaconAt(TPointF APlace, double ADistance = 1.0) {
  return {NewFencingBeacon(1, APlace, ADistance)};
}

/// Every test runs with real threads and with simulated ones.
class CalculatorThread : public testing::TestWithParam<bool> {
 protected:
  void SetUp() override {
    if (GetParam()) FSimulation.emplace();
  }
  void TearDown() override {
    SetApplicationExceptionHandler({});
    FCalculator.reset();
    FSimulation.reset();
  }
  /// A new calculator, with something to do in its handler.
  void Make(std::function<void()> AInHandler) {
    FCalculator.reset();
    FEstimates = 0;
    FEntered.ResetEvent();
    FCalculator.emplace(TEstimatorOptions(10), TRectF{0, 0, 20, 15}, TPathSegments{});
    FCalculator->SetOnEstimatingPosition([this, AInHandler](const TPointF&, const TPointF&) {
      FIsInHandler = true;
      ++FEstimates;
      FEntered.SetEvent();
      AInHandler();
      FIsInHandler = false;
    });
  }
  bool Step(const TFencingBeacons& ABeacons) { return FCalculator->DoCalculateStep(ABeacons, {}); }
  /// Waits until a step has been calculated after what runs now.
  void StepAfterwards() {
    int Accepted = 0;
    for (int Try = 0; Try < Patience && Accepted < 2; ++Try) {
      Accepted += Step(BeaconAt({2, 2})) ? 1 : 0;
      Sleep(1);
    }
    ASSERT_EQ(Accepted, 2) << "steps are refused for ever";
  }

  std::optional<TSimulation> FSimulation;
  TEvent FEntered, FLeave;
  std::atomic<int> FEstimates{0};
  std::atomic<bool> FIsInHandler{false};
  std::optional<TTrilateration> FCalculator;
};

INSTANTIATE_TEST_SUITE_P(, CalculatorThread, testing::Bool(), [](const auto& AInfo) {
  return AInfo.param ? "Simulated" : "Real";
});

TEST_P(CalculatorThread, CalculatesOneStepAtATimeAndNothingWhenItEnds) {
  Make([] {});  // destroyed before its first step
  Make([this] {
    EXPECT_FALSE(IsMainThread());
    EXPECT_EQ(FCalculator->GetInfBeacons().at(0).Position, (TPointF{200, 200}));
    EXPECT_FALSE(FCalculator->Calculate(BeaconAt({9, 9}), {}));
    FLeave.WaitFor(Patience);
  });
  EXPECT_TRUE(Step(BeaconAt({2, 2})));
  EXPECT_FALSE(Step(BeaconAt({9, 9}))) << "even before the thread has woken";
  ASSERT_TRUE(FEntered.WaitFor(Patience));
  EXPECT_FALSE(Step(BeaconAt({9, 9})));
  FLeave.SetEvent();
  Sleep(5);
  FCalculator.reset();  // waits for steps, as a rule
  EXPECT_EQ(FEstimates, 1);
}

TEST_P(CalculatorThread, AClearedHandlerHasBeenLeftAndIsNotEnteredAgain) {
  const auto Clear = [this] { FCalculator->SetOnEstimatingPosition({}); };
  const auto ClearOutside = [&] {
    Clear();
    EXPECT_FALSE(FIsInHandler);
  };
  const auto ClearOnAThread = [&] {
    const auto Thread = TThread::CreateAnonymousThread(ClearOutside);
    Thread->Start();
    Thread->WaitFor();
  };
  const auto AskMainThread = [] {
    Sleep(20);
    TThread::Synchronize([] {});
  };
  const auto ClearAndAsk = [&] {
    Clear();
    AskMainThread();
  };
  for (const auto& [What, InHandler, Meanwhile] :
       {std::tuple<const char*, std::function<void()>, std::function<void()>>{
            "from inside", Clear, [] {}},
        {"in a hand-off", [&] { TThread::Synchronize(Clear); }, [] {}},
        {"by the main thread that it waits for", AskMainThread, ClearOutside},
        {"by another thread", AskMainThread, ClearOnAThread},
        {"from inside and again by another thread", ClearAndAsk, ClearOnAThread}}) {
    SCOPED_TRACE(What);
    Make(InHandler);
    EXPECT_TRUE(Step(BeaconAt({2, 2})));
    ASSERT_TRUE(FEntered.WaitFor(Patience));
    Meanwhile();
    StepAfterwards();
    EXPECT_EQ(FEstimates, 1);
  }
}

TEST_P(CalculatorThread, AFailureIsReportedAndStopsItButNotTheCallersThread) {
  Make([] {});
  const auto Fail = [this] { FCalculator->Calculate(BeaconAt({2, 2}, 1E-200), {}); };
  EXPECT_EQ(Raised<std::exception>(Fail), NoVariance);
  EXPECT_TRUE(FCalculator->Calculate(BeaconAt({2, 2}), {}));
  EXPECT_EQ(FEstimates, 1);

  for (const auto& [Distance, Expected] :
       {std::pair(1E-200, NoVariance), {1.0, "a handler's own"}, {1E-200, "nobody listens"}}) {
    Make([] { throw std::runtime_error("a handler's own"); });
    TEvent Reported;
    std::string Message = "nobody listens";
    SetApplicationExceptionHandler({});
    if (Expected != Message)
      SetApplicationExceptionHandler([&](TObject*, const std::exception& AError) {
        Message = AError.what();
        Reported.SetEvent();
      });
    EXPECT_TRUE(Step(BeaconAt({2, 2}, Distance)));
    EXPECT_TRUE(Expected == "nobody listens" || Reported.WaitFor(Patience));
    for (int Try = 0; Try < 20; ++Try) {
      Sleep(1);
      EXPECT_FALSE(Step(BeaconAt({2, 2})));
    }
    FCalculator.reset();
    EXPECT_EQ(Message, Expected);
  }
}

}  // namespace
}  // namespace System::Beacon::Fencing
