#include <algorithm>
#include <cmath>
#include <limits>

#include "positioning/System.Beacon.Fencing.Math.h"
#include "scene/System.Beacon.Fencing.Scene.Helpers.h"

namespace System::Beacon::Fencing::Scene {
namespace {

float Cross(TPointF A, TPointF B) {
  return A.X * B.Y - A.Y * B.X;
}

/// An edge, moved: a point of its line and its direction, of length 1; (0, 0) for an edge without
/// length.
struct TMovedEdge {
  TPointF Point, Direction;
};

/// `AOutwards` is 1 for corners that run from X towards Y, -1 for others.
TMovedEdge Moved(TPointF A, TPointF B, float ADistance, float AOutwards) {
  const TPointF Along = B - A;
  const float Length = std::hypot(Along.X, Along.Y);
  if (!(Length > 0.0F)) return {A, {}};
  const TPointF Direction = Along * (1.0F / Length);
  const TPointF Normal = TPointF{Direction.Y, -Direction.X} * AOutwards;
  return {A + Normal * ADistance, Direction};
}

/// Where two lines meet; `AElse` for parallel ones.
TPointF Meeting(const TMovedEdge& A, const TMovedEdge& B, TPointF AElse) {
  float T = 0.0F, U = 0.0F;
  const bool Meet = LineIntersect(A.Point, A.Direction, B.Point, B.Direction, T, U);
  return Meet && std::isfinite(T) ? A.Point + A.Direction * T : AElse;
}

}  // namespace

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

bool TCornersHelper::Contains(const TCorners& ACorners, TPointF APoint) {
  const auto& [C0, C1, C2, C3] = ACorners.Points;
  const TPointF A = C3 - C0, B = C1 - C0, D = APoint - C0;
  const float Determinant = Cross(A, B);
  if (Determinant == 0.0F) return false;
  const float U = Cross(D, B) / Determinant, V = Cross(A, D) / Determinant;
  return 0.0F <= U && U <= 1.0F && 0.0F <= V && V <= 1.0F;
}

TCorners TCornersHelper::CreateCorners(const TRectF& ARect,
                                       TPointF AnOrigin,
                                       TPointF AnAxisX,
                                       TPointF AnAxisY) {
  TCorners Result = GetCorners(ARect);
  for (TPointF& Point : Result.Points) Point = AnOrigin + AnAxisX * Point.X + AnAxisY * Point.Y;
  return Result;
}

TCorners TCornersHelper::Expand(const TCorners& ACorners, const TRectF& ADistances) {
  const auto& C = ACorners.Points;
  const float Outwards = Cross(C[2] - C[0], C[3] - C[1]) < 0.0F ? -1.0F : 1.0F;
  const TMovedEdge Top = Moved(C[0], C[1], ADistances.Top, Outwards);
  const TMovedEdge Right = Moved(C[1], C[2], ADistances.Right, Outwards);
  const TMovedEdge Bottom = Moved(C[2], C[3], ADistances.Bottom, Outwards);
  const TMovedEdge Left = Moved(C[3], C[0], ADistances.Left, Outwards);
  return {{Meeting(Left, Top, C[0]),
           Meeting(Top, Right, C[1]),
           Meeting(Right, Bottom, C[2]),
           Meeting(Bottom, Left, C[3])}};
}

bool TCornersHelper::GetIntersection(TPointF AFrom,
                                     TPointF ATo,
                                     const TCorners& ACorners,
                                     TPointF& APoint) {
  float Nearest = std::numeric_limits<float>::infinity();
  for (std::size_t I = 0; I < ACorners.Points.size(); ++I) {
    const TPointF A = ACorners.Points[I], B = ACorners.Points[(I + 1) % ACorners.Points.size()];
    float T = 0.0F, U = 0.0F;
    const bool Meets = LineIntersect(AFrom, ATo - AFrom, A, B - A, T, U);
    if (Meets && 0.0F <= T && T <= 1.0F && 0.0F <= U && U <= 1.0F) Nearest = std::min(Nearest, T);
  }
  if (!std::isfinite(Nearest)) return false;
  APoint = AFrom + (ATo - AFrom) * Nearest;
  return true;
}

}  // namespace System::Beacon::Fencing::Scene
