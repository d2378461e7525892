// 128-bit identifiers.
#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <string>
#include <string_view>

namespace System {

/// A UUID: 16 bytes in the order in which they are printed and sent by beacons.
struct TGUID {
  std::array<std::uint8_t, 16> Bytes{};

  auto operator<=>(const TGUID&) const = default;
};

/// The text form: braces around upper-case hexadecimal in 8-4-4-4-12 groups, 38 characters.
std::string GUIDToString(const TGUID& AGUID);

/// Reads the braced form, digits of either letter case. Anything else raises `EConvertError`
/// "'…' is not a valid GUID value".
TGUID StringToGUID(std::string_view AText);

/// The same without raising: false leaves `AGUID` alone.
bool TryStringToGUID(std::string_view AText, TGUID& AGUID) noexcept;

}  // namespace System
