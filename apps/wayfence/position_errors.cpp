#include "apps/wayfence/position_errors.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace Wayfence {
namespace {

double PercentileOf(const std::vector<double>& ASorted, double APart) {
  const double At = APart * static_cast<double>(ASorted.size() - 1);
  const auto Below = static_cast<std::size_t>(At);
  const std::size_t Above = std::min(Below + 1, ASorted.size() - 1);
  return std::lerp(ASorted[Below], ASorted[Above], At - static_cast<double>(Below));
}

double MeanOf(const std::vector<double>& AValues) {
  return std::accumulate(AValues.begin(), AValues.end(), 0.0) / static_cast<double>(AValues.size());
}

}  // namespace

void TPositionErrors::Add(System::TPointF AEstimate, System::TPointF ATruth) {
  FErrors.push_back(std::hypot(AEstimate.X - ATruth.X, AEstimate.Y - ATruth.Y));
}

std::vector<TPositionErrors::TFigure> TPositionErrors::GetFigures() const {
  std::vector<double> Sorted = FErrors;
  if (Sorted.empty()) Sorted.push_back(std::numeric_limits<double>::quiet_NaN());
  std::sort(Sorted.begin(), Sorted.end());
  return {{"median", PercentileOf(Sorted, 0.5)},
          {"p75", PercentileOf(Sorted, 0.75)},
          {"p90", PercentileOf(Sorted, 0.9)},
          {"p95", PercentileOf(Sorted, 0.95)},
          {"max", Sorted.back()},
          {"mean", MeanOf(Sorted)}};
}

TJsonLine TPositionErrors::ToJson() const {
  TJsonLine Result;
  for (const auto& [Name, Value] : GetFigures())
    std::isnan(Value) ? Result.Json(Name, "null") : Result.Decimal(Name, Value);
  return Result;
}

}  // namespace Wayfence
