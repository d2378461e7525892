#include "apps/wayfence/json_line.h"

#include <fmt/format.h>

#include <cstdio>

namespace Wayfence {

std::size_t SequenceLength(std::string_view AText) {
  const auto Byte = [&AText](std::size_t I) { return static_cast<unsigned char>(AText[I]); };
  const unsigned char First = Byte(0);
  const std::size_t Length = First < 0x80   ? 1
                             : First < 0xC2 ? 0
                             : First < 0xE0 ? 2
                             : First < 0xF0 ? 3
                             : First < 0xF5 ? 4
                                            : 0;
  if (Length == 0 || Length > AText.size()) return 0;
  for (std::size_t I = 1; I < Length; ++I)
    if ((Byte(I) & 0xC0) != 0x80) return 0;
  const bool IsOverlong = (First == 0xE0 && Byte(1) < 0xA0) || (First == 0xF0 && Byte(1) < 0x90);
  const bool IsOutside = (First == 0xED && Byte(1) > 0x9F) || (First == 0xF4 && Byte(1) > 0x8F);
  return IsOverlong || IsOutside ? 0 : Length;
}

std::string JsonString(std::string_view AText) {
  std::string Result = "\"";
  while (!AText.empty()) {
    const std::size_t Length = SequenceLength(AText);
    const char Char = AText.front();
    if (Length == 0)
      Result += "\xEF\xBF\xBD";
    else if (Char == '"' || Char == '\\')
      (Result += '\\') += Char;
    else if (static_cast<unsigned char>(Char) < 0x20)
      Result += fmt::format("\\u{:04x}", static_cast<unsigned>(Char));
    else
      Result += AText.substr(0, Length);
    AText.remove_prefix(Length == 0 ? 1 : Length);
  }
  return Result + '"';
}

TJsonLine::TJsonLine(double ASeconds, std::string_view AEvent) {
  Decimal("time", ASeconds);
  Text("event", AEvent);
}

TJsonLine& TJsonLine::Text(std::string_view AName, std::string_view AValue) {
  return Json(AName, JsonString(AValue));
}

TJsonLine& TJsonLine::Number(std::string_view AName, std::int64_t AValue) {
  return Json(AName, fmt::format("{}", AValue));
}

TJsonLine& TJsonLine::Decimal(std::string_view AName, double AValue, int ADecimals) {
  return Json(AName, fmt::format("{:.{}f}", AValue, ADecimals));
}

TJsonLine& TJsonLine::Json(std::string_view AName, std::string_view AValue) {
  if (!FMembers.empty()) FMembers += ", ";
  FMembers += fmt::format("\"{}\": {}", AName, AValue);
  return *this;
}

void TJsonLine::Print() const {
  std::printf("%s\n", ToText().c_str());
}

}  // namespace Wayfence
