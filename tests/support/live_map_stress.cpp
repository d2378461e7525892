#include "support/live_map_stress.h"

#include <gtest/gtest.h>

#include <array>

#include "map/project_builder.h"
#include "support/fake_beacon.h"
#include "support/scripted_source.h"

namespace System::Beacon::Fencing {
namespace {

using Scene::Beacons::TMapBuilder;
using Scene::Beacons::TProjectBuilder;

constexpr int BeaconsOfAFloor = 4;
constexpr std::array<TPointF, BeaconsOfAFloor> Places{{{1, 1}, {9, 1}, {9, 9}, {1, 9}}};

std::string MakeProject(const char* AName) {
  TProjectBuilder Builder(AName);
  for (int Floor = 0; Floor < 2; ++Floor) {
    const std::string Name = "floor " + std::to_string(Floor);
    TMapBuilder Map = Builder.AddMap(Name, 10, 10);
    for (int I = 0; I < BeaconsOfAFloor; ++I)
      Map.AddBeacon("beacon " + std::to_string(I),
                    Places[static_cast<std::size_t>(I)],
                    GUIDToString(TestGUID),
                    Floor,
                    I);
    Map.AddZone(Name + " left", {0, 0, 6, 10});
    Map.AddCircularZone(Name + " middle", {5, 5}, 3);
    Map.AddPath(Name, {{Name + " a", {1, 5}}, {Name + " b", {5, 5}}, {Name + " c", {9, 5}}});
  }
  Builder.Connect("floor 0 c", "floor 1 c");
  return Builder.MakeBundle()->SerializeToXML();
}

/// Two projects, and the empty text.
const std::string& TextOf(int AProject) {
  static const std::array<std::string, 3> Texts{MakeProject("one"), MakeProject("two"), ""};
  return Texts[static_cast<std::size_t>(AProject)];
}

/// Endless advertisements: one floor is near for a while, then the other.
class TNoise {
 public:
  TNoise(std::uint64_t ASeed, const TLivePace& APace) : FRandom(ASeed), FPace(APace) {}

  bool operator()(TSourceStep& AStep) {
    if (FLeft-- == 0) {
      FLeft = static_cast<int>(FRandom.NextBelow(400));
      FNear = 1 - FNear;
    }
    const auto Floor = static_cast<int>(FRandom.NextBelow(2));
    const auto Minor = static_cast<int>(FRandom.NextBelow(BeaconsOfAFloor + 1));  // one is unknown
    AStep.Delay = FRandom.NextBelow(2 * FPace.MeanDelay);
    AStep.Rssi = -50 - static_cast<int>(FRandom.NextBelow(20)) - (Floor == FNear ? 0 : 25);
    AStep.Address = static_cast<std::uint8_t>(8 * Floor + Minor);
    AStep.Payload = iBeaconPayload(TestGUID, Floor, Minor);
    return true;
  }

 private:
  TRandomStream FRandom;
  const TLivePace FPace;
  int FNear = 0;
  int FLeft = 100;
};

}  // namespace

TLiveMapStress::TLiveMapStress(std::uint64_t ASeed, const TLivePace& APace, TControl& AControl)
    : FRandom(ASeed), FPace(APace), FControl(AControl) {
  MakeComponent();
}

TLiveMapStress::~TLiveMapStress() = default;

void TLiveMapStress::MakeComponent() {
  FComponent = std::make_unique<TBeaconMapFencing>();
  FInside.clear();
  FIsOn = false;
  FComponent->SetSource(New<TScriptedSource>(TNoise(FRandom.NextBelow(1'000'000), FPace)));
  FComponent->GetBeaconManagerOptions()->SetBeaconDeathTime(2);
  FComponent->GetParticleFilterOptions()->SetParticlesNumber(40);
  FComponent->GetParticleFilterOptions()->SetUpdateInterval(1 + Below(2 * FPace.MaxSleep));
  FComponent->SetPaintControl(&FControl);
  FComponent->SetMapOptions(TFencingMapOptions::FromBits(0xFF));
  ListenToBeacons();
  ListenToPositions();
  Load(Below(2));
  Switch(true);
}

void TLiveMapStress::ListenToBeacons() {
  const auto OfBeacon = [this](TObject*, const TFencingBeacon& ABeacon, auto&&...) {
    EXPECT_TRUE(ABeacon.DesignBeacon);
    Heard();
  };
  FComponent->SetOnBeaconEnter(OfBeacon);
  FComponent->SetOnBeaconExit(OfBeacon);
  FComponent->SetOnBeaconProximity(OfBeacon);
}

void TLiveMapStress::ListenToPositions() {
  FComponent->SetOnZoneEnter(
      [this](TObject*, const TRef<IDesignZone>& AZone) { ZoneChanged(AZone, true); });
  FComponent->SetOnZoneExit(
      [this](TObject*, const TRef<IDesignZone>& AZone) { ZoneChanged(AZone, false); });
  FComponent->SetOnPositionEstimated([this](const TPointF&, const TPointF&) {
    ++FPositions;
    Heard();
  });
  FComponent->SetOnArrivedToPOI([this](TObject*, const TBeaconFencingPOI&) { Heard(); });
  FComponent->SetOnBeforeMapChange([this](TObject*, int AFrom, int ATo, bool& AAllow) {
    EXPECT_NE(AFrom, ATo);
    ++FMapChanges;
    AAllow = Below(4) != 0;
    Heard();
  });
  FComponent->SetOnPaint([](TObject*, TDrawing*, const TRectF&) { EXPECT_TRUE(IsMainThread()); });
}

void TLiveMapStress::Heard() {
  ++FEvents;
  EXPECT_TRUE(IsMainThread());
  EXPECT_TRUE(FIsOn && FComponent->GetEnabled()) << "an event of a disabled component";
  if (Below(24) == 0) Act(true);
}

void TLiveMapStress::ZoneChanged(const TRef<IDesignZone>& AZone, bool AIsInside) {
  if (AIsInside) {
    EXPECT_TRUE(FInside.insert(AZone->GetName()).second) << "entered twice";
  } else {
    EXPECT_EQ(FInside.erase(AZone->GetName()), 1U) << "left without having been entered";
  }
  Heard();
}

void TLiveMapStress::Step() {
  System::Sleep(Below(FPace.MaxSleep));
  Read();
  if (!FIsOn && Below(3) == 0) Load(Below(2));
  if (!FIsOn) Switch(true);
  Act(false);
}

/// What an application does between events, and inside handlers.
void TLiveMapStress::Act(bool AInHandler) {
  const int What = Below(14 * FPace.Calm);
  if (What == 0) return Switch(false);
  if (What == 1) return Load(Below(3));
  if (What == 2) return FIsOn ? FComponent->StartProcess() : Switch(true);
  if (What == 3 && !AInHandler) {
    FComponent.reset();
    return MakeComponent();
  }
  if (What % 2 == 0) return ActOnDisplay();
  ActOnOptions();
}

void TLiveMapStress::ActOnDisplay() {
  const bool HasMaps = !FComponent->GetProjectInformation().Maps.IsEmpty();
  const auto Bits = static_cast<std::uint8_t>(Below(256));
  const std::function<void()> Ways[] = {
      [&] { FComponent->SetMapOptions(TFencingMapOptions::FromBits(Bits)); },
      [&] { FComponent->SetPaintControl(Below(3) == 0 ? nullptr : &FControl); },
      [&] { FComponent->ShowPathToNodeIndex(Below(6)); },
      [&] { FComponent->ClearRoute(); },
      [&] { FControl.Repaint(); },
      [&] { FComponent->SetMapIndex(Below(2)); },
      [&] { FComponent->SetRotation(Below(361) - 180); }};
  Ways[Below(HasMaps ? 7 : 5)]();
}

void TLiveMapStress::ActOnOptions() {
  TFencingOptions& Display = *FComponent->GetFencingOptions();
  TParticleFilterOptions& Filter = *FComponent->GetParticleFilterOptions();
  const auto Calculate =
      [](TObject*, auto&&, auto&&, auto&&, auto&&, bool& AManaged, TPointF& A, TPointF& AOnPath) {
        AManaged = true;
        AOnPath = A = {500, 500};
      };
  const std::function<void()> Ways[] = {
      [&] { Display.SetRawPositionRadius(0.2F + static_cast<float>(Below(10))); },
      [&] { Display.SetZoneHighlightMetod(static_cast<TZoneHighlightMetod>(Below(2))); },
      [&] { Filter.SetParticlesNumber(20 + Below(40)); },
      [&] { Filter.SetAutomaticCalibration(Below(4) != 0); },
      [&] { Filter.SetMotionThreshold(Below(20)); },
      [&] {
        FComponent->ManualCalibration({static_cast<float>(Below(10)), 5});
      },
      [&] { FComponent->SetOnCalcPosition({}); },
      [&] { FComponent->SetOnCalcPosition(Calculate); }};
  Ways[Below(8)]();
}

void TLiveMapStress::Load(int AProject) {
  const std::string& Text = TextOf(AProject);
  if (Text != FComponent->GetRawMap()) FInside.clear();
  if (Text.empty()) FIsOn = false;
  EXPECT_THROW(FComponent->SetXMLMap("<bundle"), EGeneralError);
  FComponent->SetXMLMap(Text);
}

void TLiveMapStress::Switch(bool AOn) {
  if (AOn && FComponent->GetRawMap().empty()) Load(0);
  if (AOn) FIsOn = true;
  FComponent->SetEnabled(AOn);
  FIsOn = AOn;
}

void TLiveMapStress::Read() {
  const TFencingProject Project = FComponent->GetProjectInformation();
  for (const TFencingMap& Map : Project.Maps) EXPECT_LE(Map.GetActiveBeaconsCount(), 4);
  for (const TRef<IBeacon>& Beacon : FComponent->GetDetectedBeacons())
    EXPECT_LE(Beacon->GetMinor(), BeaconsOfAFloor);
  const TPointF Last = FComponent->GetLastRawPosition();
  EXPECT_TRUE(Last.X >= 0 && Last.X <= 1000 && Last.Y >= 0 && Last.Y <= 1000);
  EXPECT_GE(FComponent->GetMotionAverage(), 0.0);
  EXPECT_LE(FComponent->GetMapIndex(), 1);
}

}  // namespace System::Beacon::Fencing
