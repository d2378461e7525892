// What the stand-in for the Bluetooth daemon puts into its messages.
#pragma once

#include <systemd/sd-bus.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace System::Beacon {

using TFakeBytes = std::vector<std::uint8_t>;

/// One advertisement as the daemon takes it apart.
struct TFakeAdvertisement {
  std::string Address = "C0:00:00:00:00:01";
  std::optional<int> Rssi{};
  std::map<std::uint16_t, TFakeBytes> Manufacturer{};
  std::map<std::string, TFakeBytes> Service{};
};

inline std::string FakeDevicePath(const std::string& AAddress) {
  std::string Path = "/org/bluez/hci0/dev_" + AAddress;
  std::replace(Path.begin(), Path.end(), ':', '_');
  return Path;
}

inline int FakeKey(std::uint16_t AKey) {
  return AKey;
}
inline const char* FakeKey(const std::string& AKey) {
  return AKey.c_str();
}

template <class TKey>
void AppendData(sd_bus_message* AMessage,
                const char* AName,
                const std::string& AKeyType,
                const std::map<TKey, TFakeBytes>& AData) {
  if (AData.empty()) return;
  const std::string Entry = AKeyType + 'v';
  sd_bus_message_open_container(AMessage, 'e', "sv");
  sd_bus_message_append(AMessage, "s", AName);
  sd_bus_message_open_container(AMessage, 'v', ("a{" + Entry + '}').c_str());
  sd_bus_message_open_container(AMessage, 'a', ('{' + Entry + '}').c_str());
  for (const auto& [Owner, Bytes] : AData) {
    sd_bus_message_open_container(AMessage, 'e', Entry.c_str());
    sd_bus_message_append(AMessage, AKeyType.c_str(), FakeKey(Owner));
    sd_bus_message_open_container(AMessage, 'v', "ay");
    sd_bus_message_append_array(AMessage, 'y', Bytes.data(), Bytes.size());
    sd_bus_message_close_container(AMessage);
    sd_bus_message_close_container(AMessage);
  }
  sd_bus_message_close_container(AMessage);
  sd_bus_message_close_container(AMessage);
  sd_bus_message_close_container(AMessage);
}

inline void AppendProperties(sd_bus_message* AMessage,
                             const TFakeAdvertisement& ADevice,
                             bool AHasAddress) {
  sd_bus_message_open_container(AMessage, 'a', "{sv}");
  if (AHasAddress) sd_bus_message_append(AMessage, "{sv}", "Address", "s", ADevice.Address.c_str());
  if (ADevice.Rssi) sd_bus_message_append(AMessage, "{sv}", "RSSI", "n", *ADevice.Rssi);
  AppendData(AMessage, "ManufacturerData", "q", ADevice.Manufacturer);
  AppendData(AMessage, "ServiceData", "s", ADevice.Service);
  sd_bus_message_close_container(AMessage);
}

inline void AppendDevice(sd_bus_message* AMessage, const TFakeAdvertisement& ADevice) {
  sd_bus_message_append(AMessage, "o", FakeDevicePath(ADevice.Address).c_str());
  sd_bus_message_open_container(AMessage, 'a', "{sa{sv}}");
  sd_bus_message_open_container(AMessage, 'e', "sa{sv}");
  sd_bus_message_append(AMessage, "s", "org.bluez.Device1");
  AppendProperties(AMessage, ADevice, true);
  sd_bus_message_close_container(AMessage);
  sd_bus_message_close_container(AMessage);
}

}  // namespace System::Beacon
