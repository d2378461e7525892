#include "platform/beacons/simulated/fixed_math.h"

#include <cmath>
#include <numbers>

namespace System::Beacon {
namespace {

/// A point inside the unit circle, uniform over its area, never its centre.
struct TPointInCircle {
  double X = 0.0;
  double Y = 0.0;
  double SquareOfRadius = 0.0;

  explicit TPointInCircle(TRandomStream& AStream) {
    while (SquareOfRadius == 0.0 || SquareOfRadius >= 1.0) {
      X = 2.0 * AStream.NextDouble() - 1.0;
      Y = 2.0 * AStream.NextDouble() - 1.0;
      SquareOfRadius = X * X + Y * Y;
    }
  }
};

}  // namespace

/// With x = 2^k · m: ln m = 2 (z + z³/3 + z⁵/5 + …), z = (m − 1) / (m + 1); m is made to lie within
/// √½ and √2, so that |z| is below 0.172.
double FixedLog10(double AValue) {
  constexpr double Log10Of2 = 0.3010299956639812, Log10OfE = 0.4342944819032518;
  constexpr int LastPower = 21;
  int Exponent = 0;
  double Mantissa = std::frexp(AValue, &Exponent);
  if (Mantissa < std::numbers::sqrt2 / 2.0) {
    Mantissa *= 2.0;
    --Exponent;
  }
  const double Z = (Mantissa - 1.0) / (Mantissa + 1.0);
  double Sum = 0.0;
  for (int Power = LastPower; Power > 0; Power -= 2) Sum = Sum * (Z * Z) + 1.0 / Power;
  return Exponent * Log10Of2 + 2.0 * Z * Sum * Log10OfE;
}

/// Taylor's series for a quarter of a circle, to which the symmetries lead.
double CosineOfTurns(double ATurns) {
  constexpr int LastPower = 22;
  const double Turns = std::abs(ATurns - std::nearbyint(ATurns));
  const bool IsNegative = Turns > 0.25;
  const double X = 2.0 * std::numbers::pi * (IsNegative ? 0.5 - Turns : Turns);
  double Sum = 1.0;
  for (int Power = LastPower; Power > 0; Power -= 2)
    Sum = 1.0 - Sum * X * X / (Power * (Power - 1));
  return IsNegative ? -Sum : Sum;
}

TNormalPair DrawNormals(TRandomStream& AStream) {
  const TPointInCircle Point(AStream);
  const double Ln = FixedLog10(Point.SquareOfRadius) * std::numbers::ln10;
  const double Factor = std::sqrt(-2.0 * Ln / Point.SquareOfRadius);
  return {Point.X * Factor, Point.Y * Factor};
}

TNormalPair DrawDirection(TRandomStream& AStream) {
  const TPointInCircle Point(AStream);
  const double Radius = std::sqrt(Point.SquareOfRadius);
  return {Point.X / Radius, Point.Y / Radius};
}

}  // namespace System::Beacon
