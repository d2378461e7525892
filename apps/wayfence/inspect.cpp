// wayfence inspect: a project as the map component works on it.
#include <cstdio>
#include <nlohmann/json.hpp>

#include "apps/wayfence/commands.h"
#include "apps/wayfence/project_file.h"
#include "map/System.Beacon.Fencing.Scene.Beacons.h"

namespace Wayfence {

using namespace System;
using namespace System::Beacon;
using namespace System::Beacon::Fencing;
using TJson = nlohmann::ordered_json;

namespace {

TJson PointOf(TPointF APoint) {
  return {APoint.X, APoint.Y};
}

template <class TEnum>
std::string NameOf(TEnum AValue) {
  return std::string(TEnumNames<TEnum>::Names[static_cast<std::size_t>(AValue)]);
}

/// What identifies a beacon, by its kind.
void AddIdentity(TJson& AResult, const IDesignBeacon& ABeacon) {
  AResult["kind"] = NameOf(ABeacon.GetKindofBeacon());
  if (ABeacon.GetKindofBeacon() == TKindofBeacon::Eddystone) {
    AResult["namespace"] = ABeacon.GetEddyNamespace();
    AResult["instance"] = ABeacon.GetEddyInstance();
    return;
  }
  AResult["uuid"] = GUIDToString(ABeacon.GetGUID());
  AResult["major"] = ABeacon.GetMajor();
  AResult["minor"] = ABeacon.GetMinor();
  if (ABeacon.GetMID() >= 0) AResult["manufacturer"] = ABeacon.GetMID();
}

TJson BeaconOf(const IDesignBeacon& ABeacon) {
  TJson Result{{"name", ABeacon.GetName()}, {"at", PointOf(ABeacon.GetCenterInGlobalSpace())}};
  AddIdentity(Result, ABeacon);
  Result["positioning"] = ABeacon.GetUseToPositioning();
  return Result;
}

TJson RectOf(const TRectF& ARect) {
  return {ARect.Left, ARect.Top, ARect.Right, ARect.Bottom};
}

TJson MapOf(const TFencingMap& AMap) {
  TJson Result{{"name", AMap.Map->GetName()}, {"rect", RectOf(AMap.Map->GetGlobalRect())}};
  if (const auto* Units = Supports<IDesignMapUnits>(AMap.Map.Get()))
    Result["units"] = NameOf(Units->GetMeasureUnits());
  Result["beacons"] = TJson::array();
  for (const TFencingBeacon& Beacon : AMap.BeaconList)
    Result["beacons"].push_back(BeaconOf(*Beacon.DesignBeacon));
  Result["zones"] = TJson::array();
  for (const TRef<IDesignZone>& Zone : AMap.Zones)
    Result["zones"].push_back({{"name", Zone->GetName()}, {"rect", RectOf(Zone->GetGlobalRect())}});
  return Result;
}

TJson PoiOf(const TBeaconFencingPOI& APoi) {
  TJson Result{{"name", APoi.Name},
               {"type", NameOf(APoi.PoiType)},
               {"map", APoi.MapIndex},
               {"at", PointOf(APoi.Position)}};
  for (const auto& [Key, Value] : APoi.Information)
    Result["information"].push_back({{"key", Key}, {"value", Value}});
  return Result;
}

TJson RegionOf(const TBeaconsRegion& ARegion) {
  TJson Result{{"kind", NameOf(ARegion.KindofBeacon)}};
  if (ARegion.KindofBeacon == TKindofBeacon::Eddystone) {
    Result["namespace"] = ARegion.EddysUIDRegion.GetNamespaceST();
    if (ARegion.EddysUIDRegion.HasInstance)
      Result["instance"] = ARegion.EddysUIDRegion.GetInstanceST();
    return Result;
  }
  const TiBAltBeaconRegion& Part = ARegion.iBAltBeaconRegion;
  Result["uuid"] = GUIDToString(Part.GUID);
  if (Part.Major) Result["major"] = *Part.Major;
  if (Part.Minor) Result["minor"] = *Part.Minor;
  if (Part.ManufacturerID >= 0) Result["manufacturer"] = Part.ManufacturerID;
  return Result;
}

TJson GraphOf(const TFencingProject& AProject) {
  TJson Result{{"nodes", TJson::array()}, {"edges", TJson::array()}};
  for (const TPathNodeInfo& Info : AProject.GlobalPath)
    Result["nodes"].push_back({{"name", Info.Node ? Info.Node->GetName() : std::string()},
                               {"map", Info.MapIndex},
                               {"at", PointOf(Info.GlobalPosition)}});
  for (const auto& [From, To] : AProject.Graph.GetPathEdges())
    Result["edges"].push_back({From, To});
  return Result;
}

}  // namespace

int RunInspect(const TInspectArguments& AArguments) {
  const TProjectFile File = OpenProject(AArguments.Project);
  const TFencingProject Project = ExtractFrom(File);
  TJson Result{{"name", Project.ProjectName}};
  for (const char* Name : {"maps", "pois", "graph", "regions"}) Result[Name] = TJson::array();
  for (const TFencingMap& Map : Project.Maps) Result["maps"].push_back(MapOf(Map));
  for (const TBeaconFencingPOI& Poi : Project.PoiList.PoiList) Result["pois"].push_back(PoiOf(Poi));
  Result["graph"] = GraphOf(Project);
  for (const TBeaconsRegion& Region : Project.RegionsToMonitorize)
    Result["regions"].push_back(RegionOf(Region));
  std::puts(Result.dump(2, ' ', false, TJson::error_handler_t::replace).c_str());
  return ExitDone;
}

}  // namespace Wayfence
