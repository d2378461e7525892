#include "platform/drawing/source.h"

#include <cairo.h>

#include <algorithm>
#include <cmath>

#include "platform/drawing/surface.h"

namespace System::Drawing {
namespace {

bool SetPicture(cairo_t* AContext,
                const TPicture& APicture,
                const TRectF& ABounds,
                const TMatrix& AMatrix) {
  const TPictureSize Size = APicture.GetSize();
  const double Sx = (static_cast<double>(ABounds.Right) - ABounds.Left) / Size.Width;
  const double Sy = (static_cast<double>(ABounds.Bottom) - ABounds.Top) / Size.Height;
  const cairo_matrix_t Placing{Sx, 0, 0, Sy, ABounds.Left, ABounds.Top};
  const cairo_matrix_t ToPixels = ToCairo(AMatrix);
  cairo_matrix_t Matrix;
  cairo_matrix_multiply(&Matrix, &Placing, &ToPixels);
  int Level = LevelFor(StretchOf(Matrix));
  if (cairo_matrix_invert(&Matrix) != CAIRO_STATUS_SUCCESS) return false;

  cairo_surface_t* const Surface = APicture.GetLevels().GetLevel(Level);
  cairo_matrix_t Shrinking;
  cairo_matrix_init_scale(&Shrinking, std::ldexp(1.0, -Level), std::ldexp(1.0, -Level));
  cairo_matrix_multiply(&Matrix, &Matrix, &Shrinking);
  cairo_set_source_surface(AContext, Surface, 0, 0);
  cairo_pattern_t* const Pattern = cairo_get_source(AContext);
  cairo_pattern_set_matrix(Pattern, &Matrix);
  cairo_pattern_set_filter(Pattern, CAIRO_FILTER_BILINEAR);
  cairo_pattern_set_extend(Pattern, CAIRO_EXTEND_PAD);
  return true;
}

}  // namespace

int LevelFor(TStretch AStretch) {
  const double Level = std::max(-std::log2(AStretch.Most), -std::log2(AStretch.Least) - 4);
  return Level >= 1 ? static_cast<int>(std::min(Level, 30.0)) : 0;
}

double OpacityOf(const TPaint& APaint) {
  return APaint.Opacity > 0 ? std::min(static_cast<double>(APaint.Opacity), 1.0) : 0.0;
}

bool SetSource(cairo_t* AContext,
               const TPaint& APaint,
               const TRectF& ABounds,
               const TMatrix& AMatrix) {
  if (APaint.Picture) return SetPicture(AContext, *APaint.Picture, ABounds, AMatrix);
  cairo_set_source_rgba(AContext,
                        APaint.Color.GetRed() / 255.0,
                        APaint.Color.GetGreen() / 255.0,
                        APaint.Color.GetBlue() / 255.0,
                        APaint.Color.GetAlpha() / 255.0 * OpacityOf(APaint));
  return true;
}

}  // namespace System::Drawing
