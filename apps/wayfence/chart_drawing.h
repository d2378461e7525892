// Words and shapes of charts.
#pragma once

#include <string_view>

#include "platform/drawing.h"

namespace Wayfence {

/// Sizes of letters, as multiples of `TDrawing::TextSize`.
inline constexpr float SmallText = 1.25F, LargeText = 1.75F;

/// Draws text of that size, in dark grey. `AnAt` is the point of the text that lies at that part of
/// its width and height: (0, 0) the upper left corner, (1, 0.5) the middle of the right side.
void DrawWords(System::TDrawing& ADrawing,
               std::string_view AText,
               System::TPointF AnAt,
               float ASize,
               System::TPointF AnAnchor = {0.0F, 0.0F});

void FillRect(System::TDrawing& ADrawing, const System::TRectF& ARect, System::TAlphaColor AColor);
void DrawDot(System::TDrawing& ADrawing,
             System::TPointF ACentre,
             float ARadius,
             System::TAlphaColor AColor);
/// `AWidth` in pixels.
void DrawLines(System::TDrawing& ADrawing,
               const System::TPath& APath,
               float AWidth,
               System::TAlphaColor AColor);

}  // namespace Wayfence
