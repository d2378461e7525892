#include "runtimepaint/zone_highlight.h"

#include <utility>

#include "runtimepaint/nodes_below.h"

namespace System::Beacon::Fencing {
namespace {

constexpr float OpacityOfZones = 0.5F;
constexpr float OpacityOfHighLitZones = 0.75F;

}  // namespace

void TZoneHighlight::Show(std::span<const TRef<IDesignZone>> AZones) {
  if (FRevision != FScene.GetRevision()) FindZones();
  TZones HighLit;
  for (const TRef<IDesignZone>& Zone : AZones)
    if (Zone && FNodes.contains(Zone->GetObject())) HighLit.insert(Zone->GetObject());
  for (const TObject* const Zone : FHighLit)
    if (!HighLit.contains(Zone)) FNodes.at(Zone)->SetOpacity(OpacityOfZones);
  for (const TObject* const Zone : HighLit) FNodes.at(Zone)->SetOpacity(OpacityOfHighLitZones);
  FHighLit = std::move(HighLit);
  FRevision = FScene.GetRevision();
}

/// All of them count as lit up: what they look like is not known.
void TZoneHighlight::FindZones() {
  FNodes.clear();
  FHighLit.clear();
  for (const TRef<IDesignMap>& Floor : NodesBelow<IDesignMap>(&FScene))
    for (const TRef<IDesignZone>& Zone : NodesBelow<IDesignZone>(Supports<Scene::INode>(Floor)))
      if (auto* const Node = Supports<Scene::ISceneNode>(Zone)) {
        FNodes.emplace(Zone->GetObject(), Node);
        FHighLit.insert(Zone->GetObject());
      }
}

}  // namespace System::Beacon::Fencing
