#include "platform/beacons/bluez/devices.h"

#include <utility>

namespace System::Beacon {

TBluezDevices::TDevice& TBluezDevices::Find(const TBluetoothAddress& AKey) {
  if (const auto Known = FIndex.find(AKey); Known != FIndex.end()) {
    FDevices.splice(FDevices.end(), FDevices, Known->second);
  } else {
    if (FDevices.size() == MaxDevices) Forget(FDevices.front().Key);
    FDevices.push_back({AKey, AKey, UnknownRssi, {}});
    FIndex.emplace(AKey, std::prev(FDevices.end()));
  }
  return FDevices.back();
}

void TBluezDevices::Remember(const TBluetoothAddress& ADevice, TDeviceProperties AProperties) {
  TDevice& Device = Find(ADevice);
  if (AProperties.Address) Device.Address = *AProperties.Address;
  if (AProperties.Rssi) Device.Rssi = *AProperties.Rssi;
  if (!AProperties.Payloads.empty()) Device.Payloads = std::move(AProperties.Payloads);
}

void TBluezDevices::Hear(const TBluetoothAddress& ADevice,
                         TDeviceProperties AProperties,
                         TTicks ATime) {
  if (AProperties.IsOutOfSight) return Forget(ADevice);
  if (!AProperties.Rssi && AProperties.Payloads.empty()) return;
  Remember(ADevice, std::move(AProperties));
  const TDevice& Device = FDevices.back();
  for (const auto& Payload : Device.Payloads) {
    if (FHeard.size() == MaxQueued) FHeard.pop_front();
    FHeard.push_back({ATime, Device.Address, Device.Rssi, Payload});
  }
}

void TBluezDevices::Forget(const TBluetoothAddress& ADevice) noexcept {
  const auto Known = FIndex.find(ADevice);
  if (Known == FIndex.end()) return;
  FDevices.erase(Known->second);
  FIndex.erase(Known);
}

void TBluezDevices::ForgetAll() noexcept {
  FIndex.clear();
  FDevices.clear();
}

bool TBluezDevices::Take(THeardAdvertisement& AHeard) {
  if (FHeard.empty()) return false;
  AHeard = std::move(FHeard.front());
  FHeard.pop_front();
  return true;
}

}  // namespace System::Beacon
