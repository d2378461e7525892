#include "runtimepaint/project_extraction.h"

#include <fmt/format.h>

#include <array>
#include <unordered_map>
#include <utility>
#include <vector>

#include "map/System.Beacon.Fencing.Scene.Beacons.h"
#include "map/node_names.h"
#include "platform/errors.h"
#include "runtimepaint/messages.h"
#include "runtimepaint/monitored_regions.h"
#include "runtimepaint/nodes_below.h"
#include "runtimepaint/zone_finder.h"

namespace System::Beacon::Fencing {
namespace {

using Scene::INode;
using Scene::TMode;
namespace Map = Scene::Beacons;

/// The description list of a node; an error names the node.
template <class TPlace>
TArray<TStringPair> InformationOf(TPlace& APlace) {
  try {
    return TArray<TStringPair>(Map::StringToDescriptionList(APlace.GetInformationItems()));
  } catch (const EConvertError& Error) {
    INode* const Node = Supports<INode>(&APlace);
    throw EConvertError(fmt::format(Messages::SNoDescription,
                                    Node ? Map::PlaceInScene(*Node) : APlace.GetName(),
                                    Error.what()));
  }
}

template <class TPlace>
void RequireInformation(Scene::TScene& AScene) {
  for (const TRef<TPlace>& Place : NodesBelow<TPlace>(&AScene)) InformationOf(*Place);
}

/// Takes a scene apart, step by step.
class TExtraction {
 public:
  explicit TExtraction(Scene::TScene& AScene) : FScene(AScene) {}

  TFencingProject Run() {
    FResult.Source = &FScene;
    FResult.ProjectName = FScene.GetName();
    FMaps = NodesBelow<IDesignMap>(&FScene);
    for (std::size_t I = 0; I < FMaps.size(); ++I)
      FMapIndexes.emplace(FMaps[I]->GetObject(), static_cast<std::int32_t>(I));
    AddPaths();
    AddMaps();
    ShowFirstMap();
    if (!FMaps.empty()) FResult.SetCurrentMapIndex(0);
    return std::move(FResult);
  }

 private:
  std::int32_t IndexOf(const IDesignMap* AMap) const {
    const auto Found = AMap ? FMapIndexes.find(AMap->GetObject()) : FMapIndexes.end();
    return Found == FMapIndexes.end() ? -1 : Found->second;
  }

  template <class TPlace>
  void AddPoi(TPlace& APlace, TPOIType AType, std::int32_t AMapIndex) {
    TBeaconFencingPOI Poi;
    Poi.Name = APlace.GetName();
    Poi.Position = APlace.GetCenterInGlobalSpace();
    Poi.Information = InformationOf(APlace);
    Poi.MapIndex = AMapIndex;
    Poi.PoiType = AType;
    FResult.PoiList.AddPOI(Poi);
  }

  void AddPaths() {
    TArray<TPathEdge> Edges;
    Map::GetAllPaths(&FScene, FResult.GlobalPath, Edges);
    std::vector<TPathPoint> Points;
    Points.reserve(FResult.GlobalPath.GetLength());
    for (TPathNodeInfo& Info : FResult.GlobalPath) {
      Info.MapIndex = IndexOf(Info.Map.Get());
      // A link may lead to a shape that is no path node: a beacon, a zone.
      if (Info.Node) AddPoi(*Info.Node, TPOIType::poiPathNode, Info.MapIndex);
      Points.push_back({Info.GlobalPosition, Info.MapIndex});
    }
    FResult.Graph.Initialize(TArray<TPathPoint>(std::move(Points)), Edges);
  }

  void AddMaps() {
    TMonitoredRegions Regions;
    std::vector<TFencingMap> Maps;
    for (std::size_t I = 0; I < FMaps.size(); ++I)
      Maps.push_back(MakeMap(FMaps[I], static_cast<std::int32_t>(I), Regions));
    FResult.Maps = TArray<TFencingMap>(std::move(Maps));
    FResult.RegionsToMonitorize = TArray<TBeaconsRegion>(Regions.GetRegions());
  }

  TFencingMap MakeMap(const TRef<IDesignMap>& AMap,
                      std::int32_t AIndex,
                      TMonitoredRegions& ARegions) {
    TFencingMap Result;
    Result.Map = AMap;
    INode* const Node = Supports<INode>(AMap.Get());
    std::vector<TFencingBeacon> Beacons;
    for (TRef<IDesignBeacon>& Beacon : NodesBelow<IDesignBeacon>(Node)) {
      ARegions.Add(*Beacon);
      AddPoi(*Beacon, TPOIType::poiBeacon, AIndex);
      Beacons.push_back({.BTBeacon = nullptr, .DesignBeacon = std::move(Beacon)});
    }
    Result.BeaconList = TFencingBeacons(std::move(Beacons));
    Result.Zones = TArray<TRef<IDesignZone>>(NodesBelow<IDesignZone>(Node));
    for (const TRef<IDesignZone>& Zone : Result.Zones) AddPoi(*Zone, TPOIType::poiZone, AIndex);
    Result.ZoneFinder = New<TZoneFinder>(Result.Zones);
    return Result;
  }

  void ShowFirstMap() {
    constexpr std::array Modes{TMode::Visible, TMode::Active};
    for (std::size_t I = 0; I < FMaps.size(); ++I) {
      auto* const Shown = Supports<Map::IMap>(FMaps[I].Get());
      if (Shown) I == 0 ? Shown->EnableModes(Modes) : Shown->DisableModes(Modes);
    }
  }

  Scene::TScene& FScene;
  TFencingProject FResult;
  std::vector<TRef<IDesignMap>> FMaps;
  std::unordered_map<const TObject*, std::int32_t> FMapIndexes;
};

}  // namespace

void RequireReadableInformation(Scene::TScene& AScene) {
  RequireInformation<IDesignShape>(AScene);
  RequireInformation<IDesignBeacon>(AScene);
  RequireInformation<IDesignZone>(AScene);
}

TFencingProject ExtractProject(Scene::TScene& AScene) {
  return TExtraction(AScene).Run();
}

}  // namespace System::Beacon::Fencing
