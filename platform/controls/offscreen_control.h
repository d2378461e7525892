// A control that is shown nowhere: for pictures and tests.
#pragma once

#include <string>

#include "platform/controls/picture_control.h"

namespace System {

/// Paints when it is told to. Its pointer is moved with `PointerMove` and its like.
class TOffscreenControl final : public TPictureControl {
 public:
  /// In units; `AScale` pixels to a unit. Raises `EGeneralError` for a size that no drawing has.
  TOffscreenControl(float AWidth, float AHeight, float AScale = 1.0F, TComponent* AOwner = nullptr);

  void Resize(float AWidth, float AHeight);
  /// Paints what is damaged.
  void Update() { PaintDamage(); }
  /// Paints what is damaged, and writes a PNG file. Raises `EFileError`.
  void SavePicture(const std::string& AFileName);
};

}  // namespace System
