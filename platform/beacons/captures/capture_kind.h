// Tells the kinds of captures apart.
#pragma once

#include "platform/beacons/captures/byte_stream.h"

namespace System::Beacon {

enum class TCaptureKind : std::uint8_t { Btsnoop, Pcap, Log };

/// The kind of a capture by its first bytes, which stay in the stream. Raises
/// `EBeaconSourceError` for what is obviously none.
TCaptureKind DetectCaptureKind(TByteStream& AStream);

}  // namespace System::Beacon
