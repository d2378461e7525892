#include <gtest/gtest.h>

#include "fencing/System.Beacon.Fencing.h"
#include "platform/random.h"
#include "support/fake_beacon.h"
#include "support/zone_script.h"

namespace System::Beacon::Fencing {
namespace {

// ---------------------------------------------------------------- the plain walk

bool Matches(const IBeacon& ABeacon, const TBeaconItem& AItem) {
  const auto SameUUID = [&AItem](const IBeacon* AView) {
    return AView && AView->GetGUID() == AItem.GetGUID() && AView->GetMajor() == AItem.GetMajor() &&
           AView->GetMinor() == AItem.GetMinor();
  };
  switch (ABeacon.GetKindofBeacon()) {
    case TKindofBeacon::iBeacon:
    case TKindofBeacon::iBeaconAltBeacon:
      return SameUUID(ABeacon.GetiBeaconView());
    case TKindofBeacon::AltBeacon:
      return SameUUID(ABeacon.GetAltBeaconView());
    case TKindofBeacon::Eddystone:
      break;
  }
  const IEddystoneBeacon* const View = ABeacon.GetEddystoneView();
  return View && View->GetEddystoneUID().GetNamespace() == AItem.GetEddyNamespace() &&
         View->GetEddystoneUID().GetInstance() == AItem.GetEddyInstance();
}

TBeaconItem* WalkList(const TBeaconInZoneList& AList, const IBeacon& ABeacon) {
  for (int I = 0; I < AList.GetCount(); ++I)
    if (Matches(ABeacon, *AList.GetItems(I))) return AList.GetItems(I);
  return nullptr;
}

std::pair<TBeaconZoneItem*, TBeaconItem*> WalkZones(const TBeaconZones& AZones,
                                                    const IBeacon& ABeacon) {
  for (int I = 0; I < AZones.GetCount(); ++I)
    if (TBeaconItem* Item = WalkList(*AZones.GetItems(I)->GetBeaconList(), ABeacon))
      return {AZones.GetItems(I), Item};
  return {};
}

void ExpectSameAsWalk(TBeaconZones& AZones, const TRef<TFakeBeacon>& ABeacon) {
  const auto [Zone, Item] = WalkZones(AZones, *ABeacon);
  TBeaconItem* Found = nullptr;
  ASSERT_EQ(AZones.GetZoneForBeacon(ABeacon, Found), Zone);
  ASSERT_EQ(Found, Item);
  ASSERT_EQ(AZones.GetZoneForBeacon(ABeacon), Zone);
  const TZoneMatch Match = AZones.FindMatch(ABeacon.Get());
  ASSERT_EQ(Match ? Match.Zone->Get() : nullptr, Zone);
  ASSERT_EQ(Match ? Match.Item->Get() : nullptr, Item);
  for (int I = 0; I < AZones.GetCount(); ++I) {
    TBeaconInZoneList& List = *AZones.GetItems(I)->GetBeaconList();
    ASSERT_EQ(List.ContainsBeacon(ABeacon), WalkList(List, *ABeacon));
  }
}

// ---------------------------------------------------------------- random collections

/// Few identities, so that items repeat one another and sightings hit often.
TGUID SomeGUID(TRandomStream& ARandom) {
  return {{static_cast<std::uint8_t>(ARandom.NextBelow(2))}};
}
TEddystoneUID SomeUID(TRandomStream& ARandom) {
  return {{static_cast<std::uint8_t>(ARandom.NextBelow(2))},
          {static_cast<std::uint8_t>(ARandom.NextBelow(2))}};
}

TRef<TFakeBeacon> SomeBeacon(TRandomStream& ARandom) {
  const TRef<TFakeBeacon> Result =
      NewFakeBeacon(0, static_cast<TKindofBeacon>(ARandom.NextBelow(4)));
  Result->GUID = SomeGUID(ARandom);
  Result->Major = static_cast<int>(ARandom.NextBelow(2));
  Result->Minor = static_cast<int>(ARandom.NextBelow(3));
  Result->UID = SomeUID(ARandom);
  Result->OffersView = ARandom.NextBelow(8) > 0;
  return Result;
}

TBeaconItem* SomeItem(const TBeaconInZoneList& AList, TRandomStream& ARandom) {
  if (AList.GetCount() == 0) return nullptr;
  return AList.GetItems(static_cast<int>(ARandom.NextBelow(AList.GetCount())));
}

void ChangeItem(TBeaconItem& AItem, TBeaconItem& AOther, TRandomStream& ARandom) {
  switch (ARandom.NextBelow(7)) {
    case 0:
      AItem.SetGUID(SomeGUID(ARandom));
      break;
    case 1:
      AItem.SetUUID(GUIDToString(SomeGUID(ARandom)));
      break;
    case 2:
      AItem.SetMajor(static_cast<std::uint16_t>(ARandom.NextBelow(2)));
      break;
    case 3:
      AItem.SetMinor(static_cast<std::uint16_t>(ARandom.NextBelow(3)));
      break;
    case 4:
      AItem.SetEddyUID(SomeUID(ARandom));
      break;
    case 5:
      AItem.SetEddyNamespace(SomeUID(ARandom).GetNamespace());
      break;
    default:
      AItem.Assign(&AOther);
      break;
  }
}

void ChangeZones(TBeaconZones& AZones, TRandomStream& ARandom) {
  if (AZones.GetCount() == 0 || ARandom.NextBelow(8) == 0) AZones.Add();
  const int Index = static_cast<int>(ARandom.NextBelow(AZones.GetCount()));
  TBeaconZoneItem& Zone = *AZones.GetItems(Index);
  TBeaconInZoneList& List = *Zone.GetBeaconList();
  switch (ARandom.NextBelow(12)) {
    case 0:
      AZones.Delete(Index);
      return;
    case 1:
      Zone.SetIndex(static_cast<int>(ARandom.NextBelow(AZones.GetCount())));
      return;
    case 2:
      Zone.SetBeaconList(AZones.GetItems(0)->GetBeaconList());
      return;
    case 3:
      if (List.GetCount() > 0) List.Delete(0);
      return;
    case 4:
    case 5:
      List.Add();
      break;
    default:
      break;
  }
  if (TBeaconItem* Item = SomeItem(List, ARandom))
    ChangeItem(*Item, *SomeItem(List, ARandom), ARandom);
}

TEST(ZoneLookUp, AnswersAsAWalkOverAllItemsWould) {
  TRandomStream Random(20260101);
  for (int Collection = 0; Collection < 100; ++Collection) {
    TBeaconZones Zones(nullptr);
    for (int Step = 0; Step < 100; ++Step) {
      ChangeZones(Zones, Random);
      ASSERT_NO_FATAL_FAILURE(ExpectSameAsWalk(Zones, SomeBeacon(Random)))
          << "collection " << Collection << ", step " << Step;
    }
  }
}

// ---------------------------------------------------------------- by hand

TEST(ZoneLookUp, ComparesWhatTheKindOfTheSightingNames) {
  struct TCase {
    TKindofBeacon Kind;
    bool OffersView, SameUUID, SameUID, Found;
  };
  using enum TKindofBeacon;
  for (const TCase& C : {TCase{iBeacon, true, true, false, true},
                         TCase{AltBeacon, true, true, false, true},
                         TCase{iBeaconAltBeacon, true, true, false, true},
                         TCase{Eddystone, true, false, true, true},
                         TCase{iBeacon, true, false, true, false},
                         TCase{AltBeacon, true, false, true, false},
                         TCase{iBeaconAltBeacon, true, false, true, false},
                         TCase{Eddystone, true, true, false, false},
                         TCase{iBeacon, false, true, true, false},
                         TCase{AltBeacon, false, true, true, false},
                         TCase{iBeaconAltBeacon, false, true, true, false},
                         TCase{Eddystone, false, true, true, false}})
    for (const TKindofBeacon ItemKind : {iBeacon, AltBeacon, Eddystone, iBeaconAltBeacon}) {
      TBeaconZones Zones(nullptr);
      AddZones(Zones, "A Near 1");
      TBeaconItem& Item = *Zones.GetItems(0)->GetBeaconList()->GetItems(0);
      Item.SetKindofBeacon(ItemKind);
      Item.SetManufacturerID("4C");
      Item.SetEddyUID({.Namespace = {1}, .Instance = {2}});
      const TRef<TFakeBeacon> Beacon = NewFakeBeacon(1, C.Kind);
      if (!C.SameUUID) Beacon->GUID = {};
      if (C.SameUID) Beacon->UID = Item.GetEddyUID();
      Beacon->OffersView = C.OffersView;
      EXPECT_EQ(Zones.GetZoneForBeacon(Beacon) != nullptr, C.Found)
          << "sighting " << static_cast<int>(C.Kind) << ", item " << static_cast<int>(ItemKind);
    }
}

TEST(ZoneLookUp, FindsTheFirstZoneAndItsFirstItem) {
  TBeaconZones Zones(nullptr);
  AddZones(Zones, "A Near 1, B Near 2 2 2, C Near 2");
  TBeaconItem* Item = nullptr;
  EXPECT_EQ(Zones.GetZoneForBeacon(NewFakeBeacon(2), Item), Zones.GetItems(1));
  EXPECT_EQ(Item, Zones.GetItems(1)->GetBeaconList()->GetItems(0));
  Zones.GetItems(2)->SetIndex(0);
  EXPECT_EQ(Zones.GetZoneForBeacon(NewFakeBeacon(2))->GetDisplayName(), "C");
}

TEST(ZoneLookUp, LeavesTheItemAloneWhenThereIsNoZone) {
  TBeaconZones Zones(nullptr);
  AddZones(Zones, "A Near 1");
  TBeaconItem* const Mark = Zones.GetItems(0)->GetBeaconList()->GetItems(0);
  TBeaconItem* Item = Mark;
  EXPECT_EQ(Zones.GetZoneForBeacon(NewFakeBeacon(9), Item), nullptr);
  EXPECT_EQ(Zones.GetZoneForBeacon(TRef<IBeacon>(), Item), nullptr);
  EXPECT_EQ(Item, Mark);
}

TEST(ZoneLookUp, DoesNotTakeANumberOutOfRangeForOneThatItWrapsTo) {
  TBeaconZones Zones(nullptr);
  AddZones(Zones, "A Near 1 65535");
  for (const int Minor : {-1, 65537}) {
    EXPECT_EQ(Zones.GetZoneForBeacon(NewFakeBeacon(Minor)), nullptr) << Minor;
    const TRef<TFakeBeacon> Beacon = NewFakeBeacon(1);
    Beacon->Major = 65536;
    EXPECT_EQ(Zones.GetZoneForBeacon(Beacon), nullptr);
  }
}

TEST(ZoneLookUp, SeesIdentitiesThatChangeWithoutNotification) {
  TBeaconZones Zones(nullptr);
  AddZones(Zones, "A Near 1");
  TBeaconInZoneList& List = *Zones.GetItems(0)->GetBeaconList();
  TBeaconItem& Item = *List.GetItems(0);
  const TRef<TFakeBeacon> One = NewFakeBeacon(1);
  const TRef<TFakeBeacon> Eddystone = NewFakeBeacon(0, TKindofBeacon::Eddystone);
  Eddystone->UID = {.Namespace = {1}, .Instance = {2}};
  EXPECT_TRUE(Zones.GetZoneForBeacon(One));
  EXPECT_FALSE(Zones.GetZoneForBeacon(Eddystone));

  Zones.BeginUpdate();
  List.BeginUpdate();
  Item.SetGUID({});
  EXPECT_FALSE(Zones.GetZoneForBeacon(One));
  EXPECT_FALSE(List.ContainsBeacon(One));
  Item.SetEddyUID(Eddystone->UID);
  EXPECT_TRUE(Zones.GetZoneForBeacon(Eddystone));
  TBeaconInZoneList Other(nullptr);
  Item.Assign(Other.Add());
  EXPECT_FALSE(Zones.GetZoneForBeacon(Eddystone));
  EXPECT_FALSE(List.ContainsBeacon(Eddystone));
}

}  // namespace
}  // namespace System::Beacon::Fencing
