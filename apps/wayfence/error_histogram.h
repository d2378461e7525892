// How often which errors were, as a chart.
#pragma once

#include <vector>

#include "platform/drawing.h"

namespace Wayfence {

/// Errors in metres, a colour for each of two kinds.
struct TErrorSeries {
  const std::vector<double>& Errors;
  System::TAlphaColor Color;
};

/// Draws bars for `ABars` and a stepped line for `ALine`, with axes and their numbers, into a
/// rectangle of pixels.
void DrawErrorHistogram(System::TDrawing& ADrawing,
                        const System::TRectF& ARect,
                        const TErrorSeries& ABars,
                        const TErrorSeries& ALine);

}  // namespace Wayfence
