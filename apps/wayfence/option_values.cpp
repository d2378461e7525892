#include "apps/wayfence/option_values.h"

#include <fmt/format.h>

#include <charconv>
#include <cmath>

namespace Wayfence {
namespace {

/// Whether the whole text is a value of the type.
template <class T>
bool Parse(std::string_view AText, T& AValue) {
  const char* const End = AText.data() + AText.size();
  const auto Result = std::from_chars(AText.data(), End, AValue);
  return Result.ec == std::errc() && Result.ptr == End;
}

/// A check whose help tells the range and whose message also what is expected.
template <class T>
CLI::Validator InRange(const char* AWhat, T AFrom, T ATo) {
  const std::string Range = fmt::format("{} to {}", AFrom, ATo);
  return {[=](const std::string& AText) {
            T Value{};
            const bool IsGood = Parse(AText, Value) && Value >= AFrom && Value <= ATo;
            return IsGood ? std::string()
                          : fmt::format("'{}' is no {} from {}", AText, AWhat, Range);
          },
          Range};
}

[[noreturn]] void Refuse(const std::string& AOption,
                         const std::string& AText,
                         const std::string& AWhat) {
  throw CLI::ValidationError(AOption, fmt::format("'{}'{}", AText, AWhat));
}

}  // namespace

CLI::Validator NumberFrom(double AFrom, double ATo) {
  return InRange("number", AFrom, ATo);
}

CLI::Validator WholeNumberFrom(std::int64_t AFrom, std::int64_t ATo) {
  return InRange("whole number", AFrom, ATo);
}

CLI::Validator SeedNumber() {
  return InRange<std::uint64_t>("whole number", 0, UINT64_MAX).description("");
}

std::pair<double, double> ReadPair(const std::string& AOption,
                                   const std::string& AText,
                                   char ASeparator,
                                   const std::string& AForm) {
  std::pair<double, double> Result;
  const std::size_t At = std::min(AText.find(ASeparator), AText.size());
  const std::string_view Text = AText;
  if (At == AText.size() || !Parse(Text.substr(0, At), Result.first) ||
      !Parse(Text.substr(At + 1), Result.second) || !std::isfinite(Result.first) ||
      !std::isfinite(Result.second))
    Refuse(AOption, AText, " is not " + AForm);
  return Result;
}

std::pair<double, double> ReadMetres(const std::string& AOption, const std::string& AText) {
  constexpr double MaxMetres = 1e5;
  const auto Result = ReadPair(AOption, AText, 'x', "WIDTHxHEIGHT in metres");
  const auto IsSide = [](double AValue) { return AValue > 0.0 && AValue <= MaxMetres; };
  if (!IsSide(Result.first) || !IsSide(Result.second))
    Refuse(AOption,
           AText,
           fmt::format(": width and height are above 0 and at most {:.0f} metres", MaxMetres));
  return Result;
}

std::pair<int, int> ReadPixels(const std::string& AOption, const std::string& AText) {
  constexpr double MaxPixels = 8192;
  const auto [Width, Height] = ReadPair(AOption, AText, 'x', "WIDTHxHEIGHT in pixels");
  const auto IsSide = [](double AValue) {
    return AValue >= 1.0 && AValue <= MaxPixels && AValue == std::floor(AValue);
  };
  if (!IsSide(Width) || !IsSide(Height))
    Refuse(AOption,
           AText,
           fmt::format(": width and height are whole numbers of pixels from 1 to {}", MaxPixels));
  return {static_cast<int>(Width), static_cast<int>(Height)};
}

void RefuseEmptyTexts(CLI::App& ACommand) {
  const CLI::Validator NotEmpty(
      [](const std::string& AText) {
        return AText.empty() ? std::string("something is expected here, and the text is empty")
                             : std::string();
      },
      "");
  for (CLI::Option* Option : ACommand.get_options())
    if (Option->get_items_expected_max() > 0) Option->check(NotEmpty);
  for (CLI::App* Command : ACommand.get_subcommands({})) RefuseEmptyTexts(*Command);
}

}  // namespace Wayfence
