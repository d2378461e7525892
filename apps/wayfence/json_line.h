// One JSON object on one line, written to standard output.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace Wayfence {

/// Collects the members of an object in their order.
class TJsonLine {
 public:
  TJsonLine() = default;
  /// An event: begins with `time` (seconds, three decimals) and `event`.
  TJsonLine(double ASeconds, std::string_view AEvent);

  TJsonLine& Text(std::string_view AName, std::string_view AValue);
  TJsonLine& Number(std::string_view AName, std::int64_t AValue);
  /// A number with so many decimals.
  TJsonLine& Decimal(std::string_view AName, double AValue, int ADecimals = 3);
  /// A value that is JSON already.
  TJsonLine& Json(std::string_view AName, std::string_view AValue);

  std::string ToText() const { return "{" + FMembers + "}"; }
  void Print() const;

 private:
  std::string FMembers;
};

/// The length of the UTF-8 sequence at the start of a text that is not empty, 0 when it is none.
std::size_t SequenceLength(std::string_view AText);

/// A text as a JSON string, quotes included. Bytes that are no UTF-8 become U+FFFD.
std::string JsonString(std::string_view AText);

}  // namespace Wayfence
