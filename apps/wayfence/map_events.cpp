#include "apps/wayfence/map_events.h"

#include <algorithm>
#include <utility>

#include "apps/wayfence/beacon_fields.h"

namespace Wayfence {

using namespace System;
using namespace System::Beacon;
using namespace System::Beacon::Fencing;

namespace {

/// `beacon`, its name, and what identifies it.
void AddDesign(TJsonLine& ALine, const IDesignBeacon& ABeacon) {
  ALine.Text("beacon", ABeacon.GetName());
  ALine.Text("kind", NameOf(ABeacon.GetKindofBeacon()));
  if (ABeacon.GetKindofBeacon() == TKindofBeacon::Eddystone) {
    ALine.Text("namespace", ABeacon.GetEddyNamespace());
    ALine.Text("instance", ABeacon.GetEddyInstance());
  } else {
    ALine.Text("uuid", GUIDToString(ABeacon.GetGUID()));
    ALine.Number("major", ABeacon.GetMajor()).Number("minor", ABeacon.GetMinor());
  }
}

/// The index of the map that a zone belongs to, -1 for none.
int MapOf(const TFencingProject& AProject, const TRef<IDesignZone>& AZone) {
  for (std::size_t I = 0; I < AProject.Maps.GetLength(); ++I) {
    const auto& Zones = AProject.Maps[I].Zones;
    if (std::find(Zones.begin(), Zones.end(), AZone) != Zones.end()) return static_cast<int>(I);
  }
  return -1;
}

}  // namespace

TMapEvents::TMapEvents(TComponent& AComponent, TClock AClock, TSink ASink)
    : FComponent(AComponent),
      FClock(std::move(AClock)),
      FSink(std::move(ASink)),
      FMap(AComponent.GetMapIndex()) {
  ListenToBeacons();
  ListenToFrames();
  ListenToPositions();
}

void TMapEvents::ListenToBeacons() {
  FComponent.SetOnBeaconEnter([this](TObject*, const TFencingBeacon& ABeacon) {
    Tell(BeaconLine("BeaconEnter", ABeacon));
  });
  FComponent.SetOnBeaconExit(
      [this](TObject*, const TFencingBeacon& ABeacon) { Tell(BeaconLine("BeaconExit", ABeacon)); });
  FComponent.SetOnBeaconProximity([this](TObject*,
                                         const TFencingBeacon& ABeacon,
                                         const TRef<IDesignZone>& AZone,
                                         TBeaconProximity AProximity) {
    TJsonLine Line = BeaconLine("BeaconProximity", ABeacon);
    AddProximity(Line, AProximity);
    if (AZone) Line.Text("zone", AZone->GetName());
    Tell(Line);
  });
}

void TMapEvents::ListenToFrames() {
  FComponent.SetOnBeaconEddyURL(
      [this](TObject*, const TFencingBeacon& ABeacon, const TEddystoneURL& AURL) {
        Tell(BeaconLine("EddystoneURL", ABeacon).Text("url", AURL.URL));
      });
  FComponent.SetOnBeaconEddyTLM(
      [this](TObject*, const TFencingBeacon& ABeacon, const TEddystoneTLM& ATLM) {
        TJsonLine Line = BeaconLine("EddystoneTLM", ABeacon);
        AddTelemetry(Line, ATLM);
        Tell(Line);
      });
}

void TMapEvents::ListenToPositions() {
  FComponent.SetOnZoneEnter([this](TObject*, const TZoneRef& AZone) { Zone("ZoneEnter", AZone); });
  FComponent.SetOnZoneExit([this](TObject*, const TZoneRef& AZone) { Zone("ZoneExit", AZone); });
  FComponent.SetOnPositionEstimated(
      [this](const TPointF& ARaw, const TPointF& APath) { Position(ARaw, APath); });
  FComponent.SetOnBeforeMapChange([this](TObject*, int, int AMap, bool&) {
    FTimeOfChange = FClock();
    FAskedFor = AMap;
  });
  FComponent.SetOnArrivedToPOI([this](TObject*, const TBeaconFencingPOI& APoi) {
    Tell(TJsonLine(FClock(), "ArrivedToPOI").Text("poi", APoi.Name).Number("map", APoi.MapIndex));
  });
}

/// The service tells before it changes the map, and the user does not tell.
void TMapEvents::TellMapChange() {
  const int Map = FComponent.GetMapIndex();
  const int From = std::exchange(FMap, Map);
  if (Map == From) return;
  const double Time = FAskedFor == Map ? FTimeOfChange : FClock();
  FSink(TJsonLine(Time, "MapChange").Number("from", From).Number("to", Map));
}

void TMapEvents::Tell(const TJsonLine& ALine) {
  TellMapChange();
  FSink(ALine);
}

void TMapEvents::Zone(const char* AEvent, const TZoneRef& AZone) {
  TJsonLine Line(FClock(), AEvent);
  Line.Text("zone", AZone->GetName());
  const int Map = MapOf(FComponent.GetProjectInformation(), AZone);
  if (Map >= 0) Line.Number("map", Map);
  Tell(Line);
}

TJsonLine TMapEvents::BeaconLine(const char* AEvent, const TFencingBeacon& ABeacon) {
  TJsonLine Result(FClock(), AEvent);
  AddDesign(Result, *ABeacon.DesignBeacon);
  return Result;
}

void TMapEvents::Position(const TPointF& ARaw, const TPointF& APath) {
  TellMapChange();
  Tell(TJsonLine(FClock(), "Position")
           .Number("map", FMap)
           .Decimal("x", ARaw.X)
           .Decimal("y", ARaw.Y)
           .Decimal("pathX", APath.X)
           .Decimal("pathY", APath.Y));
  if (OnPosition) OnPosition();
}

}  // namespace Wayfence
