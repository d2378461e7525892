// Corners and bounds of rectangles.
#pragma once

#include "platform/geometry.h"
#include "scene/System.Beacon.Fencing.Scene.h"

namespace System::Beacon::Fencing::Scene {

/// Operations over corners. Pure.
class TCornersHelper {
 public:
  static TCorners GetCorners(const TRectF& ARect);
  /// What bounds the corners.
  static TRectF GetRect(const TCorners& ACorners);
  static TCorners MultiplyCorners(const TMatrix& AMatrix, const TCorners& ACorners);
  static TCorners MultiplyRect(const TMatrix& AMatrix, const TRectF& ARect);
};

/// Whether every coordinate is finite.
bool IsFinite(TPointF APoint);
bool IsFinite(const TRectF& ARect);

/// What bounds both; a rectangle without width and height adds nothing.
TRectF BoundBoth(const TRectF& A, const TRectF& B);

}  // namespace System::Beacon::Fencing::Scene
