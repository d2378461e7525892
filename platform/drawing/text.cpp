#include "platform/drawing/text.h"

#include <pango/pangocairo.h>

#include <memory>

#include "platform/drawing.h"

namespace System::Drawing {
namespace {

constexpr const char* FontFamily = "DejaVu Sans";  // others stand in for what it has no letters for
constexpr std::size_t MaxTextSize = 16384;         // bytes
constexpr double MaxLetterStretch = 16;            // larger ones are drawn as outlines

// Metrics and shapes that are the same at every size: no hints, no rounding to whole pixels, no
// colours at edges.
void SetFontOptions(PangoContext* AContext) {
  cairo_font_options_t* const Options = cairo_font_options_create();
  cairo_font_options_set_hint_style(Options, CAIRO_HINT_STYLE_NONE);
  cairo_font_options_set_hint_metrics(Options, CAIRO_HINT_METRICS_OFF);
  cairo_font_options_set_antialias(Options, CAIRO_ANTIALIAS_GRAY);
  pango_cairo_context_set_font_options(AContext, Options);
  pango_context_set_round_glyph_positions(AContext, FALSE);
  cairo_font_options_destroy(Options);
}

// The one layout of the process with the fonts that it has loaded, and the lock that guards both.
class TTypesetter {
 public:
  TTypesetter() : FFonts(pango_cairo_font_map_new()) {
    PangoContext* const Context = pango_font_map_create_context(FFonts.get());
    SetFontOptions(Context);
    PangoFontDescription* const Font = pango_font_description_new();
    pango_font_description_set_family_static(Font, FontFamily);
    pango_font_description_set_absolute_size(Font, TDrawing::TextSize * PANGO_SCALE);
    Layout.reset(pango_layout_new(Context));
    pango_layout_set_font_description(Layout.get(), Font);
    pango_font_description_free(Font);
    g_object_unref(Context);
  }

  static TTypesetter& Get() {
    static TTypesetter Typesetter;
    return Typesetter;
  }

 private:
  struct TUnref {
    void operator()(gpointer AnObject) const noexcept { g_object_unref(AnObject); }
  };
  const std::unique_ptr<PangoFontMap, TUnref> FFonts;

 public:
  std::mutex Lock;
  std::unique_ptr<PangoLayout, TUnref> Layout;
};

}  // namespace

TTextLayout::TTextLayout(std::string_view AText)
    : FGuard(TTypesetter::Get().Lock), FLayout(TTypesetter::Get().Layout.get()) {
  const std::string_view Part = AText.substr(0, MaxTextSize);
  char* const Valid = g_utf8_make_valid(Part.data(), static_cast<gssize>(Part.size()));
  pango_layout_set_text(FLayout, Valid, -1);
  g_free(Valid);
}

TPointF TTextLayout::GetSize() const {
  int Width = 0;
  int Height = 0;
  pango_layout_get_size(FLayout, &Width, &Height);
  return {static_cast<float>(Width) / PANGO_SCALE, static_cast<float>(Height) / PANGO_SCALE};
}

void TTextLayout::Show(cairo_t* AContext, double AStretch) const {
  if (AStretch <= MaxLetterStretch) return pango_cairo_show_layout(AContext, FLayout);
  pango_cairo_layout_path(AContext, FLayout);
  cairo_fill(AContext);
}

}  // namespace System::Drawing
