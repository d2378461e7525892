// Advertisements of one record, waiting to be delivered one by one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/beacons/advertisement.h"

namespace System::Beacon {

/// Keeps copies of what is pushed; storage is used again once everything was popped.
class TAdvertisementQueue {
 public:
  void Push(const TAdvertisement& AAdvertisement);
  /// The oldest, whose payload is valid until the next `Push`; false when there is none.
  bool Pop(TAdvertisement& AAdvertisement);
  bool IsEmpty() const { return FNext == FEntries.size(); }

 private:
  struct TEntry {
    TAdvertisement Advertisement;  // its payload lies in FPayloads
    std::size_t PayloadOffset = 0;
  };

  std::vector<TEntry> FEntries;
  std::vector<std::uint8_t> FPayloads;
  std::size_t FNext = 0;
};

/// A strength as radios report it: what lies outside −127 to 20 dBm is unknown.
constexpr std::int8_t RssiFromRadio(int ARssi) noexcept {
  return ARssi >= -127 && ARssi <= 20 ? static_cast<std::int8_t>(ARssi) : UnknownRssi;
}

}  // namespace System::Beacon
