#include <algorithm>
#include <unordered_map>
#include <utility>

#include "scene/System.Beacon.Fencing.Scene.Classes.h"
#include "scene/name_case.h"

namespace System::Beacon::Fencing::Scene {
namespace {

/// The `TNode` behind an interface; nothing for one of foreign making.
TNode* AsNode(const INode* ANode) {
  return ANode ? dynamic_cast<TNode*>(const_cast<TObject*>(ANode->GetObject())) : nullptr;
}

/// The first of some nodes for each name, letter case ignored; made for many names only.
class TNameIndex {
 public:
  TNameIndex(const TNames& ANames, const TChildList<TRef<TNode>>& ANodes) {
    constexpr std::size_t ManyNames = 8;
    if (ANames.size() < ManyNames) return;
    for (std::size_t I = 0; I < ANodes.size(); ++I)
      FIndexes.emplace(WithoutCase(ANodes[I]->GetName()), static_cast<std::int32_t>(I));
  }
  explicit operator bool() const { return !FIndexes.empty(); }
  std::int32_t Find(const std::string& AName) const {
    const auto Found = FIndexes.find(WithoutCase(AName));
    return Found == FIndexes.end() ? -1 : Found->second;
  }

 private:
  std::unordered_map<std::string, std::int32_t> FIndexes;
};

}  // namespace

const TClassInfo& TNode::ClassInfo() {
  static const TClassInfo Info{
      .Name = "System.Beacon.Fencing.Scene.Classes.TNode",
      .Base = &TEntity::ClassInfo(),
      .Create = [] { return TRef<TInterfacedObject>(New<TNode>()); },
      .Properties = {
          Published<&TNode::GetName, &TNode::SetName>("Name"),
          Published<&TNode::GetChildren, &TNode::SetChildren>("Children"),
          Public<&TNode::GetLoadingChildren, &TNode::SetLoadingChildren>("LoadingChildren"),
          Public<&TNode::GetParentProperty, &TNode::SetParentProperty>("Parent"),
          ReadOnlyProperty<&TNode::GetModeProperty>("Mode", false)}};
  return Info;
}

// ---------------------------------------------------------------- life

void TNode::AfterConstruction() {
  TEntity::AfterConstruction();
  TSceneRegistry::EmitCreatedObject(this);
}

void TNode::BeforeDestruction() noexcept {
  EmitDestroying(this);
  while (!FChildren.empty()) {
    const TRef<TNode> Last = FChildren.back();
    Last->SetParent(nullptr);
    if (FChildren.empty() || FChildren.back() != Last) continue;
    TakeOut(GetChildCount() - 1);
    if (Last->FParent == this) Last->FParent = nullptr;
  }
  TEntity::BeforeDestruction();
}

void TNode::ChangedName(const std::string& AnOldName) {
  const TRef<INode> Keep(this);
  const std::string NewName = GetName();
  EmitNameChange(static_cast<INode*>(this), AnOldName, NewName);
  TSceneRegistry::EmitChangedName(this, AnOldName, NewName);
}

// ---------------------------------------------------------------- places

/// The index of a child; its place tells it, unless it stands in the lists of several parents.
std::int32_t TNode::FindIndex(const TNode& AChild) const {
  for (const TPlace* Place : {&AChild.FPlace, &AChild.FFormerPlace})
    if (Place->Parent == this) return FChildren.GetIndex(Place->Number);
  if (!AChild.FFormerPlace.Parent) return -1;
  const auto Found = std::find_if(FChildren.begin(), FChildren.end(), [&](const auto& AOther) {
    return AOther.Get() == &AChild;
  });
  return Found == FChildren.end() ? -1 : static_cast<std::int32_t>(Found - FChildren.begin());
}

/// Tells the children from one index to before another where they stand.
void TNode::Renumber(std::int32_t AFirst, std::int32_t ALast) {
  for (std::int32_t I = AFirst; I < ALast; ++I) {
    TNode& Child = *FChildren[I];
    (Child.FPlace.Parent == this ? Child.FPlace : Child.FFormerPlace) = {this,
                                                                         FChildren.GetNumber(I)};
  }
}

void TNode::Insert(TNode& AChild, bool AFront) {
  const TRef<TNode> Child(&AChild);
  AFront ? FChildren.PushFront(Child) : FChildren.PushBack(Child);
  if (AChild.FPlace.Parent) AChild.FFormerPlace = AChild.FPlace;
  AChild.FPlace = {this, FChildren.GetNumber(AFront ? 0 : FChildren.size() - 1)};
  ChangedRevision();
}

void TNode::TakeOut(std::int32_t AIndex) {
  const TRef<TNode> Child = FChildren[AIndex];
  const std::size_t FirstMoved = FChildren.Erase(AIndex);
  for (TPlace* Place : {&Child->FPlace, &Child->FFormerPlace})
    if (Place->Parent == this) *Place = {};
  if (!Child->FPlace.Parent) std::swap(Child->FPlace, Child->FFormerPlace);
  Renumber(static_cast<std::int32_t>(FirstMoved), GetChildCount());
  ChangedRevision();
  TookOut(*Child);
}

void TNode::Move(std::int32_t AFrom, std::int32_t ATo) {
  const auto First = FChildren.begin();
  if (AFrom < ATo)
    std::rotate(First + AFrom, First + AFrom + 1, First + ATo + 1);
  else
    std::rotate(First + ATo, First + AFrom, First + AFrom + 1);
  Renumber(std::min(AFrom, ATo), std::max(AFrom, ATo) + 1);
  ChangedOrder();
}

void TNode::SetOrder(TChildren AChildren) {
  FChildren.Assign(std::move(AChildren));
  Renumber(0, GetChildCount());
  ChangedOrder();
}

void TNode::ChangedRevision() noexcept {
  for (TNode* Node = this; Node; Node = Node->FParent) ++Node->FRevision;
}

// ---------------------------------------------------------------- looking

TNodes TNode::GetHierarchyPath() {
  TNodes Result;
  for (INode* Node = this; Node; Node = Node->GetParent()) Result.emplace_back(Node);
  std::reverse(Result.begin(), Result.end());
  return Result;
}

INode* TNode::GetRootNode() {
  TNode* Result = this;
  while (Result->FParent) Result = Result->FParent;
  return Result;
}

bool TNode::IsBelow(const TNode& AAncestor) const {
  const TNode* Node = this;
  while (Node && Node != &AAncestor) Node = Node->FParent;
  return Node != nullptr;
}

std::int32_t TNode::GetChildIndex(std::string_view AName) const {
  const auto Found = std::find_if(FChildren.begin(), FChildren.end(), [AName](const auto& AChild) {
    return SameName(AChild->GetName(), AName);
  });
  return Found == FChildren.end() ? -1 : static_cast<std::int32_t>(Found - FChildren.begin());
}

std::int32_t TNode::GetChildIndex(const INode* ANode) const {
  const TNode* const Node = AsNode(ANode);
  return Node ? FindIndex(*Node) : -1;
}

TRef<INode> TNode::GetChild(std::string_view AName) const {
  const std::int32_t Index = GetChildIndex(AName);
  return Index < 0 ? nullptr : GetChildAt(Index);
}

TNodes TNode::GetChildren() const {
  TNodes Result;
  for (const TRef<TNode>& Child : FChildren)
    if (!Child->FMode.Contains(TMode::Edit)) Result.emplace_back(Child);
  return Result;
}

// ---------------------------------------------------------------- adding and removing

void TNode::AddChild(const TRef<INode>& AChild, bool AFront) {
  const TRef<TNode> Child(AsNode(AChild.Get()));
  if (!Child || IsBelow(*Child) || FindIndex(*Child) >= 0) return;
  const TRef<TNode> Keep(this);
  Insert(*Child, AFront);
  try {
    Child->SetParent(this);
  } catch (...) {
    FinishAdding(*Child, AFront);
    throw;
  }
  FinishAdding(*Child, AFront);
}

/// A handler may have taken the child away, or put this node below it.
void TNode::FinishAdding(TNode& AChild, bool AFront) {
  const std::int32_t Index = FindIndex(AChild);
  if (Index < 0) return;
  if (AChild.FParent == this)
    AddedChild(&AChild, AFront);
  else
    TakeOut(Index);
}

bool TNode::RemoveChild(INode* AChild) {
  const TRef<TNode> Child(AsNode(AChild));
  const std::int32_t Index = Child ? FindIndex(*Child) : -1;
  if (Index < 0 || Child->FParent != this) return false;
  const TRef<TNode> Keep(this);
  TakeOut(Index);
  Child->SetParent(nullptr);
  if (FindIndex(*Child) < 0) RemovedChild(Child.Get());  // unless a handler added it again
  return true;
}

void TNode::SetParent(INode* AParent) {
  const TRef<TNode> Parent(AsNode(AParent));
  if (Parent.Get() == FParent || (AParent && !Parent)) return;
  if (Parent && Parent->IsBelow(*this)) return;
  const TRef<TNode> Keep(this);
  const TRef<TNode> OldParent(FParent);
  if (OldParent) OldParent->RemoveChild(this);  // calls this operation again, with nothing
  // What handlers have done meanwhile counts: another parent, this node above the new one.
  const bool IsElsewhere =
      FParent && (FParent != OldParent.Get() || OldParent->FindIndex(*this) >= 0);
  if (Parent.Get() == FParent || IsElsewhere || (Parent && Parent->IsBelow(*this))) return;
  FParent = Parent.Get();
  if (Parent) Parent->AddChild(TRef<INode>(this), false);
  if (Parent.Get() != FParent) return;
  SettedParent(AParent);
  EmitParentChange(static_cast<INode*>(this), OldParent.Get(), AParent);
}

bool TNode::RemoveDescendant(INode* ANode) {
  if (RemoveChild(ANode)) return true;
  const TNode* const Node = AsNode(ANode);
  if (!Node || !Node->FParent || !Node->IsBelow(*this)) return false;
  return Node->FParent->RemoveChild(ANode);
}

void TNode::RemoveAllChilds() {
  const TRef<TNode> Keep(this);
  while (!FChildren.empty() && RemoveChild(TRef<TNode>(FChildren.back()).Get())) continue;
}

void TNode::SetChildren(const TNodes& AChildren) {
  const TNodes Children(AChildren.begin(), AChildren.end());  // may go with the old ones
  const TRef<TNode> Keep(this);
  struct TLoading {
    bool& Flag;
    explicit TLoading(bool& AFlag) : Flag(AFlag) { Flag = true; }
    ~TLoading() { Flag = false; }
  } const Loading(FLoadingChildren);
  RemoveAllChilds();
  for (const TRef<INode>& Child : Children) AddChild(Child, false);
}

// ---------------------------------------------------------------- order

bool TNode::SetChildIndex(INode* AChild, std::int32_t AIndex) {
  const std::int32_t Index = GetChildIndex(AChild);
  if (Index < 0 || Index == AIndex || AIndex < 0 || AIndex >= GetChildCount()) return false;
  Move(Index, AIndex);
  return true;
}

void TNode::MoveChildToFront(std::int32_t AIndex) {
  if (AIndex < 0 || AIndex >= GetChildCount()) return;
  const TRef<TNode> Child = FChildren[AIndex];
  Move(AIndex, 0);
  MovedChildToFront(Child.Get());
}

void TNode::MoveChildToBack(std::int32_t AIndex) {
  if (AIndex < 0 || AIndex >= GetChildCount()) return;
  const TRef<TNode> Child = FChildren[AIndex];
  Move(AIndex, GetChildCount() - 1);
  MovedChildToBack(Child.Get());
}

void TNode::SplitByNames(const TNames& ANames, TChildren& ANamed, TChildren& AOthers) const {
  std::vector<bool> IsNamed(FChildren.size(), false);
  const TNameIndex Index(ANames, FChildren);
  for (const std::string& Name : ANames) {
    const std::int32_t At = Index ? Index.Find(Name) : GetChildIndex(Name);
    if (At < 0 || IsNamed[At]) continue;
    IsNamed[At] = true;
    ANamed.push_back(FChildren[At]);
  }
  for (std::size_t I = 0; I < FChildren.size(); ++I)
    if (!IsNamed[I]) AOthers.push_back(FChildren[I]);
}

void TNode::MoveChildToFront(const TNames& ANames) {
  TChildren Named, Others;
  SplitByNames(ANames, Named, Others);
  TChildren Order = Named;
  Order.insert(Order.end(), Others.begin(), Others.end());
  SetOrder(std::move(Order));
  for (auto I = Named.rbegin(); I != Named.rend(); ++I) MovedChildToFront(I->Get());
}

void TNode::MoveChildToBack(const TNames& ANames) {
  TChildren Named, Order;
  SplitByNames(ANames, Named, Order);
  Order.insert(Order.end(), Named.begin(), Named.end());
  SetOrder(std::move(Order));
  for (auto I = Named.rbegin(); I != Named.rend(); ++I) MovedChildToBack(I->Get());
}

void TNode::ReorderChildren(const TNames& ANames) {
  TChildren Order, Others;
  SplitByNames(ANames, Order, Others);
  Order.insert(Order.end(), Others.begin(), Others.end());
  SetOrder(std::move(Order));
  ChangedChildrenOrder(TNodes(FChildren.begin(), FChildren.end()));
}

void TNode::SwapChildren(std::int32_t I, std::int32_t J) {
  const std::int32_t Count = GetChildCount();
  if (I == J || I < 0 || J < 0 || I >= Count || J >= Count) return;
  std::swap(FChildren[I], FChildren[J]);
  Renumber(I, I + 1);
  Renumber(J, J + 1);
  ChangedOrder();
}

// ---------------------------------------------------------------- modes

void TNode::SetMode(TModeSet AMode) {
  if (AMode.GetCode() == FMode.GetCode()) return;
  FMode = AMode;
  SettedMode(AMode);
}

void TNode::EnableModes(std::span<const TMode> AModes) {
  TModeSet Mode = FMode;
  Mode.Enable(TModeSet::CreateWithArray(AModes));
  SetMode(Mode);
}

void TNode::DisableModes(std::span<const TMode> AModes) {
  TModeSet Mode = FMode;
  Mode.Disable(TModeSet::CreateWithArray(AModes));
  SetMode(Mode);
}

TSet<TMode> TNode::GetModeProperty() const {
  return TSet<TMode>::FromBits(static_cast<std::uint8_t>(FMode.GetCode()));
}

}  // namespace System::Beacon::Fencing::Scene
