// What is painted with: a colour, or a picture stretched to a rectangle.
#pragma once

#include "platform/drawing.h"
#include "platform/drawing/library.h"
#include "platform/drawing/matrices.h"

namespace System::Drawing {

/// The opacity of a paint, from 0 to 1; 0 when it is no number.
double OpacityOf(const TPaint& APaint);

/// The copy of a picture to draw with, given how the whole one would be stretched: the smallest
/// that is not enlarged, but where one direction is shrunk more than 16 times as much as the other,
/// one that is at most 16 times too large in that direction.
int LevelFor(TStretch AStretch);

/// Makes a context paint with a colour, its opacity included, or with a picture, opaque, stretched
/// to `ABounds` in the coordinates that `AMatrix` takes to pixels. False: there is nothing to
/// paint.
bool SetSource(cairo_t* AContext,
               const TPaint& APaint,
               const TRectF& ABounds,
               const TMatrix& AMatrix);

}  // namespace System::Drawing
