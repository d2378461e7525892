#include <cmath>

#include "scene/System.Beacon.Fencing.Scene.Helpers.h"

namespace System::Beacon::Fencing::Scene {

TPointF TMatrixHelper::MultiplyNormal(const TMatrix& AMatrix, TPointF AVector) {
  return {AVector.X * AMatrix.M[0][0] + AVector.Y * AMatrix.M[1][0],
          AVector.X * AMatrix.M[0][1] + AVector.Y * AMatrix.M[1][1]};
}

TPointF TMatrixHelper::GetScaling(const TMatrix& AMatrix) {
  return {std::hypot(AMatrix.M[0][0], AMatrix.M[0][1]),
          std::hypot(AMatrix.M[1][0], AMatrix.M[1][1])};
}

void TMatrixHelper::GetSRT(const TMatrix& AMatrix,
                           TPointF& ATranslation,
                           float& ARotation,
                           TPointF& AScaling) {
  ATranslation = {AMatrix.M[2][0], AMatrix.M[2][1]};
  ARotation = std::atan2(AMatrix.M[0][1], AMatrix.M[0][0]);
  AScaling = GetScaling(AMatrix);
}

float TValueHelper::AlignValue(float AValue, float AStep) {
  const float Result = std::nearbyint(AValue * AStep) / AStep;
  return std::isfinite(AStep) && std::isfinite(Result) ? Result : AValue;
}

TPointF TValueHelper::AlignValue(TPointF APoint, float AStep) {
  return {AlignValue(APoint.X, AStep), AlignValue(APoint.Y, AStep)};
}

TRectF ToLocalRect(const TRectF& ARect) {
  return {0.0F, 0.0F, ARect.GetWidth(), ARect.GetHeight()};
}

}  // namespace System::Beacon::Fencing::Scene
