// What the daemon says of a device, put back into the form in which it came over the air.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/beacons/advertisement.h"
#include "platform/beacons/bluez/bus_reader.h"

namespace System::Beacon {

/// The properties of a device that one message of the daemon holds.
struct TDeviceProperties {
  std::optional<TBluetoothAddress> Address;
  std::optional<std::int8_t> Rssi;  ///< dBm
  bool IsOutOfSight = false;        ///< the strength was withdrawn: no longer received
  /// One AD structure each: manufacturer data (type FF) and service data of 16-bit UUIDs (type
  /// 16), together at most `MaxPayloadSize` bytes; what exceeds that is left out.
  std::vector<std::vector<std::uint8_t>> Payloads;
};

/// Reads the dictionary of properties that comes next. Properties of the wrong type count as
/// absent.
TDeviceProperties ReadDeviceProperties(TBusReader& AReader);

/// The address in the path of a device, ".../dev_C4_BE_84_01_02_03"; false leaves it alone.
bool AddressOfDevicePath(std::string_view APath, TBluetoothAddress& AAddress);

}  // namespace System::Beacon
