#include "platform/color.h"

#include <array>

#include "platform/hex.h"

namespace System {

std::string ColorToString(TAlphaColor AColor) {
  const std::array<std::uint8_t, 4> Bytes{
      AColor.GetAlpha(), AColor.GetRed(), AColor.GetGreen(), AColor.GetBlue()};
  return "#" + BytesToHex(Bytes);
}

bool TryStringToColor(std::string_view AText, TAlphaColor& AColor) noexcept {
  std::array<std::uint8_t, 4> B{};
  if (AText.empty() || AText.front() != '#' || !HexToBytes(AText.substr(1), B)) return false;
  AColor.Value = std::uint32_t{B[0]} << 24 | std::uint32_t{B[1]} << 16 | std::uint32_t{B[2]} << 8 |
                 std::uint32_t{B[3]};
  return true;
}

}  // namespace System
