#include "scene/rect_grid.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "scene/corners.h"

namespace System::Beacon::Fencing::Scene {
namespace {

// Cells of level L are 2^(L + FirstExponent) wide.
constexpr int FirstExponent = -24;
// No level has more columns, or rows, on either side of 0.
constexpr float CellsPerSide = 1024.0F;
constexpr std::size_t FirstBuckets = 64;
constexpr std::size_t BucketsPerItem = 4;

bool Touches(const TRectF& A, const TRectF& B) {
  return A.Left <= B.Right && B.Left <= A.Right && A.Top <= B.Bottom && B.Top <= A.Bottom;
}

}  // namespace

float TRectGrid::SizeOf(int ALevel) {
  return std::ldexp(1.0F, ALevel + FirstExponent);
}

/// The finest level whose cells are as large as a rectangle, and that reaches as far.
int TRectGrid::LevelOf(const TRectF& ARect) {
  const float Farthest = std::max(
      {std::abs(ARect.Left), std::abs(ARect.Top), std::abs(ARect.Right), std::abs(ARect.Bottom)});
  const float Size =
      std::max({ARect.GetWidth(), ARect.GetHeight(), Farthest / CellsPerSide, SizeOf(0)});
  if (!std::isfinite(Size)) return LevelCount;
  int Exponent = 0;
  std::frexp(Size, &Exponent);
  return Exponent - FirstExponent;
}

/// The cells of a level that a rectangle touches, as far as the level reaches; whether there are
/// any.
bool TRectGrid::CellsOf(const TRectF& ARect, int ALevel, TCells& ACells) {
  const float Size = SizeOf(ALevel);
  const auto Clamped = [Size](float AValue) {
    return static_cast<std::int16_t>(
        std::floor(std::clamp(AValue / Size, -CellsPerSide - 1.0F, CellsPerSide + 1.0F)));
  };
  ACells = {Clamped(ARect.Left), Clamped(ARect.Top), Clamped(ARect.Right), Clamped(ARect.Bottom)};
  const float Reach = CellsPerSide * Size;
  return Touches(ARect, {-Reach, -Reach, Reach, Reach});
}

std::size_t TRectGrid::BucketOf(int ALevel, std::int32_t AColumn, std::int32_t ARow) const {
  const auto Mixed = static_cast<std::uint64_t>(static_cast<std::uint32_t>(AColumn)) << 32 |
                     static_cast<std::uint32_t>(ARow);
  const std::uint64_t Hash =
      (Mixed + static_cast<std::uint64_t>(ALevel) * 0x9E3779B97F4A7C15U) * 0xD6E8FEB86659FD93U;
  return (Hash >> 32) & (FHeads.size() - 1);
}

bool TRectGrid::Put(TItem AnItem, const TRectF& ARect) {
  Remove(AnItem);
  if (!IsFinite(ARect)) return false;
  const int Level = LevelOf(ARect);
  if (Level >= LevelCount) return false;
  Grow(AnItem);
  TPlaced& Placed = FItems[AnItem];
  Placed.Rect = ARect;
  Placed.Level = Level;
  CellsOf(ARect, Level, Placed.Cells);
  LinkAll(AnItem);
  ++FCounts[Level];
  FUsedLevels |= std::uint64_t{1} << Level;
  ++FCount;
  return true;
}

void TRectGrid::Remove(TItem AnItem) {
  if (static_cast<std::size_t>(AnItem) >= FItems.size() || FItems[AnItem].Level == Nothing) return;
  TPlaced& Placed = FItems[AnItem];
  for (std::int32_t Corner = 0; Corner < 4; ++Corner) Unlink(AnItem * 4 + Corner);
  if (--FCounts[Placed.Level] == 0) FUsedLevels &= ~(std::uint64_t{1} << Placed.Level);
  --FCount;
  Placed.Level = Nothing;
}

/// Makes room for an item, and for enough buckets.
void TRectGrid::Grow(TItem AnItem) {
  const auto Count = static_cast<std::size_t>(AnItem) + 1;
  if (Count > FItems.size()) FItems.resize(Count);
  if (FHeads.size() >= Count * BucketsPerItem) return;
  std::size_t Buckets = std::max(FirstBuckets, FHeads.size());
  while (Buckets < Count * BucketsPerItem) Buckets *= 2;
  FHeads.assign(Buckets, Nothing);
  for (TPlaced& Placed : FItems) Placed.Links = {};
  for (std::size_t I = 0; I < FItems.size(); ++I)
    if (FItems[I].Level != Nothing) LinkAll(static_cast<TItem>(I));
}

/// Corner 0 is the first cell of an item; 1 is to the right of it, 2 below it, 3 both.
void TRectGrid::LinkAll(TItem AnItem) {
  const TPlaced& Placed = FItems[AnItem];
  const TCells& Cells = Placed.Cells;
  for (std::int32_t Corner = 0; Corner < 4; ++Corner) {
    const std::int32_t Column = Cells.Left + (Corner & 1);
    const std::int32_t Row = Cells.Top + Corner / 2;
    if (Column <= Cells.Right && Row <= Cells.Bottom)
      Link(AnItem * 4 + Corner, BucketOf(Placed.Level, Column, Row));
  }
}

void TRectGrid::Link(std::int32_t ALink, std::size_t ABucket) {
  std::int32_t& Head = FHeads[ABucket];
  LinkAt(ALink) = {Head, -2 - static_cast<std::int32_t>(ABucket)};
  if (Head != Nothing) LinkAt(Head).Previous = ALink;
  Head = ALink;
}

void TRectGrid::Unlink(std::int32_t ALink) {
  const TLink Old = LinkAt(ALink);
  if (Old.Previous == Nothing) return;
  (Old.Previous < Nothing ? FHeads[-2 - Old.Previous] : LinkAt(Old.Previous).Next) = Old.Next;
  if (Old.Next != Nothing) LinkAt(Old.Next).Previous = Old.Previous;
  LinkAt(ALink) = {};
}

bool TRectGrid::Find(const TRectF& AnArea, std::vector<TItem>& AnItems) const {
  if (!IsFinite(AnArea)) return false;
  const std::size_t OldSize = AnItems.size();
  std::int64_t CellCount = 0;
  for (std::uint64_t Levels = FUsedLevels; Levels != 0; Levels &= Levels - 1) {
    const int Level = std::countr_zero(Levels);
    TCells Cells;
    if (!CellsOf(AnArea, Level, Cells)) continue;
    CellCount += std::int64_t{Cells.Right - Cells.Left + 1} * (Cells.Bottom - Cells.Top + 1);
    if (CellCount > std::max(FCount, 16)) {
      AnItems.resize(OldSize);
      return false;
    }
    for (std::int32_t Row = Cells.Top; Row <= Cells.Bottom; ++Row)
      for (std::int32_t Column = Cells.Left; Column <= Cells.Right; ++Column)
        FindInCell(AnArea, Cells, Level, Column, Row, AnItems);
  }
  return true;
}

/// An item is found in the first of the sought cells that it lies in, and in no other.
void TRectGrid::FindInCell(const TRectF& AnArea,
                           const TCells& ASought,
                           int ALevel,
                           std::int32_t AColumn,
                           std::int32_t ARow,
                           std::vector<TItem>& AnItems) const {
  std::int32_t Next = Nothing;
  for (std::int32_t I = FHeads[BucketOf(ALevel, AColumn, ARow)]; I != Nothing; I = Next) {
    const TPlaced& Placed = FItems[I / 4];
    Next = Placed.Links[I % 4].Next;
    if (Placed.Level != ALevel || !Touches(Placed.Rect, AnArea)) continue;
    const std::int32_t Column = Placed.Cells.Left + (I & 1);
    const std::int32_t Row = Placed.Cells.Top + I % 4 / 2;
    if (Column != AColumn || Row != ARow) continue;
    if (Column == std::max(Placed.Cells.Left, ASought.Left) &&
        Row == std::max(Placed.Cells.Top, ASought.Top))
      AnItems.push_back(I / 4);
  }
}

}  // namespace System::Beacon::Fencing::Scene
