#include "scene/canvas/path_canvas.h"

#include <fmt/format.h>

#include <array>

#include "scene/canvas/messages.h"

namespace System::Beacon::Fencing::Canvas {
namespace {

void AddEllipse(TPath& APath, const TRectF& ARect) {
  std::array<TPointF, 13> Points;
  GenerateCircleWithBeziers(ARect, TMatrix::Identity(), Points);
  APath.MoveTo(Points[0]);
  for (std::size_t I = 1; I < Points.size(); I += 3)
    APath.CubicTo(Points[I], Points[I + 1], Points[I + 2]);
  APath.Close();
}

void AddPoints(TPath& APath, std::span<const TPointF> APoints) {
  if (APoints.empty()) return;
  const bool IsClosed = APoints.size() > 2 && APoints.front() == APoints.back();
  APath.MoveTo(APoints.front());
  for (const TPointF& Point : APoints.subspan(1, APoints.size() - (IsClosed ? 2 : 1)))
    APath.LineTo(Point);
  if (IsClosed) APath.Close();
}

}  // namespace

void TPathCanvas::RaiseWrongElement(const ICanvasElement& AnElement) const {
  throw EGeneralError(
      fmt::format(Messages::SWrongElement, GetCanvasType(), AnElement.GetCanvasType()));
}

TRef<IBitmap> TPathCanvas::CreateBitmap(const std::string& AFileName, const std::string& AName) {
  TRef<IBitmap> Result = NewBitmap();
  if (!AFileName.empty()) Result->LoadFromFile(AFileName, AName);
  return Result;
}

void TPathCanvas::BeginPath(bool AStroke, bool AFill) {
  FPath.Clear();
  FParts = {.Stroke = AStroke, .Fill = AFill};
}

void TPathCanvas::CubicBezierTo(TPointF AControl1, TPointF AControl2, TPointF AnEnd) {
  FPath.CubicTo(AControl1, AControl2, AnEnd);
}

void TPathCanvas::EndPath() {
  Paint(FPath, FParts);
  FPath.Clear();
}

void TPathCanvas::PaintRect(const TRectF& ARect, TParts AParts) {
  FShape.Clear();
  FShape.AddRect(ARect);
  Paint(FShape, AParts);
}

void TPathCanvas::PaintEllipse(const TRectF& ARect, TParts AParts) {
  FShape.Clear();
  AddEllipse(FShape, ARect);
  Paint(FShape, AParts);
}

void TPathCanvas::PaintPolygon(const IPolygon* APolygon, TParts AParts) {
  FShape.Clear();
  if (APolygon) AddPoints(FShape, Own<TPointsPolygon>(*APolygon).GetPoints());
  Paint(FShape, AParts);
}

void TPathCanvas::DrawLine(TPointF AFrom, TPointF ATo) {
  FShape.Clear();
  FShape.MoveTo(AFrom);
  FShape.LineTo(ATo);
  Paint(FShape, {.Stroke = true});
}

void TPathCanvas::DrawRectangle(const TRectF& ARect) {
  PaintRect(ARect, {.Stroke = true, .Fill = true});
}

void TPathCanvas::DrawEllipse(const TRectF& ARect) {
  PaintEllipse(ARect, {.Stroke = true, .Fill = true});
}

void TPathCanvas::DrawPolygon(const IPolygon* APolygon) {
  PaintPolygon(APolygon, {.Stroke = true, .Fill = true});
}

void TPathCanvas::StrokeRectangle(const TRectF& ARect) {
  PaintRect(ARect, {.Stroke = true});
}

void TPathCanvas::StrokePolygon(const IPolygon* APolygon) {
  PaintPolygon(APolygon, {.Stroke = true});
}

void TPathCanvas::StrokeEllipse(const TRectF& ARect) {
  PaintEllipse(ARect, {.Stroke = true});
}

void TPathCanvas::FillEllipse(const TRectF& ARect) {
  PaintEllipse(ARect, {.Fill = true});
}

void TPathCanvas::FillRect(const TRectF& ARect) {
  PaintRect(ARect, {.Fill = true});
}

}  // namespace System::Beacon::Fencing::Canvas
