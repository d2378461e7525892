// The beacon service as a whole: sources, the reporting thread, settings, start and stop.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include "platform/beacons/System.Beacon.h"
#include "platform/beacons/captures/captures.h"
#include "platform/beacons/replay_source.h"
#include "platform/errors.h"
#include "platform/hex.h"
#include "platform/simulation.h"
#include "support/fake_beacon.h"
#include "support/raised.h"
#include "support/scripted_source.h"

namespace System::Beacon {
namespace {

constexpr TTicks Ms = TicksPerMillisecond;

TBeaconsRegion RegionOfTests() {
  TBeaconsRegion Result;
  Result.iBAltBeaconRegion.Initialize(TestGUID, TKindofBeacon::iBeaconAltBeacon, -1);
  return Result;
}

TSourceStep Step(TTicks ADelay, int AMinor, int ARssi = -59) {
  return {ADelay, iBeaconPayload(TestGUID, 0, AMinor), ARssi, static_cast<std::uint8_t>(AMinor)};
}

/// A manager in a simulation; what it reports are lines that begin with milliseconds.
class Manager : public testing::Test {
 protected:
  Manager() : FManager(TBeaconScanMode::Standard) {
    FManager.SetKindofBeacons({TKindofBeacon::iBeaconAltBeacon});
    FManager.RegisterBeacons(RegionOfTests());
    FManager.SetCalcMode(TBeaconCalcMode::Raw);
    FManager.SetOnBeaconEnter(
        [this](TObject*, const TRef<IBeacon>& ABeacon, const TBeaconList& AList) {
          Log("enter", *ABeacon, fmt::format(" of {}", AList.GetLength()));
          FLast = ABeacon;
          if (FOnEnter) FOnEnter();
        });
    FManager.SetOnBeaconExit([this](TObject*, const TRef<IBeacon>& ABeacon, const TBeaconList&) {
      Log("exit", *ABeacon);
    });
    FManager.SetOnBeaconProximity(
        [this](TObject*, const TRef<IBeacon>& ABeacon, TBeaconProximity AProximity) {
          Log("proximity", *ABeacon, fmt::format(" {}", static_cast<int>(AProximity)));
        });
    FManager.SetOnScanError([this](TObject*, const std::string& AMessage) {
      FLog += fmt::format("{} error {}; ", Ticks() / Ms, AMessage);
    });
  }

  TRef<TScriptedSource> Start(std::vector<TSourceStep> ASteps) {
    const auto Result = New<TScriptedSource>(std::move(ASteps));
    FManager.SetSource(Result);
    FManager.StartScan();
    return Result;
  }
  void Play(std::vector<TSourceStep> ASteps) {
    Start(std::move(ASteps))->GetFinished().WaitUntil(NoDeadline);
  }
  std::string Take() { return std::exchange(FLog, {}); }

  const TSimulation FSimulation;
  TBeaconManager FManager;
  TRef<IBeacon> FLast;
  std::function<void()> FOnEnter;

 private:
  void Log(const char* AWhat, const IBeacon& ABeacon, const std::string& AMore = "") {
    FLog += fmt::format("{} {} {}{}; ", Ticks() / Ms, AWhat, ABeacon.GetMinor(), AMore);
  }
  std::string FLog;  // reporting thread while it runs; the simulation runs one thread at a time
};

TEST_F(Manager, ReportsARecordingAtTheTimesWhenItWasMade) {
  std::string Text;
  const auto Add = [&Text](double ASeconds, int AMinor, int ARssi) {
    Text += fmt::format(R"({{"t":{},"address":"C0:00:00:00:00:01","rssi":{},"adv":"{}"}})",
                        ASeconds,
                        ARssi,
                        BytesToHex(iBeaconPayload(TestGUID, 0, AMinor)));
    Text += '\n';
  };
  Add(100.0, 1, -59);
  Add(100.25, 2, -79);
  Add(101.0, 1, -79);
  Add(100.5, 1, -59);  // the clock ran back
  Add(130.0, 3, -59);
  const std::vector<std::uint8_t> Bytes(Text.begin(), Text.end());
  const auto Source = New<TReplaySource>(OpenAdvertisementLog(Bytes));
  FManager.SetSource(Source);
  FManager.StartScan();
  Source->GetFinished().WaitUntil(NoDeadline);
  FManager.StopScan();
  EXPECT_EQ(Take(),
            "0 enter 1 of 1; 250 enter 2 of 2; 1000 proximity 1 3; 1000 proximity 1 2; "
            "5250 proximity 2 4; 6000 proximity 1 4; 20250 exit 2; 21000 exit 1; "
            "30000 enter 3 of 1; ");
  EXPECT_EQ(FManager.GetStatistics().Advertisements, 5U);
  EXPECT_EQ(Raised<EBeaconSourceError>([&] { FManager.StartScan(); }),
            "a recording can be replayed once; open it again");
}

TEST_F(Manager, SettingsTakeEffectWithTheNextAdvertisement) {
  FManager.UnRegisterBeacons(RegionOfTests());
  FManager.UnRegisterBeacons(RegionOfTests());
  constexpr TTicks Second = TicksPerSecond;
  std::vector Steps{Step(Second, 1), Step(Second, 2, -69), Step(Second, 3, -69)};
  Steps.insert(Steps.end(), {Step(Second, 1), Step(4 * Second, 3)});
  const auto Source = Start(Steps);
  Sleep(1'500);
  FManager.RegisterBeacons(RegionOfTests());
  Sleep(1'000);
  FManager.SetSPC(0.25F);
  Sleep(1'000);
  FManager.UnRegisterBeacons(RegionOfTests());
  Sleep(1'000);
  FManager.SetBeaconDeathTime(5);
  Source->GetFinished().WaitUntil(NoDeadline);
  EXPECT_EQ(Take(),
            "2000 enter 2 of 1; 3000 enter 3 of 2; 7000 exit 2; "
            "8000 exit 3; ");
}

TEST_F(Manager, AfterStopScanNoHandlerRunsAndBeaconsAreNotAlive) {
  Start({Step(0, 1), Step(1'000 * Ms, 1, -90), Step(1'000 * Ms, 2)});
  Sleep(500);
  EXPECT_TRUE(FManager.IsScanning());
  FManager.StopScan();
  EXPECT_FALSE(FManager.IsScanning());
  Sleep(60'000);
  EXPECT_EQ(Take(), "0 enter 1 of 1; ");
  EXPECT_FALSE(FLast->IsAlive());
  EXPECT_EQ(FLast->GetDistance(), -1.0);
  FManager.StartScan();
  Sleep(5'000);
  EXPECT_EQ(Take(), "61500 enter 1 of 1; 62500 enter 2 of 2; ");
  EXPECT_EQ(FManager.GetStatistics().Sightings, 2U);
}

TEST_F(Manager, StopScanOnTheReportingThreadAsksForTheEnd) {
  FOnEnter = [this] {
    FManager.StopScan();
    EXPECT_FALSE(FManager.IsScanning());
  };
  Start({Step(0, 1), Step(0, 2), Step(0, 3)});
  Sleep(1'000);
  EXPECT_EQ(Take(), "0 enter 1 of 1; ");
  FManager.StartScan();
  Sleep(1'000);
  EXPECT_EQ(Take(), "1000 enter 2 of 1; ");
}

TEST_F(Manager, AHandOffMayStopAndStartWhatIsBeingStopped) {
  FOnEnter = [] { Sleep(1'000); };
  Start({Step(0, 1), Step(0, 2)});
  const auto Other = TThread::CreateAnonymousThread([this] {
    Sleep(500);
    TThread::Synchronize([this] {
      FManager.StopScan();
      FManager.StartScan();
    });
  });
  Other->Start();
  Sleep(100);
  FManager.StopScan();
  EXPECT_TRUE(FManager.IsScanning());
  Sleep(10'000);
  EXPECT_EQ(Take(), "0 enter 1 of 1; 1000 enter 2 of 1; ");
}

TEST_F(Manager, SourcesAreClosedWhateverTheyEndWith) {
  const auto Finishing = New<TScriptedSource>(std::vector{Step(0, 1)});
  const auto Failing = New<TScriptedSource>(std::vector{Step(0, 2)});
  const auto Refusing = New<TScriptedSource>(std::vector<TSourceStep>());
  Failing->EndError = "the radio is gone";
  Refusing->OpenError = "no adapter";
  FManager.SetSource(Finishing);
  FManager.StartScan();
  Sleep(1'000);
  EXPECT_FALSE(FManager.IsScanning());
  EXPECT_TRUE(FLast->IsAlive());

  FManager.SetSource(Failing);
  EXPECT_EQ(Finishing->OpenCount, 0);
  EXPECT_FALSE(FLast->IsAlive());
  FManager.StartScan();
  Sleep(1'000);
  EXPECT_EQ(Take(), "0 enter 1 of 1; 1000 enter 2 of 1; 1000 error the radio is gone; ");
  EXPECT_FALSE(FManager.IsScanning());
  Sleep(30'000);
  EXPECT_EQ(Take(), "6000 proximity 2 4; 21000 exit 2; ")
      << "what was present is not there for ever";

  FManager.SetSource(Refusing);
  EXPECT_EQ(Failing->OpenCount, 0);
  EXPECT_EQ(Raised<EBeaconSourceError>([&] { FManager.StartScan(); }), "no adapter");
  EXPECT_FALSE(FManager.IsScanning());
  Play({Step(0, 3)});
  EXPECT_EQ(Take(), "32000 enter 3 of 1; ");
}

TEST_F(Manager, ScanningWindowsDropWhatComesWhileTheySleep) {
  FManager.SetScanningTime(500);
  FManager.SetScanningSleepingTime(250);
  std::vector<TSourceStep> Steps;
  for (int I = 0; I < 14; ++I) Steps.push_back(Step(I == 0 ? 0 : 125 * Ms, I));
  const auto HeardOf = [&] {
    Play(Steps);
    Take();
    return FManager.GetStatistics().Sightings;
  };
  EXPECT_EQ(HeardOf(), 14U);
  FManager.SetGatesRecordings(true);
  FManager.SetOnSighting(
      [](TObject*, const TRef<IBeacon>& ABeacon) { EXPECT_LT(ABeacon->GetMinor() % 6, 4); });
  EXPECT_EQ(HeardOf(), 10U);
}

TEST(TBeaconManager, TakesItsSourceFromTheClassVariable) {
  const TAdvertisementSourceFactory Default = TBeaconManager::FSourceFactory;
  TBeaconManager::FSourceFactory = nullptr;
  const auto Manager = TBeaconManager::GetBeaconManager(TBeaconScanMode::Alternative);
  EXPECT_EQ(Raised<EBeaconSourceError>([&] { Manager->StartScan(); }),
            "there is nothing to scan: give the beacon manager a source");
  TBeaconManager::FSourceFactory = []() -> TRef<IAdvertisementSource> {
    return New<TScriptedSource>(std::vector<TSourceStep>());
  };
  TBeaconManager::GetBeaconManager(TBeaconScanMode::Standard)->StartScan();
  TBeaconManager::FSourceFactory = Default;
}

}  // namespace
}  // namespace System::Beacon
