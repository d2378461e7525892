#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

#include "positioning/System.Beacon.Fencing.Math.h"

namespace System::Beacon::Fencing {
namespace {

constexpr float ParallelTolerance = 1E-5F;
constexpr float SameValueTolerance = 1E-4F;

float Cross(TPointF U, TPointF V) noexcept {
  return U.X * V.Y - U.Y * V.X;
}
float Dot(TPointF U, TPointF V) noexcept {
  return U.X * V.X + U.Y * V.Y;
}
float Orient(TPointF A, TPointF B, TPointF P) noexcept {
  return Cross(B - A, P - A);
}
bool IsSmall(float AValue) noexcept {
  return std::abs(AValue) < ParallelTolerance;
}

/// The line through two points as A·x + B·y + C = 0.
struct TLine {
  float A, B, C;
  TLine(TPointF P, TPointF Q) noexcept : A(Q.Y - P.Y), B(P.X - Q.X), C(Q.X * P.Y - P.X * Q.Y) {}
};

struct TEdge {
  TPointF A, B;
};
TEdge EdgeOf(TPolygonPoints APolygon, std::size_t AIndex) noexcept {
  return {APolygon[AIndex], APolygon[(AIndex + 1) % APolygon.size()]};
}

bool IsOutside(TPolygonPoints APolygon, const TEdge& AEdge, TPointF P) noexcept {
  return IsClockwise(APolygon) ? IsOnSegmentLeft(AEdge.A, AEdge.B, P)
                               : IsOnSegmentRight(AEdge.A, AEdge.B, P);
}

/// Whether the edge passes to the left of P on P's height.
bool CrossesLeftOf(TPointF A, TPointF B, TPointF P) noexcept {
  const bool Straddles = (A.Y < P.Y && B.Y >= P.Y) || (B.Y < P.Y && A.Y >= P.Y);
  if (!Straddles || (A.X > P.X && B.X > P.X)) return false;
  return A.X + (P.Y - A.Y) / (B.Y - A.Y) * (B.X - A.X) < P.X;
}

}  // namespace

TPointF NoPoint() noexcept {
  const float None = std::bit_cast<float>(0xFFC00000U);
  return {None, None};
}

bool IsNoPoint(TPointF APoint) noexcept {
  return std::isnan(APoint.X) || std::isnan(APoint.Y);
}

// ---------------------------------------------------------------- lines and segments

TPointF LinesIntersect(TPointF A1, TPointF A2, TPointF B1, TPointF B2) noexcept {
  const TLine L(A1, A2), M(B1, B2);
  const float Determinant = L.A * M.B - M.A * L.B;
  if (std::abs(Determinant) <= SameValueTolerance) return NoPoint();
  return {(L.B * M.C - M.B * L.C) / Determinant, (M.A * L.C - L.A * M.C) / Determinant};
}

bool LineIntersect(TPointF P, TPointF R, TPointF Q, TPointF S, float& T, float& U) noexcept {
  const float Determinant = Cross(R, S);
  const TPointF W = P - Q;
  const float NumeratorT = W.Y * S.X - W.X * S.Y;
  const float NumeratorU = R.X * W.Y - W.X * R.Y;
  if (IsSmall(Determinant)) {
    if (!IsSmall(NumeratorT) || !IsSmall(NumeratorU)) return false;
    T = U = std::numeric_limits<float>::infinity();
    return true;
  }
  T = NumeratorT / Determinant;
  U = NumeratorU / Determinant;
  return true;
}

bool SegmentIntersect(TPointF A, TPointF B, TPointF C, TPointF D) noexcept {
  float T = 0.0F, U = 0.0F;
  return LineIntersect(A, B - A, C, D - C, T, U) && 0.0F <= T && T <= 1.0F && 0.0F <= U &&
         U <= 1.0F;
}

TPointF GetSegmentClosest(TPointF A, TPointF B, TPointF P) noexcept {
  const TPointF Along = B - A;
  const float SquaredLength = Dot(Along, Along);
  if (SquaredLength == 0.0F) return A;
  const float T = Dot(P - A, Along) / SquaredLength;
  if (!(T >= 0.0F)) return A;
  return T > 1.0F ? B : A + Along * T;
}

bool IsOnSegmentLeft(TPointF A, TPointF B, TPointF P) noexcept {
  return Orient(A, B, P) < 0.0F;
}
bool IsOnSegmentRight(TPointF A, TPointF B, TPointF P) noexcept {
  return Orient(A, B, P) > 0.0F;
}

float GetDistanceFromSegmentToPoint(TPointF A, TPointF B, TPointF P) noexcept {
  const TPointF Offset = P - GetSegmentClosest(A, B, P);
  return std::sqrt(Dot(Offset, Offset));
}

// ---------------------------------------------------------------- rectangles, angles, easing

TRectF FitInto(const TRectF& ARect, const TRectF& ABounds) noexcept {
  if (ABounds.GetWidth() <= 0.0F || ABounds.GetHeight() <= 0.0F) return ARect;
  if (ARect.GetWidth() == 0.0F && ARect.GetHeight() == 0.0F) return ARect;
  const float Ratio =
      std::max(ARect.GetWidth() / ABounds.GetWidth(), ARect.GetHeight() / ABounds.GetHeight());
  const float Scale = 1.0F / Ratio;
  const float HalfWidth = ARect.GetWidth() * Scale / 2.0F;
  const float HalfHeight = ARect.GetHeight() * Scale / 2.0F;
  const TPointF Centre = ABounds.GetCentre();
  return {Centre.X - HalfWidth, Centre.Y - HalfHeight, Centre.X + HalfWidth, Centre.Y + HalfHeight};
}

TRectF ConverToPositiveRect(const TRectF& ARect) noexcept {
  TRectF Result = ARect;
  if (Result.Left > Result.Right) std::swap(Result.Left, Result.Right);
  if (Result.Top > Result.Bottom) std::swap(Result.Top, Result.Bottom);
  return Result;
}

float RadiansToDegrees(float AAngle) noexcept {
  return static_cast<float>(AAngle * 57.29577951308232);
}
float DegreesToRadians(float AAngle) noexcept {
  return static_cast<float>(AAngle * 0.017453292519943295);
}

float SmoothStep(float AEdge0, float AEdge1, float AX) noexcept {
  if (AEdge0 == AEdge1) return AX < AEdge0 ? 0.0F : 1.0F;
  const float T = std::clamp((AX - AEdge0) / (AEdge1 - AEdge0), 0.0F, 1.0F);
  return T * T * (3.0F - 2.0F * T);
}

// ---------------------------------------------------------------- polygons

bool IsClockwise(TPolygonPoints APolygon) noexcept {
  double Sum = 0.0;
  for (std::size_t I = 0; I < APolygon.size(); ++I) {
    const TEdge Edge = EdgeOf(APolygon, I);
    Sum += static_cast<double>(Edge.B.X - Edge.A.X) * (Edge.B.Y + Edge.A.Y);
  }
  return Sum < 0.0;
}

std::int32_t GetClosestSegmentInPolygonToPoint(TPolygonPoints APolygon, TPointF P) noexcept {
  if (APolygon.size() < 3) return -1;
  std::size_t Nearest = 0;
  float Smallest = std::numeric_limits<float>::infinity();
  for (std::size_t I = 0; I < APolygon.size(); ++I) {
    const TEdge Edge = EdgeOf(APolygon, I);
    const float Distance = GetDistanceFromSegmentToPoint(Edge.A, Edge.B, P);
    if (!(Distance < Smallest)) continue;
    Smallest = Distance;
    Nearest = I;
  }
  return static_cast<std::int32_t>(Nearest);
}

TPointF GetClosestPointToPolygon(TPolygonPoints APolygon, TPointF P) noexcept {
  const std::int32_t Nearest = GetClosestSegmentInPolygonToPoint(APolygon, P);
  if (Nearest < 0) return NoPoint();
  const TEdge Edge = EdgeOf(APolygon, static_cast<std::size_t>(Nearest));
  return IsOutside(APolygon, Edge, P) ? GetSegmentClosest(Edge.A, Edge.B, P) : P;
}

TPointF GetClosestPointToPolygonContour(TPolygonPoints APolygon, TPointF P) noexcept {
  const std::int32_t Nearest = GetClosestSegmentInPolygonToPoint(APolygon, P);
  if (Nearest < 0) return NoPoint();
  const TEdge Edge = EdgeOf(APolygon, static_cast<std::size_t>(Nearest));
  return GetSegmentClosest(Edge.A, Edge.B, P);
}

TPointF GetClosestPointToClosestPolygon(TPolygonPoints APolygon, TPointF P) noexcept {
  return IsPointInComplexPolygon(APolygon, P) ? P : GetClosestPointToPolygonContour(APolygon, P);
}

bool IsPointInPolygon(TPolygonPoints APolygon, TPointF P) noexcept {
  const std::int32_t Nearest = GetClosestSegmentInPolygonToPoint(APolygon, P);
  return Nearest >= 0 &&
         !IsOutside(APolygon, EdgeOf(APolygon, static_cast<std::size_t>(Nearest)), P);
}

bool IsPointInComplexPolygon(TPolygonPoints APolygon, TPointF P) noexcept {
  bool IsInside = false;
  for (std::size_t I = 0, J = APolygon.size() - 1; I < APolygon.size(); J = I++)
    if (CrossesLeftOf(APolygon[I], APolygon[J], P)) IsInside = !IsInside;
  return IsInside;
}

}  // namespace System::Beacon::Fencing
