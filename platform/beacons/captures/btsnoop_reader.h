// Reads btsnoop captures.
#pragma once

#include <memory>

#include "platform/beacons/captures/capture_reader.h"

namespace System::Beacon {

/// A reader over a stream that stands at its beginning. Raises `EBeaconSourceError` when the
/// stream is not a btsnoop capture of a known datalink.
TRef<IAdvertisementReader> ReadBtsnoop(std::unique_ptr<TByteStream> AStream);

}  // namespace System::Beacon
