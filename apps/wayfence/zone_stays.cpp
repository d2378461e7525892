#include "apps/wayfence/zone_stays.h"

#include <algorithm>
#include <cmath>

namespace Wayfence {

using namespace System;
using namespace System::Beacon::Fencing;

namespace {

constexpr double ShortestStay = 5.0;  // seconds, of those that must be reported
constexpr std::size_t None = static_cast<std::size_t>(-1);

/// Seconds between an instant and a stay; 0 in it.
double DistanceTo(const TStay& AStay, double ASeconds) {
  return std::max({AStay.Begin - ASeconds, ASeconds - AStay.End, 0.0});
}

/// The true stay that an entry belongs to; the earlier of two at the same distance.
std::size_t StayOfEntry(const std::vector<TStay>& ATrue, double AEntry, double ATolerance) {
  std::size_t Result = None;
  for (std::size_t I = 0; I < ATrue.size(); ++I) {
    const double Distance = DistanceTo(ATrue[I], AEntry);
    if (Distance > ATolerance) continue;
    if (Result == None || Distance < DistanceTo(ATrue[Result], AEntry)) Result = I;
  }
  return Result;
}

}  // namespace

std::vector<TStay> FindStays(const TTruth& ATruth,
                             const IDesignZone& AZone,
                             int AMap,
                             double AUnitsPerMetre) {
  std::vector<TStay> Result;
  bool WasInside = false;
  for (const TTruth::TRow& Row : ATruth.GetRows()) {
    const bool IsInside =
        Row.Map == AMap && AZone.IsUnderGlobalPoint(Row.Place * static_cast<float>(AUnitsPerMetre));
    if (IsInside && !WasInside) Result.push_back({Row.Seconds, Row.Seconds});
    if (IsInside) Result.back().End = Row.Seconds;
    WasInside = IsInside;
  }
  return Result;
}

void JudgeZone(const std::string& AName,
               const std::vector<TStay>& ATrue,
               const std::vector<TStay>& AReported,
               double ATolerance,
               TZoneFigures& AFigures) {
  std::vector<std::vector<TStay>> Reports(ATrue.size());
  AFigures.Entries += static_cast<int>(AReported.size());
  for (const TStay& Reported : AReported) {
    const std::size_t Stay = StayOfEntry(ATrue, Reported.Begin, ATolerance);
    if (Stay == None)
      ++AFigures.False;
    else if (Reported.End >= ATrue[Stay].Begin)
      Reports[Stay].push_back(Reported);
  }
  for (std::size_t I = 0; I < ATrue.size(); ++I) {
    const TStay& Stay = ATrue[I];
    if (Stay.End - Stay.Begin <= ShortestStay) continue;
    ++AFigures.Stays;
    if (Reports[I].empty()) {
      AFigures.Missed.push_back({AName, Stay});
      continue;
    }
    const double Delay = Reports[I].front().Begin - Stay.Begin;
    if (Delay > ATolerance) ++AFigures.Late;
    AFigures.EntryDelays.push_back(Delay);
    if (std::isfinite(Reports[I].back().End))
      AFigures.ExitDelays.push_back(Reports[I].back().End - Stay.End);
  }
}

}  // namespace Wayfence
