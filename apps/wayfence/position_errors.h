// How far estimated positions are off.
#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "apps/wayfence/json_line.h"
#include "platform/geometry.h"

namespace Wayfence {

/// The value below which that part of some values lies, from 0 to 1: between the two values next to
/// it in order, by linear interpolation, at the place part × (count − 1), counted from 0. Not a
/// number when there is none.
double PercentileOf(std::vector<double> AValues, double APart);

/// The distances between estimated and true positions, metres.
class TPositionErrors {
 public:
  void Add(System::TPointF AEstimate, System::TPointF ATruth);

  struct TFigure {
    const char* Name;
    double Value;
  };
  /// `median`, `p75`, `p90`, `p95`, `max`, `mean`; not a number when there is no error.
  std::vector<TFigure> GetFigures() const;
  /// The figures as the members of an object, null where there is no error.
  TJsonLine ToJson() const;
  const std::vector<double>& GetErrors() const noexcept { return FErrors; }

 private:
  std::vector<double> FErrors;
};

/// Errors with what they are of, each with a line of its own in tables.
using TNamedErrors = std::vector<std::pair<const char*, const TPositionErrors*>>;
/// Names at the left, figures above; for people. There is at least one entry.
std::string ErrorTable(const TNamedErrors& AEntries);

/// Adds the figures of values to an object, null where there is none.
void AddFigure(TJsonLine& ALine, const char* AName, double AValue);

}  // namespace Wayfence
