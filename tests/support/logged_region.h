// What a scene wants drawn anew.
#pragma once

#include <fmt/format.h>

#include <string>

#include "scene/canvas/System.Beacon.Fencing.Canvas.h"

namespace System::Beacon::Fencing {

inline std::string Text(const TRectF& R) {
  return fmt::format("{},{},{},{}", R.Left, R.Top, R.Right, R.Bottom);
}

/// Writes it down.
class TLoggedRegion final : public TInterfacedObject, public virtual Canvas::IInvalidateRegion {
 public:
  explicit TLoggedRegion(std::string* ALog) : FLog(ALog) {}
  void InvalidateRect(const TRectF& R) override { *FLog += "paint " + Text(R) + "; "; }
  void Invalidate() override { *FLog += "paint all; "; }

 private:
  std::string* FLog;
};

}  // namespace System::Beacon::Fencing
