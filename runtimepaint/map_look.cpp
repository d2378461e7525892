#include "runtimepaint/map_look.h"

#include <array>

#include "map/System.Beacon.Fencing.Scene.Beacons.h"
#include "runtimepaint/nodes_below.h"

namespace System::Beacon::Fencing {
namespace {

namespace Map = Scene::Beacons;
using Map::TBeaconVisualizationMode;

Map::TBeaconVisualizationSet LookOfBeacons(TFencingMapOptions AOptions) {
  if (!AOptions.Contains(TFencingMapOption::ShowBeacons)) return {};
  if (!AOptions.Contains(TFencingMapOption::ShowBeaconSignal))
    return {TBeaconVisualizationMode::SolidCircle};
  return {TBeaconVisualizationMode::SolidCircle, TBeaconVisualizationMode::SignalDistance};
}

}  // namespace

void Show(Scene::INode& ANode, bool AIsShown) {
  constexpr std::array Modes{Scene::TMode::Visible};
  AIsShown ? ANode.EnableModes(Modes) : ANode.DisableModes(Modes);
}

void ApplyMapLook(Scene::INode& AMap, TFencingMapOptions AOptions) {
  const bool ShowsZones = AOptions.Contains(TFencingMapOption::ShowZones);
  const bool ShowsPaths = AOptions.Contains(TFencingMapOption::ShowPaths);
  for (const TRef<Map::TBeacon>& Beacon : NodesBelow<Map::TBeacon>(&AMap))
    Beacon->SetVisualizationMode(LookOfBeacons(AOptions));
  for (const TRef<IDesignZone>& Zone : NodesBelow<IDesignZone>(&AMap))
    if (auto* const Shown = Supports<Scene::INode>(Zone)) Show(*Shown, ShowsZones);
  for (const TRef<Map::IMapPath>& Path : NodesBelow<Map::IMapPath>(&AMap)) Show(*Path, ShowsPaths);
}

}  // namespace System::Beacon::Fencing
