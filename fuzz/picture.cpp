// Pictures: what is read has the size that its header told, and is drawn, written and read again.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "platform/drawing.h"

namespace {

using namespace System;

constexpr std::size_t MaxPixels = 1 << 20;

void DrawSmaller(const TRef<TPicture>& APicture) {
  TDrawing Drawing(16, 16);
  Drawing.SetFill({.Picture = APicture});
  TPath Rect;
  Rect.AddRect({0, 0, 16, 16});
  Drawing.Fill(Rect);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* AData, std::size_t ASize) {
  const std::string_view Bytes(reinterpret_cast<const char*>(AData), ASize);
  TRef<TPicture> Picture;
  try {
    Picture = DecodePicture(Bytes, "fuzz", MaxPixels);
  } catch (const EFileError&) {
    return 0;
  }
  if (Picture->GetSize() != ReadPictureSize(Bytes, "fuzz")) std::abort();
  DrawSmaller(Picture);
  if (DecodePicture(EncodePng(*Picture), "copy")->GetSize() != Picture->GetSize()) std::abort();
  return 0;
}
