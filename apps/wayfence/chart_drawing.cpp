#include "apps/wayfence/chart_drawing.h"

#include <cmath>
#include <numbers>

namespace Wayfence {

using namespace System;

void DrawWords(
    TDrawing& ADrawing, std::string_view AText, TPointF AnAt, float ASize, TPointF AnAnchor) {
  const TPointF Size = TDrawing::MeasureText(AText) * ASize;
  ADrawing.SetMatrix(
      TMatrix::Scaling(ASize, ASize) *
      TMatrix::Translation(AnAt.X - Size.X * AnAnchor.X, AnAt.Y - Size.Y * AnAnchor.Y));
  ADrawing.SetFill({.Color = TAlphaColor{0xFF303840}});
  ADrawing.DrawText(AText, {0.0F, 0.0F});
  ADrawing.SetMatrix(TMatrix::Identity());
}

void FillRect(TDrawing& ADrawing, const TRectF& ARect, TAlphaColor AColor) {
  TPath Path;
  Path.AddRect(ARect);
  ADrawing.SetFill({.Color = AColor});
  ADrawing.Fill(Path);
}

void DrawDot(TDrawing& ADrawing, TPointF ACentre, float ARadius, TAlphaColor AColor) {
  constexpr int Corners = 12;
  TPath Path;
  for (int I = 0; I < Corners; ++I) {
    const float Angle = 2.0F * std::numbers::pi_v<float> * static_cast<float>(I) / Corners;
    Path.LineTo(ACentre + TPointF{std::cos(Angle), std::sin(Angle)} * ARadius);
  }
  Path.Close();
  ADrawing.SetFill({.Color = AColor});
  ADrawing.Fill(Path);
}

void DrawLines(TDrawing& ADrawing, const TPath& APath, float AWidth, TAlphaColor AColor) {
  ADrawing.SetPen({.Paint = {.Color = AColor}, .Width = AWidth});
  ADrawing.Stroke(APath);
}

}  // namespace Wayfence
