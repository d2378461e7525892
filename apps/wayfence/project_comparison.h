// What a map component told of a walk, beside what is true.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "apps/wayfence/estimated_walk.h"
#include "apps/wayfence/floor_changes.h"
#include "apps/wayfence/position_errors.h"
#include "apps/wayfence/truth.h"
#include "apps/wayfence/zone_stays.h"

namespace Wayfence {

struct TProjectComparison {
  int Estimates = 0;  ///< at known positions
  int OnRightMap = 0;
  TPositionErrors Raw, Path;  ///< metres, of those on the right map and not just after a jump
  std::vector<TFloorChange> Floors;
  TZoneFigures Zones;
  std::vector<std::pair<double, std::string>> Arrivals;
};

struct TComparisonOptions {
  double Skip = 3.0;       ///< seconds after a jump whose errors do not count
  double Tolerance = 5.0;  ///< seconds, of zone events
};

TProjectComparison CompareWithTruth(const System::Beacon::Fencing::TFencingProject& AProject,
                                    const TEstimatedWalk& AWalk,
                                    const TTruth& ATruth,
                                    const TComparisonOptions& AOptions);

/// For people, several lines; arrivals when a route was shown.
std::string ToTable(const TProjectComparison& AComparison, bool AHasRoute);
/// One object.
std::string ToJson(const TProjectComparison& AComparison, bool AHasRoute);

}  // namespace Wayfence
