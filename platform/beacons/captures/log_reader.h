// Reads plain advertisement logs.
#pragma once

#include <memory>
#include <string_view>

#include "platform/beacons/captures/capture_reader.h"

namespace System::Beacon {

/// How the comment line begins that states the wall time of t = 0.
inline constexpr std::string_view LogStartMark = "# start: ";

/// A reader over a stream that stands at its beginning. Any text is taken for a log: lines that
/// are none are counted.
TRef<IAdvertisementReader> ReadAdvertisementLog(std::unique_ptr<TByteStream> AStream);

}  // namespace System::Beacon
