// Paths in pixels, cut down to what the rasteriser can take: it wraps coordinates of some millions
// of pixels around, and dashes a line by its whole length.
#pragma once

#include <vector>

#include "platform/drawing.h"

namespace System::Drawing {

struct TDevicePoint {
  double X = 0;
  double Y = 0;
};

struct TBox {
  double Left = 0;
  double Top = 0;
  double Right = 0;
  double Bottom = 0;

  static TBox Of(const TRectF& ARect) { return {ARect.Left, ARect.Top, ARect.Right, ARect.Bottom}; }
  TBox Inflated(double ABy) const { return {Left - ABy, Top - ABy, Right + ABy, Bottom + ABy}; }
  void Add(TDevicePoint APoint);
  bool Contains(const TBox& ABox) const;
  bool Touches(const TBox& ABox) const;
};

/// A path in pixels. Steps and points are as in `TPath`.
class TDevicePath {
 public:
  /// Takes a path to pixels; false when a coordinate is not finite, or there is none.
  bool Assign(const TPath& APath, const TMatrix& AMatrix);
  const TBox& GetBounds() const noexcept { return FBounds; }
  const std::vector<TPathStep>& GetSteps() const noexcept { return FSteps; }
  const std::vector<TDevicePoint>& GetPoints() const noexcept { return FPoints; }

  /// Makes it lines that fill the same pixels of a box, and stay within it.
  void ClipFill(const TBox& ABox);
  /// Makes it the parts of its lines that lie within a box. Where `AKeepsJoins`, the beginning of a
  /// closed contour is drawn once more at its end, so that they are joined.
  void ClipStroke(const TBox& ABox, bool AKeepsJoins);

 private:
  struct TContour {
    std::vector<TDevicePoint> Points;
    bool IsClosed = false;
  };
  std::vector<TContour> Flatten(const TBox& ABox) const;
  void Clear();
  void Add(TPathStep AStep, TDevicePoint APoint);

  std::vector<TPathStep> FSteps;
  std::vector<TDevicePoint> FPoints;
  TBox FBounds;
};

}  // namespace System::Drawing
