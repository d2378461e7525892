// Points, rectangles and affine matrices of 32-bit floats. The unit is the user's.
#pragma once

#include <array>

namespace System {

struct TPointF {
  float X = 0.0F;
  float Y = 0.0F;

  bool operator==(const TPointF&) const = default;
};

constexpr TPointF operator+(TPointF A, TPointF B) {
  return {A.X + B.X, A.Y + B.Y};
}
constexpr TPointF operator-(TPointF A, TPointF B) {
  return {A.X - B.X, A.Y - B.Y};
}
constexpr TPointF operator*(TPointF A, float AFactor) {
  return {A.X * AFactor, A.Y * AFactor};
}

/// A rectangle by its edges; Top is the smaller Y. Not normalised: a rectangle whose edges are
/// the wrong way round is empty.
struct TRectF {
  float Left = 0.0F;
  float Top = 0.0F;
  float Right = 0.0F;
  float Bottom = 0.0F;

  constexpr float GetWidth() const { return Right - Left; }
  constexpr float GetHeight() const { return Bottom - Top; }
  constexpr bool IsEmpty() const { return Right <= Left || Bottom <= Top; }
  constexpr TPointF GetCentre() const { return {(Left + Right) / 2.0F, (Top + Bottom) / 2.0F}; }
  /// Left and top edges belong to the rectangle, right and bottom ones do not.
  constexpr bool Contains(TPointF APoint) const {
    return APoint.X >= Left && APoint.X < Right && APoint.Y >= Top && APoint.Y < Bottom;
  }
  /// Moves every edge outwards by `ADx`, `ADy` (inwards when negative).
  constexpr void Inflate(float ADx, float ADy) {
    Left -= ADx;
    Right += ADx;
    Top -= ADy;
    Bottom += ADy;
  }

  bool operator==(const TRectF&) const = default;
};

/// The smallest rectangle that holds both; an empty one adds nothing.
TRectF UnionRect(const TRectF& A, const TRectF& B);
/// What both have in common; the all-zero rectangle when they have nothing.
TRectF IntersectRect(const TRectF& A, const TRectF& B);

/// A 3×3 affine matrix used with row vectors: a point p maps to p × M, the translation stands in
/// the third row, and A × B applies A first.
struct TMatrix {
  std::array<std::array<float, 3>, 3> M{};

  static constexpr TMatrix Identity() {
    return TMatrix{{{{1.0F, 0.0F, 0.0F}, {0.0F, 1.0F, 0.0F}, {0.0F, 0.0F, 1.0F}}}};
  }
  static TMatrix Translation(float ADx, float ADy);
  static TMatrix Scaling(float ASx, float ASy);
  /// Turns by `ARadians`, from the X axis towards the Y axis.
  static TMatrix Rotation(float ARadians);

  float GetDeterminant() const;
  /// The inverse; the identity when the matrix is singular or not finite.
  TMatrix Inverse() const;

  bool operator==(const TMatrix&) const = default;
};

TMatrix operator*(const TMatrix& A, const TMatrix& B);
TPointF operator*(TPointF APoint, const TMatrix& AMatrix);

}  // namespace System
