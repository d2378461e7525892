// The map component from its source to its events and its display, in the simulated runtime.
#include <gtest/gtest.h>

#include <algorithm>

#include "fencing/System.Beacon.Fencing.h"
#include "persistence/component_file.h"
#include "platform/controls/offscreen_control.h"
#include "platform/simulation.h"
#include "support/fake_beacon.h"
#include "support/fake_runtime_map.h"
#include "support/raised.h"
#include "support/scripted_source.h"

namespace System::Beacon::Fencing {
namespace {

TRef<IDesignZone> Zone(const char* AName, const TRectF& ARect) {
  return New<TFakeDesignZone>(AName, ARect);
}

/// Two maps, beacon 1 on the first and 2 on the second; zones A and B overlap on the first; a way
/// along y = 0 to the zone "Hall" at its end.
TFencingProject Office() {
  TFencingProject Result;
  std::vector<TFencingMap> Maps(2);
  for (int I = 0; I < 2; ++I) {
    const auto Map = New<TFakeDesignMap>();
    Map->Rect = {0, 0, 100, 100};
    const auto Beacon = NewFakeDesignBeacon(TestGUID, I + 1, {10, 10});
    Beacon->Name = "B" + std::to_string(I + 1);
    Maps[static_cast<std::size_t>(I)].Map = Map;
    Maps[static_cast<std::size_t>(I)].BeaconList = {{nullptr, Beacon}};
  }
  Maps[0].Zones = {
      Zone("A", {0, 10, 20, 20}), Zone("B", {15, 10, 40, 20}), Zone("Hall", {90, -1, 94, 3})};
  Result.Maps = TArray<TFencingMap>(std::move(Maps));
  Result.CurrentMapIndex = 0;
  Result.Graph.Initialize({{{0, 0}, 0}, {{90, 0}, 0}, {{0, 50}, 0}}, {{0, 1}, {0, 2}});
  Result.GlobalPath.SetLength(3);
  Result.PoiList.AddPOI({"Hall", {92, 1}, {}, 0, TPOIType::poiZone});
  TBeaconsRegion Region;
  Region.iBAltBeaconRegion.GUID = TestGUID;
  Result.RegionsToMonitorize = {Region};
  return Result;
}

TSourceStep Heard(int AMinor, int ARssi = -59, int AMilliseconds = 100) {
  return {AMilliseconds * TicksPerMillisecond, iBeaconPayload(TestGUID, 0, AMinor), ARssi};
}

/// A component with the project "office" on a script of advertisements, and all that it tells.
struct TLive {
  explicit TLive(std::vector<TSourceStep> ASteps = {},
                 const char* AText = "office",
                 std::uint64_t ASeed = 1)
      : Simulation({.Seed = ASeed}) {
    TFakeRuntimeMap::Projects["office"] = &Office;
    TFakeRuntimeMap::Projects["other"] = &Office;
    TFakeRuntimeMap::Projects["empty"] = [] { return TFencingProject(); };
    Component = std::make_unique<TBeaconMapFencing>();
    Component->SetSource(New<TScriptedSource>(std::move(ASteps)));
    Listen();
    Component->SetXMLMap(AText);
    TFakeRuntimeMap::Take();
  }

  void Listen() {
    const auto Named = [this](const char* AWhat) {
      return [this, AWhat](TObject* ASender, const auto& AThing) {
        EXPECT_EQ(ASender, Component.get());
        Note(std::string(AWhat) + " " + NameOf(AThing));
      };
    };
    Component->SetOnZoneEnter(Named("in"));
    Component->SetOnZoneExit(Named("out"));
    Component->SetOnBeaconEnter(Named("enter"));
    Component->SetOnBeaconExit(Named("exit"));
    Component->SetOnArrivedToPOI(Named("arrived"));
    Component->SetOnBeforeMapChange([this](TObject*, int AFrom, int ATo, bool& AAllow) {
      AAllow = Allows;
      Note(fmt::format("change {} {}", AFrom, ATo));
    });
    Component->SetOnBeaconProximity(
        [this](TObject*, const TFencingBeacon& ABeacon, const TRef<IDesignZone>& AZone, auto) {
          Note(fmt::format("near {} {}", NameOf(ABeacon), AZone ? AZone->GetName() : "-"));
        });
  }
  static std::string NameOf(const TRef<IDesignZone>& AZone) { return AZone->GetName(); }
  static std::string NameOf(const TFencingBeacon& ABeacon) {
    return ABeacon.DesignBeacon->GetName();
  }
  static std::string NameOf(const TBeaconFencingPOI& APoi) { return APoi.Name; }
  void Note(const std::string& AText) {
    EXPECT_TRUE(IsMainThread());
    Events += (Events.empty() ? "" : "; ") + AText;
    if (OnEvent) OnEvent(AText);
  }
  /// Runs for a while; what was told.
  std::string Run(int AMilliseconds = 10'000) {
    if (!Component->GetEnabled()) Component->SetEnabled(true);
    Sleep(AMilliseconds);
    return Take();
  }
  std::string Take() { return std::exchange(Events, {}); }

  TFakeClasses Classes;
  TSimulation Simulation;
  std::unique_ptr<TBeaconMapFencing> Component;
  std::string Events;
  std::function<void(const std::string& AText)> OnEvent;
  bool Allows = true;
};

std::vector<TSourceStep> Repeated(const std::vector<TSourceStep>& ASteps, int ATimes) {
  std::vector<TSourceStep> Result;
  for (int I = 0; I < ATimes; ++I) Result.insert(Result.end(), ASteps.begin(), ASteps.end());
  return Result;
}

// ---------------------------------------------------------------- sightings and maps

TEST(TBeaconMapFencing, ChangesToAnotherMapAtTheFifthCheckInARowUnlessItIsRefused) {
  for (const bool Allows : {true, false}) {
    TLive Live(Repeated({Heard(2)}, 30));
    Live.Allows = Allows;
    // Checks: one when the beacon enters, then one each half a second.
    EXPECT_EQ(Live.Run(1900), "enter B2") << "four checks";
    EXPECT_EQ(Live.Run(300), "change 0 1");
    EXPECT_EQ(Live.Component->GetMapIndex(), Allows ? 1 : 0);
    EXPECT_EQ(Live.Component->GetProjectInformation().CurrentMapIndex, Allows ? 1 : 0);
    EXPECT_EQ(TFakeRuntimeMap::Take(), Allows ? "map 1" : "");
  }
}

TEST(TBeaconMapFencing, CountsChecksAnewWhenTheOwnMapIsNearerInBetween) {
  auto Steps = Repeated({Heard(2)}, 17);
  Steps.push_back(Heard(1, -50));
  Steps.push_back(Heard(2, -80));
  const auto Rest = Repeated({Heard(1, -50), Heard(2, -80)}, 20);
  Steps.insert(Steps.end(), Rest.begin(), Rest.end());
  TLive Live(Steps);
  const std::string Events = Live.Run(5000);
  EXPECT_EQ(Events.find("change"), std::string::npos) << Events;
}

TEST(TBeaconMapFencing, TellsOfBeaconsOfTheProjectOnly) {
  TLive Live({Heard(1), Heard(7), Heard(1), Heard(7, -59, 40'000)});
  TFakeCalculator::Path = {{500.0F, 1500.0F}};
  Live.Component->SetMapOptions({TFencingMapOption::ColorBeacon});
  EXPECT_EQ(Live.Run(400), "enter B1");
  EXPECT_EQ(Live.Component->GetDetectedBeacons().GetLength(), 2U);
  Live.Take();
  TFakeRuntimeMap::Take();
  EXPECT_EQ(Live.Run(30'000), "in A; near B1 A; exit B1");
  EXPECT_EQ(TFakeRuntimeMap::Take(), "color B1 FFFF0000");
}

// ---------------------------------------------------------------- positions

TEST(TBeaconMapFencing, TellsOfZonesByNameInTheOrderOfTheirLists) {
  TLive Live(Repeated({Heard(1)}, 60));
  Live.Component->SetMapOptions({TFencingMapOption::HighlightZones});
  for (const float X : {5.0F, 17.0F, 17.0F, 50.0F})
    TFakeCalculator::Path.push_back({100 * X, 1500});
  const std::string Events = Live.Run(5000);
  EXPECT_NE(Events.find("in A; in B; out A; out B"), std::string::npos) << Events;
  EXPECT_EQ(TFakeRuntimeMap::Take(), "highlight A; highlight A B; highlight A B; highlight");
  EXPECT_EQ(Live.Component->GetLastRawPosition(), (TPointF{5000, 1500}));
}

TEST(TBeaconMapFencing, TakesThePositionFromTheApplicationWhenItAnswers) {
  TLive Live(Repeated({Heard(1)}, 60));
  TFakeCalculator::Path = {{9900, 9900}};
  TOffscreenControl Control(10, 10);
  Live.Component->SetPaintControl(&Control);
  Live.Component->SetMapOptions(
      {TFencingMapOption::ShowPosition, TFencingMapOption::ShowPositionInPath});
  Live.Component->GetFencingOptions()->SetZoneHighlightMetod(TZoneHighlightMetod::PathPosition);
  int Calls = 0;
  Live.Component->SetOnCalcPosition([&](TObject* ASender,
                                        const TFencingBeacons& ABeacons,
                                        const TParticleFilterOptions& AOptions,
                                        const TRectF& ALimit,
                                        const TPathSegments& APaths,
                                        bool& AManaged,
                                        TPointF& APosition,
                                        TPointF& APathPosition) {
    EXPECT_FALSE(IsMainThread());
    EXPECT_EQ(ASender, Live.Component.get());
    EXPECT_EQ(ABeacons.GetLength(), 1U);
    EXPECT_EQ(AOptions.GetBeaconsToUse(), 3);
    EXPECT_EQ(ALimit, (TRectF{0, 0, 100, 100}));
    EXPECT_EQ(APaths.GetLength(), 2U);
    AManaged = Calls++ == 0;
    APosition = {6000, 6000};
    APathPosition = {1000, 1500};
  });
  std::string Positions;
  Live.Component->SetOnPositionEstimated([&](const TPointF& ARaw, const TPointF& APath) {
    Positions += fmt::format("{:g},{:g} {:g},{:g}; ", ARaw.X, ARaw.Y, APath.X, APath.Y);
  });
  EXPECT_NE(Live.Run(1200).find("in A; out A"), std::string::npos);
  EXPECT_EQ(Positions, "60,60 10,15; 99,99 99,99; ");
  EXPECT_EQ(TFakeRuntimeMap::Take(), "path 10,15; raw 60,60; path 99,99; raw 99,99");
  EXPECT_EQ(Live.Component->GetLastPathPosition(), (TPointF{9900, 9900}));
}

TEST(TBeaconMapFencing, FollowsARouteUntilItsEndIsReachedOnce) {
  TLive Live(Repeated({Heard(1)}, 100));
  Live.Run(400);
  EXPECT_FALSE(Live.Component->ShowPathToNodeIndex(1)) << "there is one point of interest";
  EXPECT_TRUE(Live.Component->ShowPathToNodeIndex(0));
  const TFencingProject Project = Live.Component->GetProjectInformation();
  const auto& Map = dynamic_cast<const TFakeDesignMap&>(*Project.Maps[0].Map);
  EXPECT_EQ(Map.ShownPath, (std::vector<std::int32_t>{0, 1}));
  // On the route, far off it near node 2, 1.4 from the node at its end, and there again.
  TFakeCalculator::Path = {{4000, 0}, {0, 4000}, {9000, 140}, {9000, 0}, {9000, 0}};
  const int Showings = Map.Showings;
  Live.Run(900);
  EXPECT_EQ(Map.ShownPath, (std::vector<std::int32_t>{2, 0, 1})) << "from where it is now";
  EXPECT_EQ(Map.Showings, Showings + 1);
  const std::string Events = Live.Run(3000);
  EXPECT_NE(Events.find("arrived Hall"), std::string::npos);
  EXPECT_EQ(Events.find("arrived"), Events.rfind("arrived"));
  EXPECT_TRUE(Map.ShownPath.empty());

  EXPECT_TRUE(Live.Component->ShowPathToNodeIndex(0));
  Live.OnEvent = [&](const std::string&) { Live.Component->SetEnabled(false); };
  TFakeCalculator::Path = {{9000, 0}};
  Live.Run(3000);
  EXPECT_FALSE(Live.Component->GetEnabled());
  EXPECT_TRUE(Map.ShownPath.empty()) << "also when the arrival ends the component";
}

TEST(TBeaconMapFencing, GivesTheCalculatorCentimetresToCalibrateBy) {
  TLive Live({}, "");
  TFakeRuntimeMap::Projects["inches"] = [] {
    TFencingProject Result = Office();
    Result.Maps[0].Map = New<TFakeDesignMap>(TMeasureUnits::Inches);
    return Result;
  };
  EXPECT_EQ(Live.Component->GetMotionAverage(), 0.0);
  Live.Component->ManualCalibration({2, 3});
  Live.Component->SetXMLMap("inches");
  Live.Run(100);
  EXPECT_EQ(Live.Component->GetMeasureUnits(), TMeasureUnits::Inches);
  Live.Component->ManualCalibration({2, 3});
  EXPECT_EQ(TFakeCalculator::Calibrated, (TPointF{5.08F, 7.62F}));
  EXPECT_EQ(Live.Component->GetMotionAverage(), 1.5);
}

// ---------------------------------------------------------------- life

TEST(TBeaconMapFencing, IsStoppedAndDisabledByAStartThatFails) {
  TLive Live({}, "");
  TBeaconMapFencing& Component = *Live.Component;
  const auto Start = [&] { Component.SetEnabled(true); };
  EXPECT_EQ(Raised<EComponentError>(Start), "There is no fencing map information");
  Component.SetXMLMap("empty");
  EXPECT_EQ(Raised<EComponentError>(Start), "There is no fencing map information");
  Component.SetXmlData("rubbish");
  EXPECT_EQ(Raised<EGeneralError>(Start), "no project rubbish");
  EXPECT_EQ(Raised<EGeneralError>([&] { Component.SetXMLMap("more rubbish"); }),
            "no project more rubbish");
  EXPECT_EQ(Component.GetRawMap(), "rubbish");
  Component.SetXMLMap("office");
  TPositionCalculator::FPositionCalculatorClass = {};
  EXPECT_EQ(Raised<EComponentError>(Start), "Cannot continue, position calculator class not found");
  EXPECT_FALSE(Component.GetEnabled());
  EXPECT_EQ(Raised<EComponentError>([&] { Component.SetZoneEnteringError(101); }),
            "The value should be between -1 and 100");
  Component.BeginLoading();
  Component.SetXMLMap("rubbish");
  Component.SetEnabled(true);
  EXPECT_THROW(Component.EndLoading(), EGeneralError);
  EXPECT_FALSE(Component.GetEnabled());
  EXPECT_FALSE(Component.LoadProjectFromXML("no such file"));
  EXPECT_FALSE(Component.LoadProjectFromXML("."));
  TBeaconFencingRuntimeMap::FRuntimeMapClass = {};
  EXPECT_THROW(TBeaconMapFencing(), EComponentError);
}

TEST(TBeaconMapFencing, KeepsItsCalculatorsUntilTheProjectIsAnother) {
  TLive Live(Repeated({Heard(1)}, 200));
  TFakeCalculator::Path = {{1000, 1500}};
  EXPECT_NE(Live.Run(700).find("in A"), std::string::npos);
  Live.Component->SetEnabled(false);
  Live.Component->SetEnabled(true);
  EXPECT_EQ(TFakeCalculator::Made, 2);
  EXPECT_EQ(Live.Component->GetLastRawPosition(), (TPointF{1000, 1500}));
  EXPECT_THROW(Live.Component->SetXMLMap("rubbish"), EGeneralError);
  EXPECT_EQ(Live.Component->GetLastRawPosition(), (TPointF{1000, 1500})) << "it goes on";
  TFakeCalculator::Path = {{1000, 1500}};
  Live.Component->SetXMLMap("other");
  EXPECT_EQ(TFakeCalculator::Made, 4);
  EXPECT_EQ(Live.Component->GetLastRawPosition(), TPointF());
  const std::string Events = Live.Run(900);
  EXPECT_EQ(Events.find("out"), std::string::npos) << Events;
  EXPECT_NE(Events.find("in A"), std::string::npos) << Events;
  Live.Component->SetXMLMap("");
  EXPECT_FALSE(Live.Component->GetEnabled());
  EXPECT_TRUE(Live.Component->GetProjectInformation().Maps.IsEmpty());
}

TEST(TBeaconMapFencing, MayBeStoppedStartedAndGivenAnotherProjectInsideItsHandlers) {
  struct TCase {
    const char *Requests, *Rest;
    int Made;
  };
  // "-" and "+" disable and enable, "o" loads another project, "s" starts again.
  for (const TCase& C : {TCase{"-", "", 2},
                         TCase{"-+", "in A; in B", 2},
                         TCase{"s", "in A; in B", 2},
                         TCase{"o", "in B", 4},
                         TCase{"o-", "", 2}}) {
    TLive Live(Repeated({Heard(1)}, 100));
    for (const float X : {5.0F, 30.0F}) TFakeCalculator::Path.push_back({100 * X, 1500});
    Live.Component->SetOnBeaconProximity({});
    Live.OnEvent = [&](const std::string& AText) {
      if (AText != "in A") return;
      Live.OnEvent = {};
      for (const char* Request = C.Requests; *Request; ++Request) {
        if (*Request == '-' || *Request == '+') Live.Component->SetEnabled(*Request == '+');
        if (*Request == 'o') Live.Component->SetXMLMap("other");
        if (*Request == 's') Live.Component->StartProcess();
      }
      Sleep(1000);
      EXPECT_EQ(Live.Component->GetEnabled(), *(C.Requests + std::strlen(C.Requests) - 1) != '-');
    };
    Live.Component->SetEnabled(true);
    Sleep(10'000);
    const bool GoesOn = Live.Component->GetEnabled();
    const std::string Events = Live.Take();
    EXPECT_EQ(Events.find("in B") != std::string::npos, GoesOn) << C.Requests << ": " << Events;
    EXPECT_EQ(Events.find("out A") != std::string::npos, GoesOn && C.Made == 2) << Events;
    EXPECT_EQ(TFakeCalculator::Made, C.Made) << C.Requests;
  }
}

TEST(TBeaconMapFencing, DoesWhatWasAskedForInsideTheTimersOwnCall) {
  for (const std::string Request :
       {"stop", "restart", "load", "stop at once", "restart and raise", "raise and stop"}) {
    TLive Live(Repeated({Heard(1)}, 40));
    TFakeCalculator::Path.assign(10, {1000, 1500});
    int Calls = 0;
    SetApplicationExceptionHandler([&](auto&&...) {
      if (Request == "raise and stop") Live.Component->SetEnabled(false);
    });
    Live.Component->SetOnCalcPosition([&](auto&&...) {
      if (Calls++ > 0) return;
      if (Request == "stop at once") return Live.Component->SetEnabled(false);
      if (Request == "raise and stop") throw EGeneralError(Request);
      TThread::Synchronize([&] {
        if (Request == "load") return Live.Component->SetXMLMap("other");
        Live.Component->SetEnabled(false);
        if (Request != "stop") Live.Component->SetEnabled(true);
      });
      if (Request == "restart and raise") throw EGeneralError(Request);
    });
    const bool IsOn = Request.starts_with("restart") || Request == "load";
    const std::string Events = Live.Run(3000);
    SetApplicationExceptionHandler({});
    EXPECT_EQ(Live.Component->GetEnabled(), IsOn) << Request;
    EXPECT_EQ(Events.find("in A") != std::string::npos, IsOn) << Request << ": " << Events;
    EXPECT_EQ(Calls > 1, IsOn) << Request;
    Live.Component->SetEnabled(true);
    Sleep(1000);
    EXPECT_GT(Calls, 1) << Request;
  }
}

TEST(TBeaconMapFencing, FollowsTheLastOfRequestsThatCrossWhileItStarts) {
  // Hand-offs of another thread are served while the old project is freed and while threads end.
  for (std::uint64_t Seed = 1; Seed <= 40; ++Seed)
    for (const bool IsOn : {false, true}) {
      TLive Live(Repeated({Heard(1)}, 100), "office", Seed);
      Live.Component->SetEnabled(true);
      const auto Ask = [&](bool AValue) {
        auto Result = TThread::CreateAnonymousThread(
            [&Live, AValue] { TThread::Synchronize([&] { Live.Component->SetEnabled(AValue); }); });
        Result->Start();
        return Result;
      };
      const auto Other = Ask(!IsOn), Another = Ask(IsOn);
      Live.Component->SetXmlData("other");
      Live.Component->StartProcess();
      Other->WaitFor();
      Another->WaitFor();
      Live.Component->SetEnabled(IsOn);
      Live.Take();
      TFakeCalculator::Path.assign(1, {1000, 1500});
      Sleep(2000);
      const std::string Events = Live.Take();
      EXPECT_EQ(Events.find("in A") != std::string::npos, IsOn) << Seed << ": " << Events;
    }
}

TEST(TBeaconMapFencing, DropsAnEstimateWhoseMapIsNotTheCurrentOneAnyMore) {
  TLive Live(Repeated({Heard(1)}, 30));
  TFakeCalculator::Path = {{1700, 1500}, {1700, 1500}};
  bool HasPosition = false;
  Live.Component->SetOnPositionEstimated([&](auto&&...) { HasPosition = true; });
  Live.OnEvent = [&](const std::string& AText) {
    if (AText == "in A") Live.Component->SetMapIndex(1);
  };
  const std::string Events = Live.Run(700);
  EXPECT_EQ(Live.Component->GetMapIndex(), 1);
  EXPECT_FALSE(HasPosition) << Events;
}

TEST(TBeaconMapFencingDeathTest, EndsTheProcessWhenItIsDestroyedInsideItsOwnHandler) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto Misuse = [](bool AInTimer) {
    TLive Live(Repeated({Heard(1)}, 20));
    const auto Destroy = [&] { Live.Component.reset(); };
    if (AInTimer)
      Live.Component->SetOnCalcPosition([&](auto&&...) { TThread::Synchronize(Destroy); });
    else
      Live.OnEvent = [&](const std::string&) { Destroy(); };
    Live.Run();
  };
  for (const bool InTimer : {false, true})
    EXPECT_DEATH(Misuse(InTimer),
                 "a map component was destroyed inside one of its own event handlers");
}

// ---------------------------------------------------------------- design and display

TEST(TBeaconMapFencing, HidesItsProjectWhileItIsDesignedAndStoresIt) {
  const TFakeClasses Classes;
  TFakeRuntimeMap::Projects["office"] = &Office;
  TBeaconMapFencing Component;
  Component.SetDesigning(true);
  EXPECT_EQ(Component.GetXMLMAp(), "<Empty>");
  Component.SetXMLMap("office");
  EXPECT_EQ(Component.GetRawMap(), "");
  Component.BeginLoading();
  Component.SetXMLMap("office");
  Component.SetMapOptions({TFencingMapOption::ShowZones});
  Component.EndLoading();
  EXPECT_EQ(Component.GetXMLMAp(), "<Project>");
  EXPECT_EQ(TFakeRuntimeMap::Take(), "") << "nothing is handed over";
  const std::string Text = WriteComponent(Component);
  EXPECT_NE(Text.find("\"XMLMap\": \"office\""), std::string::npos) << Text;
  EXPECT_NE(Text.find("\"ShowZones\""), std::string::npos) << Text;
  EXPECT_EQ(Text.find("PaintControl"), std::string::npos) << Text;
  EXPECT_EQ(Component.GetXMLMAp(), "<Project>");
}

TEST(TBeaconMapFencing, PaintsOnTheControlThatItWasGivenLast) {
  TLive Live;
  TBeaconMapFencing& Component = *Live.Component;
  TOffscreenControl First(10, 10);
  {
    TOffscreenControl Second(10, 10);
    Component.SetPaintControl(&First);
    EXPECT_TRUE(First.GetOnPaint());
    Component.SetPaintControl(&Second);
    EXPECT_FALSE(First.GetOnPaint());
    EXPECT_EQ(Component.GetRuntimeMap().GetControl(), &Second);
    int Paints = 0;
    Component.SetOnPaint([&](auto&&...) {
      ++Paints;
      EXPECT_EQ(TFakeRuntimeMap::Take(), "paint");
    });
    Second.GetOnPaint()(nullptr, nullptr, {});
    EXPECT_EQ(Paints, 1);
  }
  EXPECT_EQ(Component.GetPaintControl(), nullptr);
  EXPECT_EQ(Component.GetRuntimeMap().GetControl(), nullptr);
  Component.SetPaintControl(&First);
  Live.Component.reset();
  EXPECT_FALSE(First.GetOnPaint());
}

}  // namespace
}  // namespace System::Beacon::Fencing
