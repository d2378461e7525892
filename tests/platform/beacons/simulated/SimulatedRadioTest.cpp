// The simulated radio against the formulas that it follows. Seeds are fixed; what is drawn from
// them is held to four standard errors or more.
#include "platform/beacons/simulated/simulated_radio.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <numbers>
#include <numeric>

#include "platform/beacons/simulated/fixed_math.h"
#include "support/raised.h"

namespace System::Beacon {
namespace {

TBluetoothAddress AddressOf(int ANumber) {
  return {{0xC0,
           0,
           0,
           0,
           static_cast<std::uint8_t>(ANumber >> 8),
           static_cast<std::uint8_t>(ANumber & 0xFF)}};
}

/// Transmitters in one place, without what a test does not ask for.
TSimulatedRadio MakeRadio(int ACount, const TRadioPlace& APlace) {
  TSimulatedRadio Result;
  Result.Options.Shadowing = 0.0;
  Result.Options.Fading = 60.0;
  Result.Options.Loss = 0.0;
  Result.Options.Sensitivity = -127.0;
  for (int I = 0; I < ACount; ++I)
    Result.Transmitters.push_back({.Payload = {}, .Address = AddressOf(I), .Place = APlace});
  return Result;
}

TReceiverPath StandAt(const TRadioPlace& APlace, TTicks ASeconds) {
  return TReceiverPath({{0, APlace}, {ASeconds * TicksPerSecond, APlace}});
}

struct TFrame {
  TTicks Time = 0;
  TBluetoothAddress Address;
  int Rssi = 0;
  bool operator==(const TFrame&) const = default;
};

std::vector<TFrame> Hear(TSimulatedRadio ARadio, TReceiverPath APath) {
  const auto Reader = OpenSimulatedRadio(std::move(ARadio), std::move(APath));
  std::vector<TFrame> Result;
  TAdvertisement Advertisement;
  while (Reader->Read(Advertisement)) {
    EXPECT_TRUE(Result.empty() || Result.back().Time <= Advertisement.Time);
    Result.push_back({Advertisement.Time, Advertisement.Address, Advertisement.Rssi});
  }
  EXPECT_EQ(Reader->GetProgress(), 1.0);
  return Result;
}

double MeanOf(const std::vector<double>& AValues) {
  return std::accumulate(AValues.begin(), AValues.end(), 0.0) / static_cast<double>(AValues.size());
}

/// The mean of the products of what is left without the means.
double CovarianceOf(const std::vector<double>& A, const std::vector<double>& B) {
  const double MeanOfA = MeanOf(A);
  const double MeanOfB = MeanOf(B);
  std::vector<double> Products;
  for (std::size_t I = 0; I < A.size(); ++I)
    Products.push_back((A[I] - MeanOfA) * (B[I] - MeanOfB));
  return MeanOf(Products);
}

TEST(SimulatedRadio, MathIsThatOfTheStandardLibrary) {
  for (int I = -300; I <= 300; ++I) {
    const double Value = std::pow(10.0, I / 10.0) * 1.037;
    EXPECT_NEAR(FixedLog10(Value), std::log10(Value), 3e-14) << Value;
    const double Turns = I * 0.0137;
    EXPECT_NEAR(CosineOfTurns(Turns), std::cos(2.0 * std::numbers::pi * Turns), 6e-15) << Turns;
  }
}

TEST(SimulatedRadio, StrengthFollowsDistanceWallsAndFloors) {
  constexpr double Shadowing = 3.0;
  // The strengths are dBm, the medians over many transmitters.
  for (const auto& [Receiver, Expected] : {std::pair<TRadioPlace, double>{{1, 0, 0}, -57},
                                           {{0, 10, 0}, -79},
                                           {{-30, 0, 0}, -59 + 2 - 22 * std::log10(30.0)},
                                           {{0.1, 0, 0}, -57 - 22 * std::log10(0.3)},
                                           {{10, 0, 0}, -79 - 5 - 7},
                                           {{10, 0, 1}, -57 - 15 - 11 * std::log10(109.0)},
                                           {{0, 0, -2}, -57 - 30 - 22 * std::log10(6.0)}}) {
    TSimulatedRadio Radio = MakeRadio(400, {});
    Radio.Options.Shadowing = Shadowing;
    Radio.Options.Offset = 2.0;
    Radio.Options.Walls = {{{5, -1, 0}, {5, 1, 0}, 5.0},
                           {{9, 1, 0}, {8, -1, 0}, 7.0},
                           {{12, -1, 0}, {12, 1, 0}, 50.0},
                           {{4, 1, 0}, {6, 2, 0}, 50.0},
                           {{5, -1, 1}, {5, 1, 1}, 50.0}};
    std::vector<double> Strengths;
    for (const TFrame& Frame : Hear(std::move(Radio), StandAt(Receiver, 1)))
      Strengths.push_back(Frame.Rssi);
    ASSERT_GT(Strengths.size(), 3600U);  // nine or ten of each
    const auto Middle = static_cast<std::ptrdiff_t>(Strengths.size() / 2);
    std::nth_element(Strengths.begin(), Strengths.begin() + Middle, Strengths.end());
    EXPECT_NEAR(*(Strengths.begin() + Middle), Expected, 0.8 + 0.5)
        << Receiver.X << ' ' << Receiver.Level;
    EXPECT_NEAR(std::sqrt(CovarianceOf(Strengths, Strengths)), Shadowing, 0.45);
  }
}

TEST(SimulatedRadio, ShadowingIsCorrelatedInSpace) {
  constexpr int Fields = 4000;
  const TShadowField Twice(2.0, TRandomStream(1));
  EXPECT_EQ(Twice.GetValue({3, 4, 1}), Twice.GetValue({3, 4, 1}));
  // The correlations are those with the place (1, 1) on level 0.
  for (const auto& [Place, Correlation] : {std::pair<TRadioPlace, double>{{1, 1, 0}, 1.0},
                                           {{1, 1.5, 0}, std::exp(-0.25)},
                                           {{3, 1, 0}, std::exp(-1.0)},
                                           {{1 + 1.2, 1 - 1.6, 0}, std::exp(-1.0)},
                                           {{5, 4, 0}, std::exp(-2.5)},
                                           {{1, 1, 1}, 0.0},
                                           {{1, 1, -3}, 0.0}}) {
    std::vector<double> Here;
    std::vector<double> There;
    for (int Seed = 0; Seed < Fields; ++Seed) {
      const TShadowField Field(2.0, TRandomStream(static_cast<std::uint64_t>(Seed)));
      Here.push_back(Field.GetValue({1, 1, 0}));
      There.push_back(Field.GetValue(Place));
    }
    EXPECT_NEAR(MeanOf(There), 0.0, 0.065);
    EXPECT_NEAR(CovarianceOf(Here, There), Correlation, 0.09)
        << Place.X << ' ' << Place.Y << ' ' << Place.Level;
  }
}

TEST(SimulatedRadio, FadingIsRician) {
  // The deviations are dB; a Rayleigh channel has 5.57.
  for (const auto& [Direct, Deviation] : {std::pair<double, double>{-60.0, 5.57}, {60.0, 0.0}}) {
    TRandomStream Stream(7);
    std::vector<double> Decibels;
    std::vector<double> Powers;
    for (int I = 0; I < 20'000; ++I) {
      Decibels.push_back(DrawFading(Direct, Stream));
      Powers.push_back(std::pow(10.0, Decibels.back() / 10.0));
    }
    EXPECT_NEAR(MeanOf(Powers), 1.0, 0.03);
    EXPECT_NEAR(std::sqrt(CovarianceOf(Decibels, Decibels)), Deviation, 0.15);
  }
}

TEST(SimulatedRadio, FramesComeAtTheirIntervalUnlessTheyAreLost) {
  constexpr TTicks Seconds = 600;
  TSimulatedRadio Radio = MakeRadio(1, {1, 0, 0});
  const std::vector<TFrame> All = Hear(Radio, StandAt({}, Seconds));
  EXPECT_NEAR(static_cast<double>(All.size()), Seconds / 0.105, 8.0);
  EXPECT_LT(All.front().Time, 100 * TicksPerMillisecond);
  for (std::size_t I = 1; I < All.size(); ++I) {
    EXPECT_GE(All[I].Time - All[I - 1].Time, 100 * TicksPerMillisecond);
    EXPECT_LE(All[I].Time - All[I - 1].Time, 110 * TicksPerMillisecond);
  }
  Radio.Options.Loss = 0.3;
  const std::vector<TFrame> Some = Hear(Radio, StandAt({}, Seconds));
  EXPECT_NEAR(static_cast<double>(Some.size()) / static_cast<double>(All.size()), 0.7, 0.025);
  EXPECT_TRUE(std::all_of(Some.begin(), Some.end(), [&](const TFrame& AFrame) {
    return std::find(All.begin(), All.end(), AFrame) != All.end();
  })) << "frames that are lost change the others";
  Radio.Options.Sensitivity = -58.0;
  EXPECT_EQ(Hear(Radio, StandAt({}, Seconds)).size(), 0U);
}

TEST(SimulatedRadio, SeedDecidesWhateverElseSends) {
  const auto HearSeed = [](std::uint64_t ASeed, int ACount) {
    TSimulatedRadio Radio = MakeRadio(ACount, {5, 5, 0});
    Radio.Options = {};
    Radio.Seed = ASeed;
    std::vector<TFrame> Result = Hear(std::move(Radio), StandAt({1, 1, 0}, 20));
    std::erase_if(Result, [](const TFrame& AFrame) { return AFrame.Address != AddressOf(0); });
    return Result;
  };
  const std::vector<TFrame> First = HearSeed(1, 1);
  EXPECT_FALSE(First.empty());
  EXPECT_EQ(HearSeed(1, 1), First);
  EXPECT_EQ(HearSeed(1, 3), First);
  EXPECT_NE(HearSeed(2, 1), First);
}

TEST(SimulatedRadio, ReceiverStaysWhereItIsUntilItHasChangedLevels) {
  const TReceiverPath Path(
      {{0, {0, 0, 0}}, {10, {10, 20, 0}}, {20, {50, 60, 1}}, {30, {60, 60, 1}}});
  for (const auto& [Time, Place] : {std::pair<TTicks, TRadioPlace>{-5, {0, 0, 0}},
                                    {5, {5, 10, 0}},
                                    {19, {10, 20, 0}},
                                    {20, {50, 60, 1}},
                                    {25, {55, 60, 1}},
                                    {99, {60, 60, 1}}}) {
    EXPECT_EQ(Path.GetPlace(Time), Place) << Time;
  }
}

TEST(SimulatedRadio, RefusesWhatIsOutsideItsBounds) {
  constexpr double NaN = std::numeric_limits<double>::quiet_NaN();
  for (const auto& [Spoil, Wanted] :
       {std::pair<std::function<void(TSimulatedRadio&)>, const char*>{
            [](auto& R) { R.Options.Exponent = NaN; }, "exponent is nan"},
        {[](auto& R) { R.Options.Correlation = 0.0; }, "correlation is 0; it has to be from 0.01"},
        {[](auto& R) { R.Options.Loss = 1.1; }, "loss is 1.1"},
        {[](auto& R) {
           R.Options.Walls = {{{}, {NaN, 0, 0}, 3.0}};
         },
         "the place of a wall is nan"},
        {[](auto& R) { R.Options.Walls.resize(10'001); }, "the number of walls is 10001"},
        {[](auto& R) { R.Transmitters[0].Power = 21; }, "C0:00:00:00:00:00: its power"},
        {[](auto& R) { R.Transmitters[0].Interval = 0.0; }, "its interval is from 0.02"},
        {[](auto& R) { R.Transmitters[0].Place.Y = NaN; }, "it is further than"},
        {[](auto& R) { R.Transmitters.resize(10'001); }, "10000 are the most"}}) {
    TSimulatedRadio Radio = MakeRadio(1, {});
    Spoil(Radio);
    const std::string Message =
        Raised<EBeaconSourceError>([&] { OpenSimulatedRadio(std::move(Radio), StandAt({}, 1)); });
    EXPECT_NE(Message.find(Wanted), std::string::npos) << Message;
  }
  const auto Walk = [](std::vector<TReceiverPath::TPoint> APoints) {
    return Raised<EBeaconSourceError>([&] { TReceiverPath Path(std::move(APoints)); });
  };
  EXPECT_NE(Walk({}).find("from 1 to"), std::string::npos);
  EXPECT_NE(Walk({{5, {}}, {4, {}}}).find("forward in time"), std::string::npos);
  EXPECT_NE(Walk({{0, {NaN, 0, 0}}}).find("leads further than"), std::string::npos);
}

}  // namespace
}  // namespace System::Beacon
