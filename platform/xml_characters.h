// Characters, names and white space of XML.
#pragma once

#include <cstddef>
#include <string_view>

namespace System {

/// The character at the start of a UTF-8 text; `Length` is 0 when there is none.
struct TUTF8Character {
  char32_t Code = 0;
  std::size_t Length = 0;  ///< bytes
};
TUTF8Character DecodeUTF8(std::string_view AText) noexcept;

/// Whether XML 1.0 can hold a character, itself or by reference.
bool IsXMLCharacter(char32_t ACode) noexcept;

/// The place of the first byte that begins no character that XML can hold, or npos.
std::size_t FindNoXMLCharacter(std::string_view AText) noexcept;

/// The bytes of the name at the start of a text, 0 when none stands there.
std::size_t XMLNameLength(std::string_view AText) noexcept;

constexpr bool IsXMLSpace(char AChar) noexcept {
  return AChar == ' ' || AChar == '\t' || AChar == '\n' || AChar == '\r';
}

/// Whether a text holds nothing but white space.
bool IsXMLBlank(std::string_view AText) noexcept;

}  // namespace System
