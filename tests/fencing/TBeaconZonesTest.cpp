#include <gtest/gtest.h>

#include "fencing/System.Beacon.Fencing.h"
#include "support/raised.h"
#include "support/zone_script.h"

namespace System::Beacon::Fencing {
namespace {

constexpr const char* X = "{2F234454-CF6D-4A0F-ADF2-F4911BA9FFA6}";
constexpr const char* LowerX = "{2f234454-cf6d-4a0f-adf2-f4911ba9ffa6}";
constexpr const char* Y = "{B9407F30-F5F8-466E-AFF9-25556B57FE6D}";
constexpr const char* Zero = "{00000000-0000-0000-0000-000000000000}";

/// Zones that count their notifications.
struct TCountedZones : TBeaconZones {
  explicit TCountedZones(std::string_view AText = "") : TBeaconZones(nullptr) {
    AddZones(*this, AText);
    SetOnChange([this](TObject*) { ++Notifications; });
  }
  int TakeNotifications() { return std::exchange(Notifications, 0); }
  TBeaconItem& GetBeacon(int AZone, int AItem) {
    return *GetItems(AZone)->GetBeaconList()->GetItems(AItem);
  }

  int Notifications = 0;
};

// ---------------------------------------------------------------- notification

TEST(TBeaconZones, HearsOfEveryChangeBelowIt) {
  TCountedZones Zones("A Near 1, B Near 2");
  TBeaconZoneItem& Zone = *Zones.GetItems(0);
  const std::pair<const char*, std::function<void()>> Changes[] = {
      {"an item's minor", [&] { Zones.GetBeacon(0, 0).SetMinor(9); }},
      {"an item added", [&] { Zone.GetBeaconList()->Add(); }},
      {"an item deleted", [&] { Zone.GetBeaconList()->Delete(1); }},
      {"a zone's proximity", [&] { Zone.SetBeaconProximity(TBeaconEditProximity::Away); }},
      {"a zone added", [&] { Zones.Add(); }},
      {"a zone moved", [&] { Zone.SetIndex(1); }},
      {"a zone deleted", [&] { Zones.Delete(2); }}};
  for (const auto& [What, Change] : Changes) {
    Change();
    EXPECT_EQ(Zones.TakeNotifications(), 1) << What;
  }
  Zone.SetBeaconProximity(TBeaconEditProximity::Away);
  EXPECT_EQ(Zones.TakeNotifications(), 0) << "the proximity it has";
  Zone.SetDisplayName("Hall");
  EXPECT_EQ(Zones.TakeNotifications(), 2) << "a name: the inherited setter notifies too";
}

TEST(TBeaconZones, AListHoldsBackItsOwnNotificationsOnly) {
  TCountedZones Zones("A Near 1, B Near 2");
  TBeaconInZoneList& List = *Zones.GetItems(0)->GetBeaconList();
  List.BeginUpdate();
  List.GetItems(0)->SetMinor(7);
  List.Add();
  EXPECT_EQ(Zones.TakeNotifications(), 0);
  Zones.GetBeacon(1, 0).SetMinor(8);
  EXPECT_EQ(Zones.TakeNotifications(), 1);
  List.EndUpdate();
  EXPECT_EQ(Zones.TakeNotifications(), 1);
}

// ---------------------------------------------------------------- zones

TEST(TBeaconZoneItem, CopiesAnotherListAndIgnoresItsOwn) {
  TCountedZones Zones("A Near 1, B Near 2 3");
  TBeaconInZoneList* const Own = Zones.GetItems(0)->GetBeaconList();
  TBeaconInZoneList* const Other = Zones.GetItems(1)->GetBeaconList();

  Zones.GetItems(0)->SetBeaconList(Own);
  EXPECT_EQ(Zones.TakeNotifications(), 0);
  EXPECT_EQ(Own->GetCount(), 1);

  Zones.GetItems(0)->SetBeaconList(Other);
  EXPECT_EQ(Zones.GetItems(0)->GetBeaconList(), Own);
  ASSERT_EQ(Own->GetCount(), 2);
  EXPECT_EQ(Own->GetItems(1)->GetMinor(), 3);
  EXPECT_EQ(Other->GetCount(), 2);
}

TEST(TBeaconZoneItem, AssignsNameBasesContextBeaconsAndProximity) {
  TCountedZones From("A Immediate 1 2"), To("B Away 9");
  TObject Context;
  TBeaconZoneItem& Source = *From.GetItems(0);
  TBeaconZoneItem& Dest = *To.GetItems(0);
  Source.SetBaseGUID(X);
  Source.SetBaseEddyNamespace("ns");
  Source.SetBaseManufacturerID("4C");
  Source.SetContext(&Context);
  Source.GetBeaconList()->GetItems(0)->SetManufacturerID("4C");

  // The new items take the base values before they are assigned: the namespace is refused there.
  EXPECT_EQ(Raised<EComponentError>([&] { Dest.Assign(&Source); }), "Invalid Eddystone namespace");
  Source.SetBaseEddyNamespace(std::string(20, '5'));
  Dest.Assign(&Source);

  EXPECT_EQ(Dest.GetDisplayName(), "A");
  EXPECT_EQ(Dest.GetBeaconList()->GetBaseGUID(), X);
  EXPECT_EQ(Dest.GetBeaconList()->GetBaseEddyNamespace(), std::string(20, '5'));
  EXPECT_EQ(Dest.GetBeaconList()->GetBaseManufacturerID(), "4C");
  EXPECT_EQ(Dest.GetContext(), &Context);
  EXPECT_EQ(Dest.GetBeaconProximity(), TBeaconEditProximity::Immediate);
  ASSERT_EQ(Dest.GetBeaconList()->GetCount(), 2);
  EXPECT_EQ(To.GetBeacon(0, 1).GetMinor(), 2);
  EXPECT_EQ(To.GetBeacon(0, 0).GetManufacturerID(), "4C");
  EXPECT_THROW(Dest.Assign(nullptr), EComponentError);
}

// ---------------------------------------------------------------- base values

TEST(TBeaconZones, GivesNewZonesAndItemsTheBaseValuesOfTheMoment) {
  TCountedZones Zones;
  EXPECT_EQ(Zones.Add()->GetBaseGUID(), Zero);
  Zones.SetBaseGUID(LowerX);
  Zones.SetBaseManufacturerID("4C");
  Zones.SetBaseEddyNamespace(std::string(20, '5'));
  for (TBeaconZoneItem* Zone : {Zones.GetItems(0), Zones.Add()}) {
    const TBeaconItem& Item = *Zone->GetBeaconList()->Add();
    EXPECT_EQ(Item.GetUUID(), X);
    EXPECT_EQ(Item.GetManufacturerID(), "4C");
    EXPECT_EQ(Item.GetEddyNamespace(), std::string(20, '5'));
  }
  TBeaconInZoneList& List = *Zones.GetItems(0)->GetBeaconList();
  List.SetBaseManufacturerID("nonsense");
  EXPECT_THROW(List.Add(), EComponentError);
  EXPECT_EQ(List.GetCount(), 1) << "an item that refuses them is not made";
}

TEST(TBeaconZones, ReplacesABaseValueExactlyWhereItIsCarried) {
  TCountedZones Zones;
  Zones.SetBaseGUID(X);
  AddZones(Zones, "A Near 1 2, B Near 3");
  Zones.GetBeacon(0, 1).SetUUID(Zero);
  Zones.TakeNotifications();
  Zones.SetBaseGUID(X);
  EXPECT_EQ(Zones.TakeNotifications(), 0);
  Zones.SetBaseGUID(LowerX);
  EXPECT_EQ(Zones.TakeNotifications(), 2) << "in lower case it is another";
  EXPECT_EQ(Zones.GetBaseGUID(), X);
  Zones.SetBaseGUID(Y);
  for (const auto& [Zone, Item, Base] : {std::tuple(0, 0, Y), {0, 1, Zero}, {1, 0, Y}})
    EXPECT_EQ(Zones.GetBeacon(Zone, Item).GetUUID(), Base);
  EXPECT_EQ(Zones.GetItems(1)->GetBaseGUID(), Y);
  EXPECT_EQ(Zones.GetBaseGUID(), Y);
}

TEST(TBeaconZones, KeepsABaseValueWhenTheNewOneIsRefused) {
  const std::string Fives(20, '5');
  TCountedZones Zones("A Near 1, B Near 2");
  for (const int Zone : {0, 1}) Zones.GetBeacon(Zone, 0).SetEddyNamespace(Fives);
  Zones.SetBaseEddyNamespace(Fives);
  EXPECT_EQ(Raised<EComponentError>([&] { Zones.SetBaseEddyNamespace("short"); }),
            "Invalid Eddystone namespace");
  EXPECT_EQ(Zones.GetBaseEddyNamespace(), Fives);
  EXPECT_EQ(Zones.GetItems(0)->GetBaseEddyNamespace(), Fives);

  TCountedZones Others;
  Others.Add();
  EXPECT_THROW(Others.SetBaseGUID("nonsense"), EConvertError);
  EXPECT_EQ(Others.GetBaseGUID(), Zero);
  EXPECT_EQ(Others.GetItems(0)->GetBaseGUID(), "nonsense") << "it is parsed after it has spread";
}

}  // namespace
}  // namespace System::Beacon::Fencing
