// JSON as a tree that knows its lines. Used by readers, in their .cpp files.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace System::Beacon::Fencing {

/// A JSON value and where it stands.
struct TJsonNode {
  enum class TKind : std::uint8_t { Null, Boolean, Integer, Number, String, Array, Object };

  TKind Kind = TKind::Null;
  int Line = 0;
  std::string Name;  ///< the member name, within an object
  bool Boolean = false;
  std::int64_t Integer = 0;
  double Number = 0.0;  ///< also of an integer
  std::string String;
  std::vector<TJsonNode> Children;  ///< of an array or an object, in their order
};

/// Reads a text within the bounds below. Two members of an object whose names differ in letter
/// case only are refused like equal ones. Raises `EFileError` "FILE:LINE: what is wrong".
TJsonNode ParseJson(std::string_view AText, const std::string& AFileName);

inline constexpr std::size_t MaxJsonDepth = 32;
inline constexpr std::size_t MaxJsonMembers = 256;  // of one object
inline constexpr std::size_t MaxJsonValues = 1'000'000;
inline constexpr std::size_t MaxJsonSize = 64U << 20;  // bytes

}  // namespace System::Beacon::Fencing
