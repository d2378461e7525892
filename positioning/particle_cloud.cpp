#include "positioning/particle_cloud.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "platform/errors.h"
#include "positioning/System.Beacon.Fencing.PositionCalculator.h"
#include "positioning/gaussian.h"
#include "positioning/messages.h"

namespace System::Beacon::Fencing {
namespace {

constexpr std::int32_t WideParticles = 50;
/// Deviations are in calculator units, the distribution is asked in hundreds of them.
constexpr double DeviationUnit = 100.0;

std::size_t WholeLanes(std::int32_t ALength) {
  constexpr std::size_t Lanes = ParticleLanes;
  return (static_cast<std::size_t>(ALength) + Lanes - 1) / Lanes * Lanes;
}

std::int32_t FirstWideParticle(std::int32_t ALength) {
  return ALength < WideParticles ? ALength / 2 : ALength - WideParticles;
}

}  // namespace

TParticleCloud::TParticleCloud(std::function<double()> ARandom)
    : FKernel(ChooseParticleKernel()),
      FRandom(std::move(ARandom)),
      FSpreadStream(SplitRandomStream()) {
  for (auto& Words : FGenerators.Words)
    for (std::uint64_t& Word : Words) Word = FSpreadStream.Next();
}

void TParticleCloud::SetLength(std::int32_t ALength) {
  if (ALength > TTrilateration::MaxParticles)
    throw EGeneralError(
        fmt::format(Messages::SParticles, ALength, std::int32_t{TTrilateration::MaxParticles}));
  for (std::vector<float>* Values : {&FX, &FY}) Values->reserve(WholeLanes(ALength));
  FP.reserve(WholeLanes(ALength));
  if (ALength > FLength) Expand();
  FLength = ALength;
  if (!FIsTogether) SetRoom({});
}

/// Gives every particle a place of its own.
void TParticleCloud::Expand() {
  if (!FIsTogether) return;
  FX.clear();
  FY.clear();
  FP.clear();
  SetRoom(FCommon);
  FIsTogether = false;
}

/// Cuts the arrays to the particles that there are, or fills them up to these, and pads them.
void TParticleCloud::SetRoom(const TParticle& AFill) {
  const auto Length = static_cast<std::size_t>(FLength);
  const auto Fit = [&](auto& AValues, auto AFillWith) {
    AValues.resize(Length, AFillWith);
    AValues.resize(WholeLanes(FLength));
  };
  Fit(FX, AFill.Position.X);
  Fit(FY, AFill.Position.Y);
  Fit(FP, AFill.P);
}

void TParticleCloud::Spread(const TRectF& ARect) {
  Expand();
  const auto Uniform = [this] { return FRandom ? FRandom() : FSpreadStream.NextDouble(); };
  const double Width = static_cast<double>(ARect.Right) - ARect.Left + 1.0;
  const double Height = static_cast<double>(ARect.Bottom) - ARect.Top + 1.0;
  for (std::int32_t I = 0; I < FLength; ++I) {
    FX[I] = static_cast<float>(Uniform() * Width + ARect.Left);
    FY[I] = static_cast<float>(Uniform() * Height + ARect.Top);
    FP[I] = 1.0;
  }
}

void TParticleCloud::PlaceAt(TPointF APoint) {
  FCommon = {APoint, 1.0};
  FIsTogether = true;
}

std::vector<TParticle> TParticleCloud::GetParticles() const {
  std::vector<TParticle> Result(static_cast<std::size_t>(FLength), FCommon);
  if (!FIsTogether)
    for (std::size_t I = 0; I < Result.size(); ++I) Result[I] = {{FX[I], FY[I]}, FP[I]};
  return Result;
}

double TParticleCloud::DrawAboveZero() {
  double Result = FRandom();
  while (!(Result > 0.0)) Result = FRandom();
  return Result;
}

void TParticleCloud::DrawAll() {
  FU1.assign(WholeLanes(FLength), 0.5);
  FU2.assign(WholeLanes(FLength), 0.5);
  for (std::int32_t I = 0; I < FLength; ++I) {
    FU1[I] = DrawAboveZero();
    FU2[I] = FRandom();
  }
}

void TParticleCloud::SetBeacons(std::span<const TMeasurement> AMeasurements,
                                double ARelativeStdDev) {
  FBeacons.clear();
  for (const TMeasurement& Measurement : AMeasurements) {
    const double Spread =
        (Measurement.Distance == 0.0 ? 0.01 : Measurement.Distance) * ARelativeStdDev;
    const TGaussian Error(0.0, Spread * Spread);
    FBeacons.push_back({Measurement.Position.X,
                        Measurement.Position.Y,
                        Measurement.Distance,
                        1.0 / (DeviationUnit * Error.StdDev * std::numbers::sqrt2)});
  }
}

std::int32_t TParticleCloud::NearestTo(const TMeasurement& ACircle) const {
  std::int32_t Result = 0;
  double Smallest = std::numeric_limits<double>::infinity();
  for (std::int32_t I = 0; I < FLength; ++I) {
    const double Dx = static_cast<double>(ACircle.Position.X) - FX[I];
    const double Dy = static_cast<double>(ACircle.Position.Y) - FY[I];
    const double Deviation = std::abs(std::sqrt(Dx * Dx + Dy * Dy) - ACircle.Distance);
    if (!(Deviation < Smallest)) continue;
    Smallest = Deviation;
    Result = I;
  }
  return Result;
}

TPointF TParticleCloud::Step(std::span<const TMeasurement> AMeasurements,
                             double ASpread,
                             double ARelativeStdDev) {
  SetBeacons(AMeasurements, ARelativeStdDev);
  if (FRandom) DrawAll();
  FX.resize(WholeLanes(FLength));
  FY.resize(WholeLanes(FLength));
  TParticlePass Pass{.Count = FLength,
                     .X = FX.data(),
                     .Y = FY.data(),
                     .P = FIsTogether ? nullptr : FP.data(),
                     .FromX = FCommon.Position.X,
                     .FromY = FCommon.Position.Y,
                     .FromP = FCommon.P,
                     .Spread = ASpread,
                     .WideFrom = FirstWideParticle(FLength),
                     .Generators = &FGenerators,
                     .U1 = FRandom ? FU1.data() : nullptr,
                     .U2 = FRandom ? FU2.data() : nullptr,
                     .Beacons = FBeacons.data(),
                     .BeaconCount = static_cast<std::int32_t>(FBeacons.size()),
                     .Sum = 0.0,
                     .BestWeight = 0.0,
                     .Best = 0};
  FKernel(Pass);
  const bool HasWeight = Pass.BestWeight > 0.0;
  const std::int32_t Best = HasWeight ? Pass.Best : NearestTo(AMeasurements.front());
  FCommon = {{FX[Best], FY[Best]}, HasWeight ? Pass.Sum / Pass.BestWeight : 1.0};
  FIsTogether = true;
  return FCommon.Position;
}

}  // namespace System::Beacon::Fencing
