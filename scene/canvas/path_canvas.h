// What the canvases have in common: shapes become paths.
#pragma once

#include <string>

#include "platform/drawing.h"
#include "scene/canvas/System.Beacon.Fencing.Canvas.h"
#include "scene/canvas/polygon.h"

namespace System::Beacon::Fencing::Canvas {

class TPathCanvas : public TInterfacedObject, public virtual ICanvas, public virtual IPaintArea {
 public:
  TRef<IBitmap> CreateBitmap(const std::string& AFileName, const std::string& AName) override;
  void SetMatrix(const TMatrix& AMatrix) override { FMatrix = AMatrix; }
  TMatrix GetMatrix() const override { return FMatrix; }

  void BeginPath(bool AStroke, bool AFill) override;
  void MoveTo(TPointF APoint) override { FPath.MoveTo(APoint); }
  void LineTo(TPointF APoint) override { FPath.LineTo(APoint); }
  void CubicBezierTo(TPointF AControl1, TPointF AControl2, TPointF AnEnd) override;
  void CloseContour() override { FPath.Close(); }
  void EndPath() override;

  void DrawLine(TPointF AFrom, TPointF ATo) override;
  void DrawRectangle(const TRectF& ARect) override;
  void DrawEllipse(const TRectF& ARect) override;
  void DrawPolygon(const IPolygon* APolygon) override;
  void StrokeRectangle(const TRectF& ARect) override;
  void StrokePolygon(const IPolygon* APolygon) override;
  void StrokeEllipse(const TRectF& ARect) override;
  void FillEllipse(const TRectF& ARect) override;
  void FillRect(const TRectF& ARect) override;

  TRef<IPolygon> GetRectPolygon() override { return FRectPolygon.Get(*this); }

 protected:
  struct TParts {
    bool Stroke = false;
    bool Fill = false;
  };
  explicit TPathCanvas(TRectPolygonPool& APool) : FRectPolygon(APool) {}

  /// Draws a path, in drawing coordinates, with the current matrix.
  virtual void Paint(const TPath& APath, TParts AParts) = 0;
  virtual TRef<IBitmap> NewBitmap() = 0;
  /// The adapter's own object behind an element; raises `EGeneralError` for one of another type.
  template <class TElement>
  const TElement& Own(const ICanvasElement& AnElement) const {
    const auto* const Result = dynamic_cast<const TElement*>(&AnElement);
    if (!Result || AnElement.GetCanvasType() != GetCanvasType()) RaiseWrongElement(AnElement);
    return *Result;
  }

 private:
  [[noreturn]] void RaiseWrongElement(const ICanvasElement& AnElement) const;
  void PaintRect(const TRectF& ARect, TParts AParts);
  void PaintEllipse(const TRectF& ARect, TParts AParts);
  void PaintPolygon(const IPolygon* APolygon, TParts AParts);

  TMatrix FMatrix = TMatrix::Identity();
  TPath FPath;    // being built
  TParts FParts;  // what is done with it
  TPath FShape;   // the memory is used again
  TRectPolygonUser FRectPolygon;
};

}  // namespace System::Beacon::Fencing::Canvas
