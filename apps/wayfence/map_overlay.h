// Texts on top of the live map.
#pragma once

#include <string>

#include "platform/drawing.h"
#include "platform/geometry.h"

namespace Wayfence {

/// Where the line of text stands on a control.
System::TRectF GetStatusRect(const System::TRectF& AControl);
/// Draws the line of text along the lower edge of a control.
void DrawStatus(System::TDrawing& ADrawing,
                const System::TRectF& AControl,
                const std::string& AText);
/// Draws what the keys do.
void DrawHelp(System::TDrawing& ADrawing);

}  // namespace Wayfence
