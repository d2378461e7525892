#include <algorithm>
#include <unordered_map>

#include "map/System.Beacon.Fencing.Scene.Beacons.h"
#include "map/route_line.h"
#include "scene/name_case.h"

namespace System::Beacon::Fencing::Scene::Beacons {
namespace {

/// Counts while it lives.
class TCounted {
 public:
  explicit TCounted(int& ACount) : FCount(ACount) { ++FCount; }
  ~TCounted() { --FCount; }
  TCounted(const TCounted&) = delete;
  TCounted& operator=(const TCounted&) = delete;

 private:
  int& FCount;
};

void ChangedPlaceOf(ISceneNode* ANode) {
  if (auto* const Node = dynamic_cast<TSceneNode*>(ANode)) Node->ChangedExtent();
}

TDescriptionList DescriptionOf(const TRef<IPathNode>& ANode) {
  const auto* const Shape = Supports<IDesignShape>(ANode);
  return Shape ? StringToDescriptionList(Shape->GetInformationItems()) : TDescriptionList();
}

}  // namespace

const TClassInfo& TMapPath::ClassInfo() {
  static const TClassInfo Info{
      .Name = "System.Beacon.Fencing.Scene.Beacons.TMapPath",
      .Base = &TConnectedControlPointsShape::ClassInfo(),
      .Create = [] { return TRef<TInterfacedObject>(New<TMapPath>()); },
  };
  return Info;
}

// ---------------------------------------------------------------- slots

bool TMapPath::IsNodeInSlot(const IPathNode& ANode) const {
  const auto Index = static_cast<std::size_t>(ANode.GetControlPointIndex());
  return Index < FControlPointNodes.size() && IsSame(FControlPointNodes[Index].Get(), &ANode);
}

std::int32_t TMapPath::GetControlPointNodeIndex(const IPathNode* ANode) const {
  if (!ANode) return -1;
  if (IsNodeInSlot(*ANode)) return ANode->GetControlPointIndex();
  const auto Found = std::find_if(FControlPointNodes.begin(),
                                  FControlPointNodes.end(),
                                  [ANode](const auto& N) { return IsSame(N.Get(), ANode); });
  const bool IsThere = Found != FControlPointNodes.end();
  return IsThere ? static_cast<std::int32_t>(Found - FControlPointNodes.begin()) : -1;
}

TRef<IPathNode> TMapPath::GetControlPointNode(std::int32_t AIndex) {
  CorrectChildren();
  const auto Index = static_cast<std::size_t>(AIndex);
  return Index < FControlPointNodes.size() ? FControlPointNodes[Index] : nullptr;
}

TPathNodes TMapPath::GetControlPointNodes() {
  CorrectChildren();
  return FControlPointNodes;
}

/// Brings slots and control points in step.
void TMapPath::CorrectChildren() {
  if (FChangesOfPoints > 0 || GetLoadingChildren()) return;
  if (std::ssize(FControlPointNodes) == GetControlPointCount()) return;
  const TRef<TNode> Keep(this);
  const TCounted Change(FChangesOfPoints);
  DetachNodesWithoutPoint();
  PlaceChildren();
  for (std::size_t I = 0; I < FControlPointNodes.size(); ++I)
    if (!FControlPointNodes[I]) FillSlot(static_cast<std::int32_t>(I));
}

void TMapPath::DetachNodesWithoutPoint() {
  while (std::ssize(FControlPointNodes) > GetControlPointCount()) {
    const TRef<IPathNode> Node = std::move(FControlPointNodes.back());
    FControlPointNodes.pop_back();
    if (!Node) continue;
    Node->SetControlPointIndex(-1);
    Node->Detach();
  }
}

/// Puts every child that names a slot into it; the first of several that name the same one.
void TMapPath::PlaceChildren() {
  FControlPointNodes.assign(static_cast<std::size_t>(GetControlPointCount()), nullptr);
  for (std::int32_t I = 0; I < GetChildCount(); ++I) {
    const TRef<IPathNode> Node(Supports<IPathNode>(GetChildAt(I)));
    if (!Node) continue;
    const auto Index = static_cast<std::size_t>(Node->GetControlPointIndex());
    if (Index < FControlPointNodes.size() && !FControlPointNodes[Index])
      FControlPointNodes[Index] = Node;
    else
      Node->SetControlPointIndex(-1);
  }
}

/// Puts a new node into a slot; what handlers do meanwhile may have taken the slot away.
void TMapPath::FillSlot(std::int32_t AIndex) {
  const TRef<TMapPathNode> Node = New<TMapPathNode>();
  AddChild(Node);
  if (AIndex >= std::ssize(FControlPointNodes)) return;
  Node->SetControlPointIndex(AIndex);
  FControlPointNodes[static_cast<std::size_t>(AIndex)] = Node;
}

void TMapPath::SetChildren(const TNodes& AChildren) {
  const TRef<TNode> Keep(this);
  TConnectedControlPointsShape::SetChildren(AChildren);
  AdjustNodes();
}

// ---------------------------------------------------------------- points

bool TMapPath::AddControlPoint(TPointF APoint) {
  const TRef<TNode> Keep(this);
  CorrectChildren();
  {
    const TCounted Change(FChangesOfPoints);
    if (!TConnectedControlPointsShape::AddControlPoint(APoint)) return false;
  }
  const auto Slot = static_cast<std::int32_t>(FControlPointNodes.size());
  if (Slot >= GetControlPointCount()) return true;
  FControlPointNodes.emplace_back();
  FillSlot(Slot);
  return true;
}

bool TMapPath::RemoveControlPoint(std::int32_t AIndex) {
  if (!HasControlPoint(AIndex)) return false;
  const TRef<TNode> Keep(this);
  CorrectChildren();
  const TCounted Change(FChangesOfPoints);
  const TRef<IPathNode> Node = TakeOutNode(AIndex);
  TConnectedControlPointsShape::RemoveControlPoint(AIndex);
  if (!Node) return true;
  Node->SetControlPointIndex(-1);
  RemoveChild(Node.Get());
  return true;
}

void TMapPath::SetControlPointAt(std::int32_t AIndex, TPointF APoint) {
  if (HasControlPoint(AIndex) && std::ssize(FControlPointNodes) == GetControlPointCount())
    ChangedPlaceOf(FControlPointNodes[static_cast<std::size_t>(AIndex)].Get());
  else
    ChangedPlacesOfNodes();
  TConnectedControlPointsShape::SetControlPointAt(AIndex, APoint);
}

void TMapPath::SetControlPoints(std::span<const TPointF> APoints) {
  ChangedPlacesOfNodes();
  TConnectedControlPointsShape::SetControlPoints(APoints);
}

void TMapPath::SetRect(const TRectF& ARect) {
  ChangedPlacesOfNodes();
  TConnectedControlPointsShape::SetRect(ARect);
}

void TMapPath::SetDisplacement(const TPointF& ADelta) {
  const TRef<TNode> Keep(this);
  ChangedPlacesOfNodes();
  TConnectedControlPointsShape::SetDisplacement(ADelta);
  ChangedPlacesOfNodes();
}

void TMapPath::ChangedPlacesOfNodes() {
  for (std::int32_t I = 0; I < GetSceneChildCount(); ++I) ChangedPlaceOf(GetSceneChildAt(I));
}

/// The later nodes move down by one slot.
TRef<IPathNode> TMapPath::TakeOutNode(std::int32_t AIndex) {
  if (AIndex >= std::ssize(FControlPointNodes)) return nullptr;
  TRef<IPathNode> Result = FControlPointNodes[static_cast<std::size_t>(AIndex)];
  if (Result) Result->Repaint();
  FControlPointNodes.erase(FControlPointNodes.begin() + AIndex);
  for (std::size_t I = static_cast<std::size_t>(AIndex); I < FControlPointNodes.size(); ++I)
    if (FControlPointNodes[I])
      FControlPointNodes[I]->SetControlPointIndex(static_cast<std::int32_t>(I));
  return Result;
}

bool TMapPath::BeginControlPointInsertion(std::int32_t AIndex) {
  // Slots and points do not agree while a point is being added or removed.
  if (FChangesOfPoints > 0) return false;
  if (!TConnectedControlPointsShape::BeginControlPointInsertion(AIndex)) return false;
  CorrectChildren();
  FControlPointNodes.emplace_back();
  return true;
}

void TMapPath::MovedControlPointOnePositionBack(std::int32_t AFrom, std::int32_t ATo) {
  TConnectedControlPointsShape::MovedControlPointOnePositionBack(AFrom, ATo);
  TRef<IPathNode> Node =
      std::exchange(FControlPointNodes[static_cast<std::size_t>(AFrom)], nullptr);
  if (Node) Node->SetControlPointIndex(ATo);
  FControlPointNodes[static_cast<std::size_t>(ATo)] = std::move(Node);
}

void TMapPath::EndControlPointInsertion(std::int32_t AIndex) {
  TConnectedControlPointsShape::EndControlPointInsertion(AIndex);
  FillSlot(AIndex);
}

// ---------------------------------------------------------------- children

void TMapPath::AddedChild(INode* AChild, bool AFront) {
  const TRef<INode> Child(AChild);
  TConnectedControlPointsShape::AddedChild(AChild, AFront);
  const TRef<IPathNode> Node(Supports<IPathNode>(AChild));
  if (!Node || GetLoadingChildren() || Node->GetControlPointIndex() < 0) return;
  InsertNode(*Node, Node->GetControlPointIndex());
}

/// Makes a control point for a node that was added, if there can be one.
void TMapPath::InsertNode(IPathNode& ANode, std::int32_t AIndex) {
  ANode.SetControlPointIndex(-1);  // not to be taken for the one that stands there already
  if (!AddControlPointAtIndex(AIndex, {}) || AIndex >= std::ssize(FControlPointNodes)) return;
  TRef<IPathNode>& Slot = FControlPointNodes[static_cast<std::size_t>(AIndex)];
  const TRef<IPathNode> Made = std::exchange(Slot, TRef<IPathNode>(&ANode));
  ANode.SetControlPointIndex(AIndex);
  if (!Made) return;
  Made->SetControlPointIndex(-1);
  Made->Detach();
}

void TMapPath::RemovedChild(INode* AChild) {
  TConnectedControlPointsShape::RemovedChild(AChild);
  const auto* const Node = Supports<IPathNode>(AChild);
  if (Node && IsNodeInSlot(*Node)) AdjustNodes();
}

// ---------------------------------------------------------------- names and descriptions

void TMapPath::AddNodeConnections(std::span<const TStringPair> AConnections) {
  std::unordered_map<std::string, std::int32_t> Slots;
  const TPathNodes Nodes = GetControlPointNodes();
  for (std::size_t I = 0; I < Nodes.size(); ++I)
    if (Nodes[I]) Slots.try_emplace(WithoutCase(Nodes[I]->GetName()), static_cast<std::int32_t>(I));
  for (const auto& [FromName, ToName] : AConnections) {
    const auto From = Slots.find(WithoutCase(FromName));
    const auto To = Slots.find(WithoutCase(ToName));
    if (From != Slots.end() && To != Slots.end()) ConnectControlPoints(From->second, To->second);
  }
}

TNodeConnections TMapPath::GetNodeConnections() {
  TNodeConnections Result;
  for (const auto& [From, To] : GetConnections()) {
    const TRef<IPathNode> A = GetControlPointNode(From);
    const TRef<IPathNode> B = GetControlPointNode(To);
    if (A && B) Result.emplace_back(A->GetName(), B->GetName());
  }
  return Result;
}

std::vector<TDescriptionList> TMapPath::GetNodesDescriptionLists() {
  std::vector<TDescriptionList> Result;
  for (const TRef<IPathNode>& Node : GetControlPointNodes()) Result.push_back(DescriptionOf(Node));
  return Result;
}

std::vector<TDescriptionEntry> TMapPath::GetNodesDescriptionList() {
  std::vector<TDescriptionEntry> Result;
  std::unordered_map<std::string, std::size_t> Entries;
  const std::vector<TDescriptionList> Lists = GetNodesDescriptionLists();
  for (std::size_t Slot = 0; Slot < Lists.size(); ++Slot)
    for (const auto& [Key, Value] : Lists[Slot]) {
      const auto [Entry, IsNew] = Entries.try_emplace(WithoutCase(Key), Result.size());
      if (IsNew) Result.push_back({Key, {}});
      Result[Entry->second].Values.emplace_back(Value, static_cast<std::int32_t>(Slot));
    }
  return Result;
}

// ---------------------------------------------------------------- the lines

TArray<TPointF> TMapPath::GetPathGlobalPoints() const {
  const TMatrix Global = GetGlobalMatrix();
  std::vector<TPointF> Result = GetControlPoints();
  for (TPointF& Point : Result) Point = Point * Global;
  return TArray<TPointF>(std::move(Result));
}

void TMapPath::SetHighLitPath(std::span<const std::int32_t> AnIndexes) {
  FHighLitPath = std::vector<std::int32_t>(AnIndexes.begin(), AnIndexes.end());
  Repaint();
}

TExtent TMapPath::GetExtent() const {
  constexpr float RouteReach = 21.0F;  // pixels, for pointed corners of the route
  return TExtent::Of<TMapPath>(GetRect(), RouteReach);
}

void TMapPath::DoPaintBeforeChildren(Canvas::ICanvas& ACanvas, const TMatrix& AMatrix) {
  std::vector<TPointF> Points;
  for (const std::int32_t Index : FHighLitPath)
    if (HasControlPoint(Index)) Points.push_back(GetControlPointAt(Index));
  SetRouteStroke(ACanvas, TAlphaColor{0xFF008000}, GetOpacity());
  ACanvas.SetMatrix(GetPaintMatrix(AMatrix));
  DrawRouteLine(ACanvas, Points);
}

}  // namespace System::Beacon::Fencing::Scene::Beacons
