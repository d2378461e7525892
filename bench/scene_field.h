// A field of squares that scenes of different makers are measured on.
#pragma once

#include <cmath>
#include <cstdint>

namespace Bench {

/// So many squares, scattered evenly and always in the same way. Their field grows with their
/// number, so that a point lies in the same number of them.
class TField {
 public:
  static constexpr float Size = 8.0F;
  static constexpr int ScreenWidth = 1280;
  static constexpr int ScreenHeight = 800;

  explicit TField(int ACount) : FSide(std::sqrt(static_cast<float>(ACount)) * 8.0F) {}

  float GetSide() const { return FSide; }
  float GetX(int AIndex) const { return Part(AIndex, 2654435761U) * FSide * 1.6F; }
  float GetY(int AIndex) const { return Part(AIndex, 2246822519U) * FSide; }
  std::uint32_t GetColor(int AIndex) const {
    return 0xFF000000U | (static_cast<std::uint32_t>(AIndex) * 2654435761U & 0xFFFFFFU);
  }

 private:
  /// From 0 to 1.
  static float Part(int AIndex, std::uint32_t AFactor) {
    const std::uint32_t Mixed = (static_cast<std::uint32_t>(AIndex) ^ 0x5BD1E995U) * AFactor;
    return static_cast<float>((Mixed ^ Mixed >> 15) >> 8) / 16777216.0F;
  }

  float FSide;
};

}  // namespace Bench
