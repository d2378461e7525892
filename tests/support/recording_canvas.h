// A canvas that writes down what it is asked to draw.
#pragma once

#include <string>

#include "scene/canvas/System.Beacon.Fencing.Canvas.h"

namespace System::Beacon::Fencing::Canvas {

/// Writes the names of what draws, in order, with a blank after each.
class TRecordingCanvas final : public TInterfacedObject, public virtual ICanvas {
 public:
  std::string Log;
  TMatrix Matrix = TMatrix::Identity();

  TCanvasType GetCanvasType() const override { return "recording"; }
  void BeginScene(const TRef<ILayer>&) override { Write("begin"); }
  void EndScene() override { Write("end"); }
  TRef<IPolygon> CreatePolygon() override { return nullptr; }
  TRef<IBitmap> CreateBitmap(const std::string&, const std::string&) override { return nullptr; }
  void SetMatrix(const TMatrix& AMatrix) override { Matrix = AMatrix; }
  TMatrix GetMatrix() const override { return Matrix; }
  void SetFillColor(TAlphaColor, float) override {}
  void SetFillBitmap(const TRef<IBitmap>&, float) override {}
  void SetStrokeColor(TAlphaColor, float) override {}
  void SetStrokeBitmap(const TRef<IBitmap>&, float) override {}
  void SetStrokeWidth(float, bool) override {}
  void SetStrokePattern(TStrokePattern) override {}
  void BeginPath(bool, bool) override { Write("path"); }
  void MoveTo(TPointF) override {}
  void LineTo(TPointF) override {}
  void CubicBezierTo(TPointF, TPointF, TPointF) override {}
  void CloseContour() override {}
  void EndPath() override {}
  void Clear(TAlphaColor) override { Write("clear"); }
  void DrawText(const std::string& AText, TPointF) override { Write(AText); }
  TPointF MeasureString(const std::string&) override { return {}; }
  void DrawLine(TPointF, TPointF) override { Write("line"); }
  void DrawRectangle(const TRectF&) override { Write("rectangle"); }
  void DrawEllipse(const TRectF&) override { Write("ellipse"); }
  void DrawPolygon(const IPolygon*) override { Write("polygon"); }
  void StrokeRectangle(const TRectF&) override { Write("outline"); }
  void StrokePolygon(const IPolygon*) override { Write("outline"); }
  void StrokeEllipse(const TRectF&) override { Write("outline"); }
  void FillEllipse(const TRectF&) override { Write("fill"); }
  void FillRect(const TRectF&) override { Write("fill"); }
  TRef<IPolygon> GetRectPolygon() override { return nullptr; }

 private:
  void Write(const std::string& AText) { Log += AText + ' '; }
};

}  // namespace System::Beacon::Fencing::Canvas
