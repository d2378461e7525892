#include "platform/beacons/simulated/radio_model.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "platform/beacons/advertisement.h"
#include "platform/beacons/simulated/fixed_math.h"
#include "platform/power_of_ten.h"

namespace System::Beacon {
namespace {

/// Above 0 on the one side of the line from A to B, below it on the other.
double SideOf(const TRadioPlace& A, const TRadioPlace& B, const TRadioPlace& APoint) {
  return (B.X - A.X) * (APoint.Y - A.Y) - (B.Y - A.Y) * (APoint.X - A.X);
}

bool AreOnBothSides(double AOne, double AOther) {
  return (AOne < 0.0) != (AOther < 0.0);
}

bool Crosses(const TRadioWall& AWall, const TRadioPlace& A, const TRadioPlace& B) {
  return AreOnBothSides(SideOf(A, B, AWall.From), SideOf(A, B, AWall.To)) &&
         AreOnBothSides(SideOf(AWall.From, AWall.To, A), SideOf(AWall.From, AWall.To, B));
}

void CheckNumber(std::string_view AName, double AValue, double AFrom, double ATo) {
  if (AValue >= AFrom && AValue <= ATo) return;
  throw EBeaconSourceError(fmt::format(
      "the simulated radio: {} is {}; it has to be from {} to {}", AName, AValue, AFrom, ATo));
}

}  // namespace

void CheckRadioOptions(const TRadioOptions& AOptions) {
  for (const TRadioNumber& Number : RadioNumbers)
    CheckNumber(Number.Name, AOptions.*Number.Member, Number.From, Number.To);
  CheckNumber("the number of walls",
              static_cast<double>(AOptions.Walls.size()),
              0.0,
              static_cast<double>(TRadioOptions::MaxWalls));
  constexpr double Farthest = TReceiverPath::MaxMetres;
  for (const TRadioWall& Wall : AOptions.Walls) {
    for (const double Metres : {Wall.From.X, Wall.From.Y, Wall.To.X, Wall.To.Y})
      CheckNumber("the place of a wall", Metres, -Farthest, Farthest);
    CheckNumber("the loss of a wall", Wall.Loss, 0.0, TRadioWall::MaxLoss);
  }
}

TRadioLink::TRadioLink(const TRadioOptions& AOptions,
                       const TRadioPlace& ATransmitter,
                       int APower,
                       TRandomStream AStream)
    : FOptions(AOptions),
      FPlace(ATransmitter),
      FPower(APower),
      FShadowing(AOptions.Correlation, AStream) {}

double TRadioLink::GetMeanStrength(const TRadioPlace& AReceiver) const {
  const double Floors = std::abs(static_cast<double>(FPlace.Level) - AReceiver.Level);
  return FPower + FOptions.Offset - GetPathLoss(AReceiver) - GetLossInWalls(AReceiver) -
         Floors * FOptions.FloorLoss + FOptions.Shadowing * FShadowing.GetValue(AReceiver);
}

double TRadioLink::GetPathLoss(const TRadioPlace& AReceiver) const {
  constexpr double Nearest = 0.3;  // metres: nobody holds a receiver into a transmitter
  const double X = AReceiver.X - FPlace.X;
  const double Y = AReceiver.Y - FPlace.Y;
  const double Z = (static_cast<double>(AReceiver.Level) - FPlace.Level) * FOptions.FloorHeight;
  const double Distance = std::sqrt(X * X + Y * Y + Z * Z);
  return 10.0 * FOptions.Exponent * FixedLog10(std::max(Distance, Nearest));
}

double TRadioLink::GetLossInWalls(const TRadioPlace& AReceiver) const {
  double Result = 0.0;
  if (AReceiver.Level != FPlace.Level) return Result;
  for (const TRadioWall& Wall : FOptions.Walls)
    if (Wall.From.Level == FPlace.Level && Crosses(Wall, FPlace, AReceiver)) Result += Wall.Loss;
  return Result;
}

/// The amplitude is √(K / (K + 1)) + a complex normal number of power 1 / (K + 1).
double DrawFading(double ADirect, TRandomStream& AStream) {
  const double K = PowerOfTen(ADirect / 10.0);
  const TNormalPair Reflections = DrawNormals(AStream);
  const double Size = std::sqrt(0.5 / (K + 1.0));
  const double Real = std::sqrt(K / (K + 1.0)) + Size * Reflections.A;
  const double Imaginary = Size * Reflections.B;
  constexpr double Least = 1e-30;
  return 10.0 * FixedLog10(std::max(Real * Real + Imaginary * Imaginary, Least));
}

}  // namespace System::Beacon
