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

TEST(ZoneEvents, PutTheDeviceInOneZoneAtATime) {
  for (const auto& Row : Rows(R"(
- one beacon goes, another still holds the zone | enter 1 Near 2; enter 2 Near -1; enter 3 Far 5;
    report 1 Far 9 | ZoneEnter A by 1 | A
- the last that held it goes, and there is no nearest | enter 1 Near 1; enter 2 Near 2; exit 1;
    exit 2 | ZoneEnter A by 1; ZoneExit A by 2 | none
- the nearest takes over when the current zone is left | enter 3 Near 2; enter 1 Near 1;
    report 1 Far 9 | ZoneEnter B by 3; ZoneExit B by 1; ZoneEnter A by 1; ZoneExit A by 1;
    ZoneEnter B by 3 | B
- a zone that is held gives way to the nearest inside its own | enter 1 Near 2; enter 2 Near 2.5;
    enter 3 Far 9; drift 3 Near 1; report 1 Far 5 |
    ZoneEnter A by 1; ZoneExit A by 1; ZoneEnter B by 3 | B
- with no nearest, one zone is entered in place of another | enter 1 Near -1; enter 3 Near -1 |
    ZoneEnter A by 1; ZoneExit A by 3; ZoneEnter B by 3 | B
- neither a beacon of no zone nor one at an unknown distance is the nearest | enter 9 Near 0.1;
    enter 3 Near -1; enter 1 Near 2; report 1 Far 2 |
    ZoneEnter B by 3; ZoneExit B by 1; ZoneEnter A by 1 | A
- of two at one distance the first that was seen is the nearest | enter 3 Near 2; enter 1 Near 2;
    report 1 Far 2 | ZoneEnter B by 3; ZoneExit B by 1; ZoneEnter A by 1; ZoneExit A by 1;
    ZoneEnter B by 3 | B
- another beacon of the zone that is no nearer changes nothing | enter 1 Near 2; enter 2 Near 2;
    report 2 Near 3; report 2 Near -1 | ZoneEnter A by 1 | A
- the zone of the nearest is not entered from outside its threshold | enter 1 Near 1; enter 3 Far 2;
    report 1 Far 5 | ZoneEnter A by 1; ZoneExit A by 1 | none
- thresholds are immediate, near and far | enter 6 Far 9; enter 5 Near 1; report 5 Immediate 0.3;
    report 5 Near 10; report 6 Away 11 | ZoneEnter D by 6; ZoneExit D by 5; ZoneEnter C by 5;
    ZoneExit C by 5; ZoneEnter D by 6; ZoneExit D by 6 | none
- a beacon outside of its zone ends no other | enter 1 Near -1; enter 3 Far -1 |
    ZoneEnter A by 1 | A
- a zone that the nearest is in is not left | enter 1 Near 1; enter 2 Near 2; drift 1 Far 1;
    report 2 Far 5 | ZoneEnter A by 1 | A
- what is outside of the zone does not hold it | enter 1 Near -1; enter 2 Far -1; report 1 Far -1 |
    ZoneEnter A by 1; ZoneExit A by 1 | none
- nor does what is lost | enter 1 Near -1; enter 2 Near -1; lose 2; report 1 Far -1 |
    ZoneEnter A by 1; ZoneExit A by 1 | none
- nor does what is in another zone | enter 3 Near -1; enter 1 Near -1; report 1 Far -1 |
    ZoneEnter B by 3; ZoneExit B by 1; ZoneEnter A by 1; ZoneExit A by 1 | none
)")) {
    TPlayed Played("A Near 1 2, B Near 3 4, C Immediate 5, D Away 6");
    Played.Service.Play(Row[1]);
    EXPECT_EQ(Played.Log.TakeZones(), Row[2]) << Row[0];
    EXPECT_EQ(Played.GetCurrent(), Row[3]) << Row[0];
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

TEST(ZoneEvents, NeverNameWhatAHandlerHasDeleted) {
  for (const auto& Row : Rows(R"(
- zone | ZoneBeaconProximity A.1 Near | enter 1 Near 1 |
    ZoneBeaconEnter A.1; ZoneBeaconProximity A.1 Near; BeaconProximity 1 Near; BeaconEnter 1
- zone | ZoneBeaconEnter A.1 | enter 1 Near 1 |
    ZoneBeaconEnter A.1; BeaconProximity 1 Near; BeaconEnter 1
- item | ZoneBeaconEnter A.1 | enter 1 Near 1 |
    ZoneBeaconEnter A.1; BeaconProximity 1 Near; BeaconEnter 1
- zone | ZoneBeaconProximity A.1 Away | enter 1 Far 9; exit 1 |
    ZoneBeaconEnter A.1; ZoneBeaconProximity A.1 Far; BeaconProximity 1 Far; BeaconEnter 1;
    ZoneBeaconProximity A.1 Away; BeaconProximity 1 Away; BeaconExit 1
- item | ZoneExit A by 1 | enter 1 Near 1; exit 1 |
    ZoneBeaconEnter A.1; ZoneBeaconProximity A.1 Near; ZoneEnter A by 1; BeaconProximity 1 Near;
    BeaconEnter 1; ZoneBeaconProximity A.1 Away; ZoneExit A by 1; BeaconProximity 1 Away;
    BeaconExit 1
)")) {
    TPlayed Played("A Near 1");
    Played.Log.OnEvent = [&](const std::string& ALine) {
      if (ALine != Row[1]) return;
      if (Row[0] == "zone")
        Played.GetZones().Clear();
      else
        Played.GetZones().GetItems(0)->GetBeaconList()->Clear();
    };
    Played.Service.Play(Row[2]);
    EXPECT_EQ(Played.Log.Take(), Row[3]) << "the " << Row[0] << " in " << Row[1];
    EXPECT_EQ(Played.GetCurrent(), "none");
  }
}

}  // namespace
}  // namespace System::Beacon::Fencing
