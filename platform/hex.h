// Hexadecimal text.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace System {

/// The value of a hexadecimal digit of either letter case, or -1.
constexpr int HexDigit(char AChar) noexcept {
  if (AChar >= '0' && AChar <= '9') return AChar - '0';
  if (AChar >= 'A' && AChar <= 'F') return AChar - 'A' + 10;
  if (AChar >= 'a' && AChar <= 'f') return AChar - 'a' + 10;
  return -1;
}

/// Two upper-case digits a byte.
std::string BytesToHex(std::span<const std::uint8_t> ABytes);

/// Reads exactly two digits for each byte of `ABytes`; false leaves `ABytes` alone.
bool HexToBytes(std::string_view AText, std::span<std::uint8_t> ABytes) noexcept;

}  // namespace System
