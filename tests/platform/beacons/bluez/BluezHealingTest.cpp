// What the source does when adapter, daemon or bus are missing, refuse, or go away.
#include "platform/beacons/bluez/bluez_fixture.h"
#include "support/raised.h"

namespace System::Beacon {
namespace {

const std::string Uid = "00EE0102030405060708090AAABBCCDDEEFF0000";

class TBluezHealing : public TBluezTest {
 protected:
  std::string OpeningError(const std::string& AAdapter = {}) {
    return Raised<EBeaconSourceError>([&] { MakeSource(AAdapter)->Open(); });
  }

  /// Expects a beacon to be heard, and nothing to be known of it from before.
  void ExpectScanning() {
    Daemon->Receive(RssiAlone(-59));
    Daemon->Receive(Eddystone(-60, Uid));
    EXPECT_EQ(Next(), "C0:00:00:00:00:01 -60 1716AAFE" + Uid);
    EXPECT_TRUE(Told.empty()) << Told.front();
  }
};

TEST_F(TBluezHealing, SaysWhyItCannotOpenAndWhatToDo) {
  const auto Refuse = [](const char* AMethod, const char* AName) {
    return TFakeSettings{.Refused = {{AMethod, AName}}};
  };
  const char* Denied = "org.freedesktop.DBus.Error.AccessDenied";
  for (const auto& [Settings, Adapter, Expected] :
       {std::tuple<TFakeSettings, std::string, std::string>{
            {.Adapters = {}}, "", "There is no Bluetooth adapter. Plug one in"},
        {{.Adapters = {"hci10", "hci2"}}, "hci7", "adapter hci7. Use one of: hci2, hci10"},
        {{.IsPowered = false}, "", "hci0 is off. Switch it on with 'bluetoothctl power on'"},
        {Refuse("StartDiscovery", "org.bluez.Error.NotReady"), "", "hci0 is off"},
        {Refuse("GetManagedObjects", Denied), "", "because. Add the user to the group"},
        {Refuse("StartDiscovery", Denied), "", "because. Add the user to the group"},
        {Refuse("SetDiscoveryFilter", "org.bluez.Error.Failed"),
         "",
         "refused SetDiscoveryFilter with org.bluez.Error.Failed: because"},
        {Refuse("StartDiscovery", "org.bluez.Error.InProgress"), "", "hci0 is busy"},
        {{.IsSilent = true}, "", "daemon does not answer"}}) {
    StartDaemon(Settings);
    const std::string Error = OpeningError(Adapter);
    EXPECT_NE(Error.find(Expected), std::string::npos) << Error;
    StopDaemon();
  }
}

TEST_F(TBluezHealing, SaysThatThereIsNoDaemonOrNoBus) {
  EXPECT_NE(OpeningError().find("'systemctl start bluetooth'"), std::string::npos);
  Bus.Stop();
  EXPECT_NE(OpeningError().find("'systemctl start dbus'"), std::string::npos);
}

TEST_F(TBluezHealing, CannotBeAskedForAdvertisementsWhileClosed) {
  TAdvertisement Heard;
  EXPECT_THROW(MakeSource()->Next(Heard, NoDeadline), EBeaconSourceError);
  EXPECT_NE(OpeningError(), "nothing was raised");
}

TEST_F(TBluezHealing, ScansAllTheSameWhenSomethingIsRefused) {
  const TFakeSettings NoMonitor{.Refused = {{"RegisterMonitor", "org.bluez.Error.NotPermitted"}}};
  const TFakeSettings Busy{.Refused = {{"StartDiscovery", "org.bluez.Error.InProgress"}},
                           .RefusedTimes = {{"StartDiscovery", 2}}};
  for (const auto& [Settings, Text] :
       {std::pair(TFakeSettings{.HasMonitors = false}, "offers no advertisement monitor"),
        {NoMonitor, "advertisement monitor (org.bluez.Error.NotPermitted: because)"},
        {Busy, ""}}) {
    Start(Settings);
    if (*Text) ExpectTold(Text);
    ExpectScanning();
    Source->Close();
    StopDaemon();
  }
}

TEST_F(TBluezHealing, LivesWithoutItsMonitorAndWaitsForItsAdapter) {
  Start();
  Daemon->ReleaseMonitor();
  ExpectTold("dropped the advertisement monitor");
  ExpectScanning();
  Daemon->SetPowered(false);
  ExpectTold("hci0 is off");
  Daemon->SetPowered(true);
  ExpectTold("Scanning again on Bluetooth adapter hci0");
  ExpectScanning();
  Daemon->RemoveAdapter();
  ExpectTold("hci0 is gone");
  Daemon->AddAdapter("hci0");
  ExpectTold("Scanning again on Bluetooth adapter hci0");
  EXPECT_EQ(Daemon->GetPatterns().size(), 3) << "the monitor is gone";
  ExpectScanning();
}

TEST_F(TBluezHealing, WaitsForADaemonThatRestarts) {
  for (const bool AnnouncesLate : {true, false}) {
    Start();
    ExpectScanning();
    StopDaemon();
    ExpectTold("hci0 is gone");
    ExpectTold("daemon has stopped");
    StartDaemon({.AnnouncesLate = AnnouncesLate});
    ExpectTold("Scanning again on Bluetooth adapter hci0");
    ExpectScanning();
    Source->Close();
    StopDaemon();
  }
}

TEST_F(TBluezHealing, WaitsForABusThatGoesAway) {
  Start();
  ExpectScanning();
  Bus.Stop();
  ExpectTold("connection to the system bus is lost");
  StopDaemon();
  Bus.Start();
  StartDaemon();
  ExpectTold("Scanning again on Bluetooth adapter hci0");
  ExpectScanning();
}

TEST_F(TBluezHealing, IsInterruptedWhileItWaits) {
  Start();
  Daemon->RemoveAdapter();
  ExpectTold("hci0 is gone");
  TAdvertisement Heard;
  Source->Interrupt();
  EXPECT_EQ(Source->Next(Heard, NoDeadline), TSourceResult::Interrupted);
}

}  // namespace
}  // namespace System::Beacon
