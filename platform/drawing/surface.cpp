#include "platform/drawing/surface.h"

#include <cairo.h>

#include <algorithm>
#include <mutex>
#include <new>
#include <vector>

namespace System::Drawing {
namespace {

// The mean of four pixels, rounded; two channels at a time, each with room for the carry.
constexpr std::uint32_t MeanOf(std::uint32_t A, std::uint32_t B, std::uint32_t C, std::uint32_t D) {
  constexpr std::uint32_t Even = 0x00FF00FF;
  constexpr std::uint32_t Half = 0x00020002;
  const std::uint32_t Low = (A & Even) + (B & Even) + (C & Even) + (D & Even) + Half;
  const std::uint32_t High =
      ((A >> 8) & Even) + ((B >> 8) & Even) + ((C >> 8) & Even) + ((D >> 8) & Even) + Half;
  return ((Low >> 2) & Even) | (((High >> 2) & Even) << 8);
}

// An odd last column or row counts twice.
TSurface Halve(cairo_surface_t* AWhole) {
  const TPictureSize Size = GetSize(AWhole);
  const TPictureSize Half{(Size.Width + 1) / 2, (Size.Height + 1) / 2};
  TSurface Result =
      MakeSurface(Half, cairo_image_surface_get_format(AWhole) == CAIRO_FORMAT_ARGB32);
  const std::uint32_t* const From = GetPixels(AWhole).data();
  std::uint32_t* To = GetPixels(Result.get()).data();
  const auto Width = static_cast<std::size_t>(Size.Width);
  for (int Row = 0; Row < Half.Height; ++Row) {
    const std::uint32_t* const Upper = From + static_cast<std::size_t>(Row) * 2 * Width;
    const std::uint32_t* const Lower = Row * 2 + 1 < Size.Height ? Upper + Width : Upper;
    for (std::size_t X = 0; X < Width; X += 2) {
      const std::size_t Next = std::min(X + 1, Width - 1);
      *To++ = MeanOf(Upper[X], Upper[Next], Lower[X], Lower[Next]);
    }
  }
  cairo_surface_mark_dirty(Result.get());
  return Result;
}

}  // namespace

void TSurfaceDeleter::operator()(cairo_surface_t* ASurface) const noexcept {
  cairo_surface_destroy(ASurface);
}

TSurface MakeSurface(TPictureSize ASize, bool AHasAlpha) {
  TSurface Result(cairo_image_surface_create(
      AHasAlpha ? CAIRO_FORMAT_ARGB32 : CAIRO_FORMAT_RGB24, ASize.Width, ASize.Height));
  if (cairo_surface_status(Result.get()) != CAIRO_STATUS_SUCCESS) throw std::bad_alloc();
  return Result;
}

TPictureSize GetSize(cairo_surface_t* ASurface) noexcept {
  return {cairo_image_surface_get_width(ASurface), cairo_image_surface_get_height(ASurface)};
}

std::span<std::uint32_t> GetPixels(cairo_surface_t* ASurface) noexcept {
  // Both formats take four bytes a pixel, so that rows need no padding.
  const TPictureSize Size = GetSize(ASurface);
  return {reinterpret_cast<std::uint32_t*>(cairo_image_surface_get_data(ASurface)),
          static_cast<std::size_t>(Size.Width) * static_cast<std::size_t>(Size.Height)};
}

// ---------------------------------------------------------------- TPictureLevels

struct TPictureLevels::TState {
  std::mutex Lock;               // guards the copies in Levels; the first one stays
  std::vector<TSurface> Levels;  // never moved: room for all of them is there from the start
};

TPictureLevels::TPictureLevels(TSurface ASurface) : FState(std::make_unique<TState>()) {
  FState->Levels.reserve(17);  // 2^16 is more than any side
  FState->Levels.push_back(std::move(ASurface));
}

TPictureLevels::~TPictureLevels() = default;

cairo_surface_t* TPictureLevels::GetWhole() const noexcept {
  return FState->Levels.front().get();
}

cairo_surface_t* TPictureLevels::GetLevel(int& ALevel) {
  const std::lock_guard Guard(FState->Lock);
  auto& Levels = FState->Levels;
  const auto Wanted = static_cast<std::size_t>(std::max(ALevel, 0));
  while (Levels.size() <= Wanted && GetSize(Levels.back().get()) != TPictureSize{1, 1})
    Levels.push_back(Halve(Levels.back().get()));
  const std::size_t Found = std::min(Wanted, Levels.size() - 1);
  ALevel = static_cast<int>(Found);
  return Levels[Found].get();
}

}  // namespace System::Drawing
