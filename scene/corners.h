// What the scene asks of coordinates.
#pragma once

#include "platform/geometry.h"

namespace System::Beacon::Fencing::Scene {

/// Whether every coordinate is finite.
bool IsFinite(TPointF APoint);
bool IsFinite(const TRectF& ARect);

/// What bounds both; a rectangle without width and height adds nothing.
TRectF BoundBoth(const TRectF& A, const TRectF& B);

}  // namespace System::Beacon::Fencing::Scene
