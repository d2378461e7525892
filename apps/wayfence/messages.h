// What the program says to people, on standard error.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace Wayfence {

/// Prints "wayfence: ", what `Printable` makes of the text, and a line's end.
void Say(std::string_view AText);

/// A text with names in it that anybody may have made up, as a terminal may have it: one line,
/// control characters and bytes that are no UTF-8 as \xNN, what stands in single quotes clipped to
/// 80 characters, and the whole to some 1500 bytes.
std::string Printable(std::string_view AText);

/// A name clipped to 80 characters.
std::string Clipped(std::string_view AName);

/// "1 beacon", "2 beacons".
std::string Counted(std::uint64_t ACount, std::string_view AWhat);

}  // namespace Wayfence
