#include "scene/child_index.h"

#include <algorithm>
#include <cmath>

#include "scene/System.Beacon.Fencing.Scene.Helpers.h"
#include "scene/corners.h"

namespace System::Beacon::Fencing::Scene {
namespace {

// Coordinates that are computed on two ways differ by less than this part of the largest of them,
// as long as matrices are not more lopsided than this.
constexpr float Rounding = 1.0F / 4096.0F;
constexpr float MaxStretch = 8.0F;

float Largest(const TRectF& ARect) {
  return std::max(std::max(std::abs(ARect.Left), std::abs(ARect.Top)),
                  std::max(std::abs(ARect.Right), std::abs(ARect.Bottom)));
}

float LargestMove(const TMatrix& AMatrix) {
  return std::max(std::abs(AMatrix.M[2][0]), std::abs(AMatrix.M[2][1]));
}

float SumOfSquares(const TMatrix& AMatrix) {
  const auto& M = AMatrix.M;
  return M[0][0] * M[0][0] + M[0][1] * M[0][1] + M[1][0] * M[1][0] + M[1][1] * M[1][1];
}

}  // namespace

void TNodeBounds::Include(const TRectF& ARect, float APixels) {
  Rect = IsEmpty ? ARect
                 : TRectF{std::min(Rect.Left, ARect.Left),
                          std::min(Rect.Top, ARect.Top),
                          std::max(Rect.Right, ARect.Right),
                          std::max(Rect.Bottom, ARect.Bottom)};
  Pixels = std::max(Pixels, APixels);
  IsEmpty = false;
}

bool IsWellConditioned(const TMatrix& AMatrix) {
  return SumOfSquares(AMatrix) <= MaxStretch * std::abs(AMatrix.GetDeterminant());
}

float ReachThrough(float AReach, const TMatrix& AMatrix) {
  return AReach * std::sqrt(SumOfSquares(AMatrix)) + LargestMove(AMatrix);
}

TRectF RectThrough(const TRectF& ARect, const TMatrix& AMatrix, float AReach) {
  TRectF Result = TCornersHelper::GetRect(TCornersHelper::MultiplyRect(AMatrix, ARect));
  const float Slack = Rounding * (Largest(Result) + AReach);
  Result.Inflate(Slack, Slack);
  return Result;
}

TSearchArea AreaOf(TPointF APoint) {
  TSearchArea Result{{APoint.X, APoint.Y, APoint.X, APoint.Y}};
  const float Slack = Rounding * Largest(Result.Rect);
  Result.Rect.Inflate(Slack, Slack);
  return Result;
}

std::optional<TSearchArea> AreaBehind(const TRectF& AnArea, const TMatrix& AMatrix) {
  if (!IsWellConditioned(AMatrix)) return std::nullopt;
  const TMatrix Inverse = AMatrix.Inverse();
  const TSearchArea Result{RectThrough(AnArea, Inverse, LargestMove(Inverse)),
                           std::sqrt(SumOfSquares(Inverse))};
  return IsFinite(Result.Rect) ? std::optional(Result) : std::nullopt;
}

bool MayTouch(const TNodeBounds& ABounds, const TSearchArea& AnArea) {
  if (!ABounds.IsKnown) return true;
  if (ABounds.IsEmpty) return false;
  const float Gap = ABounds.Pixels * AnArea.UnitsPerPixel;
  const TRectF &A = ABounds.Rect, &B = AnArea.Rect;
  return A.Left <= B.Right + Gap && B.Left <= A.Right + Gap && A.Top <= B.Bottom + Gap &&
         B.Top <= A.Bottom + Gap;
}

// ---------------------------------------------------------------- TChildIndex

void TChildIndex::Add(TSceneNode& AChild) {
  if (FFree.empty()) {
    FFree.push_back(static_cast<std::int32_t>(FItems.size()));
    FItems.emplace_back();
  }
  AChild.FIndexItem = FFree.back();
  FFree.pop_back();
  FItems[AChild.FIndexItem].Node = &AChild;
  MarkStale(AChild);
}

void TChildIndex::Remove(const TSceneNode& AChild) {
  TakeOut(AChild.FIndexItem);
  FItems[AChild.FIndexItem].Node = nullptr;
  FFree.push_back(AChild.FIndexItem);
}

void TChildIndex::TakeOut(std::int32_t AnItem) {
  FGrid.Remove(AnItem);
  std::int32_t& At = FItems[AnItem].UnknownAt;
  if (At < 0) return;
  FItems[FUnknown.back()].UnknownAt = At;
  FUnknown[At] = FUnknown.back();
  FUnknown.pop_back();
  At = -1;
}

void TChildIndex::MarkStale(const TSceneNode& AChild) {
  bool& IsStale = FItems[AChild.FIndexItem].IsStale;
  if (IsStale) return;
  IsStale = true;
  FStale.push_back(AChild.FIndexItem);
}

void TChildIndex::Place(std::int32_t AnItem) {
  TItem& Item = FItems[AnItem];
  Item.IsStale = false;
  if (!Item.Node) return;
  TakeOut(AnItem);
  const TNodeBounds Bounds = Item.Node->GetBoundsUnder(FMatrix);
  if (Bounds.IsKnown && Bounds.IsEmpty) return;
  FMaxPixels = std::max(FMaxPixels, Bounds.Pixels);
  if (Bounds.IsKnown && FGrid.Put(AnItem, Bounds.Rect)) return;
  Item.UnknownAt = static_cast<std::int32_t>(FUnknown.size());
  FUnknown.push_back(AnItem);
}

void TChildIndex::Refresh(const TMatrix& AMatrix) {
  if (AMatrix != FMatrix) {
    FMatrix = AMatrix;
    for (const TItem& Item : FItems)
      if (Item.Node) MarkStale(*Item.Node);
  }
  for (const std::int32_t Item : FStale) Place(Item);
  FStale.clear();
}

bool TChildIndex::Find(const TSearchArea& AnArea, const TMatrix& AMatrix, TChildren& AChildren) {
  constexpr std::size_t WorthLooking = 4;
  Refresh(AMatrix);
  if (FUnknown.size() * WorthLooking > FItems.size()) return false;
  TRectF Area = AnArea.Rect;
  const float Reach = FMaxPixels * AnArea.UnitsPerPixel;
  Area.Inflate(Reach, Reach);
  FFound.clear();
  if (!FGrid.Find(Area, FFound)) return false;
  for (const std::int32_t Item : FFound) AChildren.push_back(FItems[Item].Node);
  for (const std::int32_t Item : FUnknown) AChildren.push_back(FItems[Item].Node);
  return true;
}

}  // namespace System::Beacon::Fencing::Scene
