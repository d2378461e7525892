#include "platform/drawing/matrices.h"

#include <cairo.h>

#include <algorithm>
#include <cmath>

namespace System::Drawing {

cairo_matrix_t ToCairo(const TMatrix& AMatrix) {
  const auto& M = AMatrix.M;
  return {M[0][0], M[0][1], M[1][0], M[1][1], M[2][0], M[2][1]};
}

TStretch StretchOf(const cairo_matrix_t& AMatrix) {
  const double Sum = std::hypot(AMatrix.xx + AMatrix.yy, AMatrix.xy - AMatrix.yx);
  const double Difference = std::hypot(AMatrix.xx - AMatrix.yy, AMatrix.xy + AMatrix.yx);
  return {(Sum + Difference) / 2, std::abs(Sum - Difference) / 2};
}

TStretch StretchOf(const TMatrix& AMatrix) {
  return StretchOf(ToCairo(AMatrix));
}

bool IsUsable(const TMatrix& AMatrix) {
  for (const auto& Row : AMatrix.M)
    if (!std::all_of(Row.begin(), Row.end(), [](float A) { return std::isfinite(A); }))
      return false;
  const TStretch Stretch = StretchOf(AMatrix);
  return Stretch.Least > Stretch.Most * 1e-7;
}

}  // namespace System::Drawing
