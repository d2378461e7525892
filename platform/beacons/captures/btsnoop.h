// The btsnoop file format; all numbers are big-endian.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "platform/time.h"

namespace System::Beacon::Btsnoop {

inline constexpr std::array<std::uint8_t, 8> Magic{'b', 't', 's', 'n', 'o', 'o', 'p', 0};
inline constexpr std::uint32_t Version = 1;
inline constexpr std::uint32_t DatalinkH4 = 1002;
inline constexpr std::uint32_t DatalinkMonitor = 2001;
inline constexpr std::size_t FileHeaderSize = 16;
inline constexpr std::size_t RecordHeaderSize = 24;
inline constexpr std::uint32_t ReceivedEvent = 3;       // record flags of datalink 1002
inline constexpr std::uint16_t MonitorEventPacket = 3;  // opcode of datalink 2001
/// 1 January 1970 in btsnoop time, microseconds.
inline constexpr TTicks UnixEpoch = 0x00DCDDB30F2F8000;

}  // namespace System::Beacon::Btsnoop
