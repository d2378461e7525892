#include <cmath>

#include "platform/errors.h"
#include "scene/System.Beacon.Fencing.Scene.Classes.h"
#include "scene/messages.h"

namespace System::Beacon::Fencing::Scene {

const TClassInfo& TViewport::ClassInfo() {
  static const TClassInfo Info{.Name = "System.Beacon.Fencing.Scene.Classes.TViewport",
                               .Base = &TEntity::ClassInfo()};
  return Info;
}

void TViewport::SetViewportAspectRatio(float AValue) {
  if (AValue > 0.0F) FViewport.Bottom = FViewport.Top + FViewport.GetWidth() / AValue;
}

float TViewport::GetViewportAspectRatio() const {
  return FViewport.GetWidth() / FViewport.GetHeight();
}

void TViewport::SetScreenAspectRatio(float) {
  throw EGeneralError(std::string(Messages::SScreenAspectRatio));
}

float TViewport::GetScreenAspectRatio() const {
  return FScreenSize.X / FScreenSize.Y;
}

void TViewport::SetScreenSize(float AWidth, float AHeight) {
  if (std::isfinite(AWidth) && std::isfinite(AHeight)) FScreenSize = {AWidth, AHeight};
}

TMatrix TViewport::GetViewportMatrix(const TRectF& ARect) {
  const float HalfWidth = ARect.GetWidth() * 0.5F, HalfHeight = ARect.GetHeight() * 0.5F;
  TMatrix Result = TMatrix::Scaling(HalfWidth, -HalfHeight);
  Result.M[2] = {HalfWidth + ARect.Left, HalfHeight + ARect.Top, 1.0F};
  return Result;
}

}  // namespace System::Beacon::Fencing::Scene
