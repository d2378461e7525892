// Owners of the drawing library's objects.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "platform/drawing.h"
#include "platform/drawing/library.h"

namespace System::Drawing {

struct TSurfaceDeleter {
  void operator()(cairo_surface_t* ASurface) const noexcept;
};
using TSurface = std::unique_ptr<cairo_surface_t, TSurfaceDeleter>;

/// Sides are from 1 to `MaxPictureSide`. Raises `std::bad_alloc`.
TSurface MakeSurface(TPictureSize ASize, bool AHasAlpha);
TPictureSize GetSize(cairo_surface_t* ASurface) noexcept;
/// The pixels, for writing; rows follow each other without gaps.
std::span<std::uint32_t> GetPixels(cairo_surface_t* ASurface) noexcept;

/// A picture and its smaller copies, each half as wide and high as the one before. Any thread.
class TPictureLevels {
 public:
  explicit TPictureLevels(TSurface ASurface);
  ~TPictureLevels();

  cairo_surface_t* GetWhole() const noexcept;
  /// The copy that is 2^`ALevel` times smaller, or the smallest; `ALevel` becomes its level.
  cairo_surface_t* GetLevel(int& ALevel);

 private:
  struct TState;
  const std::unique_ptr<TState> FState;
};

}  // namespace System::Drawing
