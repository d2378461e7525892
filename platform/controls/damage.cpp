#include "platform/controls/damage.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace System {
namespace {

double AreaOf(const TRectF& ARect) {
  return static_cast<double>(ARect.GetWidth()) * ARect.GetHeight();
}

/// What one rectangle around both covers beyond the two.
double CostOfUnion(const TRectF& A, const TRectF& B) {
  return AreaOf(UnionRect(A, B)) - AreaOf(A) - AreaOf(B);
}

}  // namespace

void TDamage::Add(TRectF ARect) {
  if (ARect.IsEmpty() || !std::isfinite(AreaOf(ARect))) return;
  while (true) {
    const auto CostsLess = [&](const TRectF& A, const TRectF& B) {
      return CostOfUnion(ARect, A) < CostOfUnion(ARect, B);
    };
    const auto Nearest = std::min_element(FRects.begin(), FRects.end(), CostsLess);
    const bool IsFree =
        Nearest == FRects.end() || (FRects.size() < MaxCount && CostOfUnion(ARect, *Nearest) > 0);
    if (IsFree) break;
    ARect = UnionRect(ARect, *Nearest);
    FRects.erase(Nearest);
  }
  FRects.push_back(ARect);
}

}  // namespace System
