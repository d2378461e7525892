#include <fmt/format.h>

#include <algorithm>
#include <string>

#include "platform/errors.h"
#include "positioning/System.Beacon.Fencing.Math.h"
#include "scene/System.Beacon.Fencing.Scene.Shapes.h"
#include "scene/corners.h"
#include "scene/messages.h"

namespace System::Beacon::Fencing::Scene {
namespace {

constexpr std::int32_t MaxTestedPoints = 1000;
constexpr std::uint8_t MoveToPoint = 0;
constexpr std::uint8_t LineToPoint = 1;

template <class T>
void RequireCommands(std::span<const T> ACommands) {
  for (std::size_t I = 0; I < ACommands.size(); ++I)
    if (ACommands[I] != MoveToPoint && ACommands[I] != LineToPoint)
      throw EGeneralError(fmt::format(Messages::SPolygonCommand, I, ACommands[I]));
}

}  // namespace

const TClassInfo& TPolygonShape::ClassInfo() {
  using TSelf = TPolygonShape;
  static const TClassInfo Info{
      .Name = "System.Beacon.Fencing.Scene.Shapes.TPolygonShape",
      .Base = &TControlPointsShape::ClassInfo(),
      .Create = [] { return TRef<TInterfacedObject>(New<TPolygonShape>()); },
      .Properties = {Published<&TSelf::GetEnableFill, &TSelf::SetEnableFill>("EnableFill"),
                     Published<&TSelf::GetCommandNumbers, &TSelf::SetCommandNumbers>("Commands")}};
  return Info;
}

// ---------------------------------------------------------------- points and commands

bool TPolygonShape::AddControlPoint(TPointF APoint) {
  if (!IsFinite(APoint)) return false;
  const TRef<TNode> Keep(this);
  if (GetControlPointCount() >= 2 && !IsComplex() && CrossesAnyLine(APoint)) SetCrossed(true);
  if (!TControlPointsShape::AddControlPoint(APoint)) return false;
  const auto Index = static_cast<std::size_t>(GetControlPointCount()) - 1;
  if (FCommand.size() > Index) FCommand.resize(Index);  // of points that are no more
  FCommand.push_back(Index == 0 ? MoveToPoint : LineToPoint);
  return true;
}

void TPolygonShape::SetControlPointAt(std::int32_t AIndex, TPointF APoint) {
  if (!HasControlPoint(AIndex) || !IsFinite(APoint)) return;
  const TRef<TNode> Keep(this);
  TControlPointsShape::SetControlPointAt(AIndex, APoint);
  SetCrossed(ComputeIsCrossed());
}

void TPolygonShape::SetControlPoints(std::span<const TPointF> APoints) {
  FIsComplex = TCrossing::Unknown;
  TControlPointsShape::SetControlPoints(APoints);
}

bool TPolygonShape::RemoveControlPoint(std::int32_t AIndex) {
  const TRef<TNode> Keep(this);
  if (!TControlPointsShape::RemoveControlPoint(AIndex)) return false;
  if (static_cast<std::size_t>(AIndex) < FCommand.size()) FCommand.erase(FCommand.begin() + AIndex);
  return true;
}

void TPolygonShape::EndControlPointInsertion(std::int32_t AIndex) {
  TControlPointsShape::EndControlPointInsertion(AIndex);
  FIsComplex = TCrossing::Unknown;
  if (FCommand.empty())
    FCommand.push_back(MoveToPoint);
  else if (static_cast<std::size_t>(AIndex) <= FCommand.size())
    FCommand.insert(FCommand.begin() + std::max(AIndex, 1), LineToPoint);
}

void TPolygonShape::SetCommands(std::span<const std::uint8_t> ACommands) {
  RequireCommands(ACommands);
  FCommand = std::vector<std::uint8_t>(ACommands.begin(), ACommands.end());
  Repaint();
}

std::vector<std::int32_t> TPolygonShape::GetCommandNumbers() const {
  return {FCommand.begin(), FCommand.end()};
}

void TPolygonShape::SetCommandNumbers(const std::vector<std::int32_t>& ACommands) {
  RequireCommands(std::span(ACommands));
  std::vector<std::uint8_t> Commands;
  Commands.reserve(ACommands.size());
  for (const std::int32_t Command : ACommands)
    Commands.push_back(static_cast<std::uint8_t>(Command));
  SetCommands(Commands);
}

void TPolygonShape::SetCloseContour(bool AValue) {
  if (!IsComplex()) SetCrossed(ComputeIsCrossed());
  FCloseContour = AValue;
  Repaint();
}

void TPolygonShape::SetScene(TScene* AScene) {
  const TRef<TNode> Keep(this);
  TControlPointsShape::SetScene(AScene);
  FBrush.SettedScene(GetSceneObject(), *this);
}

// ---------------------------------------------------------------- the outline

/// How many points have a command.
std::int32_t TPolygonShape::OutlineLength() const {
  return static_cast<std::int32_t>(std::min(Points().size(), FCommand.size()));
}

std::vector<TPolygonShape::TLine> TPolygonShape::Lines() const {
  std::vector<TLine> Result;
  for (std::int32_t I = 1; I < OutlineLength(); ++I)
    if (FCommand[static_cast<std::size_t>(I)] == LineToPoint) Result.push_back({I - 1, I});
  return Result;
}

/// Whether two lines cross or touch; lines that begin or end at the same point do not.
bool TPolygonShape::Cross(const TLine& A, const TLine& B) const {
  if (A.From == B.From || A.From == B.To || A.To == B.From || A.To == B.To) return false;
  return SegmentIntersect(GetControlPointAt(A.From),
                          GetControlPointAt(A.To),
                          GetControlPointAt(B.From),
                          GetControlPointAt(B.To));
}

/// Whether the line to a point that is to be appended crosses one that is there.
bool TPolygonShape::CrossesAnyLine(TPointF ANewPoint) const {
  const std::int32_t Last = GetControlPointCount() - 1;
  if (Last + 2 > MaxTestedPoints) return true;
  const std::vector<TLine> All = Lines();
  return std::any_of(All.begin(), All.end(), [&](const TLine& ALine) {
    return ALine.To != Last && SegmentIntersect(GetControlPointAt(ALine.From),
                                                GetControlPointAt(ALine.To),
                                                GetLastControlPoint(),
                                                ANewPoint);
  });
}

bool TPolygonShape::ComputeIsCrossed() const {
  const std::int32_t Count = GetControlPointCount();
  if (Count < 4) return false;
  if (Count > MaxTestedPoints) return true;
  const std::vector<TLine> All = Lines();
  const TLine Closing{Count - 1, 0};
  for (std::size_t I = 0; I < All.size(); ++I) {
    if (I > 0 && Cross(Closing, All[I])) return true;
    for (std::size_t J = I + 1; J < All.size(); ++J)
      if (Cross(All[I], All[J])) return true;
  }
  return false;
}

bool TPolygonShape::IsComplex() const {
  if (FIsComplex == TCrossing::Unknown) SetCrossed(ComputeIsCrossed());
  return FIsComplex == TCrossing::Yes;
}

bool TPolygonShape::ContainsLocalPoint(TPointF APoint) const {
  if (!GetRect().Contains(APoint)) return false;
  return IsComplex() ? IsPointInComplexPolygon(Points(), APoint)
                     : IsPointInPolygon(Points(), APoint);
}

void TPolygonShape::Draw(Canvas::ICanvas& ACanvas, const TMatrix& AMatrix) {
  if (OutlineLength() == 0) return;
  const TMatrix ToScreen = GetPaintMatrix(AMatrix);
  ACanvas.SetMatrix(TMatrix::Identity());
  FBrush.SetupBrushes(ACanvas, *this);
  ACanvas.BeginPath(true, GetEnableFill());
  for (std::int32_t I = 0; I < OutlineLength(); ++I) {
    const TPointF Point = GetControlPointAt(I) * ToScreen;
    if (I == 0 || FCommand[static_cast<std::size_t>(I)] == MoveToPoint)
      ACanvas.MoveTo(Point);
    else
      ACanvas.LineTo(Point);
  }
  if (FCloseContour) ACanvas.CloseContour();
  ACanvas.EndPath();
}

}  // namespace System::Beacon::Fencing::Scene
