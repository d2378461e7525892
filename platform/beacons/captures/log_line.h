// One line of a plain advertisement log.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/beacons/advertisement.h"

namespace System::Beacon {

/// What a line holds.
struct TLogLine {
  TTicks Time = 0;  ///< microseconds since the start of the log
  TBluetoothAddress Address;
  std::int8_t Rssi = UnknownRssi;  ///< dBm
  std::vector<std::uint8_t> Payload;
};

/// Reads `{"t": 0.105, "address": "C4:BE:84:01:02:03", "rssi": -67, "adv": "0201061AFF…"}` into
/// `ALine`; members of other names are passed over. Returns what is wrong, empty when nothing is;
/// `ALine` then holds what was read until there.
std::string ParseLogLine(std::string_view AText, TLogLine& ALine);

}  // namespace System::Beacon
