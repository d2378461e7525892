// Zones that are lit up.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <unordered_map>
#include <unordered_set>

#include "fencing/System.Beacon.Fencing.Types.h"
#include "scene/System.Beacon.Fencing.Scene.Classes.h"

namespace System::Beacon::Fencing {

/// Lights up zones of the maps of a scene. The zones are looked up once, and again when the scene
/// has changed; what is lit up already is left alone. Looks at the scene. Scene thread.
class TZoneHighlight {
 public:
  explicit TZoneHighlight(Scene::TScene& AScene) : FScene(AScene) {}

  /// Lights up the given zones, and no other.
  void Show(std::span<const TRef<IDesignZone>> AZones);

 private:
  using TZones = std::unordered_set<const TObject*>;

  void FindZones();

  Scene::TScene& FScene;
  std::optional<std::uint32_t> FRevision;  // of the scene that the rest is true of
  std::unordered_map<const TObject*, Scene::ISceneNode*> FNodes;
  TZones FHighLit;
};

}  // namespace System::Beacon::Fencing
