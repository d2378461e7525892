// A control that remembers its picture.
#pragma once

#include "platform/controls/control.h"
#include "platform/controls/damage.h"
#include "platform/drawing.h"

namespace System {

/// Collects what has to be painted again, and paints nothing else: the rest of the picture stays.
class TPictureControl : public TControl {
 public:
  TRectF GetLocalRect() const override;
  /// Widened to whole pixels.
  void RepaintRect(const TRectF& ARect) override;
  void Repaint() override;

  /// How many pixels a unit is wide.
  float GetScale() const noexcept { return FScale; }
  /// What the picture is filled with before the handler paints; white at first.
  TAlphaColor GetBackground() const noexcept { return FBackground; }
  void SetBackground(TAlphaColor AColor);
  /// What was painted last.
  const TDrawing& GetDrawing() const noexcept { return FDrawing; }
  bool IsDamaged() const noexcept { return !FDamage.IsEmpty(); }

 protected:
  TPictureControl(TComponent* AOwner, TPictureSize ASize, float AScale);

  /// Starts a new picture; nothing happens when nothing changes.
  void SetSize(TPictureSize ASize, float AScale);
  /// Paints what is damaged, and answers what that was, in whole pixels. What handlers damage
  /// meanwhile is left for the next time, and so is everything when a handler raises.
  TDamage PaintDamage();

 private:
  TRectF GetPixelRect() const;
  void PaintPart(const TRectF& APixels);

  float FScale;
  TAlphaColor FBackground{0xFFFFFFFF};
  TDrawing FDrawing;
  TDamage FDamage;  // in pixels
};

}  // namespace System
