#include <algorithm>
#include <array>
#include <unordered_set>

#include "map/System.Beacon.Fencing.Scene.Beacons.h"
#include "map/messages.h"
#include "map/node_names.h"
#include "map/route_line.h"
#include "platform/errors.h"
#include "scene/corners.h"
#include "scene/name_case.h"

namespace System::Beacon::Fencing::Scene::Beacons {
namespace {

constexpr std::array<TMode, 2> Shown{TMode::Active, TMode::Visible};

bool Touches(const TStringPair& AConnection, std::string_view AName) {
  return SameName(AConnection.first, AName) || SameName(AConnection.second, AName);
}

bool Joins(const TStringPair& AConnection, std::string_view A, std::string_view B) {
  const auto& [From, To] = AConnection;
  return (SameName(From, A) && SameName(To, B)) || (SameName(From, B) && SameName(To, A));
}

/// The same for both directions and whatever the letter case.
TStringPair LinkKey(const std::string& A, const std::string& B) {
  return std::minmax({WithoutCase(A), WithoutCase(B)});
}

template <class TTest>
std::int32_t IndexOf(const TNodeConnections& AConnections, const TTest& ATest) {
  const auto Found = std::find_if(AConnections.begin(), AConnections.end(), ATest);
  return Found == AConnections.end() ? -1 : static_cast<std::int32_t>(Found - AConnections.begin());
}

/// What bounds points; nothing for none.
class TBounds {
 public:
  void Include(TPointF APoint) {
    const auto& [X, Y] = APoint;
    FRect = FIsEmpty ? TRectF{X, Y, X, Y}
                     : TRectF{std::min(FRect.Left, X),
                              std::min(FRect.Top, Y),
                              std::max(FRect.Right, X),
                              std::max(FRect.Bottom, Y)};
    FIsEmpty = false;
  }
  const TRectF& GetRect() const { return FRect; }

 private:
  bool FIsEmpty = true;
  TRectF FRect;
};

TSceneNode& Resolved(const TNodesByName& ANodes, const std::string& AName) {
  auto* const Node = dynamic_cast<TSceneNode*>(ANodes.Find(AName));
  if (!Node) throw EGeneralError(std::string(Messages::SInvalidObject));
  return *Node;
}

}  // namespace

const TClassInfo& TConnectingNodes::ClassInfo() {
  using TSelf = TConnectingNodes;
  static const TClassInfo Info{
      .Name = "System.Beacon.Fencing.Scene.Beacons.TConnectingNodes",
      .Base = &TSceneNode::ClassInfo(),
      .Create = [] { return TRef<TInterfacedObject>(New<TConnectingNodes>()); },
      .Properties = {Published<&TSelf::GetConnections, &TSelf::SetConnections>("Connections")}};
  return Info;
}

TConnectingNodes::TConnectingNodes() {
  DisableModes(Shown);
}

TConnectingNodes::~TConnectingNodes() {
  DropConnectionObjects();
}

// ---------------------------------------------------------------- links

void TConnectingNodes::AddConnection(const std::string& AFrom, const std::string& ATo) {
  DropConnectionObjects();
  if (FKnownLinks.empty())
    for (const auto& [From, To] : FConnections) FKnownLinks.insert(LinkKey(From, To));
  if (FKnownLinks.insert(LinkKey(AFrom, ATo)).second) FConnections.emplace_back(AFrom, ATo);
}

void TConnectingNodes::RemoveConnection(const std::string& A, const std::string& B) {
  DropConnectionObjects();
  FKnownLinks.clear();
  std::erase_if(FConnections, [&](const TStringPair& C) { return Joins(C, A, B); });
}

void TConnectingNodes::RemoveNode(const std::string& AName) {
  DropConnectionObjects();
  FKnownLinks.clear();
  std::erase_if(FConnections, [&](const TStringPair& C) { return Touches(C, AName); });
}

void TConnectingNodes::UpdateNode(const std::string& AnOldName, const std::string& ANewName) {
  DropConnectionObjects();
  Rename(AnOldName, ANewName);
}

void TConnectingNodes::Rename(const std::string& AnOldName, const std::string& ANewName) {
  FKnownLinks.clear();
  for (auto& [From, To] : FConnections) {
    if (SameName(From, AnOldName)) From = ANewName;
    if (SameName(To, AnOldName)) To = ANewName;
  }
}

std::int32_t TConnectingNodes::GetIndexOf(std::string_view AName) const {
  return IndexOf(FConnections, [AName](const TStringPair& C) { return Touches(C, AName); });
}

std::int32_t TConnectingNodes::GetConnectionIndex(std::string_view A, std::string_view B) const {
  return IndexOf(FConnections, [A, B](const TStringPair& C) { return Joins(C, A, B); });
}

void TConnectingNodes::SetConnections(std::span<const TStringPair> AConnections) {
  DropConnectionObjects();
  FKnownLinks.clear();
  FConnections = TNodeConnections(AConnections.begin(), AConnections.end());
}

// ---------------------------------------------------------------- the nodes behind the names

/// Looks every name up in the scene.
void TConnectingNodes::CorrectConnections() {
  if (FAreAllResolved) return;
  DropConnectionObjects();
  FConnectionObjects.resize(FConnections.size());
  const TNodesByName Nodes(GetSceneObject());
  std::unordered_set<const TSceneNode*> Watched;
  for (std::size_t I = 0; I < FConnections.size(); ++I) {
    auto& [From, To] = FConnectionObjects[I];
    From = &Resolved(Nodes, FConnections[I].first);
    if (Watched.insert(From).second) Watch(*From);
    To = &Resolved(Nodes, FConnections[I].second);
    if (Watched.insert(To).second) Watch(*To);
  }
  FAreAllResolved = true;
}

void TConnectingNodes::Watch(TSceneNode& ANode) {
  ANode.ConnectNameChange(Bind<&TConnectingNodes::NodeChangedName>(this));
  ANode.ConnectDestroying(Bind<&TConnectingNodes::NodeDestroyed>(this));
  ANode.ConnectDidMove(Bind<&TConnectingNodes::NodeMoved>(this));
}

void TConnectingNodes::DropConnectionObjects() {
  FAreAllResolved = false;
  for (const TEnds& Ends : std::exchange(FConnectionObjects, {}))
    for (TSceneNode* Node : {Ends.first, Ends.second})
      if (Node) Node->DisconnectEventObject(this);
}

void TConnectingNodes::NodeChangedName(INode*,
                                       const std::string& AnOldName,
                                       const std::string& ANewName) {
  Rename(AnOldName, ANewName);
}

void TConnectingNodes::NodeDestroyed(INode*) {
  DropConnectionObjects();
}

void TConnectingNodes::NodeMoved(ISceneNode*) {
  Repaint();
}

void TConnectingNodes::SetScene(TScene* AScene) {
  if (AScene != GetSceneObject()) DropConnectionObjects();
  TSceneNode::SetScene(AScene);
}

TRectF TConnectingNodes::GetRect() const {
  TBounds Result;
  for (const TEnds& Ends : FConnectionObjects)
    for (const TSceneNode* Node : {Ends.first, Ends.second})
      if (Node) Result.Include(Node->GetCenterInGlobalSpace());
  return Result.GetRect();
}

// ---------------------------------------------------------------- look

void TConnectingNodes::HighLitPath(std::span<const TPointF> APoints) {
  FHighLitPath = std::vector<TPointF>(APoints.begin(), APoints.end());
  if (FHighLitPath.empty())
    DisableModes(Shown);
  else
    EnableModes(Shown);
  // Neither the old route nor links that are still to be looked up lie inside the rectangle.
  if (const auto Region = GetInvalidateRegion()) Region->Invalidate();
}

void TConnectingNodes::DoPaint(Canvas::ICanvas& ACanvas, const TMatrix& AMatrix) {
  if (const TScene* const Scene = GetSceneObject()) {
    ACanvas.SetMatrix(Scene->GetViewProjectionViewportMatrix());
    SetRouteStroke(ACanvas, TAlphaColor{0xFF22EE33}, GetOpacity());
    DrawRouteLine(ACanvas, FHighLitPath);
    CorrectConnections();
    SetRouteStroke(ACanvas, TAlphaColor{0xFF000000}, 1.0F);
    for (const auto& [From, To] : FConnectionObjects)
      ACanvas.DrawLine(From->GetCenterInGlobalSpace(), To->GetCenterInGlobalSpace());
  }
  TSceneNode::DoPaint(ACanvas, AMatrix);
}

}  // namespace System::Beacon::Fencing::Scene::Beacons
