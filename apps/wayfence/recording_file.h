// Recordings that the program writes.
#pragma once

#include <string>

#include "platform/beacons/captures/captures.h"

namespace Wayfence {

/// Makes the file, in the format "log", "btsnoop" or "pcap".
System::TRef<System::Beacon::IAdvertisementWriter> CreateRecording(
    const std::string& AFile, const std::string& AFormat, System::Beacon::TCaptureClock AClock);

}  // namespace Wayfence
