// Which zones lie where one looks.
#pragma once

#include <cstdint>
#include <mutex>
#include <unordered_map>
#include <vector>

#include "fencing/System.Beacon.Fencing.Types.h"
#include "scene/System.Beacon.Fencing.Scene.Classes.h"
#include "scene/rect_grid.h"

namespace System::Beacon::Fencing {

/// Finds zones by their bounds, which follow what the zones, and what they are parts of, announce
/// about their places. Zones of a class that it does not know are always found; nothing is any more
/// once a zone, or what it is a part of, has got another parent.
///
/// Made and released on the main thread, where the nodes change; asked on any. Keeps the nodes.
class TZoneFinder final : public TInterfacedObject, public virtual IZoneFinder {
 public:
  explicit TZoneFinder(const TArray<TRef<IDesignZone>>& AZones);
  ~TZoneFinder() override;

  bool FindNear(const TArray<TRef<IDesignZone>>& AZones,
                TPointF APoint,
                std::vector<std::int32_t>& AnIndexes) const override;

 private:
  void Watch(std::int32_t AnIndex);
  void Place(std::int32_t AnIndex);
  void Changed(Scene::INode* ANode);
  void Moved(Scene::ISceneNode* ANode) { Changed(ANode); }
  void ChangedRect(Scene::ISceneNode* ANode, const TRectF&, const TRectF&) { Changed(ANode); }
  void ChangedParent(Scene::INode*, Scene::INode*, Scene::INode*);

  const TArray<TRef<IDesignZone>> FZones;
  /// What is watched, with the zones that are parts of it.
  std::unordered_map<Scene::TSceneNode*, std::vector<std::int32_t>> FNodes;
  std::vector<TRef<Scene::TSceneNode>> FKept;

  mutable std::mutex FLock;  // guards what follows
  Scene::TRectGrid FGrid;
  std::vector<std::int32_t> FAlwaysFound;  // in ascending order
  bool FCanTell = true;
};

}  // namespace System::Beacon::Fencing
