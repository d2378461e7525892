// What has to be painted again.
#pragma once

#include <vector>

#include "platform/geometry.h"

namespace System {

/// A few rectangles that hold all those that were added. They may overlap. Rectangles that lie
/// close together become one, so that moving a thing is one rectangle and not two.
class TDamage {
 public:
  /// How many rectangles there are at most.
  static constexpr std::size_t MaxCount = 8;

  /// An empty rectangle, or one that is not finite, adds nothing.
  void Add(TRectF ARect);
  const std::vector<TRectF>& GetRects() const noexcept { return FRects; }
  bool IsEmpty() const noexcept { return FRects.empty(); }

 private:
  std::vector<TRectF> FRects;
};

}  // namespace System
