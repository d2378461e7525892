#include <algorithm>

#include "platform/drawing.h"

namespace System {

void TPath::Begin(TPointF APoint) {
  FSteps.push_back(TPathStep::Move);
  FPoints.push_back(APoint);
}

void TPath::MoveTo(TPointF APoint) {
  Begin(APoint);
}

void TPath::LineTo(TPointF APoint) {
  if (FSteps.empty()) return Begin(APoint);
  FSteps.push_back(TPathStep::Line);
  FPoints.push_back(APoint);
}

void TPath::CubicTo(TPointF AControl1, TPointF AControl2, TPointF AnEnd) {
  if (FSteps.empty()) Begin(AControl1);
  FSteps.push_back(TPathStep::Cubic);
  FPoints.insert(FPoints.end(), {AControl1, AControl2, AnEnd});
}

void TPath::Close() {
  if (!FSteps.empty()) FSteps.push_back(TPathStep::Close);
}

void TPath::AddRect(const TRectF& ARect) {
  MoveTo({ARect.Left, ARect.Top});
  LineTo({ARect.Right, ARect.Top});
  LineTo({ARect.Right, ARect.Bottom});
  LineTo({ARect.Left, ARect.Bottom});
  Close();
}

void TPath::Clear() {
  FSteps.clear();
  FPoints.clear();
}

TRectF TPath::GetBounds() const {
  if (FPoints.empty()) return {};
  TRectF Result{FPoints[0].X, FPoints[0].Y, FPoints[0].X, FPoints[0].Y};
  for (const TPointF& Point : FPoints) {
    Result.Left = std::min(Result.Left, Point.X);
    Result.Right = std::max(Result.Right, Point.X);
    Result.Top = std::min(Result.Top, Point.Y);
    Result.Bottom = std::max(Result.Bottom, Point.Y);
  }
  return Result;
}

}  // namespace System
