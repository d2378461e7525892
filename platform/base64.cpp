#include "platform/base64.h"

#include <fmt/format.h>

#include <array>
#include <cstddef>
#include <cstdint>

#include "platform/errors.h"
#include "platform/messages.h"

namespace System {
namespace {

constexpr std::string_view Digits =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::size_t BytesInLine = 57;  // 76 digits

enum : std::uint8_t { Blank = 64, Padding, Other };

constexpr std::array<std::uint8_t, 256> Values = [] {
  std::array<std::uint8_t, 256> Result{};
  Result.fill(Other);
  for (std::size_t I = 0; I < Digits.size(); ++I)
    Result[static_cast<unsigned char>(Digits[I])] = static_cast<std::uint8_t>(I);
  for (const char C : {' ', '\t', '\r', '\n'}) Result[static_cast<unsigned char>(C)] = Blank;
  Result[static_cast<unsigned char>('=')] = Padding;
  return Result;
}();

/// Writes one to three bytes as four digits.
void AppendGroup(std::string& AText, std::string_view ABytes) {
  std::uint32_t Bits = 0;
  for (std::size_t I = 0; I < 3; ++I)
    Bits = Bits << 8 | (I < ABytes.size() ? static_cast<unsigned char>(ABytes[I]) : 0U);
  for (std::size_t I = 0; I < 4; ++I)
    AText += I <= ABytes.size() ? Digits[Bits >> (18 - 6 * I) & 63] : '=';
}

[[noreturn]] void RaiseAt(std::string_view AText, std::size_t AnOffset) {
  const auto Byte = static_cast<unsigned char>(AText[AnOffset]);
  const bool IsPrintable = Byte > 0x20 && Byte < 0x7F;
  throw EConvertError(
      fmt::format(fmt::runtime(Messages::SBase64Digit),
                  IsPrintable ? std::string(1, AText[AnOffset]) : fmt::format("0x{:02X}", Byte),
                  AnOffset + 1));
}

/// Takes digits and hands out bytes, group by group.
class TDecoder {
 public:
  explicit TDecoder(std::string& AResult) : FResult(AResult) {}

  /// False for a digit or padding that cannot stand here.
  bool Take(std::uint8_t AValue) {
    const bool IsPadding = AValue == Padding;
    if (FPadding > 0 && (!IsPadding || FCount == 0)) return false;
    if (IsPadding && FCount < 2) return false;
    FBits = FBits << 6 | (IsPadding ? 0U : AValue);
    FPadding += IsPadding ? 1 : 0;
    return ++FCount < 4 || Flush();
  }
  bool IsWhole() const noexcept { return FCount == 0; }

 private:
  bool Flush() {
    if ((FBits & ((1U << 8 * FPadding) - 1)) != 0) return false;
    for (unsigned I = 0; I < 3 - FPadding; ++I)
      FResult += static_cast<char>(FBits >> (16 - 8 * I) & 0xFF);
    FBits = 0;
    FCount = 0;
    return true;
  }

  std::string& FResult;
  std::uint32_t FBits = 0;
  unsigned FCount = 0;  // digits and padding of the group
  unsigned FPadding = 0;
};

}  // namespace

std::string EncodeBase64(std::string_view ABytes) {
  std::string Result;
  const std::size_t Lines = ABytes.size() / BytesInLine + 1;
  Result.reserve((ABytes.size() + 2) / 3 * 4 + 2 * Lines);
  for (std::size_t At = 0; At < ABytes.size(); At += 3) {
    if (At > 0 && At % BytesInLine == 0) Result += "\r\n";
    AppendGroup(Result, ABytes.substr(At, 3));
  }
  return Result;
}

std::string DecodeBase64(std::string_view AText) {
  std::string Result;
  Result.reserve(AText.size() / 4 * 3);
  TDecoder Decoder(Result);
  for (std::size_t I = 0; I < AText.size(); ++I) {
    const std::uint8_t Value = Values[static_cast<unsigned char>(AText[I])];
    if (Value == Blank) continue;
    if (Value == Other || !Decoder.Take(Value)) RaiseAt(AText, I);
  }
  if (!Decoder.IsWhole()) throw EConvertError(std::string(Messages::SBase64Short));
  return Result;
}

}  // namespace System
