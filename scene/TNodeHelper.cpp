#include <string>
#include <unordered_map>

#include "scene/System.Beacon.Fencing.Scene.Helpers.h"
#include "scene/name_case.h"

namespace System::Beacon::Fencing::Scene {
namespace {

/// The first node, in the order of a walk, of which a test is true.
template <class TTest>
TRef<INode> FindNode(INode* ANode, const TTest& ATest) {
  std::vector<TRef<INode>> Waiting{TRef<INode>(ANode)};
  while (!Waiting.empty() && Waiting.back()) {
    TRef<INode> Node = std::move(Waiting.back());
    Waiting.pop_back();
    if (ATest(*Node)) return Node;
    for (std::int32_t I = Node->GetChildCount() - 1; I >= 0; --I)
      Waiting.push_back(Node->GetChildAt(I));
  }
  return nullptr;
}

/// The first node for each of some names, which are written without case; nothing for unknown ones.
using TNodesByName = std::unordered_map<std::string, TRef<INode>>;

TNodesByName FirstNodesNamed(INode* ANode, const TNames& ANames) {
  TNodesByName Result;
  for (const std::string& Name : ANames) Result.try_emplace(WithoutCase(Name));
  TNodeHelper::Visit(ANode, [&Result](INode* AEach) {
    const auto Wanted = Result.find(WithoutCase(AEach->GetName()));
    if (Wanted != Result.end() && !Wanted->second) Wanted->second = TRef<INode>(AEach);
  });
  return Result;
}

}  // namespace

TNames TNodeHelper::GetChildrenNames(const INode& ANode) {
  TNames Result;
  for (std::int32_t I = 0; I < ANode.GetChildCount(); ++I)
    Result.push_back(ANode.GetChildAt(I)->GetName());
  return Result;
}

TNames TNodeHelper::GetNames(const TNodes& ANodes) {
  TNames Result;
  for (const TRef<INode>& Node : ANodes) Result.push_back(Node->GetName());
  return Result;
}

TNodes TNodeHelper::GetSubnodes(INode* ANode) {
  TNodes Result;
  Visit(ANode, [&Result](INode* AEach) { Result.emplace_back(AEach); });
  return Result;
}

void TNodeHelper::Visit(INode* ANode, const TVisitProc& AProc) {
  if (!AProc) return;
  FindNode(ANode, [&AProc](INode& AEach) {
    AProc(&AEach);
    return false;
  });
}

TRef<INode> TNodeHelper::FindNodeWithName(INode* ANode,
                                          std::string_view AName,
                                          bool AByName,
                                          bool AByAlias) {
  return FindNode(ANode, [&](const INode& AEach) {
    return (AByName && SameName(AEach.GetName(), AName)) ||
           (AByAlias && SameName(AEach.GetAlias(), AName));
  });
}

TNodes TNodeHelper::FindNodesWithNames(INode* ANode, const TNames& ANames) {
  TNodesByName Found = FirstNodesNamed(ANode, ANames);
  TNodes Result;
  for (const std::string& Name : ANames)
    if (const TRef<INode>& Node = Found[WithoutCase(Name)]) Result.push_back(Node);
  return Result;
}

TNodes TNodeHelper::FilterNodesWithMode(const TNodes& ANodes, TModeSet AModes, bool AValue) {
  TNodes Result;
  for (const TRef<INode>& Node : ANodes)
    if (Node->GetMode().Contains(AModes) == AValue) Result.push_back(Node);
  return Result;
}

void TNodeHelper::EnableModes(const TNodes& ANodes, TModeSet AModes) {
  for (const TRef<INode>& Node : ANodes) {
    TModeSet Mode = Node->GetMode();
    Mode.Enable(AModes);
    Node->SetMode(Mode);
  }
}

void TNodeHelper::DisableModes(const TNodes& ANodes, TModeSet AModes) {
  for (const TRef<INode>& Node : ANodes) {
    TModeSet Mode = Node->GetMode();
    Mode.Disable(AModes);
    Node->SetMode(Mode);
  }
}

TNames TSceneHelper::FilterObjectsWithMode(TModeSet AModes, IScene* AScene, const TNames& ANames) {
  TNodesByName Found = FirstNodesNamed(AScene, ANames);
  TNames Result;
  for (const std::string& Name : ANames) {
    const TRef<INode>& Node = Found[WithoutCase(Name)];
    if (Node && Node->GetMode().ContainsSomeMode(AModes)) Result.push_back(Name);
  }
  return Result;
}

}  // namespace System::Beacon::Fencing::Scene
