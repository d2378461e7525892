#include "platform/controls/offscreen_control.h"

#include <algorithm>
#include <cmath>

#include "platform/files.h"

namespace System {
namespace {

/// Sizes that no drawing has are left for the drawing to refuse.
TPictureSize SizeOf(float AWidth, float AHeight, float AScale) {
  const auto Pixels = [AScale](float AUnits) {
    const float Result = std::ceil(AUnits * AScale);
    return Result > 0 ? static_cast<int>(std::min(Result, MaxPictureSide + 1.0F)) : 0;
  };
  return {Pixels(AWidth), Pixels(AHeight)};
}

}  // namespace

TOffscreenControl::TOffscreenControl(float AWidth, float AHeight, float AScale, TComponent* AOwner)
    : TPictureControl(AOwner, SizeOf(AWidth, AHeight, AScale), AScale) {}

void TOffscreenControl::Resize(float AWidth, float AHeight) {
  SetSize(SizeOf(AWidth, AHeight, GetScale()), GetScale());
}

void TOffscreenControl::SavePicture(const std::string& AFileName) {
  Update();
  ReplaceFile(AFileName, EncodePng(*GetDrawing().GetPicture()));
}

}  // namespace System
