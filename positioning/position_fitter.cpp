#include "positioning/position_fitter.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

#include "positioning/segment_foot.h"

namespace System::Beacon::Fencing {
namespace {

constexpr std::int32_t Farthest = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t LongestMove = 200;
constexpr std::int32_t FarMove = 500;
constexpr std::int32_t SnapDistance = 200;

double Distance(TPointF A, TPointF B) {
  const double Dx = static_cast<double>(B.X) - A.X;
  const double Dy = static_cast<double>(B.Y) - A.Y;
  return std::sqrt(Dx * Dx + Dy * Dy);
}

/// The point so far from `AFrom` in the direction of `ATo`; `AFrom` when the two are the same.
TPointF Towards(TPointF AFrom, TPointF ATo, double ADistance) {
  const double Length = Distance(AFrom, ATo);
  if (!(Length > 0.0)) return AFrom;
  return {
      static_cast<float>(AFrom.X + (static_cast<double>(ATo.X) - AFrom.X) / Length * ADistance),
      static_cast<float>(AFrom.Y + (static_cast<double>(ATo.Y) - AFrom.Y) / Length * ADistance)};
}

bool IsSameValue(float A, float B) {
  constexpr float Tolerance = 1E-4F;
  const float Smaller = std::min(std::abs(A), std::abs(B));
  return std::abs(A - B) <= std::max(Smaller * Tolerance, Tolerance);
}
bool IsSamePlace(TPointF A, TPointF B) {
  return IsSameValue(A.X, B.X) && IsSameValue(A.Y, B.Y);
}

/// Pieces that are next to nothing have no foot.
std::optional<TPointF> FootOn(const TSegment& APiece, TPointF APoint) {
  constexpr double Shortest = 1E-6;
  if (Distance(APiece.P1, APiece.P2) < Shortest) return std::nullopt;
  return FootOnSegment(APoint, APiece.P1, APiece.P2);
}

/// The middle of the step of a piece that a point on it falls into. Steps are 100 units long
/// whatever divides the piece.
TPointF MiddleOfStep(const TSegment& APiece, TPointF APoint, std::int32_t AStepping) {
  constexpr double StepLength = 100.0;
  const std::int32_t Along = Truncated(Distance(APiece.P1, APoint));
  const std::int32_t Step = Along / AStepping;
  return Towards(APiece.P1, APiece.P2, Step * StepLength + StepLength / 2.0);
}

}  // namespace

TPointF TPositionFitter::Clamp(TPointF ARaw) const {
  const auto Between = [](float AValue, float ALargest) {
    return std::min(AValue > 0.0F ? AValue : 0.0F, ALargest);
  };
  return {Between(ARaw.X, FMapLimit.Right), Between(ARaw.Y, FMapLimit.Bottom)};
}

TPointF TPositionFitter::Fit(TPointF ARaw,
                             TPointF AReported,
                             TPointF ABeacon,
                             const TSettings& ASettings) {
  const TMove Move = Damp(ARaw, AReported, ABeacon);
  if (!ASettings.Routing || Move.To == FLastFoot) return Move.To;
  return FitToPaths(Move, ARaw, ASettings.Stepping);
}

TPositionFitter::TMove TPositionFitter::Damp(TPointF ARaw,
                                             TPointF AReported,
                                             TPointF ABeacon) const {
  if (AReported == TPointF{}) return {ARaw, Farthest};
  const std::int32_t Moved = Truncated(Distance(AReported, ARaw));
  if (Moved > LongestMove) return {Towards(AReported, ARaw, LongestMove), Moved, Moved > FarMove};
  if (Truncated(Distance(ABeacon, ARaw)) <= SnapDistance && !IsSamePlace(ARaw, ABeacon))
    return {ABeacon, Moved};
  return {FHasFoot ? FLastFoot : AReported, Moved};
}

/// The foot that is nearest to where the move leads; after a far move, to the raw estimate.
TPositionFitter::TFoot TPositionFitter::FindFoot(const TMove& AMove, TPointF ARaw) const {
  TFoot Result{{}, Farthest};
  std::int32_t Piece = 0;
  for (const TSegment& Path : FPaths) {
    if (const auto Foot = FootOn(Path, AMove.To)) {
      const std::int32_t Away = Truncated(Distance(AMove.IsFar ? ARaw : AMove.To, *Foot));
      if (Away < Result.Distance) Result = {*Foot, Away, Piece};
    }
    ++Piece;
  }
  return Result;
}

TPointF TPositionFitter::FitToPaths(const TMove& AMove, TPointF ARaw, std::int32_t AStepping) {
  const TFoot Foot = FindFoot(AMove, ARaw);
  if (!(Foot.Distance < AMove.Distance)) return FHasFoot ? FLastFoot : AMove.To;
  FLastFoot = Foot.Point;
  FHasFoot = true;
  return AStepping > 0 ? MiddleOfStep(FPaths[Foot.Piece], Foot.Point, AStepping) : Foot.Point;
}

}  // namespace System::Beacon::Fencing
