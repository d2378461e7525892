#include "scene/canvas/System.Beacon.Fencing.Canvas.h"

namespace System::Beacon::Fencing::Canvas {

void GenerateCircleWithBeziers(const TRectF& ARect,
                               const TMatrix& AMatrix,
                               std::span<TPointF, 13> APoints) {
  constexpr float K = 0.55191505F;  // arcs stay within 0.02 % of the circle
  constexpr TPointF Circle[13] = {{0, 1},
                                  {K, 1},
                                  {1, K},
                                  {1, 0},
                                  {1, -K},
                                  {K, -1},
                                  {0, -1},
                                  {-K, -1},
                                  {-1, -K},
                                  {-1, 0},
                                  {-1, K},
                                  {-K, 1},
                                  {0, 1}};
  const TPointF Centre = ARect.GetCentre();
  const TPointF Radius{ARect.GetWidth() / 2.0F, ARect.GetHeight() / 2.0F};
  for (std::size_t I = 0; I < APoints.size(); ++I)
    APoints[I] = (TPointF{Circle[I].X * Radius.X, Circle[I].Y * Radius.Y} + Centre) * AMatrix;
}

}  // namespace System::Beacon::Fencing::Canvas
