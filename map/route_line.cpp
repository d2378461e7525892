#include "map/route_line.h"

namespace System::Beacon::Fencing::Scene::Beacons {

void SetRouteStroke(Canvas::ICanvas& ACanvas, TAlphaColor AColor, float AnOpacity) {
  constexpr float Width = 4.0F;
  ACanvas.SetStrokeColor(AColor, AnOpacity);
  ACanvas.SetStrokePattern(Canvas::TStrokePattern::Solid);
  ACanvas.SetStrokeWidth(Width, true);
}

void DrawRouteLine(Canvas::ICanvas& ACanvas, std::span<const TPointF> APoints) {
  if (APoints.size() < 2) return;
  ACanvas.BeginPath(true, false);
  ACanvas.MoveTo(APoints.front());
  for (const TPointF Point : APoints.subspan(1)) ACanvas.LineTo(Point);
  ACanvas.EndPath();
}

}  // namespace System::Beacon::Fencing::Scene::Beacons
