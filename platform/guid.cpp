#include "platform/guid.h"

#include <fmt/format.h>

#include "platform/errors.h"
#include "platform/hex.h"
#include "platform/messages.h"

namespace System {
namespace {

constexpr bool IsDashAfter(std::size_t AByte) noexcept {
  return AByte == 3 || AByte == 5 || AByte == 7 || AByte == 9;
}

}  // namespace

std::string GUIDToString(const TGUID& AGUID) {
  std::string Result = "{";
  for (std::size_t I = 0; I < AGUID.Bytes.size(); ++I) {
    Result += BytesToHex({&AGUID.Bytes[I], 1});
    if (IsDashAfter(I)) Result += '-';
  }
  return Result += '}';
}

bool TryStringToGUID(std::string_view AText, TGUID& AGUID) noexcept {
  if (AText.size() != 38 || AText.front() != '{' || AText.back() != '}') return false;
  TGUID Result;
  std::size_t At = 1;
  for (std::size_t I = 0; I < Result.Bytes.size(); ++I, At += 2) {
    if (!HexToBytes(AText.substr(At, 2), {&Result.Bytes[I], 1})) return false;
    if (IsDashAfter(I) && AText[At++ + 2] != '-') return false;
  }
  AGUID = Result;
  return true;
}

TGUID StringToGUID(std::string_view AText) {
  TGUID Result;
  if (!TryStringToGUID(AText, Result))
    throw EConvertError(fmt::format(fmt::runtime(Messages::SInvalidGUID), AText.substr(0, 60)));
  return Result;
}

}  // namespace System
