// What a drawing draws on: a surface, and the drawing library's context for it.
#pragma once

#include <memory>

#include "platform/drawing/device_path.h"
#include "platform/drawing/library.h"
#include "platform/drawing/surface.h"

namespace System::Drawing {

struct TContextDeleter {
  void operator()(cairo_t* AContext) const noexcept;
};

/// Draws in pixels; the context's own matrix is the identity between calls.
class TTarget {
 public:
  explicit TTarget(TPictureSize ASize);

  cairo_surface_t* GetSurface() const noexcept { return FSurface.get(); }
  TRectF GetBounds() const noexcept;
  /// Whole pixels.
  void SetClip(const TRectF& AClip);

  void Clear(TAlphaColor AColor);
  void Fill(const TPath& APath, const TMatrix& AMatrix, const TPaint& APaint);
  void Stroke(const TPath& APath, const TMatrix& AMatrix, const TPen& APen);
  void DrawText(std::string_view AText, TPointF AnAt, const TMatrix& AMatrix, const TPaint& APaint);

 private:
  template <class TDraw>
  void Paint(const TPaint& APaint, const TRectF& ABounds, const TMatrix& AMatrix, TDraw&& ADraw);
  void MakeContext();
  void AddPath();
  bool IsVisible(const TBox& ABox) const { return ABox.Touches(TBox::Of(FClip)); }

  TSurface FSurface;
  std::unique_ptr<cairo_t, TContextDeleter> FContext;
  TRectF FClip;
  TDevicePath FPath;  // the memory is used again
};

}  // namespace System::Drawing
