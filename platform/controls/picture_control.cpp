#include "platform/controls/picture_control.h"

#include <cmath>
#include <utility>

namespace System {

TPictureControl::TPictureControl(TComponent* AOwner, TPictureSize ASize, float AScale)
    : TControl(AOwner), FScale(AScale), FDrawing(ASize.Width, ASize.Height) {
  TPictureControl::Repaint();
}

TRectF TPictureControl::GetPixelRect() const {
  const auto [Width, Height] = FDrawing.GetSize();
  return {0, 0, static_cast<float>(Width), static_cast<float>(Height)};
}

TRectF TPictureControl::GetLocalRect() const {
  const TRectF Pixels = GetPixelRect();
  return {0, 0, Pixels.Right / FScale, Pixels.Bottom / FScale};
}

void TPictureControl::RepaintRect(const TRectF& ARect) {
  const TRectF Pixels{std::floor(ARect.Left * FScale),
                      std::floor(ARect.Top * FScale),
                      std::ceil(ARect.Right * FScale),
                      std::ceil(ARect.Bottom * FScale)};
  FDamage.Add(IntersectRect(Pixels, GetPixelRect()));
}

void TPictureControl::Repaint() {
  FDamage.Add(GetPixelRect());
}

void TPictureControl::SetBackground(TAlphaColor AColor) {
  FBackground = AColor;
  Repaint();
}

void TPictureControl::SetSize(TPictureSize ASize, float AScale) {
  if (ASize == FDrawing.GetSize() && AScale == FScale) return;
  FDrawing.Resize(ASize.Width, ASize.Height);
  FScale = AScale;
  FDamage = {};
  Repaint();
  Resized();
}

TDamage TPictureControl::PaintDamage() {
  TDamage Painted = std::exchange(FDamage, {});
  try {
    for (const TRectF& Part : Painted.GetRects()) PaintPart(Part);
  } catch (...) {
    for (const TRectF& Part : Painted.GetRects()) FDamage.Add(Part);
    throw;
  }
  return Painted;
}

void TPictureControl::PaintPart(const TRectF& APixels) {
  FDrawing.SetClip(APixels);
  FDrawing.SetMatrix(TMatrix::Scaling(FScale, FScale));
  FDrawing.SetFill({.Color = FBackground});
  FDrawing.SetPen({});
  FDrawing.Clear(FBackground);
  Paint(FDrawing);
}

}  // namespace System
