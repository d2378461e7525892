#include "apps/wayfence/floor_changes.h"

#include <algorithm>
#include <limits>

namespace Wayfence {
namespace {

constexpr double Forever = std::numeric_limits<double>::infinity();

/// The first instant from `ABegin` to before `AEnd` at which the map is shown.
std::optional<double> FirstShown(const std::vector<TShownMap>& AShown,
                                 int AMap,
                                 double ABegin,
                                 double AEnd) {
  for (std::size_t I = 0; I < AShown.size(); ++I) {
    const double End = I + 1 < AShown.size() ? AShown[I + 1].Seconds : Forever;
    if (AShown[I].Map != AMap || End <= ABegin || AShown[I].Seconds >= AEnd) continue;
    return std::max(AShown[I].Seconds, ABegin);
  }
  return std::nullopt;
}

}  // namespace

std::vector<TFloorChange> FindFloorChanges(const TTruth& ATruth,
                                           const std::vector<TShownMap>& AShown) {
  const auto& Rows = ATruth.GetRows();
  std::vector<TFloorChange> Result;
  for (std::size_t I = 1; I < Rows.size(); ++I)
    if (Rows[I].Map != Rows[I - 1].Map)
      Result.push_back({Rows[I].Seconds, Rows[I - 1].Map, Rows[I].Map, std::nullopt});
  for (std::size_t I = 0; I < Result.size(); ++I) {
    TFloorChange& Change = Result[I];
    const double End = I + 1 < Result.size() ? Result[I + 1].Seconds : Forever;
    if (const auto Shown = FirstShown(AShown, Change.To, Change.Seconds, End))
      Change.Delay = *Shown - Change.Seconds;
  }
  return Result;
}

}  // namespace Wayfence
