// Reads pcap and pcapng captures; only in builds with libpcap.
#pragma once

#include <memory>

#include "platform/beacons/captures/capture_reader.h"

namespace System::Beacon {

/// A reader over a stream that stands at its beginning. Raises `EBeaconSourceError` when the
/// stream is no capture of a known link type.
TRef<IAdvertisementReader> ReadPcap(std::unique_ptr<TByteStream> AStream);

}  // namespace System::Beacon
