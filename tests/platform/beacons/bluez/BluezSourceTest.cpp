// What the source delivers while the daemon is well.
#include <atomic>
#include <thread>

#include "platform/beacons/bluez/bluez_fixture.h"

namespace System::Beacon {
namespace {

const std::string IBeacon = "0215E2C56DB5DFFB48D2B060D0F5A71096E000010007C5";
const std::string AltBeacon = "BEAC0102030405060708090A0B0C0D0E0F1000030009BF00";
const std::string Uid = "00EE0102030405060708090AAABBCCDDEEFF0000";
const std::string Url = "10EE036578616D706C6507";
const std::string Tlm = "20000BB817000000006400000258";

TEST_F(TBluezTest, RebuildsTheFramesOfWhatTheDaemonTells) {
  for (const auto& [Settings, Received, Delivered] :
       {std::tuple<TFakeSettings, std::vector<TFakeAdvertisement>, std::vector<std::string>>{
            {},
            {Manufacturer(-61, 0x0118, AltBeacon), Eddystone(-62, Uid), Eddystone(-64, Tlm)},
            {"-61 1BFF1801" + AltBeacon, "-62 1716AAFE" + Uid, "-64 1116AAFE" + Tlm}},
        // A strength alone repeats the last frame, a payload alone the last strength.
        {{.IgnoresDuplicates = true},
         {Eddystone(-60, Uid), Eddystone(-62, Uid), Eddystone(-64, Tlm), Eddystone(-66, Tlm)},
         {"-60 1716AAFE" + Uid, "-62 1716AAFE" + Uid, "-64 1116AAFE" + Tlm, "-66 1116AAFE" + Tlm}},
        {{},
         {Manufacturer(-60, 0x004C, IBeacon), Eddystone({}, Url)},
         {"-60 1AFF4C00" + IBeacon, "-60 0E16AAFE" + Url}},
        // An unbelievable strength is unknown.
        {{},
         {Manufacturer(-128, 0x004C, IBeacon),
          Manufacturer(21, 0x004C, IBeacon),
          Manufacturer(32767, 0x004C, IBeacon)},
         std::vector(3, "127 1AFF4C00" + IBeacon)},
        // What was known before it opened is not reported.
        {{.Known = {Manufacturer(-40, 0x004C, IBeacon)}},
         {RssiAlone(-70)},
         {"-70 1AFF4C00" + IBeacon}}}) {
    Start(Settings);
    for (const TFakeAdvertisement& One : Received) Daemon->Receive(One);
    for (const std::string& Line : Delivered) EXPECT_EQ(Next(), "C0:00:00:00:00:01 " + Line);
    Source->Close();
    StopDaemon();
  }
}

TEST_F(TBluezTest, RegistersAMonitorForBeaconsAndAsksForEveryAdvertisement) {
  Start();
  const std::vector<TFakePattern> Expected{
      {0, 0xFF, Bytes("4C000215")}, {2, 0xFF, Bytes("BEAC")}, {0, 0x16, Bytes("AAFE")}};
  EXPECT_EQ(Daemon->GetPatterns(), Expected);
  EXPECT_EQ(Daemon->GetFilter(), "Transport=le DuplicateData=1");
  EXPECT_EQ(Daemon->CountSessions(), 1);
  Source->Close();
  EXPECT_TRUE(Daemon->GetPatterns().empty());
  EXPECT_EQ(Daemon->CountSessions(), 0);
}

TEST_F(TBluezTest, ForgetsADeviceWhoseStrengthIsWithdrawn) {
  Start({.IgnoresDuplicates = true});
  const std::string Path = FakeDevicePath("C0:00:00:00:00:01");
  const auto Withdraw = [&] { Daemon->EmitChanged(Path, TFakeDaemon::Device, 0, 1, "RSSI"); };
  const auto Remove = [&] { Daemon->EmitRemoved(Path, 1, TFakeDaemon::Device); };
  for (const std::function<void()>& Loss : {std::function(Withdraw), std::function(Remove)}) {
    Daemon->Receive(Eddystone(-60, Uid));
    Daemon->Do(Loss);
    Daemon->Receive(RssiAlone(-61));  // of a device without a payload: nothing
    Daemon->Receive(Eddystone(-62, Url));
    EXPECT_EQ(Next().substr(18, 3), "-60");
    EXPECT_EQ(Next(), "C0:00:00:00:00:01 -62 0E16AAFE" + Url);
  }
}

TEST_F(TBluezTest, PassesOverWhatHasTheWrongTypeOrSize) {
  Start();
  const std::string Path = FakeDevicePath("C0:00:00:00:00:01");
  const auto Change = [&](const char* ATypes, auto... AValues) {
    Daemon->Do([&] {
      Daemon->Emit(Path, TFakeDaemon::Properties, "PropertiesChanged", ATypes, AValues...);
    });
  };
  Change("");
  Change("u", 7);
  const char *All = "sa{sv}as", *Device = TFakeDaemon::Device, *Data = "ManufacturerData";
  const char *Service = "ServiceData", *UUID = "0000feaa-0000-1000-8000-00805f9b34fb";
  Change("sa{sv}", Device, 1, "RSSI", "s", "loud");
  Change(All, Device, 2, "RSSI", "n", -50, Data, "ay", 2, 1, 2, 0);
  Change(All, Device, 2, Data, "a{qv}", 1, 76, "s", "?", Service, "a{sv}", 1, UUID, "a{sv}", 0, 0);
  Change("sas", Device, 1, "RSSI");
  Change(All, "org.bluez.Adapter1", 1, "Powered", "s", "no", 0);
  Daemon->Receive(Manufacturer(-60, 0x004C, std::string(506, '0')));  // too long a structure
  TFakeAdvertisement Foreign = Manufacturer(-61, 0x004C, IBeacon);
  Foreign.Service = {{"f000aa00-0451-4000-b000-000000000000", Bytes("00")},
                     {"1234feaa-0000-1000-8000-00805f9b34fb", Bytes("00")},
                     {"", Bytes("00")}};
  Daemon->Receive(Foreign);
  EXPECT_EQ(Next(), "C0:00:00:00:00:01 -61 1AFF4C00" + IBeacon);
  Change(All, Device, 1, Data, "a{qv}", 2, 1, "ay", 1, 7, 1, "ay", 1, 7, 0);
  Daemon->Receive(RssiAlone(-62));
  EXPECT_EQ(Next(), "C0:00:00:00:00:01 -61 04FF010007");
  EXPECT_EQ(Next(), "C0:00:00:00:00:01 -62 04FF010007") << "the same frame was told twice";
  EXPECT_TRUE(Told.empty()) << Told.front();
}

TEST_F(TBluezTest, LeavesTheSessionsOfOtherClientsAlone) {
  Start();
  const auto Other = MakeSource("hci0");
  Other->Open();
  Daemon->Receive(Eddystone(-60, Uid));
  EXPECT_EQ(Next(), Next(*Other));
  Source->Close();
  EXPECT_EQ(Daemon->CountSessions(), 1);
  Daemon->Receive(Eddystone(-61, Url));
  EXPECT_EQ(Next(*Other), "C0:00:00:00:00:01 -61 0E16AAFE" + Url);
}

TEST_F(TBluezTest, TakesOnlyTheDevicesOfItsAdapter) {
  StartDaemon({.Adapters = {"hci0", "hci1", "hci10"}});
  Source = MakeSource("hci1");
  Source->Open();
  for (const int Number : {0, 10, 1}) {
    const std::string Path = "/org/bluez/hci" + std::to_string(Number) + "/dev_C0_00_00_00_00_02";
    const char *Device = TFakeDaemon::Device, *Data = "ManufacturerData";
    Daemon->Do(
        [&] { Daemon->EmitChanged(Path, Device, 1, Data, "a{qv}", 1, 1, "ay", 1, Number, 0); });
  }
  EXPECT_EQ(Next(), "C0:00:00:00:00:02 127 04FF010001");
}

TEST_F(TBluezTest, ComesBackAtOnceWhenAnotherThreadInterruptsIt) {
  Start();
  TAdvertisement Heard;
  std::thread Other([&] { Source->Interrupt(); });
  EXPECT_EQ(Source->Next(Heard, NoDeadline), TSourceResult::Interrupted);
  Other.join();
  EXPECT_EQ(Source->Next(Heard, Ticks()), TSourceResult::TimedOut);
}

}  // namespace
}  // namespace System::Beacon
