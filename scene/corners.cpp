#include "scene/corners.h"

#include <algorithm>
#include <cmath>

namespace System::Beacon::Fencing::Scene {

bool IsFinite(TPointF APoint) {
  return std::isfinite(APoint.X) && std::isfinite(APoint.Y);
}

bool IsFinite(const TRectF& ARect) {
  return IsFinite(TPointF{ARect.Left, ARect.Top}) && IsFinite(TPointF{ARect.Right, ARect.Bottom});
}

TRectF BoundBoth(const TRectF& A, const TRectF& B) {
  const auto IsPoint = [](const TRectF& R) { return R.Left == R.Right && R.Top == R.Bottom; };
  if (IsPoint(B)) return A;
  if (IsPoint(A)) return B;
  return {std::min(A.Left, B.Left),
          std::min(A.Top, B.Top),
          std::max(A.Right, B.Right),
          std::max(A.Bottom, B.Bottom)};
}

}  // namespace System::Beacon::Fencing::Scene
