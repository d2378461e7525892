// The normal distribution.
#pragma once

namespace System::Beacon::Fencing {

struct TGaussian {
  /// Raises `EGeneralError` when the variance is not above 0.
  TGaussian(double AMean, double AVariance);

  /// The probability of a value up to `AX`, by a Chebyshev approximation of erfc with a fractional
  /// error below 1.2E-7 (Press et al., Numerical Recipes).
  double CumulativeDistribution(double AX) const;

  double Mean;
  double Variance;
  double StdDev;
};

}  // namespace System::Beacon::Fencing
