#include <algorithm>
#include <cmath>
#include <utility>

#include "scene/System.Beacon.Fencing.Scene.Classes.h"
#include "scene/System.Beacon.Fencing.Scene.Helpers.h"
#include "scene/corners.h"
#include "scene/scene_link.h"

namespace System::Beacon::Fencing::Scene {
namespace {

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
  const TRef<TNode> Keep(this);
  if (AScene) Repaint();
  FScene = AScene ? AScene->FLink : nullptr;
  EmitSceneChange(this, Old, AScene);
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
  for (std::size_t I = 0; I < FSceneChildren.size(); ++I)
    if (IsSame(FSceneChildren[I], ANode)) return static_cast<std::int32_t>(I);
  return -1;
}

void TSceneNode::AddedChild(INode* AChild, bool AFront) {
  TSceneNode* const Child = Scene::AsSceneNode(AChild);
  if (!Child || Child->FListedIn) return;
  Child->Repaint();
  FSceneChildren.insert(AFront ? FSceneChildren.begin() : FSceneChildren.end(), Child);
  Child->FListedIn = this;
  if (Supports<IShape>(Child)) InvalidateChild(*Child);
  Child->SetScene(GetSceneObject());
  Child->Repaint();
}

void TSceneNode::RemovedChild(INode* AChild) {
  TSceneNode* const Child = Scene::AsSceneNode(AChild);
  if (!Child || Child->FListedIn != this) return;
  FSceneChildren.erase(std::find(FSceneChildren.begin(), FSceneChildren.end(), Child));
  Child->FListedIn = nullptr;
  Child->Repaint();
}

void TSceneNode::SettedParent(INode* AParent) {
  FSceneParent = Scene::AsSceneNode(AParent);
  Repaint();
}

void TSceneNode::MoveSceneChild(INode* AChild, bool AToFront) {
  const auto Found =
      std::find(FSceneChildren.begin(), FSceneChildren.end(), Scene::AsSceneNode(AChild));
  if (Found == FSceneChildren.end()) return;
  if (AToFront)
    std::rotate(FSceneChildren.begin(), Found, Found + 1);
  else
    std::rotate(Found, Found + 1, FSceneChildren.end());
  InvalidateChild(AToFront ? *FSceneChildren.front() : *FSceneChildren.back());
}

void TSceneNode::MovedChildToFront(INode* AChild) {
  MoveSceneChild(AChild, true);
}

void TSceneNode::MovedChildToBack(INode* AChild) {
  MoveSceneChild(AChild, false);
}

void TSceneNode::RebuildSceneChildren() {
  FSceneChildren.clear();
  for (std::int32_t I = 0; I < GetChildCount(); ++I) {
    TSceneNode* const Child = Scene::AsSceneNode(GetChildAt(I).Get());
    if (Child && Child->FListedIn == this) FSceneChildren.push_back(Child);
  }
}

void TSceneNode::ChangedChildrenOrder(const TNodes&) {
  RebuildSceneChildren();
  if (const auto Region = GetInvalidateRegion()) Region->Invalidate();
}

bool TSceneNode::SetChildIndex(INode* AChild, std::int32_t AIndex) {
  if (!TNode::SetChildIndex(AChild, AIndex)) return false;
  RebuildSceneChildren();
  return true;
}

void TSceneNode::SwapChildren(std::int32_t I, std::int32_t J) {
  TNode::SwapChildren(I, J);
  RebuildSceneChildren();
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

void TSceneNode::PaintChildren(Canvas::ICanvas& ACanvas, const TMatrix& AMatrix) {
  for (std::size_t I = 0; I < FSceneChildren.size(); ++I)
    TRef<TSceneNode>(FSceneChildren[I])->Paint(ACanvas, AMatrix);
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
  return ContainsLocalPoint(GlobalToLocal(APoint));
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

// ---------------------------------------------------------------- the pointer

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
  const float Determinant = Global.GetDeterminant();
  if (Determinant == 0.0F || !std::isfinite(Determinant)) return nullptr;
  const TPointF Local = APoint * Global.Inverse();
  const bool IsInside = ContainsLocalPoint(Local);
  ISceneNode* Result = nullptr;
  if (IsInside || !FClipChildren) Result = FindChildUnder(APoint, ALocalPoint, Global, ANodes);
  if (!IsInside) return Result;
  if (ANodes) ANodes->push_back(this);
  if (Result) return Result;
  ALocalPoint = Local;
  return this;
}

/// The last child that answers; with `ANodes` all children are asked.
ISceneNode* TSceneNode::FindChildUnder(TPointF APoint,
                                       TPointF& ALocalPoint,
                                       const TMatrix& AMatrix,
                                       TSceneNodes* ANodes) {
  ISceneNode* Result = nullptr;
  for (auto I = FSceneChildren.rbegin(); I != FSceneChildren.rend(); ++I) {
    TPointF Local;
    ISceneNode* const Found = ANodes
                                  ? (*I)->GetNodeUnderGlobalPoint(APoint, Local, AMatrix, *ANodes)
                                  : (*I)->GetNodeUnderGlobalPoint(APoint, Local, AMatrix);
    if (!Found || Result) continue;
    Result = Found;
    ALocalPoint = Local;
    if (!ANodes) return Result;
  }
  return Result;
}

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
