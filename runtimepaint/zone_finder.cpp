#include "runtimepaint/zone_finder.h"

#include <algorithm>
#include <optional>
#include <typeinfo>

#include "map/System.Beacon.Fencing.Scene.Beacons.h"
#include "scene/child_index.h"

namespace System::Beacon::Fencing {
namespace {

namespace Map = Scene::Beacons;
using Scene::TSceneNode;

/// Whether nothing outside a zone's rectangle is in the zone: true of these, not of all that derive
/// from them.
bool IsWithinItsRect(const TSceneNode& AZone) {
  const std::type_info& Class = typeid(AZone);
  return Class == typeid(Map::TZone) || Class == typeid(Map::TCircularZone) ||
         Class == typeid(Map::TPathZone);
}

/// What holds every point of global space that is in a zone, as the zone computes it; nothing where
/// that cannot be said.
std::optional<TRectF> BoundsOf(const TSceneNode* AZone) {
  if (!AZone || !IsWithinItsRect(*AZone)) return std::nullopt;
  const Scene::ISceneNode* const Parent = AZone->GetSceneParent();
  const TMatrix ParentMatrix = Parent ? Parent->GetGlobalMatrix() : TMatrix::Identity();
  const TMatrix Local = AZone->GetLocalMatrix(), Global = ParentMatrix * Local;
  if (!Scene::IsWellConditioned(Global)) return std::nullopt;
  const float Reach = Scene::ReachThrough(Scene::ReachThrough(0.0F, ParentMatrix), Local);
  return Scene::RectThrough(AZone->GetRect(), Global, Reach);
}

}  // namespace

TZoneFinder::TZoneFinder(const TArray<TRef<IDesignZone>>& AZones) : FZones(AZones) {
  for (std::size_t I = 0; I < FZones.GetLength(); ++I) {
    Watch(static_cast<std::int32_t>(I));
    Place(static_cast<std::int32_t>(I));
  }
  for (const auto& [Node, Zones] : FNodes) FKept.emplace_back(Node);
}

TZoneFinder::~TZoneFinder() {
  for (const TRef<TSceneNode>& Node : FKept) Node->DisconnectEventObject(this);
}

bool TZoneFinder::FindNear(const TArray<TRef<IDesignZone>>& AZones,
                           TPointF APoint,
                           std::vector<std::int32_t>& AnIndexes) const {
  if (!AZones.IsSameAs(FZones)) return false;
  {
    const std::lock_guard Guard(FLock);
    if (!FCanTell || !FGrid.Find(Scene::AreaOf(APoint).Rect, AnIndexes)) return false;
    AnIndexes.insert(AnIndexes.end(), FAlwaysFound.begin(), FAlwaysFound.end());
  }
  std::sort(AnIndexes.begin(), AnIndexes.end());
  return true;
}

// ---------------------------------------------------------------- places

/// Listens to a zone and to all that it is a part of.
void TZoneFinder::Watch(std::int32_t AnIndex) {
  auto* Node = Supports<TSceneNode>(FZones[static_cast<std::size_t>(AnIndex)]);
  for (; Node; Node = Supports<TSceneNode>(Node->GetSceneParent())) {
    std::vector<std::int32_t>& Zones = FNodes[Node];
    Zones.push_back(AnIndex);
    if (Zones.size() > 1) continue;
    Node->ConnectDidMove(Bind<&TZoneFinder::Moved>(this));
    Node->ConnectParentChange(Bind<&TZoneFinder::ChangedParent>(this));
    if (auto* const Shape = Supports<Scene::IShape>(Node))
      Shape->ConnectRectChange(Bind<&TZoneFinder::ChangedRect>(this));
  }
}

void TZoneFinder::Place(std::int32_t AnIndex) {
  const std::optional<TRectF> Bounds =
      BoundsOf(Supports<TSceneNode>(FZones[static_cast<std::size_t>(AnIndex)]));
  const std::lock_guard Guard(FLock);
  const auto At = std::lower_bound(FAlwaysFound.begin(), FAlwaysFound.end(), AnIndex);
  const bool WasAlwaysFound = At != FAlwaysFound.end() && *At == AnIndex;
  const bool IsAlwaysFound = !Bounds || !FGrid.Put(AnIndex, *Bounds);
  if (IsAlwaysFound) FGrid.Remove(AnIndex);
  if (IsAlwaysFound && !WasAlwaysFound) FAlwaysFound.insert(At, AnIndex);
  if (!IsAlwaysFound && WasAlwaysFound) FAlwaysFound.erase(At);
}

void TZoneFinder::Changed(Scene::INode* ANode) {
  auto* const Node = Supports<TSceneNode>(ANode);
  const auto Found = FNodes.find(Node);
  if (Found == FNodes.end()) return;
  for (const std::int32_t Index : Found->second) Place(Index);
}

void TZoneFinder::ChangedParent(Scene::INode*, Scene::INode*, Scene::INode*) {
  const std::lock_guard Guard(FLock);
  FCanTell = false;
}

}  // namespace System::Beacon::Fencing
