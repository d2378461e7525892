#include <png.h>

#include <bit>

#include "platform/drawing/codecs.h"

namespace System::Drawing {
namespace {

class TPngReader {
 public:
  TPngReader(std::string_view ABytes, const std::string& AName) : FName(AName) {
    FImage.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_memory(&FImage, ABytes.data(), ABytes.size())) Raise();
  }
  ~TPngReader() { png_image_free(&FImage); }
  TPngReader(const TPngReader&) = delete;
  TPngReader& operator=(const TPngReader&) = delete;

  TPictureHeader GetHeader() const {
    return {.Size = {static_cast<int>(FImage.width), static_cast<int>(FImage.height)},
            .HasAlpha = (FImage.format & PNG_FORMAT_FLAG_ALPHA) != 0};
  }

  void Read(std::span<std::uint32_t> APixels) {
    FImage.format = std::endian::native == std::endian::little ? PNG_FORMAT_BGRA : PNG_FORMAT_ARGB;
    FImage.flags |= PNG_IMAGE_FLAG_16BIT_sRGB;
    if (!png_image_finish_read(&FImage, nullptr, APixels.data(), 0, nullptr)) Raise();
  }

 private:
  [[noreturn]] void Raise() {
    const std::string What = FImage.message;
    png_image_free(&FImage);
    RaiseDamaged(FName, "PNG", What);
  }

  const std::string& FName;
  png_image FImage{};
};

constexpr std::uint32_t Multiply(std::uint32_t AChannel, std::uint32_t AnAlpha) {
  return (AChannel * AnAlpha + 127) / 255;
}

void MultiplyWithAlpha(std::span<std::uint32_t> APixels) {
  for (std::uint32_t& Pixel : APixels) {
    const std::uint32_t Alpha = Pixel >> 24;
    if (Alpha == 255) continue;
    Pixel = Alpha << 24 | Multiply((Pixel >> 16) & 255, Alpha) << 16 |
            Multiply((Pixel >> 8) & 255, Alpha) << 8 | Multiply(Pixel & 255, Alpha);
  }
}

}  // namespace

TPictureHeader ReadPngHeader(std::string_view ABytes, const std::string& AName) {
  return TPngReader(ABytes, AName).GetHeader();
}

void DecodePng(std::string_view ABytes,
               const std::string& AName,
               std::span<std::uint32_t> APixels) {
  TPngReader Reader(ABytes, AName);
  const bool HasAlpha = Reader.GetHeader().HasAlpha;  // reading changes the format
  Reader.Read(APixels);
  if (HasAlpha) MultiplyWithAlpha(APixels);
}

}  // namespace System::Drawing
