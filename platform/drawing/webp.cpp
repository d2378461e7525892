#include <fmt/format.h>
#include <webp/decode.h>

#include <bit>

#include "platform/drawing/codecs.h"
#include "platform/messages.h"

namespace System::Drawing {
namespace {

const std::uint8_t* BytesOf(std::string_view ABytes) {
  return reinterpret_cast<const std::uint8_t*>(ABytes.data());
}

void Check(VP8StatusCode AStatus, const std::string& AName) {
  switch (AStatus) {
    case VP8_STATUS_OK:
      return;
    case VP8_STATUS_OUT_OF_MEMORY:
      throw std::bad_alloc();
    case VP8_STATUS_NOT_ENOUGH_DATA:
    case VP8_STATUS_SUSPENDED:
      RaiseDamaged(AName, "WebP", "it ends too early");
    default:
      RaiseDamaged(AName, "WebP", "its data cannot be decoded");
  }
}

}  // namespace

TPictureHeader ReadWebPHeader(std::string_view ABytes, const std::string& AName) {
  WebPBitstreamFeatures Features{};
  Check(WebPGetFeatures(BytesOf(ABytes), ABytes.size(), &Features), AName);
  if (Features.has_animation) throw EFileError(fmt::format(Messages::SAnimation, AName));
  return {.Size = {Features.width, Features.height}, .HasAlpha = Features.has_alpha != 0};
}

void DecodeWebP(std::string_view ABytes,
                const std::string& AName,
                std::span<std::uint32_t> APixels) {
  const TPictureSize Size = ReadWebPHeader(ABytes, AName).Size;
  WebPDecoderConfig Config{};
  WebPInitDecoderConfig(&Config);
  Config.output.colorspace =
      std::endian::native == std::endian::little ? MODE_bgrA : MODE_Argb;  // multiplied with alpha
  Config.output.is_external_memory = 1;
  Config.output.u.RGBA = {.rgba = reinterpret_cast<std::uint8_t*>(APixels.data()),
                          .stride = Size.Width * 4,
                          .size = APixels.size_bytes()};
  Check(WebPDecode(BytesOf(ABytes), ABytes.size(), &Config), AName);
}

}  // namespace System::Drawing
