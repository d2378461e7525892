#include "platform/hex.h"

#include <algorithm>

namespace System {

std::string BytesToHex(std::span<const std::uint8_t> ABytes) {
  constexpr std::string_view Digits = "0123456789ABCDEF";
  std::string Result;
  Result.reserve(2 * ABytes.size());
  for (const std::uint8_t Byte : ABytes) {
    Result += Digits[Byte >> 4];
    Result += Digits[Byte & 15];
  }
  return Result;
}

bool HexToBytes(std::string_view AText, std::span<std::uint8_t> ABytes) noexcept {
  if (AText.size() != 2 * ABytes.size()) return false;
  if (!std::all_of(AText.begin(), AText.end(), [](char C) { return HexDigit(C) >= 0; }))
    return false;
  for (std::size_t I = 0; I < ABytes.size(); ++I)
    ABytes[I] = static_cast<std::uint8_t>(HexDigit(AText[2 * I]) << 4 | HexDigit(AText[2 * I + 1]));
  return true;
}

}  // namespace System
