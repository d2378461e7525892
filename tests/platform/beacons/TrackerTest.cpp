// The bookkeeping of the beacon service, at exact times.
#include "platform/beacons/tracker.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <sstream>

#include "support/fake_beacon.h"
#include "support/scripted_source.h"

namespace System::Beacon {
namespace {

const std::string ProximityNames[] = {"Unknown", "Immediate", "Near", "Far", "Away"};

TEddystoneUID UIDOf(int AInstance) {
  TEddystoneUID Result;
  Result.Instance[5] = static_cast<std::uint8_t>(AInstance);
  return Result;
}

TBeaconsRegion RegionOf(TKindofBeacon AKind, int AManufacturerID = -1) {
  TBeaconsRegion Result;
  Result.KindofBeacon = AKind;
  Result.iBAltBeaconRegion.Initialize(TestGUID, AKind, AManufacturerID);
  return Result;
}

/// Beacons go by their minor, Eddystone ones by "e" and the last byte of the instance.
std::string NameOf(const IBeacon& ABeacon) {
  if (const IEddystoneBeacon* const View = ABeacon.GetEddystoneView())
    return fmt::format("e{}", View->GetEddystoneUID().Instance[5]);
  return fmt::format("{}", ABeacon.GetMinor());
}

/// A tracker that is told the time in milliseconds and whose reports are lines of text.
class Tracker : public testing::Test, private ITrackerListener {
 protected:
  Tracker() {
    Configure(TBeaconCalcMode::Raw);
    Listen({RegionOf(TKindofBeacon::iBeaconAltBeacon), RegionOf(TKindofBeacon::Eddystone)});
  }

  void Configure(TBeaconCalcMode AMode, float ASPC = 0.5F) {
    TTrackerSettings Settings;
    Settings.CalcMode = AMode;
    Settings.SPC = ASPC;
    FTracker.Configure(Settings);
  }
  void Listen(const std::vector<TBeaconsRegion>& ARegions) {
    FTracker.SetRegions(ARegions, {TKindofBeacon::iBeaconAltBeacon, TKindofBeacon::Eddystone});
  }

  /// Lets the time pass, stopping at every deadline on the way.
  void PassUntil(TTicks AMilliseconds) {
    const TTicks End = AMilliseconds * TicksPerMillisecond;
    while (FTracker.GetNextDeadline() <= End) {
      FNow = FTracker.GetNextDeadline();
      FTracker.Expire(FNow);
    }
    FNow = End;
  }
  void Hear(TTicks AMilliseconds, const TPayload& APayload, int ARssi = -59, int AAddress = 0) {
    PassUntil(AMilliseconds);
    TAdvertisement Advertisement;
    Advertisement.Payload = APayload;
    Advertisement.Rssi = static_cast<std::int8_t>(ARssi);
    Advertisement.Address.Bytes[5] = static_cast<std::uint8_t>(AAddress);
    FTracker.Process(Advertisement, FNow);
  }
  void HearMinor(TTicks AMilliseconds, int AMinor, int ARssi = -59, int APower = -59) {
    Hear(AMilliseconds, iBeaconPayload(TestGUID, 0, AMinor, APower), ARssi);
  }
  /// Advertisements separated by ",": "500 1 -69" is minor 1 with -69 dBm at 500 ms; a time alone
  /// passes.
  void Play(const std::string& AScript) {
    std::istringstream Steps(AScript);
    for (std::string Step; std::getline(Steps, Step, ',');) {
      std::istringstream Words(Step);
      int Time = 0, Minor = 0, Rssi = 0;
      Words >> Time;
      if (!(Words >> Minor))
        PassUntil(Time);
      else
        HearMinor(Time, Minor, Words >> Rssi ? Rssi : -59);
    }
  }
  std::string Take() { return std::exchange(FLog, {}); }
  /// Expects the lists of all reports to hold what they held then.
  void TearDown() override {
    for (const auto& [List, Names] : FLists) EXPECT_EQ(NamesOf(List), Names);
  }

  TBeaconTracker FTracker{*this};
  TRef<IBeacon> FLast;  // named by the last report
  std::function<void(int, int, double&)> FOnCalcDistance;

 private:
  void Log(const std::string& AWhat, const TRef<IBeacon>& ABeacon, const std::string& AMore) {
    FLog +=
        fmt::format("{}: {} {} {}; ", FNow / TicksPerMillisecond, AWhat, NameOf(*ABeacon), AMore);
    FLast = ABeacon;
  }
  static std::string NamesOf(const TBeaconList& AList) {
    std::string Result;
    for (const TRef<IBeacon>& Beacon : AList) (Result += ' ') += NameOf(*Beacon);
    return Result;
  }
  void LogList(const std::string& AWhat, const TRef<IBeacon>& ABeacon, const TBeaconList& AList) {
    FLists.emplace_back(AList, NamesOf(AList));
    Log(AWhat, ABeacon, ProximityNames[static_cast<int>(ABeacon->GetProximity())] + NamesOf(AList));
  }
  void BeaconEntered(const TRef<IBeacon>& ABeacon, const TBeaconList& AList) override {
    LogList("enter", ABeacon, AList);
  }
  void BeaconExited(const TRef<IBeacon>& ABeacon, const TBeaconList& AList) override {
    EXPECT_FALSE(ABeacon->IsAlive());
    EXPECT_EQ(ABeacon->GetDistance(), -1.0);
    LogList("exit", ABeacon, AList);
  }
  void ProximityChanged(const TRef<IBeacon>& ABeacon, TBeaconProximity AProximity) override {
    EXPECT_EQ(ABeacon->GetProximity(), AProximity);
    EXPECT_EQ(ABeacon->GetDistance() == -1.0, AProximity == TBeaconProximity::Away);
    Log("proximity", ABeacon, ProximityNames[static_cast<int>(AProximity)]);
  }
  void EddystoneURLSeen(const TRef<IBeacon>& ABeacon, const TEddystoneURL& AURL) override {
    Log("url", ABeacon, fmt::format("{} {}", AURL.URL, AURL.TxPower));
  }
  void EddystoneTLMSeen(const TRef<IBeacon>& ABeacon, const TEddystoneTLM& ATLM) override {
    Log("tlm", ABeacon, fmt::format("{}", ATLM.BatteryVoltage));
  }
  bool WantsSightings() const override { return false; }
  bool WantsDistances() const override { return static_cast<bool>(FOnCalcDistance); }
  void Sighted(const TRef<IBeacon>&) override {}
  void CalcDistance(const TRef<IBeacon>&, int ATxPower, int ARssi, double& ADistance) override {
    FOnCalcDistance(ATxPower, ARssi, ADistance);
  }

  TTicks FNow = 0;
  std::string FLog;
  std::vector<std::pair<TBeaconList, std::string>> FLists;  // of all enters and exits, as they were
};

// ---------------------------------------------------------------- presence

TEST_F(Tracker, BeaconsEnterChangeGoStaleAndAreLostAtExactTimes) {
  for (const auto& [Script, Reports] :
       {std::pair<const char*, const char*>{
            "500 1, 1000 1 -69, 1100 1 -70, 1500 1 -68, 60000",
            "500: enter 1 Near 1; 1000: proximity 1 Far; 1500: proximity 1 Near; "
            "6500: proximity 1 Away; 21500: exit 1 Away; "},
        {"0 1, 5000 2, 6000 1, 25999",
         "0: enter 1 Near 1; 5000: proximity 1 Away; 5000: enter 2 Near 1 2; "
         "6000: proximity 1 Near; 10000: proximity 2 Away; 11000: proximity 1 Away; "
         "25000: exit 2 Away 1; "},
        {"0 3, 1000 1, 2000 2, 3000 3, 22000",
         "0: enter 3 Near 3; 1000: enter 1 Near 3 1; 2000: enter 2 Near 3 1 2; "
         "6000: proximity 1 Away; 7000: proximity 2 Away; 8000: proximity 3 Away; "
         "21000: exit 1 Away 3 2; 22000: exit 2 Away 3; "}}) {
    PassUntil(0);
    Play(Script);
    EXPECT_EQ(Take(), Reports);
    FTracker.Clear();
  }
}

TEST_F(Tracker, ABeaconThatIsHeardWhenItsTimeIsUpIsLostFirst) {
  Play("0 1");
  const TRef<IBeacon> First = FLast;
  Play("20000 1");
  EXPECT_EQ(Take(),
            "0: enter 1 Near 1; 5000: proximity 1 Away; 20000: exit 1 Away; "
            "20000: enter 1 Near 1; ");
  EXPECT_FALSE(First->IsAlive());
  EXPECT_TRUE(FLast->IsAlive());
  EXPECT_FALSE(IsSame(First.Get(), FLast.Get()));
  EXPECT_TRUE(IsSameBeacon(First.Get(), FLast.Get()));
}

TEST_F(Tracker, IdentitiesOfDifferentKindsAreDifferentBeacons) {
  Hear(0, iBeaconPayload(TestGUID, 1, 2));
  Hear(1, AltBeaconPayload(0x0118, TestGUID, 1, 2));
  Hear(2, iBeaconPayload(TestGUID, 1, 2));
  Hear(3, AltBeaconPayload(0x0059, TestGUID, 1, 2));
  EXPECT_EQ(Take(), "0: enter 2 Near 2; 1: enter 2 Near 2 2; ");
}

TEST_F(Tracker, ClearForgetsAllBeaconsWithoutAReport) {
  Play("0 1");
  Take();
  FTracker.Clear();
  EXPECT_FALSE(FLast->IsAlive());
  EXPECT_EQ(FTracker.GetNextDeadline(), NoDeadline);
  Play("1000 1");
  EXPECT_EQ(Take(), "1000: enter 1 Near 1; ");
}

TEST_F(Tracker, ABeaconWhoseRegionIsGoneIsNotHeardAnyMore) {
  Play("0 1");
  Listen({});
  Play("1000 1 -80, 1000 2, 5000");
  EXPECT_EQ(Take(), "0: enter 1 Near 1; 5000: proximity 1 Away; ");
  Listen({RegionOf(TKindofBeacon::iBeacon)});
  HearMinor(6'000, 1);
  EXPECT_EQ(Take(), "6000: proximity 1 Near; ");
}

TEST_F(Tracker, AnAltBeaconThatChangesItsCompanyIsTestedAgain) {
  Listen({RegionOf(TKindofBeacon::AltBeacon, 0x0118)});
  Hear(0, AltBeaconPayload(0x0118, TestGUID, 0, 1));
  Hear(1'000, AltBeaconPayload(0x0059, TestGUID, 0, 1), -80);
  Hear(2'000, AltBeaconPayload(0x0118, TestGUID, 0, 1), -80);
  EXPECT_EQ(Take(), "0: enter 1 Near 1; 2000: proximity 1 Far; ");
}

TEST_F(Tracker, CountsWhatItWasGiven) {
  HearMinor(0, 1);
  Hear(1, {});
  Hear(2, {5, 0xFF, 0x4C, 0, 2, 0x15});
  Hear(3, iBeaconPayload(TGUID{}, 0, 1));
  TPayload Two = iBeaconPayload(TestGUID, 0, 1);
  const TPayload Second = EddystoneUIDPayload(UIDOf(1));
  Two.insert(Two.end(), Second.begin(), Second.end());
  Hear(4, Two);
  const TScanStatistics Counts = FTracker.GetStatistics();
  EXPECT_EQ(Counts.Advertisements, 5U);
  EXPECT_EQ(Counts.Frames, 4U);
  EXPECT_EQ(Counts.Sightings, 3U);
  EXPECT_EQ(Counts.Malformed, 1U);
}

// ---------------------------------------------------------------- distance

TEST_F(Tracker, DistanceComesFromPowerAndStrength) {
  constexpr auto Raw = TBeaconCalcMode::Raw, Stabilized = TBeaconCalcMode::Stabilized;
  struct TCase {
    TBeaconCalcMode Mode;
    float SPC;
    int Power;
    std::vector<std::pair<int, int>> Heard;  // milliseconds, dBm
    double Distance;
    const char* Proximity;
  };
  std::vector<std::pair<int, int>> Many(100, {0, -90});
  Many.insert(Many.end(), 32, {0, -59});
  const std::vector<TCase> Cases{
      {Raw, 0.5F, -59, {{0, -59}}, 1.0, "Near"},
      {Raw, 0.5F, -59, {{0, -53}}, std::pow(10.0, -0.3), "Near"},
      {Raw, 0.5F, -59, {{0, -52}}, std::pow(10.0, -0.35), "Immediate"},
      {Raw, 0.5F, -59, {{0, -68}}, std::pow(10.0, 0.45), "Near"},
      {Raw, 0.5F, -59, {{0, -69}}, std::pow(10.0, 0.5), "Far"},
      {Raw, 0.25F, -59, {{0, -79}}, std::pow(10.0, 0.5), "Far"},
      {Raw, 0.5F, 126, {{0, -127}}, std::pow(10.0, 12.65), "Far"},
      {Raw, 0.5F, -128, {{0, 126}}, std::pow(10.0, -12.7), "Immediate"},
      {Raw, 100.0F, 126, {{0, -127}}, -1.0, "Away"},
      {Raw, 0.5F, -59, {{0, 127}}, -1.0, "Away"},
      {Raw, 0.5F, 127, {{0, -59}}, -1.0, "Away"},
      {Raw, 0.5F, -59, {{0, -90}, {900, -59}}, 1.0, "Near"},
      {Raw, 0.5F, -59, {{0, -59}, {900, 127}}, -1.0, "Away"},
      {Stabilized, 0.5F, -59, {{0, -59}, {300, -90}, {600, -49}}, 1.0, "Near"},
      {Stabilized, 0.5F, -59, {{0, -59}, {300, -69}}, std::pow(10.0, 0.25), "Near"},
      {Stabilized, 0.5F, -59, {{0, -90}, {1, -90}, {1'000, -59}, {1'001, -59}}, 1.0, "Near"},
      {Stabilized, 0.5F, -59, {{0, -90}, {4'999, -59}}, 1.0, "Near"},
      {Stabilized, 0.5F, -59, {{0, -59}, {900, 127}}, -1.0, "Away"},
      {Stabilized, 0.5F, -59, {{0, -59}, {100, 127}, {200, -69}}, std::pow(10.0, 0.25), "Near"},
      {Stabilized, 0.5F, -59, Many, 1.0, "Near"},
  };
  for (const TCase& C : Cases) {
    SCOPED_TRACE(&C - Cases.data());
    FTracker.Clear();
    Configure(C.Mode, C.SPC);
    for (const auto& [Time, Rssi] : C.Heard) HearMinor(Time, 1, Rssi, C.Power);
    EXPECT_NEAR(FLast->GetDistance(), C.Distance, 1e-6 * std::abs(C.Distance));
    EXPECT_EQ(ProximityNames[static_cast<int>(FLast->GetProximity())], C.Proximity);
    EXPECT_EQ(FLast->GetRssi(), C.Heard.back().second);
    EXPECT_EQ(FLast->GetTxPower(), C.Power);
    PassUntil(10'000);
    FTracker.Clear();
    PassUntil(0);
  }
}

TEST_F(Tracker, ACallbackMayReplaceTheDistance) {
  std::string Asked;
  for (const auto& [Given, Distance] :
       {std::pair(7.5, 7.5), {0.0, 0.0}, {-5.0, -1.0}, {NAN, -1.0}, {HUGE_VAL, -1.0}}) {
    FTracker.Clear();
    FOnCalcDistance = [&, Answer = Given](int APower, int ARssi, double& ADistance) {
      Asked += fmt::format("{} {} {:.3f}; ", APower, ARssi, ADistance);
      ADistance = Answer;
    };
    Hear(0, EddystoneUIDPayload(UIDOf(1), -18), -69);
    EXPECT_EQ(FLast->GetDistance(), Distance);
  }
  EXPECT_EQ(Asked.substr(0, 15), "-59 -69 3.162; ");

  FOnCalcDistance = [](int, int, double&) {};
  Hear(1, EddystoneUIDPayload(UIDOf(1), -18), -69);
  EXPECT_NEAR(FLast->GetDistance(), 3.162, 0.001);
  FOnCalcDistance = [](int, int, double&) { FAIL() << "nothing is known"; };
  Hear(2, EddystoneUIDPayload(UIDOf(1), -18), UnknownRssi);
  Hear(3, EddystoneUIDPayload(UIDOf(1), 127), -69);
  EXPECT_EQ(FLast->GetDistance(), -1.0);
}

// ---------------------------------------------------------------- Eddystone frames

TEST_F(Tracker, URLsAndTelemetryBelongToTheUIDLastSeenFromTheirAddress) {
  const TPayload URL = EddystoneURLPayload("a.b"), TLM = EddystoneTLMPayload(2'900);
  Hear(0, URL, -59, 1);
  Hear(1, EddystoneUIDPayload(UIDOf(1)), -59, 1);
  Hear(2, EddystoneUIDPayload(UIDOf(2)), -59, 2);
  Take();
  Hear(3, URL, -59, 1);
  Hear(4, TLM, -59, 2);
  Hear(5, TLM, -59, 3);
  EXPECT_EQ(Take(), "3: url e1 https://a.b -41; 4: tlm e2 2900; ");
  // The address moves to another identity, and back.
  Hear(6, EddystoneUIDPayload(UIDOf(2)), -59, 1);
  Hear(7, URL, -59, 1);
  Hear(8, EddystoneUIDPayload(UIDOf(1)), -59, 1);
  Hear(9, TLM, -59, 1);
  EXPECT_EQ(Take(), "7: url e2 https://a.b -41; 9: tlm e1 2900; ");
  // They count as sightings; with the beacon they are forgotten.
  Hear(4'000, TLM, -69, 1);
  EXPECT_EQ(Take(), "4000: proximity e1 Far; 4000: tlm e1 2900; ");
  PassUntil(24'000);
  Take();
  Hear(24'001, TLM, -59, 1);
  EXPECT_EQ(Take(), "");
  EXPECT_EQ(FTracker.GetPresentCount(), 0U);
  Hear(24'002, EddystoneUIDPayload(UIDOf(1)), -59, 1);
  Listen({RegionOf(TKindofBeacon::iBeacon)});
  Take();
  Hear(24'003, TLM, -59, 1);
  EXPECT_EQ(Take(), "") << "the region is gone";
}

TEST_F(Tracker, ABeaconThatChangesItsAddressOftenIsFollowed) {
  for (int Address = 1; Address <= 100; ++Address)
    Hear(Address, EddystoneUIDPayload(UIDOf(1)), -59, Address);
  Take();
  Hear(200, EddystoneTLMPayload(1), -59, 100);
  Hear(201, EddystoneTLMPayload(2), -59, 85);
  Hear(202, EddystoneTLMPayload(3), -59, 84);
  EXPECT_EQ(Take(), "200: tlm e1 1; 201: tlm e1 2; ");
  EXPECT_EQ(FLast->GetAddress().Bytes[5], 85);
}

}  // namespace
}  // namespace System::Beacon
