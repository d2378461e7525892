#include "scene/canvas/polygon.h"

#include <algorithm>

namespace System::Beacon::Fencing::Canvas {

void TPointsPolygon::SetPonts(std::span<const TPointF> APoints) {
  FPoints = std::vector<TPointF>(APoints.begin(), APoints.end());
}

void TPointsPolygon::SetPointCount(int ACount) {
  FPoints.resize(static_cast<std::size_t>(std::max(ACount, 0)));
}

TPointF TPointsPolygon::GetPointAt(int AIndex) const {
  return HasPoint(AIndex) ? FPoints[static_cast<std::size_t>(AIndex)] : TPointF{};
}

void TPointsPolygon::SetPointAt(int AIndex, TPointF APoint) {
  if (HasPoint(AIndex)) FPoints[static_cast<std::size_t>(AIndex)] = APoint;
}

TRectPolygonUser::TRectPolygonUser(TRectPolygonPool& APool) : FPool(APool) {
  const std::lock_guard Guard(FPool.Lock);
  ++FPool.Users;
}

TRectPolygonUser::~TRectPolygonUser() {
  const std::lock_guard Guard(FPool.Lock);
  if (--FPool.Users == 0) FPool.Polygon = nullptr;
}

TRef<IPolygon> TRectPolygonUser::Get(ICanvas& ACanvas) {
  const std::lock_guard Guard(FPool.Lock);
  if (!FPool.Polygon) {
    FPool.Polygon = ACanvas.CreatePolygon();
    FPool.Polygon->SetPointCount(5);
  }
  return FPool.Polygon;
}

}  // namespace System::Beacon::Fencing::Canvas
