// Advertising reports of a Bluetooth controller.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "platform/beacons/captures/byte_cursor.h"
#include "platform/beacons/captures/fragment_joiner.h"

namespace System::Beacon {

/// Takes the advertisements out of HCI events: LE Advertising Reports and LE Extended Advertising
/// Reports, the fragments of the latter joined. An advertisement that the controller itself calls
/// truncated is pushed as far as it came. One thread at a time.
class THciReports {
 public:
  explicit THciReports(TAdvertisementQueue& AOut) : FOut(AOut), FJoiner(AOut) {}

  /// Parses one packet of the H4 transport: a type byte, then, of interest here, an event.
  /// Returns what is wrong with it, empty when nothing is.
  std::string_view ParsePacket(std::span<const std::uint8_t> APacket, TTicks ATime);
  /// Parses one event; `AAdapter` tells the controllers of one recording apart.
  std::string_view ParseEvent(std::span<const std::uint8_t> AEvent,
                              TTicks ATime,
                              std::uint16_t AAdapter = 0);
  /// To be called after the last packet; returns what is wrong with the end.
  std::string_view Finish() { return FJoiner.DropAll(); }

 private:
  void ParseReport(TByteCursor& ACursor, TTicks ATime);
  std::string_view ParseExtendedReport(TByteCursor& ACursor, TTicks ATime, std::uint16_t AAdapter);

  TAdvertisementQueue& FOut;
  TFragmentJoiner FJoiner;
};

}  // namespace System::Beacon
