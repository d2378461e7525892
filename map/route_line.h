// How routes are drawn.
#pragma once

#include <span>

#include "scene/canvas/System.Beacon.Fencing.Canvas.h"

namespace System::Beacon::Fencing::Scene::Beacons {

/// Solid strokes, 4 pixels wide at every zoom.
void SetRouteStroke(Canvas::ICanvas& ACanvas, TAlphaColor AColor, float AnOpacity);
/// Draws a line through points, with the canvas's stroke and matrix.
void DrawRouteLine(Canvas::ICanvas& ACanvas, std::span<const TPointF> APoints);

}  // namespace System::Beacon::Fencing::Scene::Beacons
