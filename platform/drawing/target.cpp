#include "platform/drawing/target.h"

#include <cairo.h>

#include <algorithm>
#include <new>

#include "platform/drawing/matrices.h"
#include "platform/drawing/source.h"
#include "platform/drawing/text.h"

namespace System::Drawing {
namespace {

// How far outside the clip lines may go before they are cut.
constexpr double GuardWidth = 4096;
// The rasteriser takes somewhat more.
constexpr double MaxCoordinate = 4'000'000;
// Wider pens would take outlines out of the rasteriser's range. In pixels.
constexpr double MaxPenWidth = 500'000;
// Narrower ones leave no trace.
constexpr double MinPenWidth = 0.001;

// Dashes are as long as the pen is wide, times these; at least a pixel, so that a long line under a
// fine pen is not cut into millions of them.
void SetDash(cairo_t* AContext, TDashStyle AStyle, double AWidth, double AStretch) {
  const double Unit = std::max(AWidth, 1 / AStretch);
  const double Dash[] = {(AStyle == TDashStyle::Dash ? 3 : 1) * Unit, Unit};
  cairo_set_dash(AContext, Dash, AStyle == TDashStyle::Solid ? 0 : 2, 0);
}

}  // namespace

void TContextDeleter::operator()(cairo_t* AContext) const noexcept {
  cairo_destroy(AContext);
}

TTarget::TTarget(TPictureSize ASize) : FSurface(MakeSurface(ASize, true)) {
  FClip = GetBounds();
  MakeContext();
}

TRectF TTarget::GetBounds() const noexcept {
  const TPictureSize Size = GetSize(FSurface.get());
  return {0, 0, static_cast<float>(Size.Width), static_cast<float>(Size.Height)};
}

void TTarget::MakeContext() {
  FContext.reset(cairo_create(FSurface.get()));
  cairo_set_fill_rule(FContext.get(), CAIRO_FILL_RULE_EVEN_ODD);
  SetClip(FClip);
}

void TTarget::SetClip(const TRectF& AClip) {
  FClip = AClip;
  cairo_reset_clip(FContext.get());
  cairo_rectangle(FContext.get(), AClip.Left, AClip.Top, AClip.GetWidth(), AClip.GetHeight());
  cairo_clip(FContext.get());
}

// Sets up the source, draws, and puts the context right again when the library gave up on it.
template <class TDraw>
void TTarget::Paint(const TPaint& APaint,
                    const TRectF& ABounds,
                    const TMatrix& AMatrix,
                    TDraw&& ADraw) {
  cairo_t* const Context = FContext.get();
  const double Alpha = OpacityOf(APaint);
  const bool IsGrouped = APaint.Picture && Alpha < 1;
  if (Alpha == 0) return;
  if (IsGrouped) cairo_push_group(Context);
  if (SetSource(Context, APaint, ABounds, AMatrix)) ADraw(Context);
  if (IsGrouped) {
    cairo_pop_group_to_source(Context);
    cairo_paint_with_alpha(Context, Alpha);
  }
  cairo_new_path(Context);
  const cairo_status_t Status = cairo_status(Context);
  if (Status == CAIRO_STATUS_SUCCESS) return;
  MakeContext();
  if (Status == CAIRO_STATUS_NO_MEMORY) throw std::bad_alloc();
}

void TTarget::AddPath() {
  cairo_t* const Context = FContext.get();
  auto Point = FPath.GetPoints().begin();
  for (const TPathStep Step : FPath.GetSteps()) {
    switch (Step) {
      case TPathStep::Move:
        cairo_move_to(Context, Point->X, Point->Y);
        break;
      case TPathStep::Line:
        cairo_line_to(Context, Point->X, Point->Y);
        break;
      case TPathStep::Cubic:
        cairo_curve_to(
            Context, Point[0].X, Point[0].Y, Point[1].X, Point[1].Y, Point[2].X, Point[2].Y);
        Point += 3;
        continue;
      case TPathStep::Close:
        cairo_close_path(Context);
        continue;
    }
    ++Point;
  }
}

void TTarget::Clear(TAlphaColor AColor) {
  TPaint Color;
  Color.Color = AColor;
  Paint(Color, {}, {}, [](cairo_t* AContext) {
    cairo_set_operator(AContext, CAIRO_OPERATOR_SOURCE);
    cairo_paint(AContext);
    cairo_set_operator(AContext, CAIRO_OPERATOR_OVER);
  });
}

void TTarget::Fill(const TPath& APath, const TMatrix& AMatrix, const TPaint& APaint) {
  if (!IsUsable(AMatrix) || !FPath.Assign(APath, AMatrix)) return;
  if (!IsVisible(FPath.GetBounds())) return;
  const TBox Guard = TBox::Of(FClip).Inflated(GuardWidth);
  if (!Guard.Contains(FPath.GetBounds())) FPath.ClipFill(Guard);
  const TRectF Bounds = APaint.Picture ? APath.GetBounds() : TRectF{};
  Paint(APaint, Bounds, AMatrix, [this](cairo_t* AContext) {
    AddPath();
    cairo_fill(AContext);
  });
}

void TTarget::Stroke(const TPath& APath, const TMatrix& AMatrix, const TPen& APen) {
  if (!IsUsable(AMatrix) || !FPath.Assign(APath, AMatrix)) return;
  const cairo_matrix_t Matrix = ToCairo(APen.IsInPixels ? TMatrix::Identity() : AMatrix);
  const double Stretch = StretchOf(Matrix).Most;
  const double Width = std::min(static_cast<double>(APen.Width), MaxPenWidth / Stretch);
  if (!(Width * Stretch >= MinPenWidth)) return;  // nor is a number that is none

  const double Reach = Width * Stretch * 6;  // half the width, with the longest mitre
  if (!IsVisible(FPath.GetBounds().Inflated(Reach))) return;
  const TBox Guard = TBox::Of(FClip).Inflated(GuardWidth + Reach);
  if (!Guard.Contains(FPath.GetBounds())) FPath.ClipStroke(Guard, APen.Dash == TDashStyle::Solid);
  const TRectF Bounds = APen.Paint.Picture ? APath.GetBounds() : TRectF{};
  Paint(APen.Paint, Bounds, AMatrix, [&](cairo_t* AContext) {
    AddPath();
    cairo_set_matrix(AContext, &Matrix);
    cairo_set_line_width(AContext, Width);
    SetDash(AContext, APen.Dash, Width, Stretch);
    cairo_stroke(AContext);
    cairo_identity_matrix(AContext);
  });
}

void TTarget::DrawText(std::string_view AText,
                       TPointF AnAt,
                       const TMatrix& AMatrix,
                       const TPaint& APaint) {
  // Larger letters are no text any more, and smaller ones no letters.
  constexpr double MinStretch = 1 / 24.0;
  constexpr double MaxStretch = 1000;
  if (!IsUsable(AMatrix)) return;
  const TStretch Stretch = StretchOf(AMatrix);
  if (Stretch.Most < MinStretch || Stretch.Most > MaxStretch) return;

  const TTextLayout Layout(AText);
  const TPointF Size = Layout.GetSize();
  const TRectF Bounds{AnAt.X, AnAt.Y, AnAt.X + Size.X, AnAt.Y + Size.Y};
  TPath Outline;
  Outline.AddRect(Bounds);
  // Letters may reach a little out of the rectangle of their line.
  const double Reach = Stretch.Most * TDrawing::TextSize;
  if (!FPath.Assign(Outline, AMatrix) || !IsVisible(FPath.GetBounds().Inflated(Reach))) return;
  if (!TBox{}.Inflated(MaxCoordinate).Contains(FPath.GetBounds())) return;
  Paint(APaint, Bounds, AMatrix, [&](cairo_t* AContext) {
    const cairo_matrix_t Matrix = ToCairo(AMatrix);
    cairo_set_matrix(AContext, &Matrix);
    cairo_move_to(AContext, AnAt.X, AnAt.Y);
    Layout.Show(AContext, Stretch.Most);
    cairo_identity_matrix(AContext);
  });
}

}  // namespace System::Drawing
