// Finds rectangles by the area that they touch.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "platform/geometry.h"

namespace System::Beacon::Fencing::Scene {

/// Normalised rectangles by numbers that the caller gives, best from 0 on. They lie on grids of
/// cells, one for every power of two: a rectangle on the finest whose cells are as large as itself,
/// and so in four cells at the most. Moving one takes the same time whatever their number, and no
/// memory.
class TRectGrid {
 public:
  using TItem = std::int32_t;

  /// Adds a rectangle, or moves it. False, and it is not there, when a coordinate is not finite or
  /// beyond all sense.
  bool Put(TItem AnItem, const TRectF& ARect);
  void Remove(TItem AnItem);
  /// Appends those that touch an area, edges included, in no order. False, and nothing is
  /// appended, when the area covers so many cells that looking at every rectangle is faster.
  bool Find(const TRectF& AnArea, std::vector<TItem>& AnItems) const;

 private:
  static constexpr int LevelCount = 64;
  static constexpr std::int32_t Nothing = -1;

  /// Where a rectangle lies: columns and rows of cells on a level.
  struct TCells {
    std::int16_t Left = 0;
    std::int16_t Top = 0;
    std::int16_t Right = 0;
    std::int16_t Bottom = 0;
  };
  /// One cell of an item, in the list of all that lie there.
  struct TLink {
    std::int32_t Next = Nothing;
    std::int32_t Previous = Nothing;  // a link, or -2 - bucket at the head of a list
  };
  /// In one cache line, which is all that is read of it. Link n of item i has the number 4 i + n.
  struct alignas(64) TPlaced {
    TRectF Rect;
    std::array<TLink, 4> Links;
    TCells Cells;
    std::int32_t Level = Nothing;
  };

  static int LevelOf(const TRectF& ARect);
  static float SizeOf(int ALevel);
  static bool CellsOf(const TRectF& ARect, int ALevel, TCells& ACells);
  std::size_t BucketOf(int ALevel, std::int32_t AColumn, std::int32_t ARow) const;
  void Grow(TItem AnItem);
  void LinkAll(TItem AnItem);
  void Link(std::int32_t ALink, std::size_t ABucket);
  void Unlink(std::int32_t ALink);
  TLink& LinkAt(std::int32_t ALink) { return FItems[ALink / 4].Links[ALink % 4]; }
  void FindInCell(const TRectF& AnArea,
                  const TCells& ASought,
                  int ALevel,
                  std::int32_t AColumn,
                  std::int32_t ARow,
                  std::vector<TItem>& AnItems) const;

  std::vector<TPlaced> FItems;
  std::vector<std::int32_t> FHeads;  // by bucket; cells may share one
  std::array<std::int32_t, LevelCount> FCounts{};
  std::uint64_t FUsedLevels = 0;  // bit n: level n is not empty
  std::int32_t FCount = 0;
};

}  // namespace System::Beacon::Fencing::Scene
