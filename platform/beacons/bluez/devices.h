// The devices that the daemon has told of, and the advertisements that its signals stand for.
#pragma once

#include <cstdint>
#include <deque>
#include <list>
#include <map>
#include <vector>

#include "platform/beacons/advertisement.h"
#include "platform/beacons/bluez/device_properties.h"

namespace System::Beacon {

/// An advertisement with a payload of its own.
struct THeardAdvertisement {
  TTicks Time = 0;
  TBluetoothAddress Address;
  std::int8_t Rssi = UnknownRssi;
  std::vector<std::uint8_t> Payload;
};

/// Remembers strength and payloads of each device, because a signal may hold only one of them,
/// and makes advertisements of signals. At most `MaxDevices` are remembered; the one that was
/// heard of least recently makes room. Devices are told apart by the address in their path.
class TBluezDevices {
 public:
  static constexpr std::size_t MaxDevices = 4096;
  /// Advertisements that wait to be taken; beyond it the oldest are dropped.
  static constexpr std::size_t MaxQueued = 4096;

  /// Remembers what was known before scanning began: not an advertisement.
  void Remember(const TBluetoothAddress& ADevice, TDeviceProperties AProperties);
  /// Takes what a signal says and queues an advertisement for each payload that it holds, or for
  /// each of the last payloads when it holds only a strength.
  void Hear(const TBluetoothAddress& ADevice, TDeviceProperties AProperties, TTicks ATime);
  void Forget(const TBluetoothAddress& ADevice) noexcept;
  void ForgetAll() noexcept;

  /// The oldest queued advertisement; false when there is none.
  bool Take(THeardAdvertisement& AHeard);
  bool HasHeard() const noexcept { return !FHeard.empty(); }
  std::size_t GetCount() const noexcept { return FDevices.size(); }

 private:
  struct TDevice {
    TBluetoothAddress Key;
    TBluetoothAddress Address;
    std::int8_t Rssi = UnknownRssi;
    std::vector<std::vector<std::uint8_t>> Payloads;
  };

  TDevice& Find(const TBluetoothAddress& AKey);

  std::list<TDevice> FDevices;  // least recently heard of first
  std::map<TBluetoothAddress, std::list<TDevice>::iterator> FIndex;
  std::deque<THeardAdvertisement> FHeard;
};

}  // namespace System::Beacon
