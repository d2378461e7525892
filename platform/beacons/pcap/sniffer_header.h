// What sniffers put in front of link-layer packets.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "platform/beacons/pcap/link_layer.h"

namespace System::Beacon {

/// What was found in a record.
struct TSniffedPacket {
  std::optional<TRadioPacket> Packet;  ///< empty when there is none or it cannot be read
  std::string_view Problem;            ///< empty when there is none
};

/// Link type 251, which has no header: strength unknown, checksum not checked.
TSniffedPacket ParseBarePacket(std::span<const std::uint8_t> ABytes);

/// Link type 256: channel, strength and flags.
TSniffedPacket ParseRadioHeader(std::span<const std::uint8_t> ABytes);

/// Link type 272, header versions 1 to 3; messages that carry no packet are no problem.
TSniffedPacket ParseNordicHeader(std::span<const std::uint8_t> ABytes);

}  // namespace System::Beacon
