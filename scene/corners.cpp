#include "scene/corners.h"

#include <algorithm>
#include <cmath>

namespace System::Beacon::Fencing::Scene {

TCorners TCornersHelper::GetCorners(const TRectF& ARect) {
  return {{TPointF{ARect.Left, ARect.Top},
           {ARect.Right, ARect.Top},
           {ARect.Right, ARect.Bottom},
           {ARect.Left, ARect.Bottom}}};
}

TRectF TCornersHelper::GetRect(const TCorners& ACorners) {
  const TPointF First = ACorners.Points[0];
  TRectF Result{First.X, First.Y, First.X, First.Y};
  for (const TPointF& Point : ACorners.Points) {
    Result.Left = std::min(Result.Left, Point.X);
    Result.Top = std::min(Result.Top, Point.Y);
    Result.Right = std::max(Result.Right, Point.X);
    Result.Bottom = std::max(Result.Bottom, Point.Y);
  }
  return Result;
}

TCorners TCornersHelper::MultiplyCorners(const TMatrix& AMatrix, const TCorners& ACorners) {
  TCorners Result;
  for (std::size_t I = 0; I < Result.Points.size(); ++I)
    Result.Points[I] = ACorners.Points[I] * AMatrix;
  return Result;
}

TCorners TCornersHelper::MultiplyRect(const TMatrix& AMatrix, const TRectF& ARect) {
  return MultiplyCorners(AMatrix, GetCorners(ARect));
}

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
