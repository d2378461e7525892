#include <cairo.h>
#include <fmt/format.h>

#include <algorithm>

#include "platform/drawing/codecs.h"
#include "platform/drawing/surface.h"
#include "platform/files.h"
#include "platform/messages.h"

namespace System {

using namespace Drawing;

namespace Drawing {

void RaiseDamaged(const std::string& AName, std::string_view AFormat, std::string_view AWhat) {
  throw EFileError(fmt::format(Messages::SDamagedPicture, AName, AFormat, AWhat));
}

}  // namespace Drawing

namespace {

struct TCodec {
  decltype(&ReadPngHeader) ReadHeader;
  decltype(&DecodePng) Decode;
};

TCodec FindCodec(std::string_view ABytes, const std::string& AName) {
  if (ABytes.starts_with("\x89PNG\r\n\x1A\n")) return {&ReadPngHeader, &DecodePng};
  if (ABytes.starts_with("\xFF\xD8\xFF")) return {&ReadJpegHeader, &DecodeJpeg};
  if (ABytes.starts_with("RIFF") && ABytes.substr(0, 12).ends_with("WEBP"))
    return {&ReadWebPHeader, &DecodeWebP};
  throw EFileError(fmt::format(Messages::SUnknownPicture, AName));
}

void CheckSize(TPictureSize ASize, const std::string& AName, std::size_t AMaxPixels) {
  const bool HasSides = ASize.Width >= 1 && ASize.Width <= MaxPictureSide && ASize.Height >= 1 &&
                        ASize.Height <= MaxPictureSide;
  if (HasSides &&
      static_cast<std::size_t>(ASize.Width) * static_cast<std::size_t>(ASize.Height) <= AMaxPixels)
    return;
  throw EFileError(fmt::format(
      Messages::SLargePicture, AName, ASize.Width, ASize.Height, MaxPictureSide, AMaxPixels));
}

cairo_status_t Append(void* AText, const unsigned char* ABytes, unsigned int ASize) noexcept {
  try {
    static_cast<std::string*>(AText)->append(reinterpret_cast<const char*>(ABytes), ASize);
    return CAIRO_STATUS_SUCCESS;
  } catch (const std::bad_alloc&) {
    return CAIRO_STATUS_NO_MEMORY;
  }
}

}  // namespace

TPicture::TPicture(std::unique_ptr<TPictureLevels> ALevels) : FLevels(std::move(ALevels)) {}

TPicture::~TPicture() = default;

TPictureSize TPicture::GetSize() const noexcept {
  return Drawing::GetSize(FLevels->GetWhole());
}

std::span<const std::uint32_t> TPicture::GetPixels() const noexcept {
  return Drawing::GetPixels(FLevels->GetWhole());
}

TRef<TPicture> DecodePicture(std::string_view ABytes,
                             const std::string& AName,
                             std::size_t AMaxPixels) {
  const TCodec Codec = FindCodec(ABytes, AName);
  const TPictureHeader Header = Codec.ReadHeader(ABytes, AName);
  CheckSize(Header.Size, AName, AMaxPixels);
  TSurface Surface = MakeSurface(Header.Size, Header.HasAlpha);
  Codec.Decode(ABytes, AName, GetPixels(Surface.get()));
  cairo_surface_mark_dirty(Surface.get());
  return New<TPicture>(std::make_unique<TPictureLevels>(std::move(Surface)));
}

TRef<TPicture> LoadPicture(const std::string& AFileName, const std::string& AName) {
  return DecodePicture(ReadWholeFile(AFileName, MaxPictureFileSize),
                       AName.empty() ? AFileName : AName);
}

TPictureSize ReadPictureSize(std::string_view ABytes, const std::string& AName) {
  return FindCodec(ABytes, AName).ReadHeader(ABytes, AName).Size;
}

TRef<TPicture> MakePicture(TPictureSize ASize, std::span<const std::uint32_t> APixels) {
  TSurface Surface = MakeSurface(ASize, true);
  std::copy(APixels.begin(), APixels.end(), GetPixels(Surface.get()).begin());
  cairo_surface_mark_dirty(Surface.get());
  return New<TPicture>(std::make_unique<TPictureLevels>(std::move(Surface)));
}

std::string EncodePng(const TPicture& APicture) {
  std::string Result;
  if (cairo_surface_write_to_png_stream(APicture.GetLevels().GetWhole(), &Append, &Result) !=
      CAIRO_STATUS_SUCCESS)
    throw std::bad_alloc();
  return Result;
}

}  // namespace System
