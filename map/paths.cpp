// The graph of all paths of a scene.
#include <unordered_map>

#include "map/System.Beacon.Fencing.Scene.Beacons.h"
#include "map/node_names.h"
#include "scene/System.Beacon.Fencing.Scene.Helpers.h"

namespace System::Beacon::Fencing::Scene::Beacons {
namespace {

template <class T>
void CollectIf(INode* ANode, std::vector<TRef<T>>& ANodes) {
  if (auto* Found = Supports<T>(ANode)) ANodes.emplace_back(Found);
}

/// By control point; nothing where there is no shape.
std::vector<TRef<IShape>> ShapesOf(IMapPath& APath) {
  std::vector<TRef<IShape>> Result;
  for (const TRef<IPathNode>& Node : APath.GetControlPointNodes())
    Result.emplace_back(Supports<IShape>(Node));
  return Result;
}

/// The node itself or the nearest one above it that is a `T`.
template <class T>
T* NearestAbove(INode* ANode) {
  while (ANode && !Supports<T>(ANode)) ANode = ANode->GetParent();
  return Supports<T>(ANode);
}

/// Among the children of its parent; -1 without one.
std::int32_t IndexInParent(INode* ANode) {
  INode* const Parent = ANode ? ANode->GetParent() : nullptr;
  return Parent ? Parent->GetChildIndex(ANode) : -1;
}

/// A map and a path on it, or neither, with their indexes: what vertices of one place share.
struct TPlace {
  TRef<IDesignMap> Map;
  std::int32_t MapIndex = -1;
  TRef<IDesignMapPath> Path;
  std::int32_t PathIndex = -1;

  TPlace(INode* AMap, INode* APath)
      : Map(Supports<IDesignMap>(AMap)),
        MapIndex(IndexInParent(AMap)),
        Path(Supports<IDesignMapPath>(APath)),
        PathIndex(IndexInParent(APath)) {}
};

/// Collects vertices and edges.
class TGraphOfPaths {
 public:
  void AddPath(IMap& AMap, IMapPath& APath) {
    const TPlace Place(&AMap, &APath);
    const std::vector<TRef<IShape>> Shapes = ShapesOf(APath);
    const auto ShapeAt = [&Shapes](std::int32_t AnIndex) {
      const auto Index = static_cast<std::size_t>(AnIndex);
      return Index < Shapes.size() ? Shapes[Index].Get() : nullptr;
    };
    for (const auto& [From, To] : APath.GetConnections()) {
      IShape* const A = ShapeAt(From);
      IShape* const B = ShapeAt(To);
      if (!A || !B) continue;
      const std::int32_t Start = Vertex(*A, Place, From);
      FEdges.emplace_back(Start, Vertex(*B, Place, To));
    }
  }

  void AddLinks(const IConnectingNodes& ANodes, const TNodesByName& AByName) {
    for (const auto& [From, To] : ANodes.GetConnections()) {
      auto* const A = Supports<IShape>(AByName.Find(From));
      auto* const B = Supports<IShape>(AByName.Find(To));
      if (!A || !B) continue;
      const std::int32_t Start = LinkedVertex(*A);
      FEdges.emplace_back(Start, LinkedVertex(*B));
    }
  }

  TArray<TPathNodeInfo> TakeInfos() { return TArray<TPathNodeInfo>(std::move(FInfos)); }
  TArray<TPathEdge> TakeEdges() { return TArray<TPathEdge>(std::move(FEdges)); }

 private:
  /// The number of the vertex of the node's name, which may be another node's already.
  std::int32_t Vertex(IShape& ANode, const TPlace& APlace, std::int32_t ANodeIndex) {
    const auto [Found, IsNew] =
        FVertices.try_emplace(ANode.GetName(), static_cast<std::int32_t>(FInfos.size()));
    if (IsNew)
      FInfos.push_back({ANode.GetCenterInGlobalSpace(),
                        APlace.MapIndex,
                        APlace.Map,
                        APlace.PathIndex,
                        APlace.Path,
                        ANodeIndex,
                        TRef<IDesignShape>(Supports<IDesignShape>(&ANode))});
    return Found->second;
  }

  std::int32_t LinkedVertex(IShape& ANode) {
    const auto Known = FVertices.find(ANode.GetName());
    if (Known != FVertices.end()) return Known->second;
    IMapPath* const Path = NearestAbove<IMapPath>(&ANode);
    const auto* const PathNode = Supports<IPathNode>(&ANode);
    const std::int32_t Slot = Path && PathNode ? Path->GetControlPointNodeIndex(PathNode) : -1;
    return Vertex(ANode, TPlace(NearestAbove<IMap>(&ANode), Path), Slot);
  }

  std::unordered_map<std::string, std::int32_t> FVertices;
  std::vector<TPathNodeInfo> FInfos;
  std::vector<TPathEdge> FEdges;
};

}  // namespace

void GetAllPaths(IScene* AScene, TArray<TPathNodeInfo>& AnInfos, TArray<TPathEdge>& AnEdges) {
  TGraphOfPaths Graph;
  std::vector<TRef<IMap>> Maps;
  std::vector<TRef<IConnectingNodes>> Links;
  TNodeHelper::Visit(AScene, [&](INode* ANode) {
    CollectIf(ANode, Maps);
    CollectIf(ANode, Links);
  });
  for (const TRef<IMap>& Map : Maps) {
    std::vector<TRef<IMapPath>> Paths;
    TNodeHelper::Visit(Map.Get(), [&Paths](INode* ANode) { CollectIf(ANode, Paths); });
    for (const TRef<IMapPath>& Path : Paths) Graph.AddPath(*Map, *Path);
  }
  if (!Links.empty()) {
    const TNodesByName ByName(AScene);
    for (const TRef<IConnectingNodes>& Each : Links) Graph.AddLinks(*Each, ByName);
  }
  AnInfos = Graph.TakeInfos();
  AnEdges = Graph.TakeEdges();
}

template <>
std::vector<TPointF> FilterPositions<TPointF>(std::span<const TPathNodeInfo> AnInfos) {
  std::vector<TPointF> Result;
  for (const TPathNodeInfo& Info : AnInfos) Result.push_back(Info.GlobalPosition);
  return Result;
}

template <>
std::vector<TPathPosition> FilterPositions<TPathPosition>(std::span<const TPathNodeInfo> AnInfos) {
  std::vector<TPathPosition> Result;
  for (const TPathNodeInfo& Info : AnInfos)
    Result.push_back({Info.MapIndex, Info.PathIndex, Info.NodeIndex});
  return Result;
}

}  // namespace System::Beacon::Fencing::Scene::Beacons
