#include <cmath>

#include "scene/System.Beacon.Fencing.Scene.Classes.h"
#include "scene/corners.h"

namespace System::Beacon::Fencing::Scene {

const TClassInfo& TCamera::ClassInfo() {
  static const TClassInfo Info{
      .Name = "System.Beacon.Fencing.Scene.Classes.TCamera",
      .Base = &TLocationShape::ClassInfo(),
      .Create = [] { return TRef<TInterfacedObject>(New<TCamera>()); },
  };
  return Info;
}

float TCamera::GetFrustumAspectRatio() const {
  return FFrustum.GetWidth() / FFrustum.GetHeight();
}

void TCamera::SetFrustumAspectRatio(float AValue) {
  const float Bottom = FFrustum.Top + FFrustum.GetWidth() / AValue;
  if (!(AValue > 0.0F) || !std::isfinite(AValue) || !std::isfinite(Bottom)) return;
  FFrustum.Bottom = Bottom;
  Repaint();
}

void TCamera::SetRect(const TRectF& ARect) {
  if (IsFinite(ARect)) FFrustum = ARect;
}

void TCamera::SetFrustum(const TRectF& ARect) {
  if (!IsFinite(ARect)) return;
  FFrustum = ARect;
  Repaint();
}

TMatrix TCamera::GetProjectionMatrix() const {
  constexpr float Smallest = 0.0001F;
  const auto& [Left, Top, Right, Bottom] = FFrustum;
  TMatrix Result = TMatrix::Identity();
  if (!(FFrustum.GetWidth() >= Smallest && FFrustum.GetHeight() >= Smallest)) return Result;
  Result.M[0][0] = 2.0F / (Right - Left);
  Result.M[1][1] = 2.0F / (Top - Bottom);
  Result.M[2] = {(Left + Right) / (Left - Right), (Top + Bottom) / (Bottom - Top), 1.0F};
  return Result;
}

void TCamera::Repaint() {
  if (const auto Region = GetInvalidateRegion()) Region->Invalidate();
}

void TCamera::AfterMovementRepaint(const TRectF&) {
  Repaint();
}

}  // namespace System::Beacon::Fencing::Scene
