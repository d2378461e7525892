#include <algorithm>
#include <cmath>
#include <utility>

#include "scene/System.Beacon.Fencing.Scene.Helpers.h"
#include "scene/System.Beacon.Fencing.Scene.Shapes.h"
#include "scene/corners.h"

namespace System::Beacon::Fencing::Scene {
namespace {

enum TLimit : std::size_t { MinX, MaxX, MinY, MaxY };

double SquaredDistance(TPointF A, TPointF B) {
  const double Dx = double{A.X} - B.X;
  const double Dy = double{A.Y} - B.Y;
  return Dx * Dx + Dy * Dy;
}

/// Takes a coordinate from one range to another, the ends exactly.
float Stretch(float AValue, float AFrom, float ATo, float ANewFrom, float ANewTo) {
  if (AFrom == ATo) return ANewFrom;
  const double Share = (double{AValue} - AFrom) / (double{ATo} - AFrom);
  return static_cast<float>(std::lerp(double{ANewFrom}, double{ANewTo}, Share));
}

TRectF Moved(const TRectF& ARect, TPointF ADelta) {
  return {
      ARect.Left + ADelta.X, ARect.Top + ADelta.Y, ARect.Right + ADelta.X, ARect.Bottom + ADelta.Y};
}

}  // namespace

const TClassInfo& TControlPointsShape::ClassInfo() {
  using TSelf = TControlPointsShape;
  static const TClassInfo Info{
      .Name = "System.Beacon.Fencing.Scene.Shapes.TControlPointsShape",
      .Base = &TSceneNode::ClassInfo(),
      .Properties = {
          Published<&TSelf::GetControlPoints, &TSelf::SetControlPoints>("ControlPoints"),
          Published<&TSelf::GetFillColor, &TSelf::SetFillColor>("FillColor"),
          Published<&TSelf::GetStrokeColor, &TSelf::SetStrokeColor>("StrokeColor"),
          Published<&TSelf::GetStrokeThickness, &TSelf::SetStrokeThickness>("StrokeThickness"),
          Public<&TSelf::GetDrawPolylines, &TSelf::SetDrawPolylines>("DrawPolylines")}};
  return Info;
}

// ---------------------------------------------------------------- points

TPointF TControlPointsShape::GetControlPointAt(std::int32_t AIndex) const {
  return HasControlPoint(AIndex) ? FControlPoints[static_cast<std::size_t>(AIndex)] : TPointF{};
}

TPointF TControlPointsShape::GetLastControlPoint() const {
  return GetControlPointAt(GetControlPointCount() - 1);
}

TPointF TControlPointsShape::GetFirstControlPoint() const {
  return GetControlPointAt(0);
}

std::int32_t TControlPointsShape::GetClosestControlPointIndex(TPointF APoint) const {
  const auto IsNearer = [APoint](TPointF A, TPointF B) {
    return SquaredDistance(A, APoint) < SquaredDistance(B, APoint);
  };
  const auto Nearest = std::min_element(FControlPoints.begin(), FControlPoints.end(), IsNearer);
  return FControlPoints.empty() ? -1 : static_cast<std::int32_t>(Nearest - FControlPoints.begin());
}

bool TControlPointsShape::AddControlPoint(TPointF APoint) {
  if (!IsFinite(APoint)) return false;
  const TRef<TNode> Keep(this);
  const TRectF Old = GetRect();
  FControlPoints.push_back(APoint);
  const bool IsInside = FControlPoints.size() > 1 && Old.Contains(APoint);
  if (!IsInside) IncludeLastPoint();
  ChangedExtent();
  const TRectF New = GetRect();
  EmitControlPointsChange(this, true);
  if (!IsInside) EmitRectChange(this, Old, New);
  RepaintBoth({}, true);
  return true;
}

bool TControlPointsShape::AddControlPointAtIndex(std::int32_t AIndex, TPointF APoint) {
  if (AIndex < 0 || AIndex > GetControlPointCount() || !IsFinite(APoint)) return false;
  const TRef<TNode> Keep(this);
  if (!BeginControlPointInsertion(AIndex) || AIndex > GetControlPointCount()) return false;
  const std::int32_t Last = GetControlPointCount();
  FControlPoints.insert(FControlPoints.begin() + AIndex, APoint);
  ComputeRect();
  ChangedExtent();
  for (std::int32_t I = Last; I > AIndex; --I) MovedControlPointOnePositionBack(I - 1, I);
  EndControlPointInsertion(AIndex);
  return true;
}

bool TControlPointsShape::RemoveControlPoint(std::int32_t AIndex) {
  if (!HasControlPoint(AIndex)) return false;
  const TRef<TNode> Keep(this);
  const TRectF Old = GetRect();
  const bool WasLimit = IsLimitPoint(AIndex);
  FControlPoints.erase(FControlPoints.begin() + AIndex);
  if (WasLimit)
    ComputeRect();
  else
    for (std::int32_t& Limit : FLimitPoints) Limit -= Limit >= AIndex ? 1 : 0;
  ChangedExtent();
  const TRectF New = GetRect();
  EmitControlPointsChange(this, true);
  if (WasLimit) EmitRectChange(this, Old, New);
  RepaintBoth({}, true);
  return true;
}

void TControlPointsShape::SetControlPointAt(std::int32_t AIndex, TPointF APoint) {
  if (!HasControlPoint(AIndex) || !IsFinite(APoint)) return;
  const TRef<TNode> Keep(this);
  const TRectF Old = GetRect();
  const TRectF OldPlace = PlaceOnScreen(true);
  const bool IsRectTouched = IsLimitPoint(AIndex) || !Old.Contains(APoint);
  FControlPoints[static_cast<std::size_t>(AIndex)] = APoint;
  if (IsRectTouched) ComputeRect();
  ChangedExtent();
  const TRectF New = GetRect();
  EmitControlPointsChange(this, false);
  if (IsRectTouched) EmitRectChange(this, Old, New);
  RepaintBoth(IsRectTouched ? OldPlace : TRectF{}, true);
}

void TControlPointsShape::SetControlPoints(std::span<const TPointF> APoints) {
  if (!std::all_of(APoints.begin(), APoints.end(), [](TPointF P) { return IsFinite(P); })) return;
  const TRef<TNode> Keep(this);
  const TRectF OldPlace = PlaceOnScreen(true);
  const TRectF Old = GetRect();
  const bool IsResized = APoints.size() != FControlPoints.size();
  FControlPoints = std::vector<TPointF>(APoints.begin(), APoints.end());
  ComputeRect();
  ChangedExtent();
  const TRectF New = GetRect();
  EmitControlPointsChange(this, IsResized);
  if (Old != New) EmitRectChange(this, Old, New);
  RepaintBoth(OldPlace, true);
}

bool TControlPointsShape::BeginControlPointInsertion(std::int32_t) {
  return !GetLoadingChildren();
}

void TControlPointsShape::MovedControlPointOnePositionBack(std::int32_t, std::int32_t) {}
void TControlPointsShape::EndControlPointInsertion(std::int32_t) {}

// ---------------------------------------------------------------- place and extent

bool TControlPointsShape::IsLimitPoint(std::int32_t AIndex) const {
  return HasControlPoint(AIndex) &&
         std::find(FLimitPoints.begin(), FLimitPoints.end(), AIndex) != FLimitPoints.end();
}

/// Compares an appended point with the outermost ones.
void TControlPointsShape::IncludeLastPoint() {
  const std::int32_t Last = GetControlPointCount() - 1;
  const TPointF Point = GetLastControlPoint();
  if (Point.X < GetControlPointAt(FLimitPoints[MinX]).X) FLimitPoints[MinX] = Last;
  if (Point.X > GetControlPointAt(FLimitPoints[MaxX]).X) FLimitPoints[MaxX] = Last;
  if (Point.Y < GetControlPointAt(FLimitPoints[MinY]).Y) FLimitPoints[MinY] = Last;
  if (Point.Y > GetControlPointAt(FLimitPoints[MaxY]).Y) FLimitPoints[MaxY] = Last;
}

/// Looks for the outermost points.
void TControlPointsShape::ComputeRect() {
  FLimitPoints = {};
  for (std::int32_t I = 1; I < GetControlPointCount(); ++I) {
    const TPointF Point = GetControlPointAt(I);
    if (Point.X < GetControlPointAt(FLimitPoints[MinX]).X) FLimitPoints[MinX] = I;
    if (Point.X > GetControlPointAt(FLimitPoints[MaxX]).X) FLimitPoints[MaxX] = I;
    if (Point.Y < GetControlPointAt(FLimitPoints[MinY]).Y) FLimitPoints[MinY] = I;
    if (Point.Y > GetControlPointAt(FLimitPoints[MaxY]).Y) FLimitPoints[MaxY] = I;
  }
}

TRectF TControlPointsShape::GetRect() const {
  TCorners Limits;
  for (std::size_t I = 0; I < FLimitPoints.size(); ++I)
    Limits.Points[I] = GetControlPointAt(FLimitPoints[I]);
  return TCornersHelper::GetRect(Limits);
}

void TControlPointsShape::SetRect(const TRectF& ARect) {
  if (FControlPoints.empty() || !IsFinite(ARect) || !IsFinite(ARect.GetCentre())) return;
  const TRectF Old = GetRect();
  if (FControlPoints.size() > 1 && ARect == Old) return;
  const TRef<TNode> Keep(this);
  const TRectF OldPlace = PlaceOnScreen(false);
  if (FControlPoints.size() == 1) {
    FControlPoints.front() = ARect.GetCentre();
    ChangedExtent();
  } else {
    StretchTo(ARect);
    const TRectF New = GetRect();
    EmitControlPointsChange(this, false);
    EmitRectChange(this, Old, New);
  }
  RepaintBoth(OldPlace, false);
}

void TControlPointsShape::StretchTo(const TRectF& ARect) {
  const TRectF Old = GetRect();
  for (TPointF& Point : FControlPoints)
    Point = {Stretch(Point.X, Old.Left, Old.Right, ARect.Left, ARect.Right),
             Stretch(Point.Y, Old.Top, Old.Bottom, ARect.Top, ARect.Bottom)};
  ChangedExtent();
}

void TControlPointsShape::SetDisplacement(const TPointF& ADelta) {
  if (!IsFinite(ADelta) || !IsFinite(Moved(GetRect(), ADelta))) return;
  const TRef<TNode> Keep(this);
  const TPointF Delta = ADelta;  // the argument may go meanwhile
  const TRectF OldPlace = PlaceOnScreen(true);
  EmitWillMove(this);
  for (TPointF& Point : FControlPoints) Point = Point + Delta;
  ChangedExtent();
  EmitControlPointsChange(this, false);
  EmitDidMove(this);
  RepaintBoth(OldPlace, true);
}

bool TControlPointsShape::IsUnderGlobalPoint(TPointF APoint) const {
  constexpr double Reach = 5.0;
  return std::any_of(FControlPoints.begin(), FControlPoints.end(), [APoint](TPointF P) {
    return SquaredDistance(P, APoint) < Reach * Reach;
  });
}

// ---------------------------------------------------------------- painting

TRectF TControlPointsShape::PlaceOnScreen(bool AWithChildren) const {
  return GetInvalidateRegion() ? GetRepaintRect(AWithChildren, RepaintMargin) : TRectF{};
}

/// Has the new place drawn anew, together with an old one, if there is one.
void TControlPointsShape::RepaintBoth(const TRectF& AOldPlace, bool AWithChildren) {
  if (const auto Region = GetInvalidateRegion())
    Region->InvalidateRect(BoundBoth(AOldPlace, GetRepaintRect(AWithChildren, RepaintMargin)));
}

TMatrix TControlPointsShape::GetPaintMatrix(const TMatrix& AMatrix) const {
  const TScene* const Scene = GetSceneObject();
  const TMatrix Global = AMatrix * GetLocalMatrix();
  return Scene ? Global * Scene->GetViewProjectionViewportMatrix() : Global;
}

void TControlPointsShape::DoPaint(Canvas::ICanvas& ACanvas, const TMatrix& AMatrix) {
  if (GetSceneObject()) Draw(ACanvas, AMatrix);
  PaintChildren(ACanvas, AMatrix * GetLocalMatrix());
}

void TControlPointsShape::Draw(Canvas::ICanvas& ACanvas, const TMatrix& AMatrix) {
  if (FControlPoints.empty() || !FDrawPolylines) return;
  const TMatrix ToScreen = GetPaintMatrix(AMatrix);
  ACanvas.SetMatrix(TMatrix::Identity());
  ACanvas.SetStrokeColor(TAlphaColor{0xFF000000}, GetOpacity());
  ACanvas.SetFillColor(TAlphaColor{0xFFFFFFFF}, GetOpacity());
  ACanvas.SetStrokePattern(Canvas::TStrokePattern::Dash);
  ACanvas.SetStrokeWidth(1.0F, true);
  ACanvas.BeginPath(true, false);
  ACanvas.MoveTo(FControlPoints.front() * ToScreen);
  for (std::size_t I = 1; I < FControlPoints.size(); ++I)
    ACanvas.LineTo(FControlPoints[I] * ToScreen);
  ACanvas.EndPath();
}

}  // namespace System::Beacon::Fencing::Scene
