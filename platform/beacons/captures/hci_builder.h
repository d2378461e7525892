// Advertisements as the events of a Bluetooth controller.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "platform/beacons/advertisement.h"

namespace System::Beacon {

/// The H4 packets that report an advertisement: one LE Advertising Report when the payload fits
/// a legacy advertisement, else a chain of LE Extended Advertising Reports.
std::vector<std::vector<std::uint8_t>> BuildReports(const TAdvertisement& AAdvertisement);

/// Raises `EFileError` when no capture format can hold the advertisement.
void CheckWritable(const TAdvertisement& AAdvertisement, const std::string& APath);

}  // namespace System::Beacon
