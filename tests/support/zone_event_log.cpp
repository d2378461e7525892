#include "support/zone_event_log.h"

#include <gtest/gtest.h>

namespace System::Beacon::Fencing {
namespace {

std::string NameOf(const IBeacon& ABeacon) {
  return std::to_string(ABeacon.GetMinor());
}
std::string NameOf(const TBeaconItem& AItem) {
  return std::to_string(AItem.GetMinor());
}
std::string NameOf(TBeaconProximity AProximity) {
  return std::string(TEnumNames<TBeaconProximity>::Names[static_cast<std::size_t>(AProximity)]);
}

std::string PlaceOf(const TBeaconZoneItem* AZone, const TBeaconItem* AItem) {
  return AZone->GetDisplayName() + "." + NameOf(*AItem);
}

void Append(std::string& AText, const std::string& ALine) {
  if (!AText.empty()) AText += "; ";
  AText += ALine;
}

}  // namespace

TZoneEventLog::TZoneEventLog(TCustomBeaconZonesFencing& AComponent) : FComponent(AComponent) {
  using TBeaconRef = const TRef<IBeacon>&;
  using TZone = TBeaconZoneItem*;
  using TItem = TBeaconItem*;
  AComponent.SetOnBeaconEnter([this](TObject* S, TBeaconRef B, const TBeaconList&) {
    Add(S, "BeaconEnter " + NameOf(*B));
  });
  AComponent.SetOnBeaconExit(
      [this](TObject* S, TBeaconRef B, const TBeaconList&) { Add(S, "BeaconExit " + NameOf(*B)); });
  AComponent.SetOnBeaconProximity([this](TObject* S, TBeaconRef B, TBeaconProximity P) {
    Add(S, "BeaconProximity " + NameOf(*B) + " " + NameOf(P));
  });
  AComponent.SetOnZoneBeaconEnter([this](TObject* S, TBeaconRef, TZone Z, TItem I) {
    Add(S, "ZoneBeaconEnter " + PlaceOf(Z, I));
  });
  AComponent.SetOnZoneBeaconExit([this](TObject* S, TBeaconRef, TZone Z, TItem I) {
    Add(S, "ZoneBeaconExit " + PlaceOf(Z, I));
  });
  AComponent.SetOnZoneBeaconProximity(
      [this](TObject* S, TBeaconRef, TZone Z, TItem I, TBeaconProximity P) {
        Add(S, "ZoneBeaconProximity " + PlaceOf(Z, I) + " " + NameOf(P));
      });
  AComponent.SetOnZoneEnter([this](TObject* S, TBeaconRef B, TZone Z) {
    Add(S, "ZoneEnter " + Z->GetDisplayName() + " by " + NameOf(*B));
  });
  AComponent.SetOnZoneExit([this](TObject* S, TBeaconRef B, TZone Z) {
    Add(S, "ZoneExit " + Z->GetDisplayName() + " by " + NameOf(*B));
  });
  AComponent.SetOnBeaconEddyURL([this](TObject* S, TBeaconRef, TZone Z, TItem I, TEddystoneURL& U) {
    Add(S, "URL " + PlaceOf(Z, I) + " " + U.URL);
  });
  AComponent.SetOnBeaconEddyTLM([this](TObject* S, TBeaconRef, TZone Z, TItem I, TEddystoneTLM& T) {
    Add(S, "TLM " + PlaceOf(Z, I) + " " + std::to_string(T.BatteryVoltage));
  });
}

std::string TZoneEventLog::Take() {
  FZoneText.clear();
  return std::exchange(FText, {});
}

std::string TZoneEventLog::TakeZones() {
  FText.clear();
  return std::exchange(FZoneText, {});
}

void TZoneEventLog::Add(TObject* ASender, const std::string& ALine) {
  EXPECT_EQ(ASender, &FComponent);
  EXPECT_TRUE(IsMainThread());
  Append(FText, ALine);
  if (ALine.starts_with("ZoneEnter") || ALine.starts_with("ZoneExit")) Append(FZoneText, ALine);
  if (OnEvent) OnEvent(ALine);
}

}  // namespace System::Beacon::Fencing
