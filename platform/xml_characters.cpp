#include "platform/xml_characters.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

namespace System {
namespace {

struct TRange {
  char32_t First;
  char32_t Last;
};

// The characters beyond ASCII that may begin a name, and those that may only continue it.
constexpr TRange NameStarts[] = {{0xC0, 0xD6},
                                 {0xD8, 0xF6},
                                 {0xF8, 0x2FF},
                                 {0x370, 0x37D},
                                 {0x37F, 0x1FFF},
                                 {0x200C, 0x200D},
                                 {0x2070, 0x218F},
                                 {0x2C00, 0x2FEF},
                                 {0x3001, 0xD7FF},
                                 {0xF900, 0xFDCF},
                                 {0xFDF0, 0xFFFD},
                                 {0x10000, 0xEFFFF}};
constexpr TRange NameParts[] = {{0xB7, 0xB7}, {0x300, 0x36F}, {0x203F, 0x2040}};

template <std::size_t N>
bool IsWithin(const TRange (&ARanges)[N], char32_t ACode) noexcept {
  return std::any_of(ARanges, ARanges + N, [ACode](const TRange& ARange) {
    return ACode >= ARange.First && ACode <= ARange.Last;
  });
}

enum TNameRole : std::uint8_t { None, Part, Start };

// Of bytes; those beyond ASCII have none of their own.
constexpr std::array<TNameRole, 256> ByteRoles = [] {
  std::array<TNameRole, 256> Result{};
  for (char C = 'a'; C <= 'z'; ++C) Result[C] = Result[C - 'a' + 'A'] = Start;
  for (char C = '0'; C <= '9'; ++C) Result[C] = Part;
  Result['_'] = Result[':'] = Start;
  Result['-'] = Result['.'] = Part;
  return Result;
}();

TNameRole RoleOf(char32_t ACode) noexcept {
  if (ACode < 0x80) return ByteRoles[ACode];
  if (IsWithin(NameStarts, ACode)) return Start;
  return IsWithin(NameParts, ACode) ? Part : None;
}

/// Whether eight bytes are ASCII from the blank on; may be false without need.
bool AreEightPlain(const char* AText) noexcept {
  std::uint64_t Bytes = 0;
  std::memcpy(&Bytes, AText, sizeof Bytes);
  constexpr std::uint64_t Ones = 0x0101010101010101;
  return ((Bytes | (Bytes - ' ' * Ones)) & (0x80 * Ones)) == 0;
}

}  // namespace

TUTF8Character DecodeUTF8(std::string_view AText) noexcept {
  if (AText.empty()) return {};
  const unsigned char First = AText[0];
  if (First < 0x80) return {First, 1};
  const std::size_t Length = First < 0xE0 ? 2 : First < 0xF0 ? 3 : 4;
  if (First < 0xC2 || First > 0xF4 || AText.size() < Length) return {};
  char32_t Code = First & (0x7FU >> Length);
  for (std::size_t I = 1; I < Length; ++I) {
    const unsigned char Byte = AText[I];
    if ((Byte & 0xC0) != 0x80) return {};
    Code = Code << 6 | (Byte & 0x3F);
  }
  const bool IsOverlong = (Length == 3 && Code < 0x800) || (Length == 4 && Code < 0x10000);
  const bool IsSurrogate = Code >= 0xD800 && Code <= 0xDFFF;
  if (IsOverlong || IsSurrogate || Code > 0x10FFFF) return {};
  return {Code, Length};
}

bool IsXMLCharacter(char32_t ACode) noexcept {
  if (ACode < 0x20) return ACode == '\t' || ACode == '\n' || ACode == '\r';
  return ACode <= 0xD7FF || (ACode >= 0xE000 && ACode <= 0xFFFD) ||
         (ACode >= 0x10000 && ACode <= 0x10FFFF);
}

std::size_t FindNoXMLCharacter(std::string_view AText) noexcept {
  std::size_t At = 0;
  while (At < AText.size()) {
    if (AText.size() - At >= 8 && AreEightPlain(AText.data() + At)) {
      At += 8;
      continue;
    }
    const TUTF8Character Character = DecodeUTF8(AText.substr(At));
    if (Character.Length == 0 || !IsXMLCharacter(Character.Code)) return At;
    At += Character.Length;
  }
  return std::string_view::npos;
}

std::size_t XMLNameLength(std::string_view AText) noexcept {
  std::size_t At = 0;
  while (At < AText.size()) {
    const auto Byte = static_cast<unsigned char>(AText[At]);
    const bool IsASCII = Byte < 0x80;
    const TUTF8Character Character =
        IsASCII ? TUTF8Character{Byte, 1} : DecodeUTF8(AText.substr(At));
    const TNameRole Role = Character.Length == 0 ? None : RoleOf(Character.Code);
    if (Role == None || (At == 0 && Role != Start)) break;
    At += Character.Length;
  }
  return At;
}

bool IsXMLBlank(std::string_view AText) noexcept {
  return std::all_of(AText.begin(), AText.end(), &IsXMLSpace);
}

}  // namespace System
