// Random sightings against an application that reads, changes, stops and starts at random.
#include <gtest/gtest.h>

#include "platform/random.h"
#include "platform/simulation.h"
#include "support/environment.h"
#include "support/scripted_source.h"
#include "support/zone_script.h"

namespace System::Beacon::Fencing {
namespace {

constexpr std::uint32_t Minors = 12;

/// How fast things happen.
struct TPace {
  std::uint32_t MeanDelay;  // between advertisements, microseconds
  int MaxSleep;             // between what the application does, milliseconds
  int Calm;                 // the higher, the less often it stops and starts
};

/// Endless advertisements of beacons that come and go.
class TNoise {
 public:
  TNoise(std::uint64_t ASeed, const TPace& APace) : FRandom(ASeed), FPace(APace) {}

  bool operator()(TSourceStep& AStep) {
    AStep.Delay = FRandom.NextBelow(2 * FPace.MeanDelay);
    FElapsed += AStep.Delay;
    AStep.Rssi = -40 - static_cast<int>(FRandom.NextBelow(50));
    const auto First = static_cast<std::uint32_t>(FElapsed / (TicksPerSecond / 2));
    const auto Minor = static_cast<int>((First + FRandom.NextBelow(Minors / 3)) % Minors);
    AStep.Address = static_cast<std::uint8_t>(Minor);
    AStep.Payload = SomePayload(Minor);
    return true;
  }

 private:
  TPayload SomePayload(int AMinor) {
    const std::uint32_t What = FRandom.NextBelow(8);
    if (What == 0) return AltBeaconPayload(0x0118, TestGUID, 0, AMinor);
    if (What == 1) return EddystoneUIDPayload({{1}, {static_cast<std::uint8_t>(AMinor)}});
    if (What == 2) return EddystoneURLPayload("a.org");
    if (What == 3) return EddystoneTLMPayload(3000);
    return iBeaconPayload(TestGUID, 0, AMinor);
  }

  TRandomStream FRandom;
  const TPace FPace;
  TTicks FElapsed = 0;
};

/// An application that does at random what applications do, inside handlers too, and checks that
/// what it is told makes sense.
class TStress : public TObject {
 public:
  TStress(std::uint64_t ASeed, const TPace& APace) : FRandom(ASeed), FPace(APace) {
    FComponent.SetSource(New<TScriptedSource>(TNoise(ASeed, APace)));
    FComponent.GetBeaconManagerOptions()->SetBeaconDeathTime(1);
    while (FZones.GetCount() < 3) AddZone();
    Listen();
    Switch(true);
  }

  /// One thing that an application does between events.
  void Step() {
    System::Sleep(Below(FPace.MaxSleep));
    Read();
    if (Below(3) == 0) Change();
    if (!FIsOn || Below(40 * FPace.Calm) == 0)
      Switch(!FIsOn);
    else if (Below(40 * FPace.Calm) == 0)
      FComponent.StartFencingScanning();
  }
  int GetExitCount() const { return FExits; }
  int GetEventCount() const { return FEvents; }

 private:
  using TBeaconRef = const TRef<IBeacon>&;
  using TZone = TBeaconZoneItem*;
  using TItem = TBeaconItem*;

  void Listen() {
    FComponent.SetOnBeaconEnter(
        [this](TObject*, TBeaconRef B, const TBeaconList& L) { CheckList(B, L, 1); });
    FComponent.SetOnBeaconExit([this](TObject*, TBeaconRef B, const TBeaconList& L) {
      ++FExits;
      EXPECT_FALSE(B->IsAlive());
      CheckList(B, L, 0);
    });
    FComponent.SetOnBeaconProximity([this](TObject*, TBeaconRef, TBeaconProximity) { Heard(); });
    const auto Told = [this](TObject*, TBeaconRef, TZone Z, TItem I, auto&&...) { Heard(Z, I); };
    FComponent.SetOnZoneBeaconEnter(Told);
    FComponent.SetOnZoneBeaconExit(Told);
    FComponent.SetOnZoneBeaconProximity(Told);
    FComponent.SetOnBeaconEddyURL(Told);
    FComponent.SetOnBeaconEddyTLM(Told);
    FComponent.SetOnZoneEnter([this](TObject*, TBeaconRef, TZone Z) {
      EXPECT_EQ(FIn, nullptr) << "entered a zone without having left the other";
      EXPECT_EQ(FComponent.GetCurrentZone(), Z);
      FIn = Z;
      Heard(Z);
    });
    FComponent.SetOnZoneExit([this](TObject*, TBeaconRef, TZone Z) {
      EXPECT_EQ(FIn, Z) << "left a zone that was not entered";
      FIn = nullptr;
      Heard(Z);
    });
  }

  void CheckList(TBeaconRef ABeacon, const TBeaconList& AList, std::ptrdiff_t AExpected) {
    EXPECT_EQ(std::count(AList.begin(), AList.end(), ABeacon), AExpected);
    Heard();
  }

  void Heard(TZone AZone = nullptr, TItem AItem = nullptr) {
    ++FEvents;
    EXPECT_TRUE(IsMainThread());
    EXPECT_TRUE(FIsOn && FComponent.GetEnabled()) << "an event of a disabled component";
    EXPECT_TRUE(!AZone || IsThere(AZone, AItem)) << "an event that names what was deleted";
    if (Below(16) == 0) Act();
  }

  /// Addresses are compared only: what was deleted is not looked into.
  bool IsThere(const TBeaconZoneItem* AZone, const TBeaconItem* AItem) const {
    for (int I = 0; I < FZones.GetCount(); ++I) {
      if (FZones.GetItems(I) != AZone) continue;
      const TBeaconInZoneList& List = *FZones.GetItems(I)->GetBeaconList();
      if (!AItem) return true;
      for (int J = 0; J < List.GetCount(); ++J)
        if (List.GetItems(J) == AItem) return true;
    }
    return false;
  }

  /// What an application does inside a handler.
  void Act() {
    const int What = Below(8 * FPace.Calm);
    if (What <= 1) Switch(false);
    if (What == 1) Switch(true);
    if (What == 2) FComponent.StartFencingScanning();
    if (What == 3) System::Sleep(1);
    if (What > 3) Change();
  }

  void Switch(bool AOn) {
    if (AOn) FIsOn = true;
    FComponent.SetEnabled(AOn);
    FIsOn = AOn;
  }

  void Read() {
    for (const TRef<IBeacon>& Beacon : FComponent.GetDetectedBeacons())
      EXPECT_LT(Beacon->GetMinor(), static_cast<int>(Minors));
    const TRef<IBeacon> Nearest = FComponent.GetNearestBeacon();
    EXPECT_TRUE(!Nearest || Nearest->GetTxPower() != UnknownRssi);
    const TZone Current = FComponent.GetCurrentZone();
    EXPECT_TRUE(!Current || IsThere(Current, nullptr));
  }

  void AddZone() {
    TBeaconInZoneList& List = *FZones.Add()->GetBeaconList();
    for (int Items = Below(4); Items >= 0; --Items) {
      TBeaconItem& Item = *List.Add();
      Item.SetGUID(TestGUID);
      Item.SetKindofBeacon(static_cast<TKindofBeacon>(Below(4)));
      ChangeIdentity(Item);
    }
  }

  void ChangeIdentity(TBeaconItem& AItem) {
    const int Number = Below(Minors);
    AItem.SetMinor(static_cast<std::uint16_t>(Number));
    AItem.SetEddyUID({{1}, {static_cast<std::uint8_t>(Number)}});
    AItem.SetGUID(TestGUID);
  }

  void Change() {
    if (FZones.GetCount() < 2) AddZone();
    const int Index = Below(FZones.GetCount());
    TBeaconZoneItem& Zone = *FZones.GetItems(Index);
    TBeaconInZoneList& List = *Zone.GetBeaconList();
    const int What = Below(6);
    if (What == 0) return AddZone();
    if (What == 1) return DeleteZone(Index);
    if (What == 2) return Zone.SetBeaconProximity(static_cast<TBeaconEditProximity>(Below(3)));
    if (What == 3 && List.GetCount() > 0) return List.Delete(Below(List.GetCount()));
    ChangeIdentity(List.GetCount() > 0 ? *List.GetItems(0) : *List.Add());
  }

  void DeleteZone(int AIndex) {
    if (FIn == FZones.GetItems(AIndex)) FIn = nullptr;
    FZones.Delete(AIndex);
  }

  int Below(int ABound) {
    return static_cast<int>(FRandom.NextBelow(static_cast<std::uint32_t>(ABound)));
  }
  int Below(std::uint32_t ABound) { return Below(static_cast<int>(ABound)); }

  TRandomStream FRandom;
  const TPace FPace;
  TBeaconZonesFencing FComponent;
  TBeaconZones& FZones = *FComponent.GetZones();
  bool FIsOn = false;
  TZone FIn = nullptr;  // the zone that the application believes to be in
  int FEvents = 0;
  int FExits = 0;
};

TEST(ZoneStress, HoldsInTheSimulatedRuntimeForManySeeds) {
  const int Seeds = FromEnvironment("WAYFENCE_STRESS_SEEDS", 100);
  int Events = 0, Exits = 0;
  for (int Seed = 1; Seed <= Seeds && !HasFailure(); ++Seed) {
    SCOPED_TRACE(testing::Message() << "seed " << Seed);
    const TSimulation Simulation({.Seed = static_cast<std::uint64_t>(Seed)});
    TStress Stress(static_cast<std::uint64_t>(Seed), {100'000, 300, 1});
    for (int Step = 0; Step < 80; ++Step) Stress.Step();
    Events += Stress.GetEventCount();
    Exits += Stress.GetExitCount();
  }

  EXPECT_GT(Events, 50 * Seeds) << "too few to mean anything";
  EXPECT_GT(Exits, Seeds) << "too few to mean anything";
}

TEST(ZoneStress, HoldsInTheRealRuntime) {
  const TTicks End = Ticks() + FromEnvironment("WAYFENCE_STRESS_SECONDS", 2) * TicksPerSecond;
  TStress Stress(1, {250, 3, 400});
  while (!HasFailure() && (Ticks() < End || Stress.GetEventCount() < 100)) Stress.Step();
}

}  // namespace
}  // namespace System::Beacon::Fencing
