// The polygon of every canvas: an array of points.
#pragma once

#include <mutex>
#include <vector>

#include "scene/canvas/System.Beacon.Fencing.Canvas.h"

namespace System::Beacon::Fencing::Canvas {

class TPointsPolygon : public TInterfacedObject, public virtual IPolygon {
 public:
  explicit TPointsPolygon(TCanvasType AType) : FType(AType) {}

  TCanvasType GetCanvasType() const override { return FType; }
  void AddPoint(TPointF APoint) override { FPoints.push_back(APoint); }
  void SetPonts(std::span<const TPointF> APoints) override;
  void SetPointCount(int ACount) override;
  int GetPointCount() const override { return static_cast<int>(FPoints.size()); }
  TPointF GetPointAt(int AIndex) const override;
  void SetPointAt(int AIndex, TPointF APoint) override;
  std::span<const TPointF> GetPoints() const noexcept { return FPoints; }

 private:
  bool HasPoint(int AIndex) const { return AIndex >= 0 && AIndex < GetPointCount(); }

  const TCanvasType FType;
  std::vector<TPointF> FPoints;
};

/// What the canvases of one type share.
struct TRectPolygonPool {
  std::mutex Lock;  // guards what follows
  int Users = 0;
  TRef<IPolygon> Polygon;
};

/// The share of one canvas in the outline polygon; the last one to go releases it.
class TRectPolygonUser {
 public:
  explicit TRectPolygonUser(TRectPolygonPool& APool);
  ~TRectPolygonUser();
  TRectPolygonUser(const TRectPolygonUser&) = delete;
  TRectPolygonUser& operator=(const TRectPolygonUser&) = delete;

  TRef<IPolygon> Get(ICanvas& ACanvas);

 private:
  TRectPolygonPool& FPool;
};

}  // namespace System::Beacon::Fencing::Canvas
