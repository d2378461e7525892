#include "apps/wayfence/baselines.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "platform/power_of_ten.h"

namespace Wayfence {

using System::PowerOfTen;
using System::TPointF;
using System::TRectF;

namespace {

constexpr double Window = 2.0;            // seconds
constexpr double ShortestDistance = 0.1;  // metres, where a distance divides
constexpr std::size_t BeaconsOfCentroid = 4;
constexpr std::size_t BeaconsOfLeastSquares = 3;

struct TMean {
  double Sum = 0.0;
  double Count = 0.0;
};

struct TVector {
  double X = 0.0;
  double Y = 0.0;
};

TPointF ToPoint(const TVector& AVector) {
  return {static_cast<float>(AVector.X), static_cast<float>(AVector.Y)};
}

TVector CentroidOf(const THeardBeacons& AHeard) {
  TVector Sum;
  double Weights = 0.0;
  for (std::size_t I = 0; I < std::min(AHeard.size(), BeaconsOfCentroid); ++I) {
    const double Weight = 1.0 / std::max(AHeard[I].Distance, ShortestDistance);
    Sum.X += Weight * AHeard[I].Place.X;
    Sum.Y += Weight * AHeard[I].Place.Y;
    Weights += Weight;
  }
  return {Sum.X / Weights, Sum.Y / Weights};
}

/// The sum of squared relative differences at a point, and what is needed to lower it: J' J and
/// J' r of the residuals r.
struct TFit {
  double Cost = 0.0;
  double XX = 0.0, XY = 0.0, YY = 0.0;
  TVector Gradient;
};

TFit FitAt(const TVector& APoint, const THeardBeacons& AHeard) {
  TFit Result;
  for (const THeardBeacon& Beacon : AHeard) {
    const double Measured = std::max(Beacon.Distance, ShortestDistance);
    const TVector Away{APoint.X - Beacon.Place.X, APoint.Y - Beacon.Place.Y};
    const double Distance = std::max(std::hypot(Away.X, Away.Y), 1e-9);
    const double Residual = (Distance - Measured) / Measured;
    const TVector Slope{Away.X / (Distance * Measured), Away.Y / (Distance * Measured)};
    Result.Cost += Residual * Residual;
    Result.XX += Slope.X * Slope.X;
    Result.XY += Slope.X * Slope.Y;
    Result.YY += Slope.Y * Slope.Y;
    Result.Gradient.X += Slope.X * Residual;
    Result.Gradient.Y += Slope.Y * Residual;
  }
  return Result;
}

/// The step that solves (J' J + damping) step = -J' r.
TVector StepOf(const TFit& AFit, double ADamping) {
  const double XX = AFit.XX + ADamping;
  const double YY = AFit.YY + ADamping;
  const double Determinant = XX * YY - AFit.XY * AFit.XY;
  return {-(YY * AFit.Gradient.X - AFit.XY * AFit.Gradient.Y) / Determinant,
          -(XX * AFit.Gradient.Y - AFit.XY * AFit.Gradient.X) / Determinant};
}

TVector Minimise(TVector APoint, const THeardBeacons& AHeard) {
  constexpr int MaxSteps = 100;
  constexpr double ShortestStep = 1e-5;  // metres
  double Damping = 1e-3;
  TFit Fit = FitAt(APoint, AHeard);
  for (int I = 0; I < MaxSteps; ++I) {
    const TVector Step = StepOf(Fit, Damping);
    const TVector Moved{APoint.X + Step.X, APoint.Y + Step.Y};
    const TFit MovedFit = FitAt(Moved, AHeard);
    const bool IsBetter = MovedFit.Cost < Fit.Cost;
    if (IsBetter) {
      APoint = Moved;
      Fit = MovedFit;
    }
    Damping *= IsBetter ? 0.1 : 10.0;
    if (std::hypot(Step.X, Step.Y) < ShortestStep) break;
  }
  return APoint;
}

}  // namespace

THeardBeacons TStrengthLog::GetHeard(double ASeconds) const {
  const auto End = std::upper_bound(
      FStrengths.begin(), FStrengths.end(), ASeconds, [](double ATime, const TStrength& AStrength) {
        return ATime < AStrength.Seconds;
      });
  std::map<std::size_t, TMean> Losses;
  for (auto I = End; I != FStrengths.begin(); --I) {
    const TStrength& Strength = *(I - 1);
    if (Strength.Seconds <= (End - 1)->Seconds - Window) break;
    Losses[Strength.Beacon].Sum += Strength.Loss;
    Losses[Strength.Beacon].Count += 1.0;
  }
  THeardBeacons Result;
  for (const auto& [Beacon, Loss] : Losses)
    Result.push_back({FPlaces[Beacon], PowerOfTen(Loss.Sum / Loss.Count / 10.0 * FSPC)});
  std::stable_sort(Result.begin(), Result.end(), [](const auto& A, const auto& B) {
    return A.Distance < B.Distance;
  });
  return Result;
}

TPointF NearestPlace(const THeardBeacons& AHeard) {
  return AHeard.front().Place;
}

TPointF WeightedCentroid(const THeardBeacons& AHeard) {
  return ToPoint(CentroidOf(AHeard));
}

TPointF LeastSquaresPlace(const THeardBeacons& AHeard, const TRectF& AArea) {
  TVector Place = CentroidOf(AHeard);
  if (AHeard.size() >= BeaconsOfLeastSquares) Place = Minimise(Place, AHeard);
  return ToPoint({std::clamp<double>(Place.X, AArea.Left, AArea.Right),
                  std::clamp<double>(Place.Y, AArea.Top, AArea.Bottom)});
}

}  // namespace Wayfence
