// The disc that shows a position.
#pragma once

#include "scene/System.Beacon.Fencing.Scene.Shapes.h"

namespace System::Beacon::Fencing {

/// A disc about its place. Where it was and where it is are drawn anew each by itself, not what
/// lies between.
class TPositionMarker final : public Scene::TEllipse {
 public:
  void SetLook(TAlphaColor AColor, float ADiameter) {
    const float Half = ADiameter / 2.0F;
    SetFillColor(AColor);
    SetRect({-Half, -Half, Half, Half});
  }

  void AfterMovementRepaint(const TRectF& AOldRect) override {
    const auto Region = GetInvalidateRegion();
    if (!Region) return;
    Region->InvalidateRect(AOldRect);
    Region->InvalidateRect(GetRepaintRect(true, RepaintMargin));
  }

 protected:
  Scene::TExtent GetExtent() const override {
    return Scene::TExtent::Of<TPositionMarker>(GetRect(), FBrush.GetStrokeReach());
  }
};

}  // namespace System::Beacon::Fencing
