#include "platform/drawing.h"

#include <cairo.h>
#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "platform/drawing/target.h"
#include "platform/drawing/text.h"
#include "platform/messages.h"

namespace System {

using namespace Drawing;

namespace {

std::unique_ptr<TTarget> MakeTarget(int AWidth, int AHeight) {
  if (std::min(AWidth, AHeight) < 1 || std::max(AWidth, AHeight) > MaxPictureSide)
    throw EGeneralError(fmt::format(Messages::SDrawingSize, AWidth, AHeight, MaxPictureSide));
  return std::make_unique<TTarget>(TPictureSize{AWidth, AHeight});
}

}  // namespace

TDrawing::TDrawing(int AWidth, int AHeight) {
  Resize(AWidth, AHeight);
}

TDrawing::~TDrawing() = default;

TPictureSize TDrawing::GetSize() const noexcept {
  return Drawing::GetSize(FTarget->GetSurface());
}

void TDrawing::Resize(int AWidth, int AHeight) {
  FTarget = MakeTarget(AWidth, AHeight);
  FClip = FTarget->GetBounds();
}

std::span<const std::uint32_t> TDrawing::GetPixels() const {
  cairo_surface_flush(FTarget->GetSurface());
  return Drawing::GetPixels(FTarget->GetSurface());
}

TRef<TPicture> TDrawing::GetPicture() const {
  return MakePicture(GetSize(), GetPixels());
}

void TDrawing::SetClip(const TRectF& AClip) {
  const TRectF Whole{std::floor(AClip.Left),
                     std::floor(AClip.Top),
                     std::ceil(AClip.Right),
                     std::ceil(AClip.Bottom)};
  FClip = IntersectRect(Whole, FTarget->GetBounds());
  FTarget->SetClip(FClip);
}

void TDrawing::ResetClip() {
  SetClip(FTarget->GetBounds());
}

void TDrawing::Clear(TAlphaColor AColor) {
  FTarget->Clear(AColor);
}

void TDrawing::Fill(const TPath& APath) {
  FTarget->Fill(APath, FMatrix, FFill);
}

void TDrawing::Stroke(const TPath& APath) {
  FTarget->Stroke(APath, FMatrix, FPen);
}

void TDrawing::DrawText(std::string_view AText, TPointF AnAt) {
  FTarget->DrawText(AText, AnAt, FMatrix, FFill);
}

TPointF TDrawing::MeasureText(std::string_view AText) {
  return TTextLayout(AText).GetSize();
}

}  // namespace System
