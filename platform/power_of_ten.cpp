#include "platform/power_of_ten.h"

#include <cmath>
#include <limits>

namespace System {
namespace {

/// 1 / n! from n = 13 down to 0.
constexpr double InverseFactorials[] = {1.0 / 6227020800.0,
                                        1.0 / 479001600.0,
                                        1.0 / 39916800.0,
                                        1.0 / 3628800.0,
                                        1.0 / 362880.0,
                                        1.0 / 40320.0,
                                        1.0 / 5040.0,
                                        1.0 / 720.0,
                                        1.0 / 120.0,
                                        1.0 / 24.0,
                                        1.0 / 6.0,
                                        0.5,
                                        1.0,
                                        1.0};

}  // namespace

/// 10^x = 2^k · e^(r · ln 10), r = x - k · log10 2; the logarithm in two parts, of which the first
/// has so few bits that its products with k are exact (Cody and Waite, 1980).
double PowerOfTen(double AExponent) {
  constexpr double Log2Of10 = 3.321928094887362, Ln10 = 2.302585092994046;
  constexpr double Log10Of2High = 0x1.34413509p-2, Log10Of2Low = 0x1.ef3fde623e256p-35;
  constexpr double Farthest = 400.0;
  if (std::isnan(AExponent)) return AExponent;
  if (AExponent > Farthest) return std::numeric_limits<double>::infinity();
  if (AExponent < -Farthest) return 0.0;
  const double K = std::nearbyint(AExponent * Log2Of10);
  const double X = ((AExponent - K * Log10Of2High) - K * Log10Of2Low) * Ln10;
  double Sum = 0.0;  // of Taylor's series; |X| is up to ln 2 / 2
  for (const double Coefficient : InverseFactorials) Sum = Sum * X + Coefficient;
  return std::ldexp(Sum, static_cast<int>(K));
}

}  // namespace System
