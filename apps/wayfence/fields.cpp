#include "apps/wayfence/fields.h"

#include <fmt/format.h>

#include <charconv>

#include "platform/errors.h"

namespace Wayfence {
namespace {

/// Whether the whole text is a value of the type.
template <class T>
bool Parse(std::string_view AText, T& AValue) {
  const char* const End = AText.data() + AText.size();
  const auto Result = std::from_chars(AText.data(), End, AValue);
  return Result.ec == std::errc() && Result.ptr == End;
}

}  // namespace

double TFields::GetNumber(std::string_view AName, double AFrom, double ATo) const {
  double Result = 0.0;
  if (!Parse(GetText(AName), Result) || !(Result >= AFrom && Result <= ATo))
    RefuseField(AName, fmt::format("is no number from {} to {}", AFrom, ATo));
  return Result;
}

int TFields::GetInteger(std::string_view AName, int AFrom, int ATo) const {
  int Result = 0;
  if (!Parse(GetText(AName), Result) || Result < AFrom || Result > ATo)
    RefuseField(AName, fmt::format("is no whole number from {} to {}", AFrom, ATo));
  return Result;
}

void TFields::Refuse(std::string_view AWhat) const {
  throw System::EFileError(fmt::format("{}: {}", GetSource(), AWhat));
}

void TFields::RefuseField(std::string_view AName, std::string_view AWhat) const {
  constexpr std::size_t MaxShown = 40;
  Refuse(fmt::format("{}: '{}' {}", AName, GetText(AName).substr(0, MaxShown), AWhat));
}

}  // namespace Wayfence
