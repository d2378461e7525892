// The field of squares drawn by Cairo itself: what painting a scene cannot be faster than.
#include <benchmark/benchmark.h>
#include <cairo.h>

#include "bench/scene_field.h"

namespace {

using Bench::TField;

void PaintAsCairo(benchmark::State& AState) {
  const TField Field(static_cast<int>(AState.range(0)));
  cairo_surface_t* const Surface =
      cairo_image_surface_create(CAIRO_FORMAT_ARGB32, TField::ScreenWidth, TField::ScreenHeight);
  cairo_t* const Context = cairo_create(Surface);
  const double Scale = TField::ScreenHeight / static_cast<double>(Field.GetSide());
  for (auto _ : AState) {
    cairo_identity_matrix(Context);
    cairo_set_source_rgb(Context, 1, 1, 1);
    cairo_paint(Context);
    for (int I = 0; I < AState.range(0); ++I) {
      const std::uint32_t Color = Field.GetColor(I);
      cairo_identity_matrix(Context);
      cairo_scale(Context, Scale, Scale);
      cairo_translate(Context, Field.GetX(I), Field.GetY(I));
      cairo_rectangle(Context, 0, 0, TField::Size, TField::Size);
      cairo_identity_matrix(Context);
      cairo_set_source_rgb(
          Context, (Color >> 16 & 255) / 255.0, (Color >> 8 & 255) / 255.0, (Color & 255) / 255.0);
      cairo_fill_preserve(Context);
      cairo_set_source_rgb(Context, 0, 0, 0);
      cairo_set_line_width(Context, 1);
      cairo_stroke(Context);
    }
    benchmark::DoNotOptimize(cairo_image_surface_get_data(Surface));
  }
  cairo_destroy(Context);
  cairo_surface_destroy(Surface);
}
BENCHMARK(PaintAsCairo)->Name("PaintAsCairo/plain")->Arg(10'000)->Unit(benchmark::kMillisecond);

}  // namespace
