#include "platform/drawing/device_path.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

namespace System::Drawing {
namespace {

TDevicePoint Middle(TDevicePoint A, TDevicePoint B) {
  return {A.X / 2 + B.X / 2, A.Y / 2 + B.Y / 2};
}

// ---------------------------------------------------------------- curves to lines

using TCurve = std::array<TDevicePoint, 4>;

TBox HullOf(const TCurve& ACurve) {
  TBox Result{ACurve[0].X, ACurve[0].Y, ACurve[0].X, ACurve[0].Y};
  for (const TDevicePoint& Point : ACurve) Result.Add(Point);
  return Result;
}

// Whether both control points are within a tenth of a pixel of the straight curve.
bool IsFlat(const TCurve& ACurve) {
  constexpr double Tolerance = 0.1;
  const double Dx1 = ACurve[1].X - (ACurve[0].X * 2 + ACurve[3].X) / 3;
  const double Dy1 = ACurve[1].Y - (ACurve[0].Y * 2 + ACurve[3].Y) / 3;
  const double Dx2 = ACurve[2].X - (ACurve[0].X + ACurve[3].X * 2) / 3;
  const double Dy2 = ACurve[2].Y - (ACurve[0].Y + ACurve[3].Y * 2) / 3;
  return std::max({std::abs(Dx1), std::abs(Dy1), std::abs(Dx2), std::abs(Dy2)}) < Tolerance;
}

// Appends points of the curve, without its first one. What lies outside the box need not be exact.
void AppendCurve(const TCurve& ACurve,
                 const TBox& ABox,
                 int ADepth,
                 std::vector<TDevicePoint>& APoints) {
  if (ADepth == 0 || IsFlat(ACurve) || !HullOf(ACurve).Touches(ABox)) {
    APoints.push_back(ACurve[3]);
    return;
  }
  const TDevicePoint A = Middle(ACurve[0], ACurve[1]);
  const TDevicePoint B = Middle(ACurve[1], ACurve[2]);
  const TDevicePoint C = Middle(ACurve[2], ACurve[3]);
  const TDevicePoint Ab = Middle(A, B);
  const TDevicePoint Bc = Middle(B, C);
  const TDevicePoint Centre = Middle(Ab, Bc);
  AppendCurve({ACurve[0], A, Ab, Centre}, ABox, ADepth - 1, APoints);
  AppendCurve({Centre, Bc, C, ACurve[3]}, ABox, ADepth - 1, APoints);
}

// ---------------------------------------------------------------- clipping

struct TEdge {
  double TDevicePoint::*Across;
  double TDevicePoint::*Along;
  double Limit;
  double Sign;  // 1: what is below the limit is kept, -1: what is above it
};

std::array<TEdge, 4> EdgesOf(const TBox& ABox) {
  return {TEdge{&TDevicePoint::X, &TDevicePoint::Y, ABox.Left, -1},
          TEdge{&TDevicePoint::X, &TDevicePoint::Y, ABox.Right, 1},
          TEdge{&TDevicePoint::Y, &TDevicePoint::X, ABox.Top, -1},
          TEdge{&TDevicePoint::Y, &TDevicePoint::X, ABox.Bottom, 1}};
}

bool IsInside(TDevicePoint APoint, const TEdge& AEdge) {
  return (AEdge.Limit - APoint.*AEdge.Across) * AEdge.Sign >= 0;
}

TDevicePoint Crossing(TDevicePoint AFrom, TDevicePoint ATo, const TEdge& AEdge) {
  const double From = AFrom.*AEdge.Across;
  const double Part = (AEdge.Limit - From) / (ATo.*AEdge.Across - From);
  const double Start = AFrom.*AEdge.Along;
  TDevicePoint Result;
  Result.*AEdge.Across = AEdge.Limit;
  Result.*AEdge.Along = Start + (ATo.*AEdge.Along - Start) * Part;
  return Result;
}

// One step of the clipping of a closed contour: what is beyond the edge is moved onto it.
std::vector<TDevicePoint> ClipContour(const std::vector<TDevicePoint>& APoints,
                                      const TEdge& AEdge) {
  std::vector<TDevicePoint> Result;
  for (std::size_t I = 0; I < APoints.size(); ++I) {
    const TDevicePoint From = APoints[I == 0 ? APoints.size() - 1 : I - 1];
    const TDevicePoint To = APoints[I];
    if (IsInside(From, AEdge) != IsInside(To, AEdge)) Result.push_back(Crossing(From, To, AEdge));
    if (IsInside(To, AEdge)) Result.push_back(To);
  }
  return Result;
}

// Cuts a line down to the box; false when nothing of it is left.
bool ClipLine(TDevicePoint& AFrom, TDevicePoint& ATo, const TBox& ABox) {
  for (const TEdge& Edge : EdgesOf(ABox)) {
    const bool HasFrom = IsInside(AFrom, Edge);
    const bool HasTo = IsInside(ATo, Edge);
    if (!HasFrom && !HasTo) return false;
    if (HasFrom == HasTo) continue;
    (HasFrom ? ATo : AFrom) = Crossing(AFrom, ATo, Edge);
  }
  return true;
}

}  // namespace

// ---------------------------------------------------------------- TBox

void TBox::Add(TDevicePoint APoint) {
  Left = std::min(Left, APoint.X);
  Right = std::max(Right, APoint.X);
  Top = std::min(Top, APoint.Y);
  Bottom = std::max(Bottom, APoint.Y);
}

bool TBox::Contains(const TBox& ABox) const {
  return ABox.Left >= Left && ABox.Right <= Right && ABox.Top >= Top && ABox.Bottom <= Bottom;
}

bool TBox::Touches(const TBox& ABox) const {
  return ABox.Left <= Right && ABox.Right >= Left && ABox.Top <= Bottom && ABox.Bottom >= Top;
}

// ---------------------------------------------------------------- TDevicePath

void TDevicePath::Clear() {
  FSteps.clear();
  FPoints.clear();
}

void TDevicePath::Add(TPathStep AStep, TDevicePoint APoint) {
  FSteps.push_back(AStep);
  FPoints.push_back(APoint);
}

bool TDevicePath::Assign(const TPath& APath, const TMatrix& AMatrix) {
  if (APath.GetPoints().empty()) return false;
  const auto& M = AMatrix.M;
  Clear();
  FSteps = APath.GetSteps();
  FPoints.reserve(APath.GetPoints().size());
  for (const TPointF& Point : APath.GetPoints()) {
    const double X = Point.X;
    const double Y = Point.Y;
    FPoints.push_back({X * M[0][0] + Y * M[1][0] + M[2][0], X * M[0][1] + Y * M[1][1] + M[2][1]});
    if (!std::isfinite(FPoints.back().X) || !std::isfinite(FPoints.back().Y)) return false;
  }
  FBounds = {FPoints[0].X, FPoints[0].Y, FPoints[0].X, FPoints[0].Y};
  for (const TDevicePoint& Point : FPoints) FBounds.Add(Point);
  return true;
}

std::vector<TDevicePath::TContour> TDevicePath::Flatten(const TBox& ABox) const {
  constexpr int MaxDepth = 24;
  std::vector<TContour> Result;
  auto Point = FPoints.begin();
  for (const TPathStep Step : FSteps) {
    if (Step == TPathStep::Close) {
      Result.back().IsClosed = true;
      continue;
    }
    if (Step == TPathStep::Move) {
      Result.emplace_back().Points.push_back(*Point++);
      continue;
    }
    if (Result.back().IsClosed) {  // goes on where the closed contour began
      const TDevicePoint Start = Result.back().Points.front();
      Result.emplace_back().Points.push_back(Start);
    }
    auto& Points = Result.back().Points;
    if (Step == TPathStep::Line) {
      Points.push_back(*Point++);
    } else {
      AppendCurve({Points.back(), Point[0], Point[1], Point[2]}, ABox, MaxDepth, Points);
      Point += 3;
    }
  }
  return Result;
}

void TDevicePath::ClipFill(const TBox& ABox) {
  std::vector<TContour> Contours = Flatten(ABox);
  Clear();
  for (TContour& Contour : Contours) {
    for (const TEdge& Edge : EdgesOf(ABox)) Contour.Points = ClipContour(Contour.Points, Edge);
    for (std::size_t I = 0; I < Contour.Points.size(); ++I)
      Add(I == 0 ? TPathStep::Move : TPathStep::Line, Contour.Points[I]);
  }
}

void TDevicePath::ClipStroke(const TBox& ABox, bool AKeepsJoins) {
  const std::vector<TContour> Contours = Flatten(ABox);
  Clear();
  for (const TContour& Contour : Contours) {
    const auto& Points = Contour.Points;
    std::optional<TDevicePoint> Pen;  // where the last part ended, when it ended inside
    const auto AddLine = [&](TDevicePoint AFrom, TDevicePoint ATo) {
      const TDevicePoint End = ATo;
      const bool IsJoined = Pen.has_value();
      Pen.reset();
      if (!ClipLine(AFrom, ATo, ABox)) return;
      if (!IsJoined) Add(TPathStep::Move, AFrom);
      Add(TPathStep::Line, ATo);
      if (ATo.X == End.X && ATo.Y == End.Y) Pen = ATo;
    };
    for (std::size_t I = 1; I < Points.size(); ++I) AddLine(Points[I - 1], Points[I]);
    if (!Contour.IsClosed || Points.size() < 2) continue;
    AddLine(Points.back(), Points.front());
    if (AKeepsJoins) AddLine(Points[0], Points[1]);
  }
}

}  // namespace System::Drawing
