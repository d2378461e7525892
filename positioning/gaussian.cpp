#include "positioning/gaussian.h"

#include <fmt/format.h>

#include <cmath>
#include <numbers>

#include "platform/errors.h"
#include "positioning/messages.h"

namespace System::Beacon::Fencing {
namespace {

double Erfc(double AZ) {
  const double Z = std::abs(AZ);
  const double T = 1.0 / (1.0 + 0.5 * Z);
  const double Polynomial =
      1.00002368 +
      T * (0.37409196 +
           T * (0.09678418 +
                T * (-0.18628806 +
                     T * (0.27886807 +
                          T * (-1.13520398 +
                               T * (1.48851587 + T * (-0.82215223 + T * 0.17087277)))))));
  const double Upper = T * std::exp(-Z * Z - 1.26551223 + T * Polynomial);
  return AZ >= 0.0 ? Upper : 2.0 - Upper;
}

}  // namespace

TGaussian::TGaussian(double AMean, double AVariance)
    : Mean(AMean), Variance(AVariance), StdDev(std::sqrt(AVariance)) {
  if (!(AVariance > 0.0)) throw EGeneralError(fmt::format(Messages::SVariance, AVariance));
}

double TGaussian::CumulativeDistribution(double AX) const {
  return 0.5 * Erfc(-(AX - Mean) / (StdDev * std::numbers::sqrt2));
}

}  // namespace System::Beacon::Fencing
