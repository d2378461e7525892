// Dates and times of day as texts.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/time.h"

namespace System::Beacon {

/// "2026-11-22T21:49:34.123456Z" from microseconds since 1970, UTC; years 0 to 9999.
std::string WallTimeToText(TTicks ATime);

/// Reads the form that `WallTimeToText` prints, with no to six decimals; empty when the text is
/// anything else or a date that does not exist.
std::optional<TTicks> ParseWallTime(std::string_view AText);

}  // namespace System::Beacon
