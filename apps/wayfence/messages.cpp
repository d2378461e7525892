#include "apps/wayfence/messages.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <cstdio>

#include "apps/wayfence/json_line.h"

namespace Wayfence {
namespace {

constexpr std::size_t MaxName = 80;  // characters

/// The first character of a text, which it loses.
std::string_view TakeCharacter(std::string_view& AText) {
  const std::string_view Result = AText.substr(0, std::max<std::size_t>(1, SequenceLength(AText)));
  AText.remove_prefix(Result.size());
  return Result;
}

std::string Escaped(std::string_view AText) {
  std::string Result;
  while (!AText.empty()) {
    const std::string_view Character = TakeCharacter(AText);
    const auto First = static_cast<unsigned char>(Character[0]);
    const bool IsControl =
        First < 0x20 || First == 0x7F ||
        (First == 0xC2 && Character.size() > 1 && static_cast<unsigned char>(Character[1]) < 0xA0);
    if (!IsControl && SequenceLength(Character) > 0)
      Result += Character;
    else
      for (const char Byte : Character)
        Result += fmt::format("\\x{:02X}", static_cast<unsigned>(static_cast<unsigned char>(Byte)));
  }
  return Result;
}

/// Where the first opening quote stands; the text's size when there is none. An apostrophe opens
/// nothing.
std::size_t FindQuotation(std::string_view AText) {
  if (AText.starts_with('\'')) return 0;
  const std::size_t At = std::min({AText.find(" '"), AText.find("('"), AText.find("['")});
  return At == std::string_view::npos ? AText.size() : At + 1;
}

/// Where the closing quote stands, from there on; the text's size when there is none.
std::size_t FindEnd(std::string_view AText, std::size_t AFrom) {
  const auto IsInWord = [&AText](std::size_t A) {
    return A < AText.size() && std::isalnum(static_cast<unsigned char>(AText[A])) != 0;
  };
  std::size_t Result = AText.find('\'', AFrom);
  while (Result != std::string_view::npos && IsInWord(Result + 1))
    Result = AText.find('\'', Result + 1);
  return std::min(Result, AText.size());
}

/// Without the middle of a text that is too long; messages end with what to do.
std::string WithoutMiddle(std::string_view AText) {
  constexpr std::size_t Start = 1200, End = 300;  // bytes
  if (AText.size() <= Start + End) return std::string(AText);
  const auto IsInside = [&AText](std::size_t A) { return (AText[A] & 0xC0) == 0x80; };
  std::size_t From = Start, To = AText.size() - End;
  while (From > 0 && IsInside(From)) --From;
  while (To < AText.size() && IsInside(To)) ++To;
  return fmt::format("{}…{}", AText.substr(0, From), AText.substr(To));
}

}  // namespace

void Say(std::string_view AText) {
  fmt::print(stderr, "wayfence: {}\n", Printable(AText));
}

std::string Printable(std::string_view AText) {
  std::string Result;
  while (!AText.empty()) {
    const std::size_t Begin = FindQuotation(AText);
    const std::size_t End = Begin < AText.size() ? FindEnd(AText, Begin + 1) : AText.size();
    if (End >= AText.size()) break;
    Result += Escaped(AText.substr(0, Begin + 1));
    Result += Escaped(Clipped(AText.substr(Begin + 1, End - Begin - 1))) + "'";
    AText.remove_prefix(End + 1);
  }
  return WithoutMiddle(Result + Escaped(AText));
}

std::string Clipped(std::string_view AName) {
  std::string Result;
  for (std::size_t I = 0; I < MaxName && !AName.empty(); ++I) Result += TakeCharacter(AName);
  return AName.empty() ? Result : Result + "…";
}

std::string Counted(std::uint64_t ACount, std::string_view AWhat) {
  return fmt::format("{} {}{}", ACount, AWhat, ACount == 1 ? "" : "s");
}

}  // namespace Wayfence
