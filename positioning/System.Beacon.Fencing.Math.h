// Plane geometry on points, segments, rectangles and polygons in 32-bit floats. X grows to the
// right, Y grows downwards; the unit is the caller's. Free functions: no state, no allocation, any
// thread; none raises. A result that does not exist is `NoPoint()`, false or -1.
//
// A polygon is closed by itself: edge i runs from point i to point i + 1, the last one back to
// point 0. One of fewer than three points has no edges.
#pragma once

#include <cstdint>
#include <span>

#include "platform/geometry.h"

namespace System::Beacon::Fencing {

using TPolygonPoints = std::span<const TPointF>;

/// The point that means "none": both coordinates are the negative quiet NaN (bits FFC00000).
TPointF NoPoint() noexcept;
/// Whether a coordinate is not a number; the way to ask for `NoPoint()`, which equals nothing.
bool IsNoPoint(TPointF APoint) noexcept;

/// Where the infinite lines A1A2 and B1B2 meet; `NoPoint()` when their determinant is within 1E-4
/// of 0.
TPointF LinesIntersect(TPointF A1, TPointF A2, TPointF B1, TPointF B2) noexcept;
/// Whether the lines P + T·R and Q + U·S meet in one point or coincide; `T` and `U` are then their
/// parameters, +infinity for lines that coincide. They are left alone when the result is false.
bool LineIntersect(TPointF P, TPointF R, TPointF Q, TPointF S, float& T, float& U) noexcept;
/// Whether the segments AB and CD cross or touch. Segments on one line do not.
bool SegmentIntersect(TPointF A, TPointF B, TPointF C, TPointF D) noexcept;

/// `ARect` scaled uniformly until it touches `ABounds` on one axis, and centred in it. Unchanged
/// when the bounds are empty or `ARect` has neither width nor height.
TRectF FitInto(const TRectF& ARect, const TRectF& ABounds) noexcept;
/// The same rectangle with its edges the right way round.
TRectF ConverToPositiveRect(const TRectF& ARect) noexcept;

/// The point of segment AB that is closest to P.
TPointF GetSegmentClosest(TPointF A, TPointF B, TPointF P) noexcept;
/// Sides are those of a mathematician's axes turned over: left is where
/// (B - A) × (P - A) < 0. A point on the line is on neither side.
bool IsOnSegmentLeft(TPointF A, TPointF B, TPointF P) noexcept;
bool IsOnSegmentRight(TPointF A, TPointF B, TPointF P) noexcept;
float GetDistanceFromSegmentToPoint(TPointF A, TPointF B, TPointF P) noexcept;

float RadiansToDegrees(float AAngle) noexcept;
float DegreesToRadians(float AAngle) noexcept;
/// 0 up to the first edge, 1 from the second on, between them 3t² - 2t³ (Hermite). With equal
/// edges: 0 below, 1 at or above.
float SmoothStep(float AEdge0, float AEdge1, float AX) noexcept;

/// Clockwise as seen on the screen, Y downwards: by the sign of the enclosed area (shoelace
/// formula; Meister, 1769), summed in 64 bits.
bool IsClockwise(TPolygonPoints APolygon) noexcept;
/// The number of the edge that is nearest, the first one of several; -1 without edges.
std::int32_t GetClosestSegmentInPolygonToPoint(TPolygonPoints APolygon, TPointF P) noexcept;
/// P where it is on the inner side of the nearest edge, else the closest point of that edge.
TPointF GetClosestPointToPolygon(TPolygonPoints APolygon, TPointF P) noexcept;
/// The closest point of the outline, whether P is inside or not.
TPointF GetClosestPointToPolygonContour(TPolygonPoints APolygon, TPointF P) noexcept;
/// P when it is inside by the even-odd rule, else the closest point of the outline: for outlines
/// that cross themselves.
TPointF GetClosestPointToClosestPolygon(TPolygonPoints APolygon, TPointF P) noexcept;
/// By the side of the nearest edge: right for convex and mildly concave outlines. A point on the
/// line of that edge is inside.
bool IsPointInPolygon(TPolygonPoints APolygon, TPointF P) noexcept;
/// By the even-odd rule: right for every outline, points on the outline excepted.
bool IsPointInComplexPolygon(TPolygonPoints APolygon, TPointF P) noexcept;

}  // namespace System::Beacon::Fencing
