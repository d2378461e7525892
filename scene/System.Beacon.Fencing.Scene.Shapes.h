// Nodes that have geometry and draw themselves. Scene thread only.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "platform/color.h"
#include "scene/System.Beacon.Fencing.Scene.Classes.h"

namespace System::Beacon::Fencing::Scene {

// ---------------------------------------------------------------- TBrush

/// How a shape is filled and stroked. Setters take the node that owns the brush, and have it drawn
/// anew.
class TBrush : public TObject {
 public:
  TAlphaColor GetFillColor() const { return FFillColor; }
  void SetFillColor(TAlphaColor AColor, TSceneNode& ANode);
  TAlphaColor GetStrokeColor() const { return FStrokeColor; }
  void SetStrokeColor(TAlphaColor AColor, TSceneNode& ANode);
  bool GetEnableFill() const { return FEnableFill; }
  void SetEnableFill(bool AValue, TSceneNode& ANode);
  /// Pixels, at every zoom.
  float GetStrokeThickness() const { return FStrokeThickness; }
  void SetStrokeThickness(float AValue, TSceneNode& ANode);
  const TRef<Canvas::IBitmap>& GetBitmap() const { return FBitmap; }
  void SetBitmap(const TRef<Canvas::IBitmap>& ABitmap, TSceneNode& ANode);
  const std::string& GetBitmapPath() const { return FBitmapPath; }
  /// The bitmap is taken from the bundle of the node's scene when the path names a file; there is
  /// none otherwise. Announced as a change of the property `BitmapPath`.
  void SetBitmapPath(const std::string& APath, TSceneNode& ANode);
  /// Called when the node has entered a scene: takes the bitmap from its bundle if it is missing.
  void SettedScene(const IScene* AScene, TSceneNode& ANode);
  /// Prepares a canvas for drawing the node.
  void SetupBrushes(Canvas::ICanvas& ACanvas, const TSceneNode& ANode) const;

 private:
  TAlphaColor FFillColor{0xFFFFFFFF};
  TAlphaColor FStrokeColor{0xFF000000};
  TRef<Canvas::IBitmap> FBitmap;
  std::string FBitmapPath;
  float FStrokeThickness = 1.0F;
  bool FEnableFill = true;
};

// ---------------------------------------------------------------- TShapeBase

/// A shape with a place and a brush.
class TShapeBase : public TLocationShape {
 public:
  FENCING_CLASS_INFO()

  TBrush& GetBrush() { return FBrush; }
  TAlphaColor GetFillColor() const { return FBrush.GetFillColor(); }
  void SetFillColor(TAlphaColor AValue) { FBrush.SetFillColor(AValue, *this); }
  TAlphaColor GetStrokeColor() const { return FBrush.GetStrokeColor(); }
  void SetStrokeColor(TAlphaColor AValue) { FBrush.SetStrokeColor(AValue, *this); }
  float GetStrokeThickness() const { return FBrush.GetStrokeThickness(); }
  void SetStrokeThickness(float AValue) { FBrush.SetStrokeThickness(AValue, *this); }
  TRef<Canvas::IBitmap> GetBitmap() const { return FBrush.GetBitmap(); }
  void SetBitmap(const TRef<Canvas::IBitmap>& AValue) { FBrush.SetBitmap(AValue, *this); }
  std::string GetBitmapPath() const { return FBrush.GetBitmapPath(); }
  void SetBitmapPath(const std::string& AValue) { FBrush.SetBitmapPath(AValue, *this); }
  void SetEnableFill(bool AValue) override { FBrush.SetEnableFill(AValue, *this); }
  bool GetEnableFill() const override { return FBrush.GetEnableFill(); }

  /// Reads the bitmap again when `AValue` is its path, letter case ignored.
  bool InvalidatePropertyValue(const std::string& AValue) override;
  void SetScene(TScene* AScene) override;
  virtual IShape* AsShape() { return this; }

 protected:
  /// Paints the shape, then what is below it.
  void DoPaint(Canvas::ICanvas& ACanvas, const TMatrix& AMatrix) override;
  /// Draws the shape itself; brush and matrix are set, coordinates are local.
  virtual void Draw(Canvas::ICanvas& ACanvas) = 0;
  /// The closed outline of four corners, in the polygon that all shapes of a canvas type share.
  static TRef<Canvas::IPolygon> GetPolygonForCorners(Canvas::ICanvas& ACanvas,
                                                     const TCorners& ACorners);

  TBrush FBrush;
};

// ---------------------------------------------------------------- shapes of a rectangle

/// A shape in a rectangle of local space.
class TShape : public TShapeBase {
 public:
  FENCING_CLASS_INFO()

  TRectF GetRect() const override { return FRect; }
  /// Announced also when the rectangle is equal.
  void SetRect(const TRectF& ARect) override;
  bool ContainsLocalPoint(TPointF APoint) const override { return FRect.Contains(APoint); }

 private:
  TRectF FRect;
};

class TRectangle : public TShape {
 public:
  FENCING_CLASS_INFO()

 protected:
  void Draw(Canvas::ICanvas& ACanvas) override;
};

/// The ellipse that fills the rectangle, or the largest circle in its middle.
class TEllipse : public TShape {
 public:
  FENCING_CLASS_INFO()

  bool GetPerfectCircle() const { return FFitIntoRect; }
  void SetPerfectCircle(bool AValue) { SetFitIntoRect(AValue); }
  void SetFitIntoRect(bool AValue);
  bool ContainsLocalPoint(TPointF APoint) const override;
  /// A point inside is its own closest point.
  TPointF GetClosestPointToGlobalPoint(TPointF APoint, bool AGlobal) const override;

 protected:
  void Draw(Canvas::ICanvas& ACanvas) override;

 private:
  TPointF HalfSize() const;
  TPointF Clamped(TPointF AFromCentre) const;

  bool FFitIntoRect = false;
};

// ---------------------------------------------------------------- TSegment

/// A straight line between two points of local space.
class TSegment : public TShapeBase {
 public:
  FENCING_CLASS_INFO()

  /// 0 is the start, 1 the end; other indexes read (0, 0) and write nothing.
  TPointF GetControlPointAt(std::int32_t AIndex) const;
  void SetControlPointAt(std::int32_t AIndex, TPointF APoint);
  /// What bounds the two points.
  TRectF GetRect() const override;
  /// From the upper left corner to the lower right one.
  void SetRect(const TRectF& ARect) override;
  bool ContainsLocalPoint(TPointF APoint) const override { return GetRect().Contains(APoint); }

 protected:
  void Draw(Canvas::ICanvas& ACanvas) override;

 private:
  void SetPoints(TPointF AStart, TPointF AEnd);

  std::array<TPointF, 2> FPoints{};
};

}  // namespace System::Beacon::Fencing::Scene
