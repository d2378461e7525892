#include <cmath>

#include "map/System.Beacon.Fencing.Scene.Beacons.h"
#include "scene/corners.h"

namespace System::Beacon::Fencing::Scene::Beacons {

const TClassInfo& TMapPathNode::ClassInfo() {
  using TSelf = TMapPathNode;
  static const TClassInfo Info{
      .Name = "System.Beacon.Fencing.Scene.Beacons.TMapPathNode",
      .Base = &TSceneNode::ClassInfo(),
      .Create = [] { return TRef<TInterfacedObject>(New<TMapPathNode>()); },
      .Properties = {
          Published<&TSelf::GetDescriptionList, &TSelf::SetDescriptionList>("DescriptionList"),
          Published<&TSelf::GetControlPointIndex, &TSelf::SetControlPointIndex>(
              "ControlPointIndex"),
          Public<&TSelf::GetDisplacement, &TSelf::SetDisplacement>("Displacement")}};
  return Info;
}

void TMapPathNode::SetControlPointIndex(std::int32_t AIndex) {
  if (AIndex == FControlPointIndex) return;
  FControlPointIndex = AIndex;
  ChangedExtent();
  Repaint();
}

void TMapPathNode::SettedParent(INode* AParent) {
  TSceneNode::SettedParent(AParent);
  FParent = Supports<IMapPath>(AParent);
  ChangedExtent();
  Repaint();
}

void TMapPathNode::Detach() {
  const TRef<TNode> Keep(this);
  if (FParent && FControlPointIndex >= 0 &&
      IsSame(FParent->GetControlPointNode(FControlPointIndex).Get(), this))
    FParent->RemoveControlPoint(FControlPointIndex);
  TSceneNode::Detach();
}

TPointF TMapPathNode::GetDisplacement() const {
  return FParent ? FParent->GetControlPointAt(FControlPointIndex) : TPointF{};
}

void TMapPathNode::SetDisplacement(const TPointF& APoint) {
  if (!FParent || !IsFinite(APoint)) return;
  const TRef<TNode> Keep(this);
  const TRef<IMapPath> Path(FParent);
  const TPointF Point = APoint;
  EmitWillMove(this);
  const TRectF Old = GetRepaintRect(true, RepaintMargin);
  Path->SetControlPointAt(FControlPointIndex, Point);
  AfterMovementRepaint(Old);
  EmitDidMove(this);
}

TMatrix TMapPathNode::GetLocalMatrix() const {
  const TPointF Place = GetDisplacement();
  return TMatrix::Translation(Place.X, Place.Y);
}

bool TMapPathNode::ContainsLocalPoint(TPointF APoint) const {
  return std::hypot(APoint.X, APoint.Y) < Radius;
}

void TMapPathNode::DoPaint(Canvas::ICanvas& ACanvas, const TMatrix& AMatrix) {
  const TMatrix Global = AMatrix * GetLocalMatrix();
  if (const TScene* const Scene = GetSceneObject()) {
    ACanvas.SetMatrix(Global * Scene->GetViewProjectionViewportMatrix());
    ACanvas.SetFillColor(TAlphaColor{0xEEFFBB55}, 1.0F);
    ACanvas.SetStrokeColor(TAlphaColor{0xFF000000}, 1.0F);
    ACanvas.SetStrokePattern(Canvas::TStrokePattern::Solid);
    ACanvas.SetStrokeWidth(1.0F, true);
    ACanvas.DrawRectangle(GetRect());
  }
  PaintChildren(ACanvas, Global);
}

}  // namespace System::Beacon::Fencing::Scene::Beacons
