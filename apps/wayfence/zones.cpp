// wayfence zones: the zone component on a source.
#include <cstdio>
#include <string>

#include "apps/wayfence/beacon_fields.h"
#include "apps/wayfence/commands.h"
#include "apps/wayfence/component_loading.h"
#include "apps/wayfence/source.h"
#include "fencing/System.Beacon.Fencing.h"

namespace Wayfence {

using namespace System;
using namespace System::Beacon;
using namespace System::Beacon::Fencing;

namespace {

/// Prints what a zone component reports, one line an event.
class TZonePrinter {
 public:
  TZonePrinter(TBeaconZonesFencing& AComponent, const TWatchedSource& ASource) : FSource(ASource) {
    ConnectBeacons(AComponent);
    ConnectZones(AComponent);
    ConnectFrames(AComponent);
  }

 private:
  using TBeaconRef = TRef<IBeacon>;

  TJsonLine Line(std::string_view AEvent) const { return {FSource.GetSeconds(), AEvent}; }

  void PrintBeacon(std::string_view AEvent, const TBeaconRef& ABeacon) const {
    TJsonLine Result = Line(AEvent);
    AddBeacon(Result, *ABeacon);
    Result.Print();
  }
  TJsonLine ZoneLine(std::string_view AEvent,
                     const TBeaconZoneItem& AZone,
                     const IBeacon& ABeacon) const {
    TJsonLine Result = Line(AEvent);
    Result.Text("zone", AZone.GetDisplayName());
    AddBeacon(Result, ABeacon);
    return Result;
  }

  void ConnectBeacons(TBeaconZonesFencing& AComponent) {
    AComponent.SetOnBeaconEnter([this](TObject*, const TBeaconRef& ABeacon, const TBeaconList&) {
      PrintBeacon("BeaconEnter", ABeacon);
    });
    AComponent.SetOnBeaconExit([this](TObject*, const TBeaconRef& ABeacon, const TBeaconList&) {
      PrintBeacon("BeaconExit", ABeacon);
    });
    AComponent.SetOnBeaconProximity([this](TObject*, const TBeaconRef& ABeacon, TBeaconProximity) {
      PrintBeacon("BeaconProximity", ABeacon);
    });
  }

  void ConnectZones(TBeaconZonesFencing& AComponent) {
    AComponent.SetOnZoneBeaconEnter([this](TObject*,
                                           const TBeaconRef& ABeacon,
                                           TBeaconZoneItem* AZone,
                                           TBeaconItem* AItem) {
      ZoneLine("ZoneBeaconEnter", *AZone, *ABeacon).Text("item", AItem->GetDisplayName()).Print();
    });
    AComponent.SetOnZoneBeaconExit([this](TObject*,
                                          const TBeaconRef& ABeacon,
                                          TBeaconZoneItem* AZone,
                                          TBeaconItem* AItem) {
      ZoneLine("ZoneBeaconExit", *AZone, *ABeacon).Text("item", AItem->GetDisplayName()).Print();
    });
    AComponent.SetOnZoneBeaconProximity([this](TObject*,
                                               const TBeaconRef& ABeacon,
                                               TBeaconZoneItem* AZone,
                                               TBeaconItem* AItem,
                                               TBeaconProximity) {
      ZoneLine("ZoneBeaconProximity", *AZone, *ABeacon)
          .Text("item", AItem->GetDisplayName())
          .Print();
    });
    AComponent.SetOnZoneEnter([this](TObject*, const TBeaconRef& ABeacon, TBeaconZoneItem* AZone) {
      ZoneLine("ZoneEnter", *AZone, *ABeacon).Print();
    });
    AComponent.SetOnZoneExit([this](TObject*, const TBeaconRef& ABeacon, TBeaconZoneItem* AZone) {
      ZoneLine("ZoneExit", *AZone, *ABeacon).Print();
    });
  }

  void ConnectFrames(TBeaconZonesFencing& AComponent) {
    AComponent.SetOnBeaconEddyURL([this](TObject*,
                                         const TBeaconRef& ABeacon,
                                         TBeaconZoneItem* AZone,
                                         TBeaconItem* AItem,
                                         TEddystoneURL& AURL) {
      ZoneLine("EddystoneURL", *AZone, *ABeacon)
          .Text("item", AItem->GetDisplayName())
          .Text("url", AURL.URL)
          .Print();
    });
    AComponent.SetOnBeaconEddyTLM([this](TObject*,
                                         const TBeaconRef& ABeacon,
                                         TBeaconZoneItem* AZone,
                                         TBeaconItem* AItem,
                                         TEddystoneTLM& ATLM) {
      TJsonLine Result = ZoneLine("EddystoneTLM", *AZone, *ABeacon);
      Result.Text("item", AItem->GetDisplayName());
      AddTelemetry(Result, ATLM);
      Result.Print();
    });
  }

  const TWatchedSource& FSource;
};

void PrintStarted(const TBeaconZonesFencing& AComponent) {
  std::string Regions;
  for (const TBeaconsRegion& Region : AComponent.GetBeaconRegionsToMonitorize())
    Regions += (Regions.empty() ? "" : ", ") + RegionToJson(Region);
  TJsonLine(0.0, "Started").Json("regions", "[" + Regions + "]").Print();
  std::fflush(stdout);
}

void PrintFinished(const TBeaconZonesFencing& AComponent, double ASeconds) {
  const TScanStatistics Counts = AComponent.GetScanStatistics();
  TJsonLine(ASeconds, "Finished")
      .Number("advertisements", static_cast<std::int64_t>(Counts.Advertisements))
      .Number("sightings", static_cast<std::int64_t>(Counts.Sightings))
      .Number("malformed", static_cast<std::int64_t>(Counts.Malformed))
      .Decimal("seconds", ASeconds)
      .Print();
}

int PrintRegions(const std::string& AFileName) {
  TBeaconZonesFencing Component;
  LoadStopped(Component, AFileName);
  for (const TBeaconsRegion& Region : Component.GetBeaconRegionsToMonitorize())
    std::printf("%s\n", RegionToJson(Region).c_str());
  return ExitDone;
}

}  // namespace

int RunZones(const TZonesArguments& AArguments) {
  if (AArguments.OnlyRegions) return PrintRegions(AArguments.ComponentFile);
  TRun Run = OpenRun(AArguments.From);
  TBeaconZonesFencing Component;
  LoadStopped(Component, AArguments.ComponentFile);
  Component.SetSource(Run.Source);
  const TZonePrinter Printer(Component, *Run.Source);
  if (Run.Source->IsLive()) std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
  PrintStarted(Component);
  Component.SetEnabled(true);
  WaitForEnd(Run);
  const double Seconds = Run.Source->GetSeconds();
  Component.SetEnabled(false);
  PrintFinished(Component, Seconds);
  Run.Source->ReportProblems();
  Run.Source->RaiseError();
  return ExitDone;
}

}  // namespace Wayfence
