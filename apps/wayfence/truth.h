// Where the device really was during a recording.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/geometry.h"

namespace Wayfence {

/// The true positions, metres, over time, seconds of the recording's clock. Does not change.
///
/// Between two rows the device moved in a straight line, unless it jumped: to another map, or over
/// more than half a metre either faster than 3 m/s, or in a pause in which nobody wrote down where
/// it was, that is one of more than 2 s and more than ten times the median time between rows.
class TTruth {
 public:
  struct TRow {
    double Seconds = 0.0;
    System::TPointF Place;
    int Map = 0;
  };

  /// `ARows` in the order of time.
  explicit TTruth(std::vector<TRow> ARows);
  /// Reads comma-separated values with the columns `t`, `x`, `y` and perhaps `map`. Raises
  /// `EFileError`, also for times that run backwards.
  static TTruth Read(const std::string& AFileName);

  const std::vector<TRow>& GetRows() const noexcept { return FRows; }
  /// On which map the device was, by the nearest row; nothing when none lies within one second.
  std::optional<int> GetMap(double ASeconds) const;
  /// Where the device was on that map; nothing when no row lies within one second. During a jump
  /// the nearer of its two rows counts; with an `ASkip`, there is nothing from the middle of a jump
  /// until so many seconds after its end.
  std::optional<System::TPointF> GetPlace(double ASeconds, int AMap, double ASkip) const;

 private:
  /// The rows around an instant, where there are such, and the nearer one if it is near enough.
  struct TRowsAround {
    const TRow* Before;
    const TRow* After;
    const TRow* Nearest;
  };
  TRowsAround GetRowsAround(double ASeconds) const;
  bool IsJump(const TRow& AFrom, const TRow& ATo) const;

  const std::vector<TRow> FRows;
  double FPause = 0.0;               // seconds
  std::vector<double> FEndsOfJumps;  // for each row, when the last jump before it ended
};

}  // namespace Wayfence
