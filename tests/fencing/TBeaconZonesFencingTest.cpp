// The component from its source to its events, in the simulated runtime.
#include "fencing/System.Beacon.Fencing.h"

#include <gtest/gtest.h>

#include "platform/simulation.h"
#include "support/raised.h"
#include "support/scripted_source.h"
#include "support/zone_event_log.h"
#include "support/zone_script.h"

namespace System::Beacon::Fencing {
namespace {

constexpr int NearRssi = -59;  // 1 m
constexpr int FarRssi = -79;   // 10 m

TSourceStep Heard(int AMinor, int ARssi = NearRssi, int ASeconds = 2) {
  return {ASeconds * TicksPerSecond, iBeaconPayload(TestGUID, 0, AMinor), ARssi};
}

/// A component on a script of advertisements, and what an application sees of it.
struct TScanning {
  explicit TScanning(std::vector<TSourceStep> ASteps,
                     std::string_view AZones = "A Near 1, B Near 2")
      : Source(New<TScriptedSource>(std::move(ASteps))) {
    AddZones(*Component.GetZones(), AZones);
    Component.SetSource(Source);
  }
  /// Enables the component and serves it for a while after the script has ended.
  std::string Run() {
    Component.SetEnabled(true);
    Source->GetFinished().WaitFor(600'000);
    return Log.Take();
  }

  TSimulation Simulation;
  TBeaconZonesFencing Component;
  TZoneEventLog Log{Component};
  TRef<TScriptedSource> Source;
};

TEST(TBeaconZonesFencing, TellsOfZonesOnTheMainThreadWhileItWaits) {
  TScanning Scanning({Heard(1), Heard(1, FarRssi), Heard(2), Heard(9), Heard(1, NearRssi, 21)});
  EXPECT_EQ(Scanning.Run(),
            "ZoneBeaconEnter A.1; ZoneBeaconProximity A.1 Near; ZoneEnter A by 1; "
            "BeaconProximity 1 Near; BeaconEnter 1; "
            "ZoneBeaconProximity A.1 Far; BeaconProximity 1 Far; "
            "ZoneBeaconEnter B.2; ZoneBeaconProximity B.2 Near; ZoneExit A by 2; "
            "ZoneEnter B by 2; BeaconProximity 2 Near; BeaconEnter 2; BeaconEnter 9; "
            // after five seconds a distance is unknown, after twenty the beacon is lost
            "ZoneBeaconProximity A.1 Away; BeaconProximity 1 Away; "
            "ZoneBeaconProximity B.2 Away; ZoneExit B by 2; BeaconProximity 2 Away; "
            "BeaconProximity 9 Away; "
            "ZoneBeaconProximity A.1 Away; BeaconProximity 1 Away; ZoneBeaconExit A.1; "
            "BeaconExit 1; ZoneBeaconProximity B.2 Away; BeaconProximity 2 Away; "
            "ZoneBeaconExit B.2; BeaconExit 2; BeaconExit 9; "
            "ZoneBeaconEnter A.1; ZoneBeaconProximity A.1 Near; ZoneEnter A by 1; "
            "BeaconProximity 1 Near; BeaconEnter 1");
  EXPECT_EQ(Scanning.Component.GetCurrentZone()->GetDisplayName(), "A");
  EXPECT_EQ(Scanning.Component.GetNearestBeacon()->GetMinor(), 1);
  EXPECT_EQ(Scanning.Component.GetScanStatistics().Sightings, 5U);
}

// ---------------------------------------------------------------- states

TEST(TBeaconZonesFencing, StartsAndStopsWhenItIsLoadedAndNeverWhileItIsDesigned) {
  for (const auto& [IsDesigned, Events] : {std::pair(false, "ZoneEnter A by 1"), {true, ""}}) {
    TScanning Scanning({Heard(1), Heard(2, NearRssi, 20)});
    TBeaconZonesFencing& Component = Scanning.Component;
    Component.SetDesigning(IsDesigned);
    for (const bool IsOn : {true, false}) {
      Component.BeginLoading();
      Component.SetEnabled(IsOn);
      if (IsOn) Sleep(5'000);
      EXPECT_EQ(Scanning.Log.Take(), "");
      Component.EndLoading();
      Sleep(5'000);
      EXPECT_EQ(Scanning.Log.TakeZones(), IsOn ? Events : "");
      EXPECT_EQ(Component.GetEnabled(), IsOn);
      Scanning.Log.Take();
    }
    Sleep(30'000);
    EXPECT_EQ(Scanning.Log.Take(), "");
  }
}

TEST(TBeaconZonesFencing, AppliesChangesOfZonesAndOptionsAtTheNextStart) {
  constexpr TGUID Other{{9}};
  const TSourceStep Foreign{2 * TicksPerSecond, iBeaconPayload(Other, 0, 5)};
  TScanning Scanning({Heard(1), Foreign, Heard(1), Foreign}, "A Near 1, B Near 5");
  TBeaconZonesFencing& Component = Scanning.Component;
  Component.SetEnabled(true);
  Component.GetZones()->GetItems(1)->GetBeaconList()->GetItems(0)->SetGUID(Other);
  Component.GetBeaconManagerOptions()->SetBeaconDeathTime(1);
  Sleep(5000);
  EXPECT_EQ(Scanning.Log.TakeZones(), "ZoneEnter A by 1");
  Component.StartFencingScanning();
  Sleep(5000);
  EXPECT_EQ(Scanning.Log.TakeZones(), "ZoneExit A by 1; ZoneEnter B by 5");
}

TEST(TBeaconZonesFencing, TakesAnotherManagerForAnotherScanModeOnly) {
  static int Managers = 0;
  const auto Usual = std::exchange(TBeaconManager::FSourceFactory, [] {
    ++Managers;
    return TRef<IAdvertisementSource>(New<TScriptedSource>(std::vector<TSourceStep>{}));
  });
  const TSimulation Simulation;
  TBeaconZonesFencing Component;
  Component.SetEnabled(true);
  Component.StartFencingScanning();
  EXPECT_EQ(Managers, 1);
  Component.GetBeaconManagerOptions()->SetMode(TBeaconScanMode::Alternative);
  EXPECT_EQ(Managers, 1);
  Component.StartFencingScanning();
  EXPECT_EQ(Managers, 2);
  TBeaconManager::FSourceFactory = Usual;
}

TEST(TBeaconZonesFencing, IsStoppedAndDisabledByAStartThatFails) {
  TScanning Scanning({Heard(1)});
  TBeaconZonesFencing& Component = Scanning.Component;
  Scanning.Source->OpenError = "no radio";
  EXPECT_EQ(Raised<EBeaconSourceError>([&] { Component.SetEnabled(true); }), "no radio");
  EXPECT_FALSE(Component.GetEnabled());

  Scanning.Source->OpenError.clear();
  Component.SetEnabled(true);
  Scanning.Source->OpenError = "unplugged";
  EXPECT_EQ(Raised<EBeaconSourceError>([&] { Component.StartFencingScanning(); }), "unplugged");
  EXPECT_FALSE(Component.GetEnabled());
  Sleep(5000);
  TZoneScript(Component).Play("enter 1 Near 1");  // a report that comes too late
  EXPECT_EQ(Scanning.Log.Take(), "");

  Scanning.Source->OpenError.clear();
  EXPECT_NE(Scanning.Run(), "");
}

TEST(TBeaconZonesFencing, MayBeAskedForItsPartsBeforeItEverScanned) {
  TBeaconZonesFencing Component;
  Component.UnRegisterZones();
  Component.DisconnectBeaconManagerEvents();
  Component.StopScanning();
  EXPECT_TRUE(Component.GetDetectedBeacons().IsEmpty());
  EXPECT_FALSE(Component.GetNearestBeacon());
  EXPECT_EQ(Component.GetCurrentZone(), nullptr);
}

// ---------------------------------------------------------------- base values

TEST(TBeaconZonesFencing, ChecksBaseValuesBeforeItSpreadsThem) {
  TBeaconZonesFencing Component;
  const TBeaconItem& Item = *Component.GetZones()->Add()->GetBeaconList()->Add();
  EXPECT_EQ(Item.GetManufacturerID(), "-1");
  EXPECT_EQ(Component.GetBaseEddyNamespace(), "00000000000000000000");
  EXPECT_EQ(Component.GetZones()->GetBaseEddyNamespace(), "");
  Component.SetBaseBeaconGUID(GUIDToString(TestGUID));
  Component.SetBaseManufacturerID("4C");
  Component.SetBaseEddyNamespace("00112233445566778899");
  EXPECT_EQ(Item.GetGUID(), TestGUID);
  EXPECT_EQ(Item.GetManufacturerID(), "4C");
  EXPECT_EQ(Item.GetEddyNamespace(), "00000000000000000000") << "it did not carry the empty text";

  EXPECT_THROW(Component.SetBaseBeaconGUID("{}"), EConvertError);
  EXPECT_EQ(Raised<EComponentError>([&] { Component.SetBaseManufacturerID("-2"); }),
            "Manufacturer ID should be -1 or a four digits hex value");
  EXPECT_EQ(Raised<EComponentError>([&] { Component.SetBaseEddyNamespace("0"); }),
            "Invalid Eddystone namespace");
  EXPECT_EQ(Component.GetBaseBeaconGUID(), GUIDToString(TestGUID));
  EXPECT_EQ(Component.GetZones()->GetBaseManufacturerID(), "4C");
  EXPECT_EQ(Component.GetBaseEddyNamespace(), "00112233445566778899");
}

// ---------------------------------------------------------------- inside handlers

TEST(TBeaconZonesFencing, IsSilentAfterAHandlerHasDisabledIt) {
  for (const auto& [DisabledBy, Events, ZoneName] :
       {std::tuple<const char*, const char*, const char*>{
            "ZoneExit A by 2", "ZoneEnter A by 1; ZoneExit A by 2", ""},
        // It stays in the zone whose exit it did not come to tell.
        {"ZoneBeaconProximity B.2 Near", "ZoneEnter A by 1", "A"}}) {
    TScanning Scanning({Heard(1), Heard(2), Heard(1), Heard(1), Heard(2)});
    Scanning.Log.OnEvent = [&, &DisabledBy = DisabledBy](const std::string& ALine) {
      if (ALine == DisabledBy) Scanning.Component.SetEnabled(false);
    };
    Scanning.Component.SetEnabled(true);
    Sleep(20'000);
    EXPECT_EQ(Scanning.Log.TakeZones(), Events);
    EXPECT_FALSE(Scanning.Component.GetEnabled());
    const TBeaconZoneItem* const Zone = Scanning.Component.GetCurrentZone();
    EXPECT_EQ(Zone ? Zone->GetDisplayName() : "", ZoneName);
    Scanning.Log.OnEvent = {};
    Scanning.Run();
    EXPECT_EQ(Scanning.Component.GetCurrentZone(), Scanning.Component.GetZones()->GetItems(1));
  }
}

TEST(TBeaconZonesFencing, StartsAgainWhenTheHandlerThatAskedForItHasReturned) {
  for (const std::string Requests : {"-+", "r", "-+-"}) {
    const bool IsOn = Requests != "-+-";
    TScanning Scanning({Heard(1), Heard(2), Heard(2)});
    Scanning.Log.OnEvent = [&](const std::string& ALine) {
      if (ALine != "ZoneEnter A by 1") return;
      for (const char Request : Requests)
        Request == 'r' ? Scanning.Component.StartFencingScanning()
                       : Scanning.Component.SetEnabled(Request == '+');
      Sleep(1000);
    };
    Scanning.Component.SetEnabled(true);
    Sleep(20'000);
    const char* const Rest = IsOn ? "; ZoneExit A by 2; ZoneEnter B by 2" : "";
    EXPECT_EQ(Scanning.Log.TakeZones(), std::string("ZoneEnter A by 1") + Rest) << Requests;
    EXPECT_EQ(Scanning.Component.GetEnabled(), IsOn) << Requests;
  }
}

TEST(TBeaconZonesFencing, RaisesThroughServeHandOffsWhatARestartInAHandlerRaises) {
  TScanning Scanning({Heard(1), Heard(2)});
  Scanning.Log.OnEvent = [&](const std::string&) {
    Scanning.Source->OpenError = "unplugged";
    Scanning.Component.StartFencingScanning();
  };
  Scanning.Component.SetEnabled(true);
  EXPECT_EQ(Raised<EBeaconSourceError>([] { ServeHandOffs(10'000); }), "unplugged");
  EXPECT_FALSE(Scanning.Component.GetEnabled());
}

TEST(TBeaconZonesFencing, FollowsTheLastOfRequestsThatCrossWhileItStops) {
  // Another thread's hand-offs are served while the main thread waits for the scan to end.
  for (std::uint64_t Seed = 1; Seed <= 40; ++Seed)
    for (const bool IsOn : {false, true}) {
      const TSimulation Simulation({.Seed = Seed});
      TBeaconZonesFencing Component;
      TZoneEventLog Log(Component);
      AddZones(*Component.GetZones(), "A Near 1");
      Component.SetSource(New<TScriptedSource>(std::vector<TSourceStep>{Heard(1, NearRssi, 60)}));
      Component.SetEnabled(true);
      bool WasAsked = false;
      const auto Other = TThread::CreateAnonymousThread([&] {
        TThread::Synchronize([&] {
          Component.SetEnabled(!IsOn);
          Component.SetEnabled(IsOn);
          WasAsked = true;
        });
      });
      Other->Start();
      if (IsOn)
        Component.SetEnabled(false);
      else
        Component.StartFencingScanning();
      const bool DidCross = WasAsked;
      Other->WaitFor();
      Sleep(120'000);
      EXPECT_EQ(Component.GetEnabled(), IsOn) << "seed " << Seed << ", crossed " << DidCross;
      const std::string Events = Log.Take();
      EXPECT_EQ(Events.find("ZoneEnter A by 1") != std::string::npos, IsOn) << "seed " << Seed;
      EXPECT_TRUE(IsOn || Events.empty()) << "seed " << Seed << ": " << Events;
    }
}

// ---------------------------------------------------------------- misuse

TEST(TBeaconZonesFencingDeathTest, EndsTheProcessWhenItIsDestroyedInsideItsOwnHandler) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto Misuse = [] {
    const TSimulation Simulation;
    auto Component = std::make_unique<TBeaconZonesFencing>();
    AddZones(*Component->GetZones(), "A Near 1");
    Component->SetSource(New<TScriptedSource>(std::vector<TSourceStep>{Heard(1)}));
    Component->SetOnZoneEnter(
        [&](TObject*, const TRef<IBeacon>&, TBeaconZoneItem*) { Component.reset(); });
    Component->SetEnabled(true);
    Sleep(10'000);
  };
  EXPECT_DEATH(Misuse(), "a zone component was destroyed inside one of its own event handlers");
}

}  // namespace
}  // namespace System::Beacon::Fencing
