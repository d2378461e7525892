// From the raw estimates of the particle filter to positions that are reported.
#pragma once

#include <cstdint>
#include <vector>

#include "fencing/System.Beacon.Fencing.Types.h"

namespace System::Beacon::Fencing {

/// Damps raw estimates and fits them onto walkable pieces; calculator units. One thread at a time.
class TPositionFitter {
 public:
  /// How positions are fitted.
  struct TSettings {
    bool Routing = false;       ///< onto the pieces
    std::int32_t Stepping = 0;  ///< into steps of so many units along a piece; 0: none
  };

  TPositionFitter(const TRectF& AMapLimit, std::vector<TSegment> APaths)
      : FMapLimit(AMapLimit), FPaths(std::move(APaths)) {}

  /// A raw estimate, put between the origin and the lower right corner of the map.
  TPointF Clamp(TPointF ARaw) const;
  /// The position to report for a clamped raw estimate, after `AReported` (the origin: nothing was
  /// reported yet) and with the first beacon at `ABeacon`: a move is limited to 200 units; a
  /// smaller one snaps to a beacon within 200 units or stays where the last one was fitted (where
  /// no piece was found yet, at `AReported`).
  TPointF Fit(TPointF ARaw, TPointF AReported, TPointF ABeacon, const TSettings& ASettings);

 private:
  struct TMove {
    TPointF To;
    std::int32_t Distance;  // between the raw estimate and what was reported
    bool IsFar = false;
  };
  struct TFoot {
    TPointF Point;
    std::int32_t Distance;  // that decides
    std::int32_t Piece = -1;
  };

  TMove Damp(TPointF ARaw, TPointF AReported, TPointF ABeacon) const;
  TFoot FindFoot(const TMove& AMove, TPointF ARaw) const;
  TPointF FitToPaths(const TMove& AMove, TPointF ARaw, std::int32_t AStepping);

  const TRectF FMapLimit;
  const std::vector<TSegment> FPaths;
  TPointF FLastFoot;  // the origin until a foot was accepted
  bool FHasFoot = false;
};

}  // namespace System::Beacon::Fencing
