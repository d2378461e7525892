#include <gtest/gtest.h>

#include "platform/beacons/bluez/devices.h"

namespace System::Beacon {
namespace {

TBluetoothAddress Device(std::size_t ANumber) {
  TBluetoothAddress Result;
  Result.Bytes[4] = static_cast<std::uint8_t>(ANumber >> 8);
  Result.Bytes[5] = static_cast<std::uint8_t>(ANumber & 0xFF);
  return Result;
}

TEST(TBluezDevices, MakesRoomByForgettingWhatWasHeardLeastRecently) {
  TBluezDevices Devices;
  for (std::size_t I = 0; I < TBluezDevices::MaxDevices; ++I)
    Devices.Remember(Device(I), {.Address = {}, .Rssi = {}, .Payloads = {{2, 9, 65}}});
  Devices.Remember(Device(0), {});
  Devices.Remember(Device(60000), {});
  EXPECT_EQ(Devices.GetCount(), TBluezDevices::MaxDevices);
  THeardAdvertisement Heard;
  Devices.Hear(Device(1), {.Address = {}, .Rssi = -50, .Payloads = {}}, 0);
  EXPECT_FALSE(Devices.Take(Heard)) << "device 1 should have made room";
  Devices.Hear(Device(0), {.Address = {}, .Rssi = -50, .Payloads = {}}, 0);
  ASSERT_TRUE(Devices.Take(Heard));
  EXPECT_EQ(Heard.Address, Device(0));
}

TEST(TBluezDevices, DropsTheOldestAdvertisementsWhenNobodyTakesThem) {
  TBluezDevices Devices;
  for (std::size_t I = 0; I < TBluezDevices::MaxQueued + 5; ++I)
    Devices.Hear(Device(1), {.Address = {}, .Rssi = -50, .Payloads = {{2, 9, 65}}}, TTicks(I));
  THeardAdvertisement Heard;
  ASSERT_TRUE(Devices.Take(Heard));
  EXPECT_EQ(Heard.Time, 5);
}

}  // namespace
}  // namespace System::Beacon
