// Advertising packets as they go over the air.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "platform/beacons/captures/byte_cursor.h"
#include "platform/beacons/captures/fragment_joiner.h"

namespace System::Beacon {

/// What the sniffer says about the checksum of a packet.
enum class TCrcState : std::uint8_t { NotChecked, Valid, Wrong };

/// A packet and what the sniffer noted beside it.
struct TRadioPacket {
  TTicks Time = 0;
  std::int8_t Rssi = UnknownRssi;  ///< dBm
  TCrcState Crc = TCrcState::NotChecked;
  bool IsCoded = false;                 ///< sent on the coded PHY: one byte more before the header
  std::span<const std::uint8_t> Bytes;  ///< access address, header, payload, CRC
};

/// Takes the advertisements out of link-layer packets; the parts of a chained extended
/// advertisement are joined. Packets of other kinds, and those that the radio received damaged,
/// are passed over. One thread at a time.
class TLinkLayerReports {
 public:
  explicit TLinkLayerReports(TAdvertisementQueue& AOut) : FOut(AOut), FJoiner(AOut) {}

  /// Parses one packet; returns what is wrong with it, empty when nothing is.
  std::string_view Parse(const TRadioPacket& APacket);
  /// To be called after the last packet; returns what is wrong with the end.
  std::string_view Finish() { return FJoiner.DropAll(); }

 private:
  std::string_view ParseLegacy(TByteCursor APayload, TAdvertisement AReport);
  std::string_view ParseExtended(TByteCursor APayload, TAdvertisement AReport);

  TAdvertisementQueue& FOut;
  TFragmentJoiner FJoiner;
};

/// The checksum of an advertising packet's header and payload, 24 bits, lowest byte first on air.
std::uint32_t AdvertisingCrc(std::span<const std::uint8_t> APdu);

}  // namespace System::Beacon
