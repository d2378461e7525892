#include "persistence/value_text.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <system_error>

#include "persistence/System.Beacon.Fencing.RttiUtils.h"
#include "persistence/messages.h"
#include "platform/base64.h"
#include "platform/errors.h"
#include "platform/xml_characters.h"

namespace System::Beacon::Fencing {
namespace {

template <class... TArguments>
[[noreturn]] void Refuse(std::string_view AMessage, const TArguments&... AArguments) {
  throw EConvertError(fmt::format(fmt::runtime(AMessage), AArguments...));
}

/// As much of a refused text as a message shows.
std::string_view Shown(std::string_view AText) {
  return AText.substr(0, 60);
}

// ---------------------------------------------------------------- writing

void AppendInteger(std::string& AText, std::int64_t AValue) {
  std::array<char, 24> Buffer;
  AText.append(Buffer.data(), std::to_chars(Buffer.begin(), Buffer.end(), AValue).ptr);
}

/// Appends AWidth digits of a number, zeros in front.
void AppendDigits(std::string& AText, std::uint64_t AValue, std::size_t AWidth) {
  const std::size_t Start = AText.size();
  AText.resize(Start + AWidth);
  for (std::size_t I = AWidth; I > 0; --I, AValue /= 10)
    AText[Start + I - 1] = static_cast<char>('0' + AValue % 10);
}

/// The usual numbers, 0.001 to a million, with 15 significant digits, exactly: the fraction, at
/// most 33 bits, times a power of ten, nine digits first and then the rest. Others are left alone.
bool AppendUsualFloat(std::string& AText, float AValue) {
  const float Magnitude = std::abs(AValue);
  if (!(Magnitude >= 0.001F && Magnitude < 1E6F)) return false;
  const auto Bits = std::bit_cast<std::uint32_t>(Magnitude);
  const std::uint64_t Mantissa = (Bits & 0x7FFFFF) | 0x800000;
  const std::uint32_t Shift = 150 - (Bits >> 23);
  const std::uint64_t Mask = (std::uint64_t{1} << Shift) - 1;
  const std::uint64_t Whole = Mantissa >> Shift;
  // As 32-bit numbers 0.001 and 0.1 lie above themselves, 0.01 below.
  std::size_t Places = Whole > 0 || Magnitude >= 0.1F ? 15 : Magnitude > 0.01F ? 16 : 17;
  std::uint64_t Power = Places == 15 ? 1'000'000 : Places == 16 ? 10'000'000 : 100'000'000;
  for (std::uint64_t Rest = Whole; Rest > 0; Rest /= 10, --Places) Power /= 10;
  const std::uint64_t High = (Mantissa & Mask) * 1'000'000'000;
  const std::uint64_t Low = (High & Mask) * Power;
  const std::uint64_t Half = (Mask >> 1) + 1;
  std::uint64_t Digits = (High >> Shift) * Power + (Low >> Shift);
  if ((Low & Mask) > Half || ((Low & Mask) == Half && Digits % 2 == 1)) ++Digits;
  for (; Digits % 10 == 0; Digits /= 10) --Places;
  if (AValue < 0.0F) AText += '-';
  AppendInteger(AText, static_cast<std::int64_t>(Whole));
  AppendDigits(AText += '.', Digits, Places);
  return true;
}

template <class... TFloats>
void AppendFloats(std::string& AText, float AFirst, TFloats... AOthers) {
  AppendFloat(AText, AFirst);
  ((AText += '|', AppendFloat(AText, AOthers)), ...);
}

void AppendColour(std::string& AText, TAlphaColor AColour) {
  AppendInteger(AText, AColour.GetRed());
  for (const std::uint8_t Part : {AColour.GetGreen(), AColour.GetBlue(), AColour.GetAlpha()})
    AppendInteger(AText += '|', Part);
}

void AppendName(std::string& AText, const TValue& AValue) {
  const TTypeInfo& Type = *AValue.GetType();
  const std::int64_t Ordinal = AValue.GetOrdinal();
  if (Ordinal < 0 || Ordinal >= static_cast<std::int64_t>(Type.Names.size()))
    Refuse(Messages::SNoName, Ordinal, Type.Name);
  AText += Type.Names[static_cast<std::size_t>(Ordinal)];
}

/// What stands for a character that cannot stand for itself.
std::string_view ReferenceFor(char AChar) noexcept {
  switch (AChar) {
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '&':
      return "&amp;";
    case '"':
      return "&quot;";
    case '\'':
      return "&apos;";
    default:
      return "&#13;";
  }
}

bool IsEscaped(char AChar) noexcept {
  return AChar <= '>' && (AChar == '<' || AChar == '>' || AChar == '&' || AChar == '"' ||
                          AChar == '\'' || AChar == '\r');
}

void AppendEscaped(std::string& AText, std::string_view AValue) {
  while (true) {
    const auto Next = std::find_if(AValue.begin(), AValue.end(), IsEscaped);
    AText.append(AValue.begin(), Next);
    if (Next == AValue.end()) return;
    AText += ReferenceFor(*Next);
    AValue.remove_prefix(Next - AValue.begin() + 1);
  }
}

void AppendReferences(std::string& AText, std::string_view ASpace) {
  for (const char C : ASpace) {
    AText += "&#";
    AppendInteger(AText, C);
    AText += ';';
  }
}

// ---------------------------------------------------------------- reading

template <std::size_t N>
std::array<std::string_view, N> Split(std::string_view AText) {
  std::array<std::string_view, N> Result;
  std::string_view Rest = AText;
  for (std::size_t I = 0; I < N; ++I) {
    const std::size_t Bar = Rest.find('|');
    if ((Bar == std::string_view::npos) != (I + 1 == N))
      Refuse(Messages::SNotSoManyParts, Shown(AText), N);
    Result[I] = Rest.substr(0, Bar);
    Rest.remove_prefix(I + 1 < N ? Bar + 1 : 0);
  }
  return Result;
}

/// Whether a whole text is a number of the type; `AValue` is left alone when it is none.
template <class T, class... TFormat>
bool TryNumber(std::string_view AText, T& AValue, TFormat... AFormat) noexcept {
  const char* const End = AText.data() + AText.size();
  const auto [Last, Error] = std::from_chars(AText.data(), End, AValue, AFormat...);
  return Error == std::errc() && Last == End;
}

/// Whether a number that is out of range is so for being too near to 0: the place of its first
/// digit, moved by the exponent, is behind the point.
bool IsTooSmall(std::string_view AText) {
  const std::size_t Mark = std::min(AText.find_first_of("eE"), AText.size());
  const std::string_view Digits = AText.substr(0, Mark);
  const auto Point = static_cast<std::int64_t>(std::min(Digits.find('.'), Digits.size()));
  const auto First = static_cast<std::int64_t>(Digits.find_first_of("123456789"));
  std::string_view Exponent = AText.substr(std::min(Mark + 1, AText.size()));
  if (Exponent.starts_with('+')) Exponent.remove_prefix(1);
  std::int64_t Shift = 0;
  if (!Exponent.empty() && !TryNumber(Exponent, Shift)) return Exponent.starts_with('-');
  return Point - First + Shift <= 0;
}

/// What is too small for a 32-bit number is 0.
float ParseFloat(std::string_view AText) {
  float Result = 0.0F;
  const char* const End = AText.data() + AText.size();
  const auto [Last, Error] = std::from_chars(AText.data(), End, Result);
  if (Last == End && Error == std::errc() && std::isfinite(Result)) return Result;
  const bool IsZero = Last == End && Error == std::errc::result_out_of_range && IsTooSmall(AText);
  if (!IsZero) Refuse(Messages::SNoNumber, Shown(AText));
  return AText.starts_with('-') ? -0.0F : 0.0F;
}

TAlphaColor ParseColour(std::string_view AText) {
  std::array<std::uint8_t, 4> Parts{};
  const auto Texts = Split<4>(AText);
  for (std::size_t I = 0; I < Parts.size(); ++I)
    if (!TryNumber(Texts[I], Parts[I])) Refuse(Messages::SNoColour, Shown(AText));
  const auto [Red, Green, Blue, Alpha] = Parts;
  return {std::uint32_t{Alpha} << 24 | std::uint32_t{Red} << 16 | std::uint32_t{Green} << 8 | Blue};
}

bool ParseBoolean(std::string_view AText) {
  if (SameName(AText, "True")) return true;
  if (SameName(AText, "False")) return false;
  double Number = 0.0;
  if (!TryNumber(AText, Number) || !std::isfinite(Number))
    Refuse(Messages::SNoBoolean, Shown(AText));
  return Number != 0.0;
}

std::int64_t ParseOrdinal(std::string_view AText, const TTypeInfo& AType) {
  const auto Found =
      std::find_if(AType.Names.begin(), AType.Names.end(), [AText](std::string_view AName) {
        return SameName(AName, AText);
      });
  if (Found == AType.Names.end()) {
    Refuse(Messages::SNoValueOf,
           Shown(AText),
           AType.Name,
           fmt::join(AType.Names.begin(), AType.Names.end(), ", "));
  }
  return Found - AType.Names.begin();
}

TPointF ParsePoint(std::string_view AText) {
  const auto [X, Y] = Split<2>(AText);
  return {ParseFloat(X), ParseFloat(Y)};
}

TRectF ParseRect(std::string_view AText) {
  const auto [Left, Top, Right, Bottom] = Split<4>(AText);
  return {ParseFloat(Left), ParseFloat(Top), ParseFloat(Right), ParseFloat(Bottom)};
}

std::string ParseHalf(std::string_view AText) {
  return DecodeBase64(AText.substr(AText.substr(0, 1) == ":" ? 1 : 0));
}

TStringPair ParseStringPair(std::string_view AText) {
  const auto [Key, Value] = Split<2>(AText);
  return {ParseHalf(Key), ParseHalf(Value)};
}

TIntegerPair ParseIntegerPair(std::string_view AText) {
  const auto [First, Second] = Split<2>(AText);
  return {ParseInteger(First), ParseInteger(Second)};
}

}  // namespace

bool HasText(const TTypeInfo& AType) noexcept {
  switch (AType.Kind) {
    case TTypeKind::Boolean:
    case TTypeKind::Integer:
    case TTypeKind::Single:
    case TTypeKind::String:
    case TTypeKind::Enumeration:
    case TTypeKind::Color:
    case TTypeKind::GUID:
    case TTypeKind::Point:
    case TTypeKind::Rect:
    case TTypeKind::StringPair:
    case TTypeKind::IntegerPair:
      return true;
    default:
      return false;
  }
}

void AppendFloat(std::string& AText, float AValue) {
  constexpr float Whole = 1E15F;  // up to here whole numbers are all digits
  if (!std::isfinite(AValue)) Refuse(Messages::SNotFinite, AValue);
  if (std::abs(AValue) < Whole && AValue == std::trunc(AValue) && AValue != 0.0F)
    return AppendInteger(AText, static_cast<std::int64_t>(AValue));
  if (AppendUsualFloat(AText, AValue)) return;
  std::array<char, 32> Buffer;
  const auto Written =
      std::to_chars(Buffer.begin(), Buffer.end(), double{AValue}, std::chars_format::general, 15);
  const std::string_view Text(Buffer.data(), Written.ptr - Buffer.data());
  const std::size_t Mark = Text.find('e');  // "1e-05", "1e+20"
  AText += Text.substr(0, Mark);
  if (Mark == std::string_view::npos) return;
  AText += Text[Mark + 1] == '-' ? "E-" : "E";
  AText += Text.substr(Text.find_first_not_of('0', Mark + 2));
}

void AppendXMLText(std::string& AText, std::string_view AValue) {
  const std::size_t Bad = FindNoXMLCharacter(AValue);
  if (Bad != std::string_view::npos) Refuse(Messages::SNoText, Bad + 1);
  constexpr std::string_view Space = " \t\n\r";
  const std::size_t First = std::min(AValue.find_first_not_of(Space), AValue.size());
  const std::size_t Last = AValue.find_last_not_of(Space) + 1;  // npos + 1 is 0
  AppendReferences(AText, AValue.substr(0, First));
  if (First == AValue.size()) return;
  AppendEscaped(AText, AValue.substr(First, Last - First));
  AppendReferences(AText, AValue.substr(Last));
}

void AppendValueText(std::string& AText, const TValue& AValue) {
  switch (AValue.GetType()->Kind) {
    case TTypeKind::Boolean:
      AText += AValue.As<bool>() ? "True" : "False";
      return;
    case TTypeKind::Integer:
      return AppendInteger(AText, AValue.GetOrdinal());
    case TTypeKind::Single:
      return AppendFloat(AText, AValue.As<float>());
    case TTypeKind::String:
      return AppendXMLText(AText, std::get<std::string>(AValue.GetData()));
    case TTypeKind::Enumeration:
      return AppendName(AText, AValue);
    case TTypeKind::Color:
      return AppendColour(AText, AValue.As<TAlphaColor>());
    case TTypeKind::GUID:
      AText += GUIDToString(AValue.As<TGUID>());
      return;
    case TTypeKind::Point: {
      const auto Point = AValue.As<TPointF>();
      return AppendFloats(AText, Point.X, Point.Y);
    }
    case TTypeKind::Rect: {
      const auto Rect = AValue.As<TRectF>();
      return AppendFloats(AText, Rect.Left, Rect.Top, Rect.Right, Rect.Bottom);
    }
    case TTypeKind::StringPair: {
      const auto Pair = AValue.As<TStringPair>();
      return AppendXMLText(AText,
                           ":" + EncodeBase64(Pair.first) + "|:" + EncodeBase64(Pair.second));
    }
    case TTypeKind::IntegerPair: {
      const auto Pair = AValue.As<TIntegerPair>();
      AppendInteger(AText, Pair.first);
      return AppendInteger(AText += '|', Pair.second);
    }
    default:
      Refuse(Messages::SUnsupportedProperty);
  }
}

std::int32_t ParseInteger(std::string_view AText) {
  std::int32_t Result = 0;
  std::uint32_t Bits = 0;
  if (TryNumber(AText, Result)) return Result;
  const bool IsHexadecimal = AText.substr(0, 1) == "$" && TryNumber(AText.substr(1), Bits, 16);
  if (!IsHexadecimal) Refuse(Messages::SNoInteger, Shown(AText));
  return static_cast<std::int32_t>(Bits);
}

TValue ParseValueText(std::string_view AText, const TTypeInfo& AType) {
  switch (AType.Kind) {
    case TTypeKind::Boolean:
      return {AType, ParseBoolean(AText)};
    case TTypeKind::Integer:
      return {AType, std::int64_t{ParseInteger(AText)}};
    case TTypeKind::Single:
      return {AType, double{ParseFloat(AText)}};
    case TTypeKind::String:
      return {AType, std::string(AText)};
    case TTypeKind::Enumeration:
      return {AType, ParseOrdinal(AText, AType)};
    case TTypeKind::Color:
      return {AType, ParseColour(AText)};
    case TTypeKind::GUID:
      return {AType, StringToGUID(AText)};
    case TTypeKind::Point:
      return {AType, ParsePoint(AText)};
    case TTypeKind::Rect:
      return {AType, ParseRect(AText)};
    case TTypeKind::StringPair:
      return {AType, ParseStringPair(AText)};
    case TTypeKind::IntegerPair:
      return {AType, ParseIntegerPair(AText)};
    default:
      Refuse(Messages::SInvalidType);
  }
}

}  // namespace System::Beacon::Fencing
