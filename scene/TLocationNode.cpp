#include <cmath>

#include "scene/System.Beacon.Fencing.Scene.Classes.h"
#include "scene/corners.h"

namespace System::Beacon::Fencing::Scene {

const TClassInfo& TLocationNode::ClassInfo() {
  static const TClassInfo Info{
      .Name = "System.Beacon.Fencing.Scene.Classes.TLocationNode",
      .Base = &TSceneNode::ClassInfo(),
      .Properties = {
          Published<&TLocationNode::GetScaling, &TLocationNode::SetScaling>("Scaling"),
          Published<&TLocationNode::GetDisplacement, &TLocationNode::SetDisplacement>(
              "Displacement"),
          Published<&TLocationNode::GetRotation, &TLocationNode::SetRotation>("Rotation")}};
  return Info;
}

const TClassInfo& TLocationShape::ClassInfo() {
  static const TClassInfo Info{.Name = "System.Beacon.Fencing.Scene.Classes.TLocationShape",
                               .Base = &TLocationNode::ClassInfo()};
  return Info;
}

template <class TChange>
void TLocationNode::Move(TChange&& AChange) {
  const TRef<TNode> Keep(this);
  EmitWillMove(this);
  const bool IsWatched = static_cast<bool>(GetInvalidateRegion());
  const TRectF Old = IsWatched ? GetRepaintRect(true, RepaintMargin) : TRectF{};
  AChange();
  ChangedExtent();
  AfterMovementRepaint(Old);
  EmitDidMove(this);
}

void TLocationNode::SetDisplacement(const TPointF& APoint) {
  if (APoint == FDisplacement || !IsFinite(APoint)) return;
  Move([this, Point = APoint] { FDisplacement = Point; });
}

void TLocationNode::SetScaling(const TPointF& AScaling) {
  if (!IsFinite(AScaling)) return;
  Move([this, Scaling = AScaling] { FScaling = Scaling; });
}

void TLocationNode::SetRotation(float ARadians) {
  if (!std::isfinite(ARadians)) return;
  Move([this, ARadians] { FRotation = ARadians; });
}

TMatrix TLocationNode::GetLocalMatrix() const {
  constexpr float Unturned = 0.00001F;
  TMatrix Result = TMatrix::Scaling(FScaling.X, FScaling.Y);
  if (std::abs(FRotation) > Unturned) Result = Result * TMatrix::Rotation(FRotation);
  Result.M[2] = {FDisplacement.X, FDisplacement.Y, 1.0F};
  return Result;
}

}  // namespace System::Beacon::Fencing::Scene
