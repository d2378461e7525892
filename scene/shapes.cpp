// The shapes of a rectangle or of two points.
#include <algorithm>
#include <cmath>
#include <utility>

#include "positioning/System.Beacon.Fencing.Math.h"
#include "scene/System.Beacon.Fencing.Scene.Shapes.h"
#include "scene/corners.h"

namespace System::Beacon::Fencing::Scene {

// ---------------------------------------------------------------- TShape, TRectangle

const TClassInfo& TShape::ClassInfo() {
  static const TClassInfo Info{.Name = "System.Beacon.Fencing.Scene.Shapes.TShape",
                               .Base = &TShapeBase::ClassInfo()};
  return Info;
}

void TShape::SetRect(const TRectF& ARect) {
  if (!IsFinite(ARect)) return;
  const TRef<TNode> Keep(this);
  const TRectF New = ARect;
  const TRectF OldPlace = GetRepaintRect(false, RepaintMargin);
  const TRectF Old = std::exchange(FRect, New);
  ChangedExtent();
  EmitRectChange(this, Old, New);
  const auto Region = GetInvalidateRegion();
  if (!Region) return;
  TRectF Changed = BoundBoth(OldPlace, GetRepaintRect(false, RepaintMargin));
  Changed.Inflate(RepaintMargin, RepaintMargin);
  Region->InvalidateRect(Changed);
}

const TClassInfo& TRectangle::ClassInfo() {
  static const TClassInfo Info{
      .Name = "System.Beacon.Fencing.Scene.Shapes.TRectangle",
      .Base = &TShape::ClassInfo(),
      .Create = [] { return TRef<TInterfacedObject>(New<TRectangle>()); },
  };
  return Info;
}

void TRectangle::Draw(Canvas::ICanvas& ACanvas) {
  if (GetEnableFill())
    ACanvas.DrawRectangle(GetRect());
  else
    ACanvas.StrokeRectangle(GetRect());
}

// ---------------------------------------------------------------- TEllipse

const TClassInfo& TEllipse::ClassInfo() {
  static const TClassInfo Info{
      .Name = "System.Beacon.Fencing.Scene.Shapes.TEllipse",
      .Base = &TShape::ClassInfo(),
      .Create = [] { return TRef<TInterfacedObject>(New<TEllipse>()); },
      .Properties = {
          Published<&TEllipse::GetPerfectCircle, &TEllipse::SetPerfectCircle>("PerfectCircle")}};
  return Info;
}

void TEllipse::SetFitIntoRect(bool AValue) {
  if (AValue == FFitIntoRect) return;
  FFitIntoRect = AValue;
  Repaint();
}

/// Of the circle where it is one.
TPointF TEllipse::HalfSize() const {
  const TPointF Half{std::abs(GetRect().GetWidth()) / 2.0F, std::abs(GetRect().GetHeight()) / 2.0F};
  const float Radius = std::min(Half.X, Half.Y);
  return FFitIntoRect ? TPointF{Radius, Radius} : Half;
}

bool TEllipse::ContainsLocalPoint(TPointF APoint) const {
  if (!TShape::ContainsLocalPoint(APoint)) return false;
  const TPointF FromCentre = APoint - GetRect().GetCentre();
  return Clamped(FromCentre) == FromCentre;
}

/// A point relative to the centre, brought onto the outline when it is outside: stretched with the
/// ellipse to a circle, shortened, and stretched back.
TPointF TEllipse::Clamped(TPointF AFromCentre) const {
  const TPointF Half = HalfSize();
  if (Half.X == 0.0F || Half.Y == 0.0F)
    return {std::clamp(AFromCentre.X, -Half.X, Half.X), std::clamp(AFromCentre.Y, -Half.Y, Half.Y)};
  const float Radius = std::max(Half.X, Half.Y);
  const TPointF Round{AFromCentre.X * (Radius / Half.X), AFromCentre.Y * (Radius / Half.Y)};
  const float Length = std::hypot(Round.X, Round.Y);
  return Length <= Radius ? AFromCentre : AFromCentre * (Radius / Length);
}

TPointF TEllipse::GetClosestPointToGlobalPoint(TPointF APoint, bool AGlobal) const {
  const TPointF Centre = GetRect().GetCentre();
  const TPointF Closest = Centre + Clamped(GlobalToLocal(APoint) - Centre);
  return AGlobal ? Closest * GetGlobalMatrix() : Closest;
}

void TEllipse::Draw(Canvas::ICanvas& ACanvas) {
  TRectF Rect = ConverToPositiveRect(GetRect());
  if (FFitIntoRect) Rect = FitInto({-1.0F, -1.0F, 1.0F, 1.0F}, Rect);
  if (GetEnableFill())
    ACanvas.DrawEllipse(Rect);
  else
    ACanvas.StrokeEllipse(Rect);
}

// ---------------------------------------------------------------- TSegment

const TClassInfo& TSegment::ClassInfo() {
  static const TClassInfo Info{
      .Name = "System.Beacon.Fencing.Scene.Shapes.TSegment",
      .Base = &TShapeBase::ClassInfo(),
      .Create = [] { return TRef<TInterfacedObject>(New<TSegment>()); },
  };
  return Info;
}

TPointF TSegment::GetControlPointAt(std::int32_t AIndex) const {
  return AIndex == 0 || AIndex == 1 ? FPoints[static_cast<std::size_t>(AIndex)] : TPointF{};
}

void TSegment::SetControlPointAt(std::int32_t AIndex, TPointF APoint) {
  if (AIndex == 0) SetPoints(APoint, FPoints[1]);
  if (AIndex == 1) SetPoints(FPoints[0], APoint);
}

TRectF TSegment::GetRect() const {
  const auto& [Start, End] = FPoints;
  return ConverToPositiveRect({Start.X, Start.Y, End.X, End.Y});
}

void TSegment::SetRect(const TRectF& ARect) {
  SetPoints({ARect.Left, ARect.Top}, {ARect.Right, ARect.Bottom});
}

void TSegment::SetPoints(TPointF AStart, TPointF AEnd) {
  if (!IsFinite(AStart) || !IsFinite(AEnd)) return;
  const bool IsWatched = static_cast<bool>(GetInvalidateRegion());
  const TRectF Old = IsWatched ? GetRepaintRect(true, RepaintMargin) : TRectF{};
  FPoints = {AStart, AEnd};
  ChangedExtent();
  AfterMovementRepaint(Old);
}

void TSegment::Draw(Canvas::ICanvas& ACanvas) {
  ACanvas.DrawLine(FPoints[0], FPoints[1]);
}

}  // namespace System::Beacon::Fencing::Scene
