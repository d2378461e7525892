#include "platform/geometry.h"

#include <algorithm>
#include <cmath>

namespace System {

TRectF UnionRect(const TRectF& A, const TRectF& B) {
  if (A.IsEmpty()) return B;
  if (B.IsEmpty()) return A;
  return {std::min(A.Left, B.Left),
          std::min(A.Top, B.Top),
          std::max(A.Right, B.Right),
          std::max(A.Bottom, B.Bottom)};
}

TRectF IntersectRect(const TRectF& A, const TRectF& B) {
  const TRectF Result{std::max(A.Left, B.Left),
                      std::max(A.Top, B.Top),
                      std::min(A.Right, B.Right),
                      std::min(A.Bottom, B.Bottom)};
  return Result.IsEmpty() ? TRectF{} : Result;
}

TMatrix TMatrix::Translation(float ADx, float ADy) {
  TMatrix Result = Identity();
  Result.M[2] = {ADx, ADy, 1.0F};
  return Result;
}

TMatrix TMatrix::Scaling(float ASx, float ASy) {
  TMatrix Result = Identity();
  Result.M[0][0] = ASx;
  Result.M[1][1] = ASy;
  return Result;
}

TMatrix TMatrix::Rotation(float ARadians) {
  const float Sine = std::sin(ARadians);
  const float Cosine = std::cos(ARadians);
  TMatrix Result = Identity();
  Result.M[0] = {Cosine, Sine, 0.0F};
  Result.M[1] = {-Sine, Cosine, 0.0F};
  return Result;
}

float TMatrix::GetDeterminant() const {
  return M[0][0] * (M[1][1] * M[2][2] - M[1][2] * M[2][1]) -
         M[0][1] * (M[1][0] * M[2][2] - M[1][2] * M[2][0]) +
         M[0][2] * (M[1][0] * M[2][1] - M[1][1] * M[2][0]);
}

TMatrix TMatrix::Inverse() const {
  const float Determinant = GetDeterminant();
  if (!std::isfinite(Determinant) || Determinant == 0.0F) return Identity();
  TMatrix Result;
  for (std::size_t Row = 0; Row < 3; ++Row)
    for (std::size_t Column = 0; Column < 3; ++Column) {
      const std::size_t R1 = (Column + 1) % 3, R2 = (Column + 2) % 3;
      const std::size_t C1 = (Row + 1) % 3, C2 = (Row + 2) % 3;
      Result.M[Row][Column] = (M[R1][C1] * M[R2][C2] - M[R1][C2] * M[R2][C1]) / Determinant;
    }
  return Result;
}

TMatrix operator*(const TMatrix& A, const TMatrix& B) {
  TMatrix Result;
  for (std::size_t Row = 0; Row < 3; ++Row)
    for (std::size_t Column = 0; Column < 3; ++Column)
      Result.M[Row][Column] = A.M[Row][0] * B.M[0][Column] + A.M[Row][1] * B.M[1][Column] +
                              A.M[Row][2] * B.M[2][Column];
  return Result;
}

TPointF operator*(TPointF APoint, const TMatrix& AMatrix) {
  const auto& M = AMatrix.M;
  return {APoint.X * M[0][0] + APoint.Y * M[1][0] + M[2][0],
          APoint.X * M[0][1] + APoint.Y * M[1][1] + M[2][1]};
}

}  // namespace System
