// Lines of text, set in one font.
#pragma once

#include <mutex>
#include <string_view>

#include "platform/drawing/library.h"
#include "platform/geometry.h"

namespace System::Drawing {

/// A text that is laid out. There is one at a time in the process: others wait while it lives.
class TTextLayout {
 public:
  /// What is not UTF-8 shows as replacement characters; a very long text is cut.
  explicit TTextLayout(std::string_view AText);

  /// Width and height, in the coordinates that it is drawn in.
  TPointF GetSize() const;
  /// Draws it from the current point on. `AStretch` is how much the context's matrix enlarges.
  void Show(cairo_t* AContext, double AStretch) const;

 private:
  const std::lock_guard<std::mutex> FGuard;
  PangoLayout* const FLayout;
};

}  // namespace System::Drawing
