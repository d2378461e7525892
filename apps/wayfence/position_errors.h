// How far estimated positions are off.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "apps/wayfence/json_line.h"
#include "platform/geometry.h"

namespace Wayfence {

/// The distances between estimated and true positions, metres.
class TPositionErrors {
 public:
  void Add(System::TPointF AEstimate, System::TPointF ATruth);

  struct TFigure {
    const char* Name;
    double Value;
  };
  /// `median`, `p75`, `p90`, `p95`, `max`, `mean`. A percentile lies between the two errors next to
  /// it in order, by linear interpolation: the one at the place part × (count − 1), counted from 0.
  /// Not a number when there is no error.
  std::vector<TFigure> GetFigures() const;
  /// The figures as the members of an object, null where there is no error.
  TJsonLine ToJson() const;

 private:
  std::vector<double> FErrors;
};

}  // namespace Wayfence
