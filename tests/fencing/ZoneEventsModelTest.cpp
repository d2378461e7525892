// The component against a model that walks and compares as the description of the events has it.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include "platform/random.h"
#include "support/zone_event_log.h"
#include "support/zone_script.h"

namespace System::Beacon::Fencing {
namespace {

/// Zones and beacons are those of the component; the current zone and the list are the model's.
class TModel {
 public:
  explicit TModel(TBeaconZones& AZones) : FZones(AZones) {}

  void BeaconEnter(IBeacon& ABeacon, const TBeaconList& AList) {
    FList = AList;
    const auto [Zone, Item] = Look(&ABeacon);
    if (Zone) {
      Tell("ZoneBeaconEnter " + PlaceOf(Zone, Item));
      ProximityChange(ABeacon, static_cast<int>(ABeacon.GetProximity()));
    }
    Tell("BeaconEnter " + NameOf(ABeacon));
  }

  void BeaconExit(IBeacon& ABeacon, const TBeaconList& AList) {
    FList = AList;
    const auto [Zone, Item] = Look(&ABeacon);
    if (Zone) {
      ProximityChange(ABeacon, 4);
      Tell("ZoneBeaconExit " + PlaceOf(Zone, Item));
    }
    Tell("BeaconExit " + NameOf(ABeacon));
  }

  void ProximityChange(IBeacon& ABeacon, int AProximity) {
    const std::string Ordinal = NameOf(static_cast<TBeaconProximity>(AProximity));
    if (const auto [Zone, Item] = Look(&ABeacon); Zone) {
      Tell("ZoneBeaconProximity " + PlaceOf(Zone, Item) + " " + Ordinal);
      IBeacon* const Nearest = GetNearest();
      if (AProximity <= ThresholdOf(Zone))
        Inside(ABeacon, Zone, Nearest);
      else
        Outside(ABeacon, Zone, Nearest);
    }
    Tell("BeaconProximity " + NameOf(ABeacon) + " " + Ordinal);
  }

  IBeacon* GetNearest() const {
    IBeacon* Nearest = nullptr;
    for (const TRef<IBeacon>& Beacon : FList) {
      if (!Look(Beacon.Get()).first || Beacon->GetDistance() < 0.0) continue;
      if (!Nearest || Beacon->GetDistance() < Nearest->GetDistance()) Nearest = Beacon.Get();
    }
    return Nearest;
  }

  std::string TakeEvents() { return std::exchange(FEvents, {}); }
  TBeaconZoneItem* GetCurrent() const { return FCurrent; }
  void ZoneDeleted(const TBeaconZoneItem* AZone) {
    if (FCurrent == AZone) FCurrent = nullptr;
  }

 private:
  using TPlace = std::pair<TBeaconZoneItem*, TBeaconItem*>;

  static int ThresholdOf(const TBeaconZoneItem* AZone) {
    return static_cast<int>(AZone->GetBeaconProximity()) + 1;
  }
  static std::string PlaceOf(const TBeaconZoneItem* AZone, const TBeaconItem* AItem) {
    return AZone->GetDisplayName() + "." + NameOf(*AItem);
  }
  static TBeaconItem* LookIn(const TBeaconZoneItem* AZone, const IBeacon* ABeacon) {
    const TBeaconInZoneList& List = *AZone->GetBeaconList();
    for (int I = 0; I < List.GetCount(); ++I)
      if (List.GetItems(I)->GetMinor() == ABeacon->GetMinor()) return List.GetItems(I);
    return nullptr;
  }
  TPlace Look(const IBeacon* ABeacon) const {
    for (int I = 0; ABeacon && I < FZones.GetCount(); ++I)
      if (TBeaconItem* Item = LookIn(FZones.GetItems(I), ABeacon))
        return {FZones.GetItems(I), Item};
    return {};
  }

  void Inside(IBeacon& ABeacon, TBeaconZoneItem* AZone, const IBeacon* ANearest) {
    if (AZone == FCurrent) {
      if (!ANearest || &ABeacon == ANearest) return;
      if (ABeacon.GetDistance() < 0.0 || ABeacon.GetDistance() >= ANearest->GetDistance()) return;
    }
    if (FCurrent) Leave(ABeacon);
    Enter(ABeacon, AZone);
  }

  void Outside(IBeacon& ABeacon, TBeaconZoneItem* AZone, IBeacon* ANearest) {
    TBeaconZoneItem* const OfNearest = Look(ANearest).first;
    if (AZone == FCurrent && AZone != OfNearest && !IsHeld(ABeacon, AZone)) Leave(ABeacon);
    if (!OfNearest || OfNearest == FCurrent) return;
    if (static_cast<int>(ANearest->GetProximity()) > ThresholdOf(OfNearest)) return;
    if (FCurrent) Leave(ABeacon);
    Enter(*ANearest, OfNearest);
  }

  bool IsHeld(const IBeacon& ABeacon, const TBeaconZoneItem* AZone) const {
    for (const TRef<IBeacon>& Other : FList)
      if (Other.Get() != &ABeacon && Other->IsAlive() && LookIn(AZone, Other.Get()) &&
          static_cast<int>(Other->GetProximity()) <= ThresholdOf(AZone))
        return true;
    return false;
  }

  void Leave(const IBeacon& ABeacon) {
    Tell("ZoneExit " + FCurrent->GetDisplayName() + " by " + NameOf(ABeacon));
    FCurrent = nullptr;
  }
  void Enter(const IBeacon& ABeacon, TBeaconZoneItem* AZone) {
    FCurrent = AZone;
    Tell("ZoneEnter " + AZone->GetDisplayName() + " by " + NameOf(ABeacon));
  }
  void Tell(const std::string& ALine) { FEvents += (FEvents.empty() ? "" : "; ") + ALine; }

  TBeaconZones& FZones;
  TBeaconList FList;
  TBeaconZoneItem* FCurrent = nullptr;
  std::string FEvents;
};

/// One run: the same reports go to the component and to the model.
class TComparison {
 public:
  explicit TComparison(std::uint64_t ASeed) : FRandom(ASeed) {
    FComponent.SetDesigning(true);
    FComponent.SetEnabled(true);
    while (FZones.GetCount() < 4) AddZone();
  }

  void Step() {
    const int What = Below(8);
    if (What == 0) ChangeZones();
    if (What == 1 || What == 2) Enter();
    if (What == 3) Exit();
    if (What == 4) Move(Any());
    if (What > 4) Report();
    ASSERT_EQ(FLog.Take(), FModel.TakeEvents());
    ASSERT_EQ(FComponent.GetCurrentZone(), FModel.GetCurrent());
    ASSERT_EQ(FComponent.GetNearestBeacon().Get(), FModel.GetNearest());
  }

 private:
  int Below(int ABound) {
    return static_cast<int>(FRandom.NextBelow(static_cast<std::uint32_t>(ABound)));
  }
  std::uint16_t SomeMinor() { return static_cast<std::uint16_t>(Below(10)); }

  void AddZone() {
    TBeaconZoneItem& Zone = *FZones.Add();
    Zone.SetDisplayName(fmt::format("Z{}", Zone.GetID()));
    for (int Items = Below(4); Items > 0; --Items) {
      TBeaconItem& Item = *Zone.GetBeaconList()->Add();
      Item.SetGUID(TestGUID);
      Item.SetMinor(SomeMinor());
    }
  }

  void ChangeZones() {
    if (FZones.GetCount() < 2) AddZone();
    const int Index = Below(FZones.GetCount());
    TBeaconZoneItem& Zone = *FZones.GetItems(Index);
    TBeaconInZoneList& List = *Zone.GetBeaconList();
    const int What = Below(6);
    if (What == 0) return AddZone();
    if (What == 1) return DeleteZone(Index);
    if (What == 2) return Zone.SetIndex(Below(FZones.GetCount()));
    if (What == 3) return Zone.SetBeaconProximity(static_cast<TBeaconEditProximity>(Below(3)));
    if (List.GetCount() == 0) return;
    if (What == 4) return List.Delete(0);
    List.GetItems(0)->SetMinor(SomeMinor());
  }

  void DeleteZone(int AIndex) {
    FModel.ZoneDeleted(FZones.GetItems(AIndex));
    FZones.Delete(AIndex);
  }

  /// A new distance, now and then unknown; the proximity does not always follow at once.
  void Move(const TRef<TFakeBeacon>& ABeacon) {
    if (!ABeacon) return;
    ABeacon->Distance = Below(8) == 0 ? -1.0 : 0.5 * Below(12);
    if (Below(4) > 0) ABeacon->Proximity = static_cast<TBeaconProximity>(1 + Below(4));
    if (Below(16) == 0) ABeacon->Alive = !ABeacon->Alive;
  }

  void Enter() {
    const TRef<TFakeBeacon> Beacon = NewFakeBeacon(SomeMinor());
    for (const TRef<TFakeBeacon>& Other : FPresent)
      if (Other->Minor == Beacon->Minor) return;
    Move(Beacon);
    FPresent.push_back(Beacon);
    const TBeaconList List = MakeList();
    FComponent.BeaconEnterEvent(nullptr, Beacon, List);
    FModel.BeaconEnter(*Beacon, List);
  }

  void Exit() {
    const TRef<TFakeBeacon> Beacon = Any();
    if (!Beacon) return;
    std::erase(FPresent, Beacon);
    Beacon->Distance = -1.0;
    Beacon->Proximity = TBeaconProximity::Away;
    Beacon->Alive = false;
    const TBeaconList List = MakeList();
    FComponent.BeaconExitEvent(nullptr, Beacon, List);
    FModel.BeaconExit(*Beacon, List);
  }

  void Report() {
    const TRef<TFakeBeacon> Beacon = Any();
    if (!Beacon) return;
    Move(Beacon);
    FComponent.BeaconProximityChangeEvent(nullptr, Beacon, Beacon->Proximity);
    FModel.ProximityChange(*Beacon, static_cast<int>(Beacon->Proximity));
  }

  TRef<TFakeBeacon> Any() {
    if (FPresent.empty()) return nullptr;
    return FPresent[static_cast<std::size_t>(Below(static_cast<int>(FPresent.size())))];
  }
  TBeaconList MakeList() const {
    return TBeaconList(std::vector<TRef<IBeacon>>(FPresent.begin(), FPresent.end()));
  }

  TRandomStream FRandom;
  TBeaconZonesFencing FComponent;
  TBeaconZones& FZones = *FComponent.GetZones();
  TZoneEventLog FLog{FComponent};
  TModel FModel{FZones};
  std::vector<TRef<TFakeBeacon>> FPresent;
};

TEST(ZoneEvents, AreThoseOfTheModelForRandomReports) {
  for (std::uint64_t Seed = 1; Seed <= 2000; ++Seed) {
    TComparison Comparison(Seed);
    for (int Step = 1; Step <= 80; ++Step)
      ASSERT_NO_FATAL_FAILURE(Comparison.Step()) << "seed " << Seed << ", step " << Step;
  }
}

}  // namespace
}  // namespace System::Beacon::Fencing
