// Random steps, options, signals and calibrations from several threads at once.
#include <gtest/gtest.h>

#include <cmath>

#include "platform/random.h"
#include "platform/simulation.h"
#include "support/environment.h"
#include "support/estimator.h"

namespace System::Beacon::Fencing {
namespace {

constexpr std::uint32_t BeaconCount = 5;
constexpr int BeaconsToUse = 2;

TPointF PlaceOf(std::uint32_t AMinor) {
  return {static_cast<float>(3 * AMinor), 7};
}

/// The main thread hands over steps, two threads change options and report signals. Every accepted
/// step that allows an estimate must yield it, once and in its order.
class TStress {
 public:
  TStress(std::uint64_t ASeed, std::uint32_t AMaxSleep) : FRandom(ASeed), FMaxSleep(AMaxSleep) {
    FCalculator->SetOnEstimatingPosition([this](const TPointF& ARaw, const TPointF&) {
      EXPECT_TRUE(ARaw.X >= 0 && ARaw.X <= 2000 && ARaw.Y >= 0 && ARaw.Y <= 1500);
      FYielded.push_back(FCalculator->GetInfBeacons().at(0).Position.X / 100);
    });
    Start(ASeed + 1, &TStress::Configure);
    Start(ASeed + 2, &TStress::Signal);
  }
  ~TStress() {
    FIsStopping = true;
    for (const auto& Thread : FThreads) Thread->WaitFor();
    FCalculator.reset();
    if (FYielded.size() < FExpected.size()) FExpected.pop_back();  // destroyed before it began
    EXPECT_EQ(FYielded, FExpected);
  }

  void Step() {
    Sleep(FRandom.NextBelow(FMaxSleep));
    FStep += 1;
    std::uint32_t Sighted = 0;
    int Usable = 0;
    TFencingBeacons Beacons;
    for (std::uint32_t Minor = 0; Minor < BeaconCount; ++Minor) {
      const double Distance = 0.5 * FRandom.NextBelow(20) - 1.0;
      const bool IsSighted = FRandom.NextBelow(3) != 0, IsUsed = FRandom.NextBelow(8) != 0;
      Beacons.Append(SomeBeacon(Minor, IsUsed, IsSighted ? std::optional(Distance) : std::nullopt));
      Sighted += IsSighted ? 1 : 0;
      Usable += IsSighted && IsUsed && Distance >= 0.0 ? 1 : 0;
    }
    if (!FCalculator->DoCalculateStep(Beacons, {})) return;
    FIsPlaced = FIsPlaced || 2 * Sighted >= BeaconCount;
    if (FIsPlaced && Usable >= BeaconsToUse) FExpected.push_back(FStep);
  }
  std::size_t GetExpectedCount() const { return FExpected.size(); }

 private:
  /// The number of the step stands in the centre.
  TFencingBeacon SomeBeacon(std::uint32_t AMinor, bool AUsed, std::optional<double> ADistance) {
    TFencingBeacon Result = NewFencingBeacon(static_cast<int>(AMinor), {}, ADistance);
    const auto Design = NewFakeDesignBeacon(TestGUID, static_cast<int>(AMinor), {FStep, 7});
    Design->Displacement = PlaceOf(AMinor);
    Design->UseToPositioning = AUsed;
    Result.DesignBeacon = Design;
    return Result;
  }

  void Start(std::uint64_t ASeed, void (TStress::*ABody)(TRandomStream& ARandom)) {
    FThreads.push_back(TThread::CreateAnonymousThread([this, ASeed, ABody] {
      for (TRandomStream Random(ASeed); !FIsStopping; Sleep(Random.NextBelow(3 * FMaxSleep)))
        (this->*ABody)(Random);
    }));
    FThreads.back()->Start();
  }

  void Configure(TRandomStream& ARandom) {
    const int Count = 1 + static_cast<int>(ARandom.NextBelow(80));
    TEstimatorOptions Options(Count, BeaconsToUse);
    Options.SetAutomaticCalibration(ARandom.NextBelow(4) != 0);
    Options.SetMotionThreshold(ARandom.NextBelow(20));
    FCalculator->ApplyOptions(Options);
    FCalculator->SetStepping(static_cast<int>(50 * ARandom.NextBelow(3)));
    FCalculator->SetOnEstimatingPosition(FCalculator->GetOnEstimatingPosition());
    EXPECT_EQ(FCalculator->GetParticles().size(), static_cast<std::size_t>(Count));
  }

  void Signal(TRandomStream& ARandom) {
    const std::uint32_t Minor = ARandom.NextBelow(BeaconCount);
    const auto Beacon = NewFencingBeacon(static_cast<int>(Minor), PlaceOf(Minor), 1.0);
    const int Rssi = -40 - static_cast<int>(ARandom.NextBelow(50));
    double Metres = NAN;
    EXPECT_TRUE(FCalculator->DoCalcutateBeaconDistance(-59, Rssi, Beacon, Metres));
    EXPECT_TRUE(std::isfinite(Metres) && std::isfinite(FCalculator->GetMotionAverage()));
    const auto Proximity = static_cast<TBeaconProximity>(ARandom.NextBelow(5));
    FCalculator->DoBeaconProximityEvent(Beacon, Proximity);
    if (ARandom.NextBelow(4) == 0) FCalculator->ManualCalibration(ToCalculator(PlaceOf(Minor)));
    if (ARandom.NextBelow(4) == 0) FCalculator->SetEstimatedPosition(ToCalculator(PlaceOf(Minor)));
  }

  TRandomStream FRandom;
  const std::uint32_t FMaxSleep;  // milliseconds
  std::optional<TTrilateration> FCalculator{std::in_place,
                                            TEstimatorOptions(20, BeaconsToUse),
                                            TRectF{0, 0, 20, 15},
                                            TPathSegments{{{1, 7}, {15, 7}}, {{8, 2}, {8, 14}}}};
  std::atomic<bool> FIsStopping{false};
  std::vector<std::unique_ptr<TThread>> FThreads;
  bool FIsPlaced = false;
  float FStep = 0;
  std::vector<float> FExpected;  // numbers of steps
  std::vector<float> FYielded;   // the calculator's thread; ours once that has ended
};

TEST(CalculatorStress, HoldsInTheSimulatedRuntimeForManySeeds) {
  const int Seeds = FromEnvironment("WAYFENCE_STRESS_SEEDS", 100);
  std::size_t Expected = 0;
  for (int Seed = 1; Seed <= Seeds && !HasFailure(); ++Seed) {
    SCOPED_TRACE(testing::Message() << "seed " << Seed);
    const TSimulation Simulation({.Seed = static_cast<std::uint64_t>(Seed)});
    TStress Stress(static_cast<std::uint64_t>(Seed), 60);
    for (int Step = 0; Step < 30; ++Step) Stress.Step();
    Expected += Stress.GetExpectedCount();
  }
  EXPECT_GT(Expected, 10U * static_cast<unsigned>(Seeds)) << "too few to mean anything";
}

TEST(CalculatorStress, HoldsInTheRealRuntime) {
  const TTicks End = Ticks() + FromEnvironment("WAYFENCE_STRESS_SECONDS", 2) * TicksPerSecond;
  for (std::uint64_t Seed = 1; Ticks() < End && !HasFailure(); ++Seed) {
    TStress Stress(Seed, 3);
    for (int Step = 0; Step < 200; ++Step) Stress.Step();
  }
}

}  // namespace
}  // namespace System::Beacon::Fencing
