// Drawings compared with pictures that are kept.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "platform/drawing.h"
#include "platform/files.h"

namespace System {

inline std::string SourceFile(const std::string& AName) {
  return std::string(WAYFENCE_SOURCE_DIR "/") + AName;
}

/// The largest difference between the channels of two pixels.
inline int Difference(std::uint32_t A, std::uint32_t B) {
  int Result = 0;
  for (int Shift = 0; Shift < 32; Shift += 8)
    Result = std::max(
        Result,
        std::abs(static_cast<int>((A >> Shift) & 255) - static_cast<int>((B >> Shift) & 255)));
  return Result;
}

/// How many pixels of two drawings or pictures of one size differ. Edges that are cut by a clip are
/// smoothed a little differently.
template <class TPixelsA, class TPixelsB>
int CountDifferent(const TPixelsA& A, const TPixelsB& B, int AAllowed = 16) {
  int Result = 0;
  for (std::size_t I = 0; I < A.GetPixels().size(); ++I)
    Result += Difference(A.GetPixels()[I], B.GetPixels()[I]) > AAllowed ? 1 : 0;
  return Result;
}

/// Expects a drawing to look like tests/pictures/NAME.png. Edges may be smoothed a little
/// differently, and a few pixels may be off. What was drawn is kept when it does not.
inline void ExpectPicture(const TRef<TPicture>& ADrawing, const std::string& AName) {
  constexpr int Allowed = 32;
  constexpr int MaxPixelsOff = 20;
  const TRef<TPicture> Kept = LoadPicture(SourceFile("tests/pictures/" + AName + ".png"));
  ASSERT_EQ(Kept->GetPixels().size(), ADrawing->GetPixels().size()) << AName;
  const int Off = CountDifferent(*Kept, *ADrawing, Allowed);
  if (Off <= MaxPixelsOff) return;
  const std::filesystem::path Drawn = std::filesystem::current_path() / (AName + "-drawn.png");
  ReplaceFile(Drawn, EncodePng(*ADrawing));
  ADD_FAILURE() << Off << " pixels of " << Drawn << " differ";
}

}  // namespace System
