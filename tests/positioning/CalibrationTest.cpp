// From strengths to distances: smoothing, the motion average, and corrections of beacons.
#include <gtest/gtest.h>

#include <cmath>

#include "platform/simulation.h"
#include "support/estimator.h"

namespace System::Beacon::Fencing {
namespace {

constexpr int Power = -59;

/// A calculator whose device is near the origin with beacon A; B is 10 m away, C is not heard. The
/// centres of the beacons are not their places.
class Calibration : public testing::Test {
 protected:
  static TFencingBeacon NewBeacon(int AMinor, TPointF APlace) {
    const TRef<TFakeDesignBeacon> Design = NewFakeDesignBeacon(TestGUID, AMinor, {3, 3});
    Design->Displacement = APlace;
    return {NewFakeBeacon(AMinor), Design};
  }
  static void Move(const TFencingBeacon& ABeacon, double AMetres) {
    dynamic_cast<TFakeBeacon&>(*ABeacon.BTBeacon.Get()).Distance = AMetres;
  }
  void Make(const TFencingBeacons& ASeen) {
    for (const TFencingBeacon& Beacon : ASeen) Move(Beacon, 1.0);
    FCalculator.emplace(FOptions, TRectF{0, 0, 20, 15}, TPathSegments{});
    FCalculator->Calculate(ASeen, {});
    FCalculator->SetEstimatedPosition({0, 100});
  }
  /// With automatic calibration.
  void MakeWithStrengths() {
    FOptions.SetAutomaticCalibration(true);
    Make({A, B, C});
    Strength(A, -70);
    Strength(B, -75);
  }

  /// The strength, smoothed and corrected, that the answered distance stands for; 1E-6 dB.
  double Strength(const TFencingBeacon& ABeacon, int ARssi) {
    double Metres = NAN;
    EXPECT_TRUE(FCalculator->DoCalcutateBeaconDistance(Power, ARssi, ABeacon, Metres));
    return std::round(1E6 * (Power - 10.0 * std::log10(Metres) / 0.5)) / 1E6;
  }
  void ExpectStrengths(double AOfA, double AOfB, const char* AWhat) {
    EXPECT_EQ(Strength(A, -70), AOfA) << AWhat;
    EXPECT_EQ(Strength(B, -75), AOfB) << AWhat;
  }
  void Apply(float ASPC, bool AAutomatic) {
    FOptions.SetSPC(ASPC);
    FOptions.SetAutomaticCalibration(AAutomatic);
    FCalculator->ApplyOptions(FOptions);
  }

  const TSimulation FSimulation;
  TEstimatorOptions FOptions{20};
  std::optional<TTrilateration> FCalculator;
  const TFencingBeacon A = NewBeacon(1, {0, 0}), B = NewBeacon(2, {10, 0}), C = NewBeacon(3, {});
};

TEST_F(Calibration, ADistanceFollowsFromStrengthPowerAndPropagation) {
  for (const auto& [SPC, Rssi, Distance] : {std::tuple(0.5F, -75, 6.309573444801933),
                                            {0.25F, -39, 0.31622776601683794},
                                            {0.0F, -75, 1.0}})
    for (const TFencingBeacon& Unknown : {A, TFencingBeacon{nullptr, A.DesignBeacon}}) {
      FOptions.SetSPC(SPC);
      Make({B});
      double Metres = NAN;
      FCalculator->DoCalcutateBeaconDistance(Power, Rssi, Unknown, Metres);
      EXPECT_NEAR(Metres, Distance, 1E-12 * Distance);
    }
}

TEST_F(Calibration, StrengthsAreSmoothedWhileTheDeviceStandsStill) {
  struct TCase {
    const char* What;
    double Threshold;
    std::vector<int> Rssis;
    double Strength;
  };
  for (const TCase& Case : {TCase{"the first", 4.0, {-70}, -70.0},
                            TCase{"0.3 times the threshold", 10 / 0.3, {-70, -60}, -69.0},
                            TCase{"half of it", 20.0, {-70, -60}, -69.0},
                            TCase{"0.8 times", 12.5, {-70, -60}, -68.0},
                            TCase{"the threshold", 10.0, {-70, -60}, -68.0},
                            TCase{"above", 9.5, {-70, -60}, -60.0},
                            TCase{"above, then below", 9.5, {-70, -60, -61}, -60.1},
                            TCase{"two decimals", 100.0, {-70, -69, -69, -69}, -69.73}}) {
    FOptions.SetMotionThreshold(Case.Threshold);
    Make({A});
    double Last = NAN;
    for (const int Rssi : Case.Rssis) Last = Strength(A, Rssi);
    EXPECT_EQ(Last, Case.Strength) << Case.What;
  }
}

TEST_F(Calibration, TheMotionAverageWeighsTheBeaconsOfTheLastCalculation) {
  const auto AverageAfter = [this](const TFencingBeacon& ABeacon, int ARssi) {
    Strength(ABeacon, ARssi);
    return FCalculator->GetMotionAverage();
  };
  Make({A, B});
  EXPECT_EQ(AverageAfter(A, -70), 0.0);
  EXPECT_EQ(AverageAfter(A, -60), 5.0);
  EXPECT_EQ(AverageAfter(B, -90), 2.5);
  FCalculator->Calculate({NewFencingBeacon(1, {}, -1.0)}, {});
  EXPECT_EQ(AverageAfter(A, -90), 2.5) << "no beacon in the calculation";
}

TEST_F(Calibration, APointCorrectsTheBeaconsOfWhichStrengthsWereReceived) {
  struct TCase {
    const char* What;
    TPointF Point;
    double Average;
    float SPC;
    double OfA, OfB;
  };
  for (const TCase& Case : {TCase{"1 m from A", {100, 0}, 0.33, 0.5F, -66.37, -76.02},
                            TCase{"whole correction", {100, 0}, 1.0, 0.5F, -59.0, -78.08},
                            TCase{"two decimals", {100, 0}, 1.0 / 3.0, 0.5F, -66.33, -76.03},
                            TCase{"other propagation", {0, 1000}, 0.33, 1.0F, -69.67, -73.52},
                            TCase{"on A", {0, 0}, 0.33, 0.5F, -59.77, -76.32},
                            TCase{"nearer than 0.1 m", {5, 0}, 0.33, 0.5F, -59.77, -76.31},
                            TCase{"no propagation", {100, 0}, 0.33, 0.0F, -70.0, -75.0}}) {
    FOptions.SetCalibrationAverage(Case.Average);
    MakeWithStrengths();
    Apply(Case.SPC, true);
    FCalculator->ManualCalibration(Case.Point);
    Apply(0.5F, true);
    ExpectStrengths(Case.OfA, Case.OfB, Case.What);
    EXPECT_EQ(Strength(C, -80), -80.0) << Case.What;
    Apply(0.5F, false);
    ExpectStrengths(-70.0, -75.0, "switching off drops corrections");
  }
}

TEST_F(Calibration, ABeaconThatComesNearCorrectsTheOthersUnlessSomethingIsInDoubt) {
  const auto StrengthOfB = [this](auto APrepare, TBeaconProximity AProximity) {
    MakeWithStrengths();
    APrepare();
    FCalculator->DoBeaconProximityEvent(A, AProximity);
    Sleep(11'000);
    return Strength(B, -75);
  };
  constexpr auto Near = TBeaconProximity::Near;
  const auto Stand = [this](float AY) { FCalculator->SetEstimatedPosition({0, AY}); };
  EXPECT_EQ(StrengthOfB([] {}, Near), -76.32);
  EXPECT_EQ(StrengthOfB([] {}, TBeaconProximity::Immediate), -76.32);
  EXPECT_EQ(StrengthOfB([] {}, TBeaconProximity::Far), -75.0);
  EXPECT_EQ(StrengthOfB([&] { Stand(300); }, Near), -76.32);
  EXPECT_EQ(StrengthOfB([&] { Stand(301); }, Near), -75.0);
  EXPECT_EQ(StrengthOfB([this] { Move(A, 1.6); }, Near), -76.32);
  EXPECT_EQ(StrengthOfB([this] { Move(A, 1.61); }, Near), -75.0);
  EXPECT_EQ(StrengthOfB([this] { Strength(A, -50); }, Near), -75.0) << "the device moves";
  EXPECT_EQ(StrengthOfB([this] { Apply(0.5F, false); }, Near), -75.0);
  const auto SeeBFirst = [&] {
    FCalculator->Calculate({B, A}, {});
    Stand(100);
  };
  EXPECT_EQ(StrengthOfB(SeeBFirst, Near), -75.0);
}

TEST_F(Calibration, ARoundLastsTenSecondsAndIsTheOnlyOneOfItsBeacon) {
  for (const auto& [NearAfter, OfB] : {std::pair(9'600, -76.32), {9'900, -75.0}}) {
    MakeWithStrengths();
    Move(A, 3.0);
    FCalculator->DoBeaconProximityEvent(A, TBeaconProximity::Near);
    Sleep(4'000);
    FCalculator->DoBeaconProximityEvent(A, TBeaconProximity::Immediate);
    Sleep(NearAfter - 4'000);
    Move(A, 1.0);
    Sleep(1'000);
    ExpectStrengths(-70.0, OfB, "the first round");

    FCalculator->ManualCalibration({0, 0});
    FCalculator->DoBeaconProximityEvent(A, TBeaconProximity::Near);
    Sleep(1);
    ExpectStrengths(-70.0, -76.32, "a further round");
  }
  Move(A, 3.0);
  FCalculator->DoBeaconProximityEvent(A, TBeaconProximity::Near);
  Sleep(1'100);
  const TTicks Start = Ticks();
  FCalculator.reset();
  EXPECT_EQ(Ticks(), Start) << "destruction waits for a round";
}

}  // namespace
}  // namespace System::Beacon::Fencing
