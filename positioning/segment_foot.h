// Where a point falls on a walkable piece.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>

#include "platform/geometry.h"

namespace System::Beacon::Fencing {

/// Towards 0, and into the range of 32 bits; 0 for what is not a number.
inline std::int32_t Truncated(double AValue) {
  constexpr double Limit = std::numeric_limits<std::int32_t>::max();
  if (std::isnan(AValue)) return 0;
  return static_cast<std::int32_t>(AValue < -Limit ? -Limit : AValue > Limit ? Limit : AValue);
}

/// The foot of a point on the segment from `AP1` to `AP2`, in whole units; nothing when it falls
/// on the first end or outside the segment, or the segment has no length at all.
inline std::optional<TPointF> FootOnSegment(TPointF APoint, TPointF AP1, TPointF AP2) {
  const double Dx = static_cast<double>(AP2.X) - AP1.X;
  const double Dy = static_cast<double>(AP2.Y) - AP1.Y;
  const double SquaredLength = Dx * Dx + Dy * Dy;
  const double T = ((static_cast<double>(APoint.X) - AP1.X) * Dx +
                    (static_cast<double>(APoint.Y) - AP1.Y) * Dy) /
                   SquaredLength;
  if (!(T >= 1E-6 && T <= 1.0)) return std::nullopt;
  return TPointF{static_cast<float>(Truncated(AP1.X + T * Dx)),
                 static_cast<float>(Truncated(AP1.Y + T * Dy))};
}

}  // namespace System::Beacon::Fencing
