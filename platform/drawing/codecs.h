// The readers of picture formats. Each takes the whole file, looks at its header first, and then
// fills the pixels of a surface of that size; both raise `EFileError`.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "platform/drawing.h"

namespace System::Drawing {

struct TPictureHeader {
  TPictureSize Size;
  bool HasAlpha = false;
};

TPictureHeader ReadPngHeader(std::string_view ABytes, const std::string& AName);
void DecodePng(std::string_view ABytes, const std::string& AName, std::span<std::uint32_t> APixels);

TPictureHeader ReadJpegHeader(std::string_view ABytes, const std::string& AName);
void DecodeJpeg(std::string_view ABytes,
                const std::string& AName,
                std::span<std::uint32_t> APixels);

TPictureHeader ReadWebPHeader(std::string_view ABytes, const std::string& AName);
void DecodeWebP(std::string_view ABytes,
                const std::string& AName,
                std::span<std::uint32_t> APixels);

[[noreturn]] void RaiseDamaged(const std::string& AName,
                               std::string_view AFormat,
                               std::string_view AWhat);

}  // namespace System::Drawing
