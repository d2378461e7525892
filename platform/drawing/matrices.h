// Matrices as the drawing library takes them.
#pragma once

#include "platform/drawing/library.h"
#include "platform/geometry.h"

namespace System::Drawing {

cairo_matrix_t ToCairo(const TMatrix& AMatrix);

/// How much a matrix stretches the two directions that it stretches most and least.
struct TStretch {
  double Most = 0;
  double Least = 0;
};

TStretch StretchOf(const cairo_matrix_t& AMatrix);
TStretch StretchOf(const TMatrix& AMatrix);

/// Whether a matrix can be drawn with: finite, and not singular. One that shrinks everything to a
/// line, as far as can be seen, counts as singular.
bool IsUsable(const TMatrix& AMatrix);

}  // namespace System::Drawing
