// Colours.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace System {

/// A 32-bit ARGB colour, alpha in the top byte: 0xFF000000 is opaque black.
struct TAlphaColor {
  std::uint32_t Value = 0;

  constexpr std::uint8_t GetAlpha() const { return static_cast<std::uint8_t>(Value >> 24); }
  constexpr std::uint8_t GetRed() const { return static_cast<std::uint8_t>(Value >> 16); }
  constexpr std::uint8_t GetGreen() const { return static_cast<std::uint8_t>(Value >> 8); }
  constexpr std::uint8_t GetBlue() const { return static_cast<std::uint8_t>(Value); }
  bool operator==(const TAlphaColor&) const = default;
};

/// "#AARRGGBB".
std::string ColorToString(TAlphaColor AColor);
/// Reads "#AARRGGBB", digits of either letter case; false leaves `AColor` alone.
bool TryStringToColor(std::string_view AText, TAlphaColor& AColor) noexcept;

}  // namespace System
