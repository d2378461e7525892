#include <algorithm>
#include <cmath>
#include <utility>

#include "scene/System.Beacon.Fencing.Scene.Classes.h"
#include "scene/System.Beacon.Fencing.Scene.Helpers.h"
#include "scene/child_index.h"
#include "scene/corners.h"
#include "scene/scene_link.h"

namespace System::Beacon::Fencing::Scene {
namespace {

// From so many children on there is an index of them.
constexpr std::size_t ManyChildren = 64;
// So many nodes are looked at to find out where a child lies.
constexpr int BoundsBudget = 16;

bool HasInverse(const TMatrix& AMatrix) {
  const float Determinant = AMatrix.GetDeterminant();
  return Determinant != 0.0F && std::isfinite(Determinant);
}

TSceneNode* AsSceneNode(INode* ANode) {
  return dynamic_cast<TSceneNode*>(ANode);
}

}  // namespace

const TClassInfo& TSceneNode::ClassInfo() {
  static const TClassInfo Info{
      .Name = "System.Beacon.Fencing.Scene.Classes.TSceneNode",
      .Base = &TNode::ClassInfo(),
      .Properties = {
          Published<&TSceneNode::GetOpacity, &TSceneNode::SetOpacity>("Opacity"),
          Published<&TSceneNode::GetClipChildren, &TSceneNode::SetClipChildren>("ClipChildren"),
          Public<&TSceneNode::GetWidth, &TSceneNode::SetWidth>("Width"),
          Public<&TSceneNode::GetHeight, &TSceneNode::SetHeight>("Height")}};
  return Info;
}

TSceneNode::TSceneNode() = default;
TSceneNode::~TSceneNode() = default;

// ---------------------------------------------------------------- scene and structure

TScene* TSceneNode::GetSceneObject() const {
  return FScene ? FScene->Scene : nullptr;
}

IScene* TSceneNode::GetScene() const {
  return GetSceneObject();
}

void TSceneNode::SetSceneLink(TRef<TSceneLink> ALink) {
  FScene = std::move(ALink);
}

void TSceneNode::SetScene(TScene* AScene) {
  TScene* const Old = GetSceneObject();
  if (Old == AScene) return;
  const TRef<TNode> Keep(this), KeepScene(AScene);
  if (AScene) Repaint();
  FScene = AScene ? AScene->FLink : nullptr;
  EmitSceneChange(this, Old, AScene);
  if (GetSceneObject() != AScene) return;  // a handler has moved it
  for (std::size_t I = 0; I < FSceneChildren.size(); ++I)
    TRef<TSceneNode>(FSceneChildren[I])->SetScene(AScene);
  if (AScene) Repaint();
}

void TSceneNode::Detach() {
  const TRef<TNode> Keep(this);
  if (TScene* const Scene = GetSceneObject()) Scene->NotifyDetach(this);
  TNode::Detach();
}

std::int32_t TSceneNode::GetSceneChildIndex(const INode* ANode) const {
  const auto* const Node = dynamic_cast<const TSceneNode*>(ANode);
  return Node && Node->FListedIn == this ? FSceneChildren.GetIndex(Node->FSceneNumber) : -1;
}

void TSceneNode::RenumberSceneChildren(std::size_t AFirst) {
  for (std::size_t I = AFirst; I < FSceneChildren.size(); ++I)
    FSceneChildren[I]->FSceneNumber = FSceneChildren.GetNumber(I);
}

void TSceneNode::AddedChild(INode* AChild, bool AFront) {
  TSceneNode* const Child = Scene::AsSceneNode(AChild);
  if (!Child || Child->FListedIn) return;
  Child->Repaint();
  AFront ? FSceneChildren.PushFront(Child) : FSceneChildren.PushBack(Child);
  Child->FListedIn = this;
  Child->FSceneNumber = FSceneChildren.GetNumber(AFront ? 0 : FSceneChildren.size() - 1);
  if (FChildIndex) FChildIndex->Add(*Child);
  ChangedExtent();
  if (Supports<IShape>(Child)) InvalidateChild(*Child);
  Child->SetScene(GetSceneObject());
  Child->Repaint();
}

void TSceneNode::RemovedChild(INode* AChild) {
  TSceneNode* const Child = Scene::AsSceneNode(AChild);
  if (Child && !Child->FListedIn) Child->Repaint();
}

void TSceneNode::TookOut(TNode& AChild) {
  TSceneNode* const Child = Scene::AsSceneNode(&AChild);
  if (!Child || Child->FListedIn != this) return;
  RenumberSceneChildren(FSceneChildren.Erase(FSceneChildren.GetIndex(Child->FSceneNumber)));
  Child->FListedIn = nullptr;
  if (FChildIndex) FChildIndex->Remove(*Child);
  if (FSceneChildren.empty()) FChildIndex = nullptr;
  ChangedExtent();
}

/// In the order of the children.
void TSceneNode::ChangedOrder() {
  std::size_t Count = 0;
  for (std::int32_t I = 0; I < GetChildCount(); ++I) {
    TSceneNode* const Child = Scene::AsSceneNode(GetChildObject(I));
    if (Child && Child->FListedIn == this) FSceneChildren[Count++] = Child;
  }
  RenumberSceneChildren(0);
}

void TSceneNode::SettedParent(INode* AParent) {
  FSceneParent = Scene::AsSceneNode(AParent);
  Repaint();
}

void TSceneNode::MovedChildToFront(INode* AChild) {
  const TSceneNode* const Child = Scene::AsSceneNode(AChild);
  if (Child && Child->FListedIn == this) InvalidateChild(*Child);
}

void TSceneNode::MovedChildToBack(INode* AChild) {
  TSceneNode::MovedChildToFront(AChild);
}

void TSceneNode::ChangedChildrenOrder(const TNodes&) {
  if (const auto Region = GetInvalidateRegion()) Region->Invalidate();
}

void TSceneNode::SetMode(TModeSet AMode) {
  TNode::SetMode(AMode);
  Repaint();
}

void TSceneNode::SetClipChildren(bool AValue) {
  if (AValue == FClipChildren) return;
  FClipChildren = AValue;
  Repaint();
}

void TSceneNode::SetOpacity(float AValue) {
  if (AValue == FOpacity || !std::isfinite(AValue)) return;
  FOpacity = AValue;
  ChangedRevision();
  Repaint();
}

void TSceneNode::SetWidth(float AValue) {
  TRectF Rect = GetRect();
  Rect.Right = Rect.Left + AValue;
  SetRect(Rect);
}

void TSceneNode::SetHeight(float AValue) {
  TRectF Rect = GetRect();
  Rect.Bottom = Rect.Top + AValue;
  SetRect(Rect);
}

// ---------------------------------------------------------------- painting and repainting

void TSceneNode::Paint(Canvas::ICanvas& ACanvas, const TMatrix& AMatrix) {
  if (GetMode().Contains(TMode::Visible)) DoPaint(ACanvas, AMatrix);
}

void TSceneNode::DoPaint(Canvas::ICanvas& ACanvas, const TMatrix& AMatrix) {
  PaintChildren(ACanvas, AMatrix * GetLocalMatrix());
}

/// In a paint of a part of the scene, those that may show there.
void TSceneNode::PaintChildren(Canvas::ICanvas& ACanvas, const TMatrix& AMatrix) {
  const TScene* const Scene = GetSceneObject();
  std::optional<TSearchArea> Area;
  if (Scene && Scene->FPaintArea)
    Area = AreaBehind(*Scene->FPaintArea, Scene->GetViewProjectionViewportMatrix());
  TChildIndex::TChildren Found;
  if (Area && IsWide() && GetIndexOfChildren().Find(*Area, AMatrix, Found)) {
    std::sort(Found.begin(), Found.end(), IsBefore);
    const std::vector<TRef<TSceneNode>> Children(Found.begin(), Found.end());
    for (const TRef<TSceneNode>& Child : Children)
      if (Child->FListedIn == this) Child->Paint(ACanvas, AMatrix);
    return;
  }
  for (std::size_t I = 0; I < FSceneChildren.size(); ++I) {
    const TRef<TSceneNode> Child(FSceneChildren[I]);
    if (!Area || MayTouch(Child->GetBoundsUnder(AMatrix), *Area)) Child->Paint(ACanvas, AMatrix);
  }
}

TRef<Canvas::IInvalidateRegion> TSceneNode::GetInvalidateRegion() const {
  const TScene* const Scene = GetSceneObject();
  return Scene ? Scene->GetInvalidateRegion() : nullptr;
}

void TSceneNode::Repaint() {
  if (const auto Region = GetInvalidateRegion())
    Region->InvalidateRect(GetRepaintRect(false, RepaintMargin));
}

void TSceneNode::RepaintRect(const TRectF& ARect) {
  if (const auto Region = GetInvalidateRegion())
    Region->InvalidateRect(GetScreenRect(IntersectRect(ARect, GetRect())));
}

void TSceneNode::AfterMovementRepaint(const TRectF& AOldRect) {
  if (const auto Region = GetInvalidateRegion())
    Region->InvalidateRect(BoundBoth(AOldRect, GetRepaintRect(true, RepaintMargin)));
}

void TSceneNode::InvalidateChild(const ISceneNode& AChild) {
  if (const auto Region = GetInvalidateRegion())
    Region->InvalidateRect(AChild.GetRepaintRect(true, RepaintMargin));
}

TRectF TSceneNode::GetRepaintRect(bool AWithChildren, float AMargin) const {
  TRectF Result = GetGlobalRectWithChildren(AWithChildren ? -1 : 0);
  if (const TScene* const Scene = GetSceneObject())
    Result = TCornersHelper::GetRect(TCornersHelper::MultiplyRect(Scene->WorldMatrix(), Result));
  Result.Inflate(AMargin, AMargin);
  return Result;
}

// ---------------------------------------------------------------- places

TMatrix TSceneNode::GetGlobalMatrix() const {
  return FSceneParent ? FSceneParent->GetGlobalMatrix() * GetLocalMatrix() : GetLocalMatrix();
}

TPointF TSceneNode::GlobalToLocal(TPointF APoint) const {
  return APoint * GetInverseGlobalMatrix();
}

bool TSceneNode::IsUnderGlobalPoint(TPointF APoint) const {
  const TMatrix Global = GetGlobalMatrix();
  return HasInverse(Global) && ContainsLocalPoint(APoint * Global.Inverse());
}

TCorners TSceneNode::GetLocalCorners() const {
  return TCornersHelper::GetCorners(GetRect());
}

TCorners TSceneNode::GetGlobalCorners() const {
  return TCornersHelper::MultiplyCorners(GetGlobalMatrix(), GetLocalCorners());
}

TCorners TSceneNode::GetScreenCorners(const TRectF& ARect) const {
  const TScene* const Scene = GetSceneObject();
  const TMatrix Global = GetGlobalMatrix();
  return TCornersHelper::MultiplyRect(Scene ? Global * Scene->WorldMatrix() : Global, ARect);
}

TRectF TSceneNode::GetScreenRect(const TRectF& ARect) const {
  return TCornersHelper::GetRect(GetScreenCorners(ARect));
}

TRectF TSceneNode::GetGlobalRectWithChildren(std::int32_t ADepth) const {
  if (ADepth == 0) return TCornersHelper::GetRect(GetGlobalCorners());
  const TMatrix Parent = FSceneParent ? FSceneParent->GetGlobalMatrix() : TMatrix::Identity();
  return BoundUnder(Parent, ADepth);
}

/// What bounds the node and its children down to so many levels, under a parent's global matrix.
TRectF TSceneNode::BoundUnder(const TMatrix& AParentMatrix, std::int32_t ADepth) const {
  const TMatrix Global = AParentMatrix * GetLocalMatrix();
  TRectF Result =
      TCornersHelper::GetRect(TCornersHelper::MultiplyCorners(Global, GetLocalRepaintCorners()));
  if (ADepth == 0 || FClipChildren) return Result;
  for (const TSceneNode* Child : FSceneChildren)
    Result = BoundBoth(Result, Child->BoundUnder(Global, ADepth < 0 ? ADepth : ADepth - 1));
  return Result;
}

TPointF TSceneNode::GetClosestPointToGlobalPoint(TPointF APoint, bool AGlobal) const {
  const TRectF Rect = GetRect();
  const TPointF Local = GlobalToLocal(APoint);
  const TPointF Closest{std::max(Rect.Left, std::min(Local.X, Rect.Right)),
                        std::max(Rect.Top, std::min(Local.Y, Rect.Bottom))};
  return AGlobal ? Closest * GetGlobalMatrix() : Closest;
}

TPointF TSceneNode::GetCenterInGlobalSpace() const {
  return GetRect().GetCentre() * GetGlobalMatrix();
}

TPointF TSceneNode::GetDisplacementToGetGlobalPosition(TPointF APoint) const {
  return GetDisplacement() + GlobalToLocal(APoint);
}

void TSceneNode::SetCenterInGlobalSpace(TPointF APoint) {
  SetDisplacement(GetDisplacementToGetGlobalPosition(APoint));
}

// ---------------------------------------------------------------- searching

ISceneNode* TSceneNode::GetNodeUnderGlobalPoint(TPointF APoint) {
  TPointF Local;
  const TMatrix Parent = FSceneParent ? FSceneParent->GetGlobalMatrix() : TMatrix::Identity();
  return GetNodeUnderGlobalPoint(APoint, Local, Parent);
}

ISceneNode* TSceneNode::GetNodeUnderGlobalPoint(TPointF APoint,
                                                TPointF& ALocalPoint,
                                                const TMatrix& AParentMatrix) {
  return FindUnder(APoint, ALocalPoint, AParentMatrix, nullptr);
}

ISceneNode* TSceneNode::GetNodeUnderGlobalPoint(TPointF APoint,
                                                TPointF& ALocalPoint,
                                                const TMatrix& AParentMatrix,
                                                TSceneNodes& ANodes) {
  return FindUnder(APoint, ALocalPoint, AParentMatrix, &ANodes);
}

ISceneNode* TSceneNode::FindUnder(TPointF APoint,
                                  TPointF& ALocalPoint,
                                  const TMatrix& AParentMatrix,
                                  TSceneNodes* ANodes) {
  if (!GetMode().Contains(TMode::Active)) return nullptr;
  const TMatrix Global = AParentMatrix * GetLocalMatrix();
  if (!HasInverse(Global)) return nullptr;
  const TPointF Local = APoint * Global.Inverse();
  const bool IsInside = ContainsLocalPoint(Local);
  ISceneNode* Result = nullptr;
  if (IsInside || !FClipChildren) Result = FindChildUnder(APoint, ALocalPoint, Global, ANodes);
  if (IsInside && ANodes) ANodes->push_back(this);
  if (Result) return Result;
  ALocalPoint = Local;
  return IsInside ? this : nullptr;
}

/// The last child that answers; with `ANodes` all children are asked.
ISceneNode* TSceneNode::FindChildUnder(TPointF APoint,
                                       TPointF& ALocalPoint,
                                       const TMatrix& AMatrix,
                                       TSceneNodes* ANodes) {
  ISceneNode* Result = nullptr;
  if (IsWide() && FindChildByIndex(APoint, ALocalPoint, AMatrix, ANodes, Result)) return Result;
  for (auto I = FSceneChildren.rbegin(); I != FSceneChildren.rend(); ++I) {
    TPointF Local;
    ISceneNode* const Found = AskChild(**I, APoint, Local, AMatrix, ANodes);
    if (!Found || Result) continue;
    Result = Found;
    ALocalPoint = Local;
    if (!ANodes) return Result;
  }
  return Result;
}

ISceneNode* TSceneNode::AskChild(TSceneNode& AChild,
                                 TPointF APoint,
                                 TPointF& ALocalPoint,
                                 const TMatrix& AMatrix,
                                 TSceneNodes* ANodes) {
  return ANodes ? AChild.GetNodeUnderGlobalPoint(APoint, ALocalPoint, AMatrix, *ANodes)
                : AChild.GetNodeUnderGlobalPoint(APoint, ALocalPoint, AMatrix);
}

/// The same among the children that the index tells; whether it could.
bool TSceneNode::FindChildByIndex(TPointF APoint,
                                  TPointF& ALocalPoint,
                                  const TMatrix& AMatrix,
                                  TSceneNodes* ANodes,
                                  ISceneNode*& AResult) {
  thread_local TChildIndex::TChildren Spare;  // searches of other children may begin meanwhile
  TChildIndex::TChildren Found = std::move(Spare);
  Found.clear();
  const bool CanTell = GetIndexOfChildren().Find(AreaOf(APoint), AMatrix, Found);
  std::make_heap(Found.begin(), Found.end(), IsBefore);
  for (auto End = Found.end(); CanTell && End != Found.begin() && (ANodes || !AResult); --End) {
    std::pop_heap(Found.begin(), End, IsBefore);
    TPointF Local;
    ISceneNode* const Answer = AskChild(**(End - 1), APoint, Local, AMatrix, ANodes);
    if (!Answer || AResult) continue;
    AResult = Answer;
    ALocalPoint = Local;
  }
  Spare = std::move(Found);
  return CanTell;
}

// ---------------------------------------------------------------- extents

bool TSceneNode::IsWide() const {
  return FChildIndex || FSceneChildren.size() >= ManyChildren;
}

TChildIndex& TSceneNode::GetIndexOfChildren() {
  if (!FChildIndex) {
    FChildIndex = std::make_unique<TChildIndex>();
    for (TSceneNode* Child : FSceneChildren) FChildIndex->Add(*Child);
  }
  return *FChildIndex;
}

void TSceneNode::ChangedExtent() {
  for (const TSceneNode* Node = this; Node->FListedIn; Node = Node->FListedIn)
    if (Node->FListedIn->FChildIndex) Node->FListedIn->FChildIndex->MarkStale(*Node);
}

TNodeBounds TSceneNode::GetBoundsUnder(const TMatrix& AParentMatrix) const {
  TNodeBounds Result;
  int Budget = BoundsBudget;
  Result.IsKnown = IncludeBounds(AParentMatrix, ReachThrough(0.0F, AParentMatrix), Budget, Result);
  return Result;
}

/// Whether all is known about the node and what is below it.
bool TSceneNode::IncludeBounds(const TMatrix& AParentMatrix,
                               float AReach,
                               int& ABudget,
                               TNodeBounds& ABounds) const {
  const TExtent Own = GetExtent();
  if (!Own.Class || *Own.Class != typeid(*this) || --ABudget < 0) return false;
  const TMatrix Local = GetLocalMatrix();
  const TMatrix Global = AParentMatrix * Local;
  if (!IsWellConditioned(Global)) return false;
  const float Reach = ReachThrough(AReach, Local);
  if (!Own.IsEmpty) ABounds.Include(RectThrough(Own.Rect, Global, Reach), Own.Pixels);
  return std::all_of(FSceneChildren.begin(), FSceneChildren.end(), [&](const TSceneNode* AChild) {
    return AChild->IncludeBounds(Global, Reach, ABudget, ABounds);
  });
}

// ---------------------------------------------------------------- the pointer

void TSceneNode::MouseMove(IViewport*, TPointF APoint, bool ADragged) {
  EmitMouseMove(this, APoint, ADragged);
}

void TSceneNode::MouseDown(IViewport*, TPointF APoint) {
  EmitMouseDown(this, APoint);
}

void TSceneNode::MouseUp(IViewport*, TPointF APoint) {
  EmitMouseUp(this, APoint);
}

}  // namespace System::Beacon::Fencing::Scene
