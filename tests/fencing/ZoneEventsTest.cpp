// What the component makes of the service's reports, told by its log of events.
#include <gtest/gtest.h>

#include "support/zone_event_log.h"
#include "support/zone_script.h"

namespace System::Beacon::Fencing {
namespace {

/// An enabled component whose service is played by the test.
struct TPlayed {
  explicit TPlayed(std::string_view AZones) {
    AddZones(*Component.GetZones(), AZones);
    Component.SetDesigning(true);  // enabled, but it does not scan
    Component.SetEnabled(true);
  }
  TBeaconZones& GetZones() { return *Component.GetZones(); }
  std::string GetCurrent() const {
    const TBeaconZoneItem* const Zone = Component.GetCurrentZone();
    return Zone ? Zone->GetDisplayName() : "none";
  }

  TBeaconZonesFencing Component;
  TZoneEventLog Log{Component};
  TZoneScript Service{Component};
};

TEST(ZoneEvents, ComeInTheOrderOfWhatHappened) {
  struct TCase {
    const char* What;
    const char* Before;
    const char* Step;
    const char* Events;
  };
  for (const TCase& C :
       {TCase{"a beacon of a zone comes inside",
              "",
              "enter 1 Near 1",
              "ZoneBeaconEnter A.1; ZoneBeaconProximity A.1 Near; ZoneEnter A by 1; "
              "BeaconProximity 1 Near; BeaconEnter 1"},
        {"one that is not near enough",
         "",
         "enter 1 Far 9",
         "ZoneBeaconEnter A.1; ZoneBeaconProximity A.1 Far; BeaconProximity 1 Far; "
         "BeaconEnter 1"},
        {"the last beacon of the current zone is lost",
         "enter 1 Near 1",
         "exit 1",
         "ZoneBeaconProximity A.1 Away; ZoneExit A by 1; BeaconProximity 1 Away; "
         "ZoneBeaconExit A.1; BeaconExit 1"},
        {"a beacon of no zone enters", "", "enter 9 Near 1", "BeaconEnter 9"},
        {"a beacon of no zone changes",
         "enter 9 Near 1",
         "report 9 Far 5",
         "BeaconProximity 9 Far"},
        {"a beacon of no zone is lost", "enter 9 Near 1", "exit 9", "BeaconExit 9"},
        {"a proximity report",
         "enter 1 Near 1",
         "report 1 Far 5",
         "ZoneBeaconProximity A.1 Far; BeaconProximity 1 Far"}}) {
    TPlayed Played("A Near 1 2");
    Played.Service.Play(C.Before);
    Played.Log.Take();
    Played.Service.Play(C.Step);
    EXPECT_EQ(Played.Log.Take(), C.Events) << C.What;
  }
}

TEST(ZoneEvents, PutTheDeviceInOneZoneAtATime) {
  constexpr const char* Zones = "A Near 1 2, B Near 3 4, C Immediate 5";
  struct TCase {
    const char* What;
    const char* Steps;
    const char* Events;
    const char* Current;
  };
  for (const TCase& C :
       {TCase{"the first near report enters",
              "enter 1 Far 9; report 1 Near 2",
              "ZoneEnter A by 1",
              "A"},
        {"immediate is nearer than near", "enter 1 Immediate 0.2", "ZoneEnter A by 1", "A"},
        {"a zone of immediate beacons is not entered by a near one", "enter 5 Near 1", "", "none"},
        {"one beacon goes, another still holds the zone",
         "enter 1 Near 1; enter 2 Near 2; report 1 Far 9",
         "ZoneEnter A by 1",
         "A"},
        {"the last that held it goes, and none is nearest",
         "enter 1 Near 1; enter 2 Near 2; exit 1; exit 2",
         "ZoneEnter A by 1; ZoneExit A by 2",
         "none"},
        {"a zone is kept while its own beacon is the nearest",
         "enter 1 Near 1; report 1 Far 9",
         "ZoneEnter A by 1",
         "A"},
        {"another zone's beacon is nearer",
         "enter 1 Near 2; enter 3 Near 1",
         "ZoneEnter A by 1; ZoneExit A by 3; ZoneEnter B by 3",
         "B"},
        {"another zone's beacon is inside but not nearer: it enters all the same",
         "enter 1 Near 1; enter 3 Near 2",
         "ZoneEnter A by 1; ZoneExit A by 3; ZoneEnter B by 3",
         "B"},
        {"a farther beacon of the current zone changes nothing",
         "enter 1 Near 1; enter 2 Near 2",
         "ZoneEnter A by 1",
         "A"},
        {"the nearest beacon takes over when the current zone is left",
         "enter 3 Near 2; enter 1 Near 1; drift 1 Far 9; report 1 Far 9",
         "ZoneEnter B by 3; ZoneExit B by 1; ZoneEnter A by 1; ZoneExit A by 1; "
         "ZoneEnter B by 3",
         "B"},
        {"the nearest is of another zone but outside: the zone is left only",
         "enter 1 Near 1; enter 3 Far 5; report 1 Far 9",
         "ZoneEnter A by 1; ZoneExit A by 1",
         "none"},
        {"a held zone gives way to the nearest inside its own",
         "enter 1 Near 2; enter 2 Near 2.5; drift 2 Near 2.5; enter 3 Far 9; drift 3 Near 1; "
         "report 1 Far 5",
         "ZoneEnter A by 1; ZoneExit A by 1; ZoneEnter B by 3",
         "B"},
        {"a beacon outside its zone brings in the nearest of another",
         "enter 1 Far 9; drift 1 Near 1; enter 3 Far 8",
         "ZoneEnter A by 1",
         "A"}}) {
    TPlayed Played(Zones);
    Played.Service.Play(C.Steps);
    EXPECT_EQ(Played.Log.TakeZones(), C.Events) << C.What;
    EXPECT_EQ(Played.GetCurrent(), C.Current) << C.What;
  }
}

TEST(ZoneEvents, LeaveAndEnterTheCurrentZoneForABeaconThatHasComeNearerThanTheNearest) {
  // A zone handler moves the beacon after the nearest one was found.
  TPlayed Played("A Near 1 2");
  Played.Service.Play("enter 1 Near 1; enter 2 Near 2");
  Played.Log.TakeZones();
  Played.Component.SetOnZoneBeaconProximity(
      [&](TObject*, const TRef<IBeacon>&, TBeaconZoneItem*, TBeaconItem*, TBeaconProximity) {
        Played.Service.GetBeacon(2).Distance = -1.0;
      });
  TBeaconZonesFencing& Component = Played.Component;
  const TRef<TFakeBeacon> Twin = NewFakeBeacon(2);  // reported, but not in the list
  Twin->Distance = 0.5;
  Component.BeaconProximityChangeEvent(nullptr, Twin, TBeaconProximity::Near);
  EXPECT_EQ(Played.Log.TakeZones(), "ZoneExit A by 2; ZoneEnter A by 2");
}

TEST(ZoneEvents, TakeAnUnknownDistanceForTheFarthest) {
  constexpr const char* Zones = "A Near 1 2, B Near 3";
  struct TCase {
    const char* What;
    const char* Steps;
    const char* Events;
    int Nearest;
  };
  for (const TCase& C :
       {TCase{"an unknown distance is never the nearest", "enter 1 Near -1", "ZoneEnter A by 1", 0},
        {"the zone that is entered already is not entered again",
         "enter 1 Near -1; report 1 Immediate -1",
         "ZoneEnter A by 1",
         0},
        {"a known one is nearer, however far",
         "enter 1 Near -1; enter 2 Far 99",
         "ZoneEnter A by 1",
         2},
        {"with no nearest, a beacon outside leaves the zone it held",
         "enter 1 Near 1; report 1 Away -1",
         "ZoneEnter A by 1; ZoneExit A by 1",
         0},
        {"and another one inside still holds it",
         "enter 1 Near 1; enter 2 Near -1; report 1 Away -1",
         "ZoneEnter A by 1",
         0},
        {"with no nearest, a zone is entered in place of another",
         "enter 1 Near -1; enter 3 Near -1",
         "ZoneEnter A by 1; ZoneExit A by 3; ZoneEnter B by 3",
         0}}) {
    TPlayed Played(Zones);
    Played.Service.Play(C.Steps);
    EXPECT_EQ(Played.Log.TakeZones(), C.Events) << C.What;
    const TRef<IBeacon> Nearest = Played.Component.GetNearestBeacon();
    EXPECT_EQ(Nearest ? Nearest->GetMinor() : 0, C.Nearest) << C.What;
  }
}

TEST(ZoneEvents, FindTheNearestAmongBeaconsOfZonesTheEarlierOfEquals) {
  TPlayed Played("A Near 1, B Near 2");
  Played.Service.Play("enter 9 Near 0.1; enter 2 Far 5; enter 1 Far 5");
  EXPECT_EQ(Played.Component.GetNearestBeacon()->GetMinor(), 2);
  EXPECT_EQ(Played.Component.GetDetectedBeacons().GetLength(), 3U);
}

TEST(ZoneEvents, IgnoreALostBeaconThatWouldHoldTheZone) {
  TPlayed Played("A Near 1 2");
  Played.Service.Play("enter 1 Near 1; enter 2 Near -1");
  Played.Service.GetBeacon(2).Alive = false;
  Played.Service.Play("report 1 Away -1");
  EXPECT_EQ(Played.GetCurrent(), "none");
}

TEST(ZoneEvents, AreNotRaisedForAProximityReportWhileDisabled) {
  TPlayed Played("A Near 1");
  Played.Component.SetEnabled(false);
  Played.Service.Play("enter 1 Near 1; report 1 Far 9; exit 1");
  EXPECT_EQ(Played.Log.Take(),
            "ZoneBeaconEnter A.1; BeaconEnter 1; ZoneBeaconExit A.1; BeaconExit 1");
  EXPECT_EQ(Played.GetCurrent(), "none");
}

// ---------------------------------------------------------------- telemetry

TEST(ZoneEvents, CarryACopyOfAnEddystoneFrameOfABeaconInAZone) {
  TPlayed Played("A Near 1");
  TEddystoneURL URL{"https://example.com", -20};
  const TEddystoneTLM TLM{.BatteryVoltage = 3000, .Temperature = 20.0};
  const auto Send = [&](int AMinor) {
    const TRef<IBeacon> Beacon(&Played.Service.GetBeacon(AMinor));
    Played.Component.BeaconEddystoneURLEvent(nullptr, Beacon, URL);
    Played.Component.BeaconEddystoneTLMEvent(nullptr, Beacon, TLM);
  };
  Send(1);
  EXPECT_EQ(Played.Log.Take(), "URL A.1 https://example.com; TLM A.1 3000");
  Send(9);
  EXPECT_EQ(Played.Log.Take(), "") << "of no zone";
  Played.Component.SetOnBeaconEddyURL(
      [](TObject*, const TRef<IBeacon>&, TBeaconZoneItem*, TBeaconItem*, TEddystoneURL& AURL) {
        AURL.URL.clear();
      });
  Send(1);
  EXPECT_EQ(URL.URL, "https://example.com");
  Played.Log.Take();
  Played.Component.SetEnabled(false);
  Send(1);
  EXPECT_EQ(Played.Log.Take(), "") << "disabled";
}

// ---------------------------------------------------------------- zones that change meanwhile

TEST(ZoneEvents, ForgetTheCurrentZoneWithoutAnEventWhenItIsDeleted) {
  TPlayed Played("A Near 1, B Near 2");
  Played.Service.Play("enter 1 Near 1");
  Played.Log.Take();
  Played.GetZones().Delete(0);
  EXPECT_EQ(Played.GetCurrent(), "none");
  Played.Service.Play("report 1 Far 9; exit 1; enter 2 Near 1");
  EXPECT_EQ(Played.Log.TakeZones(), "ZoneEnter B by 2");
}

TEST(ZoneEvents, NeverNameWhatAHandlerHasDeleted) {
  struct TCase {
    const char* What;
    const char* In;
    bool WholeZone;
    const char* Steps;
    const char* Events;
  };
  for (const TCase& C :
       {TCase{"the zone before it is entered",
              "ZoneBeaconProximity A.1 Near",
              true,
              "enter 1 Near 1",
              "ZoneBeaconEnter A.1; ZoneBeaconProximity A.1 Near; BeaconProximity 1 Near; "
              "BeaconEnter 1"},
        {"the zone at the first event",
         "ZoneBeaconEnter A.1",
         true,
         "enter 1 Near 1",
         "ZoneBeaconEnter A.1; BeaconProximity 1 Near; BeaconEnter 1"},
        {"the item at the first event",
         "ZoneBeaconEnter A.1",
         false,
         "enter 1 Near 1",
         "ZoneBeaconEnter A.1; BeaconProximity 1 Near; BeaconEnter 1"},
        {"the zone when its beacon is lost",
         "ZoneBeaconProximity A.1 Away",
         true,
         "enter 1 Far 9; exit 1",
         "ZoneBeaconEnter A.1; ZoneBeaconProximity A.1 Far; BeaconProximity 1 Far; "
         "BeaconEnter 1; ZoneBeaconProximity A.1 Away; BeaconProximity 1 Away; BeaconExit 1"},
        {"the item when its zone is left",
         "ZoneExit A by 1",
         false,
         "enter 1 Near 1; exit 1",
         "ZoneBeaconEnter A.1; ZoneBeaconProximity A.1 Near; ZoneEnter A by 1; "
         "BeaconProximity 1 Near; BeaconEnter 1; ZoneBeaconProximity A.1 Away; "
         "ZoneExit A by 1; BeaconProximity 1 Away; BeaconExit 1"}}) {
    TPlayed Played("A Near 1");
    Played.Log.OnEvent = [&](const std::string& ALine) {
      if (ALine != C.In) return;
      if (C.WholeZone)
        Played.GetZones().Clear();
      else
        Played.GetZones().GetItems(0)->GetBeaconList()->Clear();
    };
    Played.Service.Play(C.Steps);
    EXPECT_EQ(Played.Log.Take(), C.Events) << C.What;
    EXPECT_EQ(Played.GetCurrent(), "none") << C.What;
  }
}

TEST(ZoneEvents, FollowAHandlerThatMovesABeaconToAnotherZone) {
  TPlayed Played("A Near 1, B Near 2");
  Played.Service.Play("enter 1 Near 1");
  Played.Log.Take();
  FindZone(Played.GetZones(), "A")->GetBeaconList()->GetItems(0)->SetMinor(7);
  FindZone(Played.GetZones(), "B")->GetBeaconList()->GetItems(0)->SetMinor(1);
  Played.Service.Play("report 1 Immediate 0.3");
  EXPECT_EQ(Played.Log.Take(),
            "ZoneBeaconProximity B.1 Immediate; ZoneExit A by 1; ZoneEnter B by 1; "
            "BeaconProximity 1 Immediate");
}

}  // namespace
}  // namespace System::Beacon::Fencing
