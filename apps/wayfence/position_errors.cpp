#include "apps/wayfence/position_errors.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace Wayfence {
namespace {

double MeanOf(const std::vector<double>& AValues) {
  return std::accumulate(AValues.begin(), AValues.end(), 0.0) / static_cast<double>(AValues.size());
}

}  // namespace

double PercentileOf(std::vector<double> AValues, double APart) {
  if (AValues.empty()) return std::numeric_limits<double>::quiet_NaN();
  std::sort(AValues.begin(), AValues.end());
  const double At = APart * static_cast<double>(AValues.size() - 1);
  const auto Below = static_cast<std::size_t>(At);
  const std::size_t Above = std::min(Below + 1, AValues.size() - 1);
  return std::lerp(AValues[Below], AValues[Above], At - static_cast<double>(Below));
}

void TPositionErrors::Add(System::TPointF AEstimate, System::TPointF ATruth) {
  FErrors.push_back(std::hypot(AEstimate.X - ATruth.X, AEstimate.Y - ATruth.Y));
}

std::vector<TPositionErrors::TFigure> TPositionErrors::GetFigures() const {
  return {{"median", PercentileOf(FErrors, 0.5)},
          {"p75", PercentileOf(FErrors, 0.75)},
          {"p90", PercentileOf(FErrors, 0.9)},
          {"p95", PercentileOf(FErrors, 0.95)},
          {"max", PercentileOf(FErrors, 1.0)},
          {"mean", MeanOf(FErrors)}};
}

TJsonLine TPositionErrors::ToJson() const {
  TJsonLine Result;
  for (const auto& [Name, Value] : GetFigures()) AddFigure(Result, Name, Value);
  return Result;
}

void AddFigure(TJsonLine& ALine, const char* AName, double AValue) {
  std::isnan(AValue) ? ALine.Json(AName, "null") : ALine.Decimal(AName, AValue);
}

std::string ErrorTable(const TNamedErrors& AEntries) {
  std::string Result(14, ' ');
  for (const auto& Figure : AEntries.front().second->GetFigures())
    Result += fmt::format("{:>9}", Figure.Name);
  for (const auto& [Name, Errors] : AEntries) {
    Result += fmt::format("\n{:14}", Name);
    for (const auto& Figure : Errors->GetFigures())
      Result += std::isnan(Figure.Value) ? fmt::format("{:>9}", "-")
                                         : fmt::format("{:9.3f}", Figure.Value);
  }
  return Result + "\n";
}

}  // namespace Wayfence
