#include <gtest/gtest.h>

#include <functional>

#include "fencing/System.Beacon.Fencing.h"
#include "platform/random.h"
#include "support/fake_beacon.h"

namespace System::Beacon::Fencing {
namespace {

// ---------------------------------------------------------------- the plain walk

bool Matches(const IBeacon& ABeacon, const TBeaconItem& AItem) {
  const auto SameUUID = [&AItem](const IBeacon* AView) {
    return AView && AView->GetGUID() == AItem.GetGUID() && AView->GetMajor() == AItem.GetMajor() &&
           AView->GetMinor() == AItem.GetMinor();
  };
  const TKindofBeacon Kind = ABeacon.GetKindofBeacon();
  if (Kind == TKindofBeacon::AltBeacon) return SameUUID(ABeacon.GetAltBeaconView());
  if (Kind != TKindofBeacon::Eddystone) return SameUUID(ABeacon.GetiBeaconView());
  const IEddystoneBeacon* const View = ABeacon.GetEddystoneView();
  return View && View->GetEddystoneUID().GetNamespace() == AItem.GetEddyNamespace() &&
         View->GetEddystoneUID().GetInstance() == AItem.GetEddyInstance();
}

TBeaconItem* WalkList(const TBeaconInZoneList& AList, const IBeacon& ABeacon) {
  for (int I = 0; I < AList.GetCount(); ++I)
    if (Matches(ABeacon, *AList.GetItems(I))) return AList.GetItems(I);
  return nullptr;
}

void ExpectSameAsWalk(TBeaconZones& AZones, const TRef<TFakeBeacon>& ABeacon) {
  TBeaconZoneItem* Zone = nullptr;
  TBeaconItem* Item = nullptr;
  for (int I = 0; I < AZones.GetCount(); ++I) {
    TBeaconInZoneList& List = *AZones.GetItems(I)->GetBeaconList();
    TBeaconItem* const InList = WalkList(List, *ABeacon);
    ASSERT_EQ(List.ContainsBeacon(ABeacon), InList);
    if (InList && !Zone) Zone = AZones.GetItems(I), Item = InList;
  }
  TBeaconItem Mark(nullptr);
  TBeaconItem* Found = &Mark;  // left alone where there is no zone
  ASSERT_EQ(AZones.GetZoneForBeacon(ABeacon, Found), Zone);
  ASSERT_EQ(Found, Zone ? Item : &Mark);
  ASSERT_EQ(AZones.GetZoneForBeacon(ABeacon), Zone);
  const TZoneMatch Match = AZones.FindMatch(ABeacon.Get());
  ASSERT_EQ(Match ? Match.Zone->Get() : nullptr, Zone);
  ASSERT_EQ(Match ? Match.Item->Get() : nullptr, Item);
}

// ---------------------------------------------------------------- random collections

/// Few identities, so that items repeat one another and sightings hit often.
class TRandomZones {
 public:
  explicit TRandomZones(std::uint64_t ASeed) : FRandom(ASeed) {}

  TRef<TFakeBeacon> SomeBeacon() {
    static constexpr std::array<int, 5> Numbers{0, 1, 0, 65536, -65535};  // two wrap to 0 and 1
    const TRef<TFakeBeacon> Result = NewFakeBeacon(0, static_cast<TKindofBeacon>(Below(4)));
    Result->GUID = SomeGUID();
    Result->Major = Numbers[Below(5)];
    Result->Minor = Numbers[Below(5)];
    Result->UID = SomeUID();
    Result->OffersView = Below(8) > 0;
    return Result;
  }

  void Change() {
    if (Zones.GetCount() == 0 || Below(8) == 0) Zones.Add();
    const int Index = SomeOf(Zones);
    TBeaconZoneItem& Zone = *Zones.GetItems(Index);
    TBeaconInZoneList& List = *Zone.GetBeaconList();
    const int What = Below(12);
    if (What == 0) return Zones.Delete(Index);
    if (What == 1) return Zone.SetIndex(SomeOf(Zones));
    if (What == 2) return Zone.SetBeaconList(Zones.GetItems(0)->GetBeaconList());
    if (What <= 5) List.Add();
    if (List.GetCount() == 0) return;
    if (What == 6) return List.Delete(SomeOf(List));
    ChangeItem(*List.GetItems(SomeOf(List)), *List.GetItems(0));
  }

  TBeaconZones Zones{nullptr};

 private:
  /// One of the ways to change an identity; some of them notify, others do not.
  void ChangeItem(TBeaconItem& AItem, TBeaconItem& AOther) {
    const std::function<void()> Ways[] = {
        [&] { AItem.SetGUID(SomeGUID()); },
        [&] { AItem.SetUUID(GUIDToString(SomeGUID())); },
        [&] { AItem.SetMajor(static_cast<std::uint16_t>(Below(2))); },
        [&] { AItem.SetMinor(static_cast<std::uint16_t>(Below(2))); },
        [&] { AItem.SetEddyUID(SomeUID()); },
        [&] { AItem.SetEddyNamespace(SomeUID().GetNamespace()); },
        [&] { AItem.SetEddyInstance(SomeUID().GetInstance()); },
        [&] { AItem.SetKindofBeacon(static_cast<TKindofBeacon>(Below(4))); },
        [&] { AItem.Assign(&AOther); }};
    Ways[Below(std::size(Ways))]();
  }

  int Below(std::size_t ABound) {
    return static_cast<int>(FRandom.NextBelow(static_cast<std::uint32_t>(ABound)));
  }
  int SomeOf(const TCollection& ACollection) { return Below(ACollection.GetCount()); }
  TGUID SomeGUID() { return {{static_cast<std::uint8_t>(Below(2))}}; }
  TEddystoneUID SomeUID() {
    return {{static_cast<std::uint8_t>(Below(2))}, {static_cast<std::uint8_t>(Below(2))}};
  }

  TRandomStream FRandom;
};

TEST(ZoneLookUp, AnswersAsAWalkOverAllItemsWould) {
  for (std::uint64_t Seed = 1; Seed <= 200; ++Seed) {
    TRandomZones Random(Seed);
    for (int Step = 0; Step < 100; ++Step) {
      Random.Change();
      ASSERT_NO_FATAL_FAILURE(ExpectSameAsWalk(Random.Zones, Random.SomeBeacon()))
          << "seed " << Seed << ", step " << Step;
    }
    EXPECT_FALSE(Random.Zones.GetZoneForBeacon(TRef<IBeacon>()));
    for (int I = 0; I < Random.Zones.GetCount(); ++I)
      EXPECT_FALSE(Random.Zones.GetItems(I)->GetBeaconList()->ContainsBeacon(nullptr));
  }
}

}  // namespace
}  // namespace System::Beacon::Fencing
