// A live source on a bus of its own, with a stand-in for the daemon.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/beacons/bluez/fake_daemon.h"
#include "platform/beacons/bluez/private_bus.h"
#include "platform/beacons/bluez_source.h"
#include "platform/hex.h"

namespace System::Beacon {

class TBluezTest : public testing::Test {
 protected:
  static TFakeBytes Bytes(const std::string& AHex) {
    TFakeBytes Result(AHex.size() / 2);
    EXPECT_TRUE(HexToBytes(AHex, Result)) << AHex;
    return Result;
  }

  static TFakeAdvertisement Manufacturer(std::optional<int> ARssi,
                                         std::uint16_t ACompany,
                                         const std::string& AHex) {
    return {.Rssi = ARssi, .Manufacturer = {{ACompany, Bytes(AHex)}}};
  }

  static TFakeAdvertisement Eddystone(std::optional<int> ARssi, const std::string& AHex) {
    return {.Rssi = ARssi, .Service = {{"0000feaa-0000-1000-8000-00805f9b34fb", Bytes(AHex)}}};
  }

  static TFakeAdvertisement RssiAlone(int ARssi) { return {.Rssi = ARssi}; }

  void SetUp() override {
    if (!Bus.IsRunning()) GTEST_SKIP() << "dbus-daemon is not installed (Debian package dbus)";
  }

  void StartDaemon(TFakeSettings ASettings = {}) {
    Daemon = std::make_unique<TFakeDaemon>(Bus.GetAddress(), std::move(ASettings));
  }
  void StopDaemon() { Daemon.reset(); }

  TRef<IAdvertisementSource> MakeSource(const std::string& AAdapter = {}) {
    return NewBluezSource(AAdapter,
                          {.OnDiagnostic = [this](const std::string& A) { Told.push_back(A); }});
  }
  void OpenSource() {
    Source = MakeSource();
    Source->Open();
  }
  /// Starts the daemon and opens a source on it.
  void Start(TFakeSettings ASettings = {}) {
    StartDaemon(std::move(ASettings));
    OpenSource();
  }

  /// What comes next, as "ADDRESS RSSI PAYLOAD".
  std::string Next(IAdvertisementSource& ASource) {
    TAdvertisement Heard;
    if (ASource.Next(Heard, Ticks() + 20 * TicksPerSecond) != TSourceResult::Advertisement)
      return "nothing";
    return Heard.Address.ToText() + ' ' + std::to_string(Heard.Rssi) + ' ' +
           BytesToHex(Heard.Payload);
  }
  std::string Next() { return Next(*Source); }

  /// Lets the source work until it has said `AText`, and expects it to say nothing else.
  void ExpectTold(const std::string& AText) {
    const TTicks Deadline = Ticks() + 20 * TicksPerSecond;
    TAdvertisement Heard;
    while (Told.empty() && Ticks() < Deadline)
      Source->Next(Heard, Ticks() + 20 * TicksPerMillisecond);
    ASSERT_FALSE(Told.empty()) << "not told: " << AText;
    EXPECT_NE(Told.front().find(AText), std::string::npos) << Told.front();
    Told.erase(Told.begin());
  }

  TPrivateBus Bus;  // declared first: everything else is connected to it
  std::unique_ptr<TFakeDaemon> Daemon;
  std::vector<std::string> Told;
  TRef<IAdvertisementSource> Source;
};

}  // namespace System::Beacon
