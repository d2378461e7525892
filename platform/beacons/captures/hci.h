// Numbers of the host controller interface that captures are made of.
#pragma once

#include <cstddef>
#include <cstdint>

namespace System::Beacon::Hci {

inline constexpr std::uint8_t EventPacket = 0x04;  // H4 packet type
inline constexpr std::uint8_t LeMetaEvent = 0x3E;
inline constexpr std::uint8_t AdvertisingReport = 0x02;
inline constexpr std::uint8_t ExtendedAdvertisingReport = 0x0D;

// Bits of the event type of an extended report.
inline constexpr std::uint16_t ScanResponse = 0x0008;
inline constexpr std::uint16_t DataStatusMask = 0x0060;
inline constexpr std::uint16_t DataIncomplete = 0x0020;

inline constexpr std::size_t MaxLegacyPayload = 31;
inline constexpr std::size_t MaxFragment = 229;

}  // namespace System::Beacon::Hci
