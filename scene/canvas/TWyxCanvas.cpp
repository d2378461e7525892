#include <fmt/format.h>

#include <array>
#include <cmath>

#include "scene/canvas/System.Beacon.Fencing.Canvas.Wyx.h"
#include "scene/canvas/messages.h"

namespace System::Beacon::Fencing::Canvas {
namespace {

constinit TRectPolygonPool RectPolygons;

// The adapter's own object behind an element.
template <class TElement>
TElement& OwnElement(const ICanvasElement* AnElement) {
  auto* const Result = Supports<TElement>(const_cast<ICanvasElement*>(AnElement));
  if (!Result)
    throw EGeneralError(
        fmt::format(Messages::SWrongElement, WyxCanvasType, AnElement->GetCanvasType()));
  return *Result;
}

// A bitmap that is none, or is not loaded, paints nothing.
TPaint PaintOf(const TRef<IBitmap>& ABitmap, float AnOpacity) {
  TPaint Result;
  Result.Picture = ABitmap ? OwnElement<TWyxBitmap>(ABitmap.Get()).GetPicture() : nullptr;
  Result.Opacity = Result.Picture ? AnOpacity : 0.0F;
  return Result;
}

TPaint PaintOf(TAlphaColor AColor, float AnOpacity) {
  TPaint Result;
  Result.Color = AColor;
  Result.Opacity = AnOpacity;
  return Result;
}

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

TWyxCanvas::TWyxCanvas() : FRectPolygon(RectPolygons) {}

TWyxCanvas::~TWyxCanvas() {
  EndScene();
}

void TWyxCanvas::BeginScene(const TRef<ILayer>& ALayer) {
  if (FDrawing) throw EGeneralError(std::string(Messages::SAlreadyPainting));
  TDrawing* const Drawing = ALayer ? OwnElement<TWyxLayer>(ALayer.Get()).GetDrawing() : nullptr;
  if (!Drawing) throw EGeneralError(std::string(Messages::SNoSurface));
  FLayer = ALayer;
  FDrawing = Drawing;
  FBaseMatrix = Drawing->GetMatrix();
  FFillToRestore = Drawing->GetFill();
  FPenToRestore = Drawing->GetPen();
  FMatrix = TMatrix::Identity();
  FPen = {};
  ApplyPen();
  SetFillColor({0xFFFFFFFF}, 1.0F);
}

void TWyxCanvas::EndScene() {
  if (!FDrawing) return;
  FDrawing->SetMatrix(FBaseMatrix);
  FDrawing->SetFill(FFillToRestore);
  FDrawing->SetPen(FPenToRestore);
  FFillToRestore = {};
  FPenToRestore = {};
  FPen = {};
  FDrawing = nullptr;
  FLayer = nullptr;
}

TRef<IBitmap> TWyxCanvas::CreateBitmap(const std::string& AFileName, const std::string& AName) {
  const TRef<IBitmap> Result = New<TWyxBitmap>();
  if (!AFileName.empty()) Result->LoadFromFile(AFileName, AName);
  return Result;
}

TDrawing& TWyxCanvas::GetDrawing() const {
  if (!FDrawing) throw EGeneralError(std::string(Messages::SNotPainting));
  return *FDrawing;
}

TRectF TWyxCanvas::GetPaintArea() const {
  const TMatrix ToLayer = FBaseMatrix.Inverse();
  const TRectF Clip = GetDrawing().GetClip();
  TPath Corners;
  for (const TPointF Corner : {TPointF{Clip.Left, Clip.Top},
                               TPointF{Clip.Right, Clip.Top},
                               TPointF{Clip.Right, Clip.Bottom},
                               TPointF{Clip.Left, Clip.Bottom}})
    Corners.LineTo(Corner * ToLayer);
  return Corners.GetBounds();
}

// ---------------------------------------------------------------- fill and stroke

void TWyxCanvas::SetFill(const TPaint& APaint) {
  GetDrawing().SetFill(APaint);
}

void TWyxCanvas::SetStroke(const TPaint& APaint) {
  FPen.Paint = APaint;
  ApplyPen();
}

void TWyxCanvas::ApplyPen() {
  TPen Pen = FPen;
  if (Pen.IsInPixels) Pen.Width *= std::sqrt(std::abs(FBaseMatrix.GetDeterminant()));
  GetDrawing().SetPen(Pen);
}

void TWyxCanvas::SetFillColor(TAlphaColor AColor, float AnOpacity) {
  SetFill(PaintOf(AColor, AnOpacity));
}

void TWyxCanvas::SetFillBitmap(const TRef<IBitmap>& ABitmap, float AnOpacity) {
  SetFill(PaintOf(ABitmap, AnOpacity));
}

void TWyxCanvas::SetStrokeColor(TAlphaColor AColor, float AnOpacity) {
  SetStroke(PaintOf(AColor, AnOpacity));
}

void TWyxCanvas::SetStrokeBitmap(const TRef<IBitmap>& ABitmap, float AnOpacity) {
  SetStroke(PaintOf(ABitmap, AnOpacity));
}

void TWyxCanvas::SetStrokeWidth(float AWidth, bool AnInScreenUnits) {
  FPen.Width = AWidth;
  FPen.IsInPixels = AnInScreenUnits;
  ApplyPen();
}

void TWyxCanvas::SetStrokePattern(TStrokePattern APattern) {
  FPen.Dash = static_cast<TDashStyle>(APattern);
  ApplyPen();
}

// ---------------------------------------------------------------- paths and shapes

void TWyxCanvas::Paint(const TPath& APath, TParts AParts) {
  TDrawing& Drawing = GetDrawing();
  Drawing.SetMatrix(FMatrix * FBaseMatrix);
  if (AParts.Fill) Drawing.Fill(APath);
  if (AParts.Stroke) Drawing.Stroke(APath);
}

void TWyxCanvas::BeginPath(bool AStroke, bool AFill) {
  FPath.Clear();
  FParts = {.Stroke = AStroke, .Fill = AFill};
}

void TWyxCanvas::CubicBezierTo(TPointF AControl1, TPointF AControl2, TPointF AnEnd) {
  FPath.CubicTo(AControl1, AControl2, AnEnd);
}

void TWyxCanvas::EndPath() {
  Paint(FPath, FParts);
  FPath.Clear();
}

void TWyxCanvas::PaintRect(const TRectF& ARect, TParts AParts) {
  FShape.Clear();
  FShape.AddRect(ARect);
  Paint(FShape, AParts);
}

void TWyxCanvas::PaintEllipse(const TRectF& ARect, TParts AParts) {
  FShape.Clear();
  AddEllipse(FShape, ARect);
  Paint(FShape, AParts);
}

void TWyxCanvas::PaintPolygon(const IPolygon* APolygon, TParts AParts) {
  FShape.Clear();
  if (APolygon) AddPoints(FShape, OwnElement<TWyxPolygon>(APolygon).GetPoints());
  Paint(FShape, AParts);
}

void TWyxCanvas::DrawLine(TPointF AFrom, TPointF ATo) {
  FShape.Clear();
  FShape.MoveTo(AFrom);
  FShape.LineTo(ATo);
  Paint(FShape, {.Stroke = true});
}

void TWyxCanvas::DrawRectangle(const TRectF& ARect) {
  PaintRect(ARect, {.Stroke = true, .Fill = true});
}

void TWyxCanvas::DrawEllipse(const TRectF& ARect) {
  PaintEllipse(ARect, {.Stroke = true, .Fill = true});
}

void TWyxCanvas::DrawPolygon(const IPolygon* APolygon) {
  PaintPolygon(APolygon, {.Stroke = true, .Fill = true});
}

void TWyxCanvas::StrokeRectangle(const TRectF& ARect) {
  PaintRect(ARect, {.Stroke = true});
}

void TWyxCanvas::StrokePolygon(const IPolygon* APolygon) {
  PaintPolygon(APolygon, {.Stroke = true});
}

void TWyxCanvas::StrokeEllipse(const TRectF& ARect) {
  PaintEllipse(ARect, {.Stroke = true});
}

void TWyxCanvas::FillEllipse(const TRectF& ARect) {
  PaintEllipse(ARect, {.Fill = true});
}

void TWyxCanvas::FillRect(const TRectF& ARect) {
  PaintRect(ARect, {.Fill = true});
}

// ---------------------------------------------------------------- the rest

void TWyxCanvas::Clear(TAlphaColor AColor) {
  GetDrawing().Clear(AColor);
}

void TWyxCanvas::DrawText(const std::string& AText, TPointF AnAt) {
  GetDrawing().SetMatrix(FMatrix * FBaseMatrix);
  FDrawing->DrawText(AText, AnAt);
}

TPointF TWyxCanvas::MeasureString(const std::string& AText) {
  return TDrawing::MeasureText(AText);
}

}  // namespace System::Beacon::Fencing::Canvas
