// Which of a node's many children lie where one looks.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "scene/System.Beacon.Fencing.Scene.Classes.h"
#include "scene/rect_grid.h"

namespace System::Beacon::Fencing::Scene {

/// Where a node is hit and draws, with all that is below it, in global space.
struct TNodeBounds {
  bool IsKnown = true;
  bool IsEmpty = true;
  TRectF Rect;
  float Pixels = 0.0F;  ///< how far it draws around the rectangle

  void Include(const TRectF& ARect, float APixels);
};

/// Where to look, in global space.
struct TSearchArea {
  TRectF Rect;
  float UnitsPerPixel = 0.0F;
};

/// A point, and an area of a screen that a matrix leads to, with room for rounding. Nothing when
/// the matrix is so lopsided that nothing can be said.
TSearchArea AreaOf(TPointF APoint);
std::optional<TSearchArea> AreaBehind(const TRectF& AnArea, const TMatrix& AMatrix);

/// Whether a matrix has an inverse, and stretches nothing many times more than something else.
bool IsWellConditioned(const TMatrix& AMatrix);

/// The farthest that a point near the origin gets on its way through one more matrix.
float ReachThrough(float AReach, const TMatrix& AMatrix);

/// The bounds of a rectangle behind a matrix, with room for rounding on a way of that reach.
TRectF RectThrough(const TRectF& ARect, const TMatrix& AMatrix, float AReach);

/// Whether something of a node may be found in an area.
bool MayTouch(const TNodeBounds& ABounds, const TSearchArea& AnArea);

/// Finds children by their bounds. Bounds are looked up when one searches, and again when they, or
/// the global matrix of the parent, have changed; what is not known is always found.
class TChildIndex {
 public:
  using TChildren = std::vector<TSceneNode*>;

  void Add(TSceneNode& AChild);
  void Remove(const TSceneNode& AChild);
  void MarkStale(const TSceneNode& AChild);
  /// The children that may touch an area, in no order, for a global matrix of the parent. False
  /// when that is no help.
  bool Find(const TSearchArea& AnArea, const TMatrix& AMatrix, TChildren& AChildren);

 private:
  struct TItem {
    TSceneNode* Node = nullptr;
    std::int32_t UnknownAt = -1;
    bool IsStale = false;
  };

  void Refresh(const TMatrix& AMatrix);
  void Place(std::int32_t AnItem);
  void TakeOut(std::int32_t AnItem);

  TMatrix FMatrix = TMatrix::Identity();
  TRectGrid FGrid;
  std::vector<TItem> FItems;
  std::vector<std::int32_t> FFree;
  std::vector<std::int32_t> FUnknown;
  std::vector<std::int32_t> FStale;
  std::vector<std::int32_t> FFound;
  float FMaxPixels = 0.0F;
};

}  // namespace System::Beacon::Fencing::Scene
