#include <algorithm>
#include <cmath>

#include "positioning/System.Beacon.Fencing.Math.h"
#include "scene/System.Beacon.Fencing.Scene.Shapes.h"

namespace System::Beacon::Fencing::Scene {
namespace {

bool Touches(const TConnection& AConnection, std::int32_t AIndex) {
  return AConnection.first == AIndex || AConnection.second == AIndex;
}

bool Joins(const TConnection& AConnection, std::int32_t AFrom, std::int32_t ATo, bool AnOrdered) {
  return AConnection == TConnection{AFrom, ATo} ||
         (!AnOrdered && AConnection == TConnection{ATo, AFrom});
}

float Distance(TPointF A, TPointF B) {
  return std::hypot(A.X - B.X, A.Y - B.Y);
}

}  // namespace

const TClassInfo& TConnectedControlPointsShape::ClassInfo() {
  using TSelf = TConnectedControlPointsShape;
  static const TClassInfo Info{
      .Name = "System.Beacon.Fencing.Scene.Shapes.TConnectedControlPointsShape",
      .Base = &TControlPointsShape::ClassInfo(),
      .Properties = {Published<&TSelf::GetConnections, &TSelf::SetConnections>("Connections")}};
  return Info;
}

// ---------------------------------------------------------------- points

bool TConnectedControlPointsShape::RemoveControlPoint(std::int32_t AIndex) {
  const TRef<TNode> Keep(this);
  if (!TControlPointsShape::RemoveControlPoint(AIndex)) return false;
  std::erase_if(FConnections, [AIndex](const TConnection& C) { return Touches(C, AIndex); });
  for (auto& [From, To] : FConnections) {
    if (From > AIndex) --From;
    if (To > AIndex) --To;
  }
  return true;
}

void TConnectedControlPointsShape::MovedControlPointOnePositionBack(std::int32_t AFrom,
                                                                    std::int32_t ATo) {
  TControlPointsShape::MovedControlPointOnePositionBack(AFrom, ATo);
  if (FConnectionsByPoint.empty()) FindConnectionsByPoint();
  auto Touching = std::lower_bound(
      FConnectionsByPoint.begin(), FConnectionsByPoint.end(), std::pair{AFrom, std::size_t{0}});
  for (; Touching != FConnectionsByPoint.end() && Touching->first == AFrom; ++Touching) {
    if (Touching->second >= FConnections.size()) continue;  // a handler took some away
    auto& [From, To] = FConnections[Touching->second];
    if (From == AFrom) From = ATo;
    if (To == AFrom) To = ATo;
  }
}

void TConnectedControlPointsShape::EndControlPointInsertion(std::int32_t AIndex) {
  FConnectionsByPoint.clear();
  TControlPointsShape::EndControlPointInsertion(AIndex);
}

void TConnectedControlPointsShape::FindConnectionsByPoint() {
  for (std::size_t I = 0; I < FConnections.size(); ++I) {
    FConnectionsByPoint.emplace_back(FConnections[I].first, I);
    FConnectionsByPoint.emplace_back(FConnections[I].second, I);
  }
  std::sort(FConnectionsByPoint.begin(), FConnectionsByPoint.end());
}

// ---------------------------------------------------------------- connections

void TConnectedControlPointsShape::AddControlPointConnections(
    std::span<const TConnection> AConnections) {
  const TConnections Added(AConnections.begin(), AConnections.end());
  FConnections.insert(FConnections.end(), Added.begin(), Added.end());
}

TConnections TConnectedControlPointsShape::GetControlPointConnections(std::int32_t AIndex) const {
  TConnections Result;
  for (const TConnection& Connection : FConnections)
    if (Touches(Connection, AIndex)) Result.push_back(Connection);
  return Result;
}

TRef<IPathNode> TConnectedControlPointsShape::GetControlPointNode(std::string_view AName) {
  for (std::int32_t I = 0; I < GetChildCount(); ++I) {
    const TRef<INode> Child = GetChildAt(I);
    if (!SameName(Child->GetName(), AName)) continue;
    if (auto* Node = Supports<IPathNode>(Child)) return TRef<IPathNode>(Node);
  }
  return nullptr;
}

bool TConnectedControlPointsShape::RemoveControlPointsConnection(std::int32_t AFrom,
                                                                 std::int32_t ATo,
                                                                 bool AnOrdered) {
  const std::size_t Removed = std::erase_if(
      FConnections, [&](const TConnection& C) { return Joins(C, AFrom, ATo, AnOrdered); });
  Repaint();
  return Removed > 0;
}

void TConnectedControlPointsShape::ConnectControlPoints(std::int32_t AFrom, std::int32_t ATo) {
  FConnections.emplace_back(AFrom, ATo);
  Repaint();
}

void TConnectedControlPointsShape::SetConnections(std::span<const TConnection> AConnections) {
  FConnections = TConnections(AConnections.begin(), AConnections.end());
  AfterMovementRepaint({});
}

std::int32_t TConnectedControlPointsShape::GetConnectionIndex(std::int32_t AFrom,
                                                              std::int32_t ATo,
                                                              bool AnOrdered) const {
  const auto Found =
      std::find_if(FConnections.begin(), FConnections.end(), [&](const TConnection& C) {
        return Joins(C, AFrom, ATo, AnOrdered);
      });
  return Found == FConnections.end() ? -1 : static_cast<std::int32_t>(Found - FConnections.begin());
}

void TConnectedControlPointsShape::RemoveConnection(std::int32_t AConnection) {
  if (AConnection < 0 || AConnection >= GetConnectionCount()) return;
  FConnections.erase(FConnections.begin() + AConnection);
}

std::int32_t TConnectedControlPointsShape::FindPositionOfIndex(
    std::int32_t AnIndex, std::span<const std::int32_t> AList) {
  const auto Found = std::find(AList.begin(), AList.end(), AnIndex);
  return Found == AList.end() ? -1 : static_cast<std::int32_t>(Found - AList.begin());
}

/// Whether both points are there.
bool TConnectedControlPointsShape::IsWhole(const TConnection& AConnection) const {
  return HasControlPoint(AConnection.first) && HasControlPoint(AConnection.second);
}

// ---------------------------------------------------------------- the lines

bool TConnectedControlPointsShape::IsUnderGlobalPoint(TPointF APoint) const {
  constexpr float Reach = 0.01F;
  if (TControlPointsShape::IsUnderGlobalPoint(APoint)) return true;
  return std::any_of(FConnections.begin(), FConnections.end(), [&](const TConnection& C) {
    return IsWhole(C) &&
           GetDistanceFromSegmentToPoint(
               GetControlPointAt(C.first), GetControlPointAt(C.second), APoint) <= Reach;
  });
}

TPointF TConnectedControlPointsShape::GetClosestPointToGlobalPoint(TPointF APoint,
                                                                   bool AGlobal) const {
  const TPointF Local = GlobalToLocal(APoint);
  TPointF Result = NoPoint();
  for (const TConnection& C : FConnections) {
    if (!IsWhole(C)) continue;
    const TPointF Closest =
        GetSegmentClosest(GetControlPointAt(C.first), GetControlPointAt(C.second), Local);
    if (IsNoPoint(Result) || Distance(Closest, Local) < Distance(Result, Local)) Result = Closest;
  }
  return AGlobal ? Result * GetGlobalMatrix() : Result;
}

void TConnectedControlPointsShape::Draw(Canvas::ICanvas& ACanvas, const TMatrix& AMatrix) {
  ACanvas.SetStrokeColor(TAlphaColor{0xFF000000}, GetOpacity());
  ACanvas.SetStrokePattern(Canvas::TStrokePattern::Solid);
  ACanvas.SetStrokeWidth(FConnectionsThickness, true);
  ACanvas.SetFillColor(TAlphaColor{0xFFFFFFFF}, GetOpacity());
  ACanvas.SetMatrix(GetPaintMatrix(AMatrix));
  for (std::size_t I = 0; I < FConnections.size(); ++I) {
    const auto [From, To] = FConnections[I];
    if (IsWhole({From, To})) ACanvas.DrawLine(GetControlPointAt(From), GetControlPointAt(To));
  }
  DoPaintBeforeChildren(ACanvas, AMatrix);
}

}  // namespace System::Beacon::Fencing::Scene
