#include <cmath>

#include "scene/canvas/System.Beacon.Fencing.Canvas.Wyx.h"
#include "scene/canvas/messages.h"

namespace System::Beacon::Fencing::Canvas {
namespace {

constinit TRectPolygonPool RectPolygons;

TPaint ColorPaint(TAlphaColor AColor, float AnOpacity) {
  TPaint Result;
  Result.Color = AColor;
  Result.Opacity = AnOpacity;
  return Result;
}

}  // namespace

TWyxCanvas::TWyxCanvas() : TPathCanvas(RectPolygons) {}

TWyxCanvas::~TWyxCanvas() {
  EndScene();
}

void TWyxCanvas::BeginScene(const TRef<ILayer>& ALayer) {
  if (FDrawing) throw EGeneralError(std::string(Messages::SAlreadyPainting));
  TDrawing* const Drawing = ALayer ? Own<TWyxLayer>(*ALayer).GetDrawing() : nullptr;
  if (!Drawing) throw EGeneralError(std::string(Messages::SNoSurface));
  FLayer = ALayer;
  FDrawing = Drawing;
  FBaseMatrix = Drawing->GetMatrix();
  FFillToRestore = Drawing->GetFill();
  FPenToRestore = Drawing->GetPen();
  SetMatrix(TMatrix::Identity());
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

// A bitmap that is none, or is not loaded, paints nothing.
TPaint TWyxCanvas::PaintOf(const TRef<IBitmap>& ABitmap, float AnOpacity) const {
  TPaint Result;
  Result.Picture = ABitmap ? Own<TWyxBitmap>(*ABitmap).GetPicture() : nullptr;
  Result.Opacity = Result.Picture ? AnOpacity : 0.0F;
  return Result;
}

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
  SetFill(ColorPaint(AColor, AnOpacity));
}

void TWyxCanvas::SetFillBitmap(const TRef<IBitmap>& ABitmap, float AnOpacity) {
  SetFill(PaintOf(ABitmap, AnOpacity));
}

void TWyxCanvas::SetStrokeColor(TAlphaColor AColor, float AnOpacity) {
  SetStroke(ColorPaint(AColor, AnOpacity));
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
  Drawing.SetMatrix(GetMatrix() * FBaseMatrix);
  if (AParts.Fill) Drawing.Fill(APath);
  if (AParts.Stroke) Drawing.Stroke(APath);
}

// ---------------------------------------------------------------- the rest

void TWyxCanvas::Clear(TAlphaColor AColor) {
  GetDrawing().Clear(AColor);
}

void TWyxCanvas::DrawText(const std::string& AText, TPointF AnAt) {
  GetDrawing().SetMatrix(GetMatrix() * FBaseMatrix);
  FDrawing->DrawText(AText, AnAt);
}

TPointF TWyxCanvas::MeasureString(const std::string& AText) {
  return TDrawing::MeasureText(AText);
}

}  // namespace System::Beacon::Fencing::Canvas
