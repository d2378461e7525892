// Nodes that have geometry and draw themselves. Scene thread only.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

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
  /// How far strokes reach beyond what they follow, pixels: pointed corners reach the farthest.
  float GetStrokeReach() const { return 5.0F * FStrokeThickness + 1.0F; }
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

/// A node of class `TBase` that has a brush.
template <class TBase>
class TBrushed : public TBase {
 public:
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

 protected:
  TBrush FBrush;
};

// ---------------------------------------------------------------- TShapeBase

/// A shape with a place and a brush.
class TShapeBase : public TBrushed<TLocationShape> {
 public:
  FENCING_CLASS_INFO()

  void SetEnableFill(bool AValue) override { FBrush.SetEnableFill(AValue, *this); }
  bool GetEnableFill() const override { return FBrush.GetEnableFill(); }

  /// Reads the bitmap again when `AValue` is its path, letter case ignored.
  bool InvalidatePropertyValue(const std::string& AValue) override;
  void SetScene(TScene* AScene) override;
  virtual IShape* AsShape() { return this; }
  /// The polygon of five points that all shapes of a canvas type share.
  static TRef<Canvas::IPolygon> GetRectPolygon(Canvas::ICanvas& ACanvas);
  /// The same as the closed outline of four corners.
  static TRef<Canvas::IPolygon> GetPolygonForCorners(Canvas::ICanvas& ACanvas,
                                                     const TCorners& ACorners);

 protected:
  /// Paints the shape, then what is below it.
  void DoPaint(Canvas::ICanvas& ACanvas, const TMatrix& AMatrix) override;
  /// Draws the shape itself; brush and matrix are set, coordinates are local.
  virtual void Draw(Canvas::ICanvas& ACanvas) = 0;
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
  TExtent GetExtent() const override {
    return TExtent::Of<TRectangle>(GetRect(), FBrush.GetStrokeReach());
  }
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
  TExtent GetExtent() const override {
    return TExtent::Of<TEllipse>(GetRect(), FBrush.GetStrokeReach());
  }
  void Draw(Canvas::ICanvas& ACanvas) override;

 private:
  TPointF HalfSize() const;
  TPointF Clamped(TPointF AFromCentre) const;

  bool FFitIntoRect = false;
};

// ---------------------------------------------------------------- TSegment

/// A straight line between two points of local space.
class TSegment : public TShapeBase, public virtual ISegment {
 public:
  FENCING_CLASS_INFO()

  TPointF GetControlPointAt(std::int32_t AIndex) const override;
  void SetControlPointAt(std::int32_t AIndex, TPointF APoint) override;
  /// What bounds the two points.
  TRectF GetRect() const override;
  /// From the upper left corner to the lower right one.
  void SetRect(const TRectF& ARect) override;
  bool ContainsLocalPoint(TPointF APoint) const override { return GetRect().Contains(APoint); }

 protected:
  TExtent GetExtent() const override {
    return TExtent::Of<TSegment>(GetRect(), FBrush.GetStrokeReach());
  }
  void Draw(Canvas::ICanvas& ACanvas) override;

 private:
  void SetPoints(TPointF AStart, TPointF AEnd);

  std::array<TPointF, 2> FPoints{};
};

// ---------------------------------------------------------------- TControlPointsShape

/// A shape of control points. It has no place of its own: its points stand in the parent's space,
/// and to displace it is to move them. Fill and stroke are for descendants; the shape itself is a
/// dashed line, an aid of editors. Handlers hear of a change after it was made, of the points
/// first, then of the rectangle that bounds them.
class TControlPointsShape : public TBrushed<TSceneNode>, public virtual IControlPointsShape {
 public:
  FENCING_CLASS_INFO()

  bool GetDrawPolylines() const { return FDrawPolylines; }
  /// Repaints nothing.
  void SetDrawPolylines(bool AValue) { FDrawPolylines = AValue; }

  bool AddControlPoint(TPointF APoint) override;
  bool AddControlPointAtIndex(std::int32_t AIndex, TPointF APoint) override;
  void SetControlPointAt(std::int32_t AIndex, TPointF APoint) override;
  void SetControlPoints(std::span<const TPointF> APoints) override;
  std::int32_t GetControlPointCount() const override {
    return static_cast<std::int32_t>(FControlPoints.size());
  }
  TPointF GetControlPointAt(std::int32_t AIndex) const override;
  TPointF GetLastControlPoint() const override;
  TPointF GetFirstControlPoint() const override;
  std::vector<TPointF> GetControlPoints() const override { return FControlPoints; }
  std::int32_t GetClosestControlPointIndex(TPointF APoint) const override;
  bool RemoveControlPoint(std::int32_t AIndex) override;
  void RemoveControlPoints() override { SetControlPoints({}); }
  /// Whether a point is one of the four that are kept as the outermost ones.
  bool IsLimitPoint(std::int32_t AIndex) const;
  FENCING_NODE_EVENT(ControlPointsChange)

  bool ContainsDisplacement() const override { return false; }
  bool ContainsRect() const override { return false; }
  TPointF GetDisplacement() const override { return {}; }
  /// Moves every point by so much.
  void SetDisplacement(const TPointF& ADelta) override;
  void SetScaling(const TPointF&) override {}
  TPointF GetScaling() const override { return {1.0F, 1.0F}; }
  void SetRotation(float) override {}
  float GetRotation() const override { return 0.0F; }
  /// What bounds the points.
  TRectF GetRect() const override;
  /// Stretches the points to a rectangle; moves them only, on an axis on which they have no extent.
  /// A single point goes to the centre, which is not announced.
  void SetRect(const TRectF& ARect) override;
  bool GetAllowRectModification() const override { return TSceneNode::GetAllowRectModification(); }
  TPointF GetDisplacementToGetGlobalPosition(TPointF APoint) const override {
    return TSceneNode::GetDisplacementToGetGlobalPosition(APoint);
  }
  void SetCenterInGlobalSpace(TPointF APoint) override {
    TSceneNode::SetCenterInGlobalSpace(APoint);
  }
  TPointF GetCenterInGlobalSpace() const override { return TSceneNode::GetCenterInGlobalSpace(); }
  void SetEnableFill(bool) override {}
  bool GetEnableFill() const override { return false; }
  FENCING_NODE_EVENT(RectChange)

  bool ContainsLocalPoint(TPointF APoint) const override { return GetRect().Contains(APoint); }
  /// Whether a control point is nearer than 5 to a point that counts as local.
  bool IsUnderGlobalPoint(TPointF APoint) const override;
  virtual IControlPointsShape* AsControlPointShape() = 0;

 protected:
  /// Around `AddControlPointAtIndex`, for what descendants keep by index: whether a point may be
  /// inserted (not while the children are loaded), that one has moved up, that it was inserted.
  virtual bool BeginControlPointInsertion(std::int32_t AIndex);
  virtual void MovedControlPointOnePositionBack(std::int32_t AFrom, std::int32_t ATo);
  virtual void EndControlPointInsertion(std::int32_t AIndex);

  /// Paints the shape, then what is below it.
  void DoPaint(Canvas::ICanvas& ACanvas, const TMatrix& AMatrix) override;
  /// Draws the shape itself; only inside a scene. `AMatrix` is the global matrix of the parent.
  virtual void Draw(Canvas::ICanvas& ACanvas, const TMatrix& AMatrix);
  /// From local space to the pixels of the scene that is being painted.
  TMatrix GetPaintMatrix(const TMatrix& AMatrix) const;
  const std::vector<TPointF>& Points() const { return FControlPoints; }
  bool HasControlPoint(std::int32_t AIndex) const {
    return AIndex >= 0 && AIndex < GetControlPointCount();
  }

 private:
  void ComputeRect();
  void IncludeLastPoint();
  void StretchTo(const TRectF& ARect);
  TRectF PlaceOnScreen(bool AWithChildren) const;
  void RepaintBoth(const TRectF& AOldPlace, bool AWithChildren);

  bool FDrawPolylines = false;
  // The points with the smallest X, largest X, smallest Y, largest Y; the first ones of several
  // when they were last looked for.
  std::array<std::int32_t, 4> FLimitPoints{};
  std::vector<TPointF> FControlPoints;
};

// ---------------------------------------------------------------- TPolygonShape

/// Outlines through the control points: each point has a command, 0 to begin an outline there, 1 to
/// draw a line to it. Points and commands are read up to the shorter of the two lists.
class TPolygonShape : public TControlPointsShape, public virtual IPolygonShape {
 public:
  FENCING_CLASS_INFO()

  bool AddControlPoint(TPointF APoint) override;
  void SetControlPointAt(std::int32_t AIndex, TPointF APoint) override;
  void SetControlPoints(std::span<const TPointF> APoints) override;
  bool RemoveControlPoint(std::int32_t AIndex) override;

  std::vector<std::uint8_t> GetCommands() const { return FCommand; }
  /// Raises `EGeneralError`, and changes nothing, for any command but 0 and 1.
  void SetCommands(std::span<const std::uint8_t> ACommands);
  void SetCloseContour(bool AValue) override;
  bool GetCloseContour() const override { return FCloseContour; }
  bool IsComplex() const override;
  /// Looks whether any two lines cross or touch that have no point in common; the one that closes
  /// the outline is taken for a line, too.
  bool ComputeIsCrossed() const;
  void SetEnableFill(bool AValue) override { FBrush.SetEnableFill(AValue, *this); }
  bool GetEnableFill() const override { return FBrush.GetEnableFill(); }

  /// All control points are taken for one outline.
  bool ContainsLocalPoint(TPointF APoint) const override;
  bool IsUnderGlobalPoint(TPointF APoint) const override {
    return ContainsLocalPoint(GlobalToLocal(APoint));
  }
  void SetScene(TScene* AScene) override;
  IControlPointsShape* AsControlPointShape() override { return this; }

 protected:
  /// A point that was inserted gets a line; one before the first takes over its command.
  void EndControlPointInsertion(std::int32_t AIndex) override;
  TExtent GetExtent() const override {
    return TExtent::Of<TPolygonShape>(GetRect(), FBrush.GetStrokeReach());
  }
  void Draw(Canvas::ICanvas& ACanvas, const TMatrix& AMatrix) override;

 private:
  /// A line from one control point to another, by index.
  struct TLine {
    std::int32_t From;
    std::int32_t To;
  };
  enum class TCrossing : std::uint8_t { Unknown, No, Yes };

  std::int32_t OutlineLength() const;
  std::vector<TLine> Lines() const;
  bool Cross(const TLine& A, const TLine& B) const;
  bool CrossesAnyLine(TPointF ANewPoint) const;
  void SetCrossed(bool AValue) const { FIsComplex = AValue ? TCrossing::Yes : TCrossing::No; }
  std::vector<std::int32_t> GetCommandNumbers() const;
  void SetCommandNumbers(const std::vector<std::int32_t>& ACommands);

  std::vector<std::uint8_t> FCommand;
  bool FCloseContour = true;
  // Found out when it is asked for, perhaps by several threads at once that only read.
  mutable std::atomic<TCrossing> FIsComplex = TCrossing::No;
};

// ---------------------------------------------------------------- TConnectedControlPointsShape

/// Control points joined by lines. Which nodes stand at the points is up to descendants.
class TConnectedControlPointsShape : public TControlPointsShape,
                                     public virtual IConnectedControlPointsShape {
 public:
  FENCING_CLASS_INFO()

  /// Drops the connections of the point; the others follow their points.
  bool RemoveControlPoint(std::int32_t AIndex) override;

  void AddControlPointConnections(std::span<const TConnection> AConnections) override;
  TConnections GetControlPointConnections(std::int32_t AIndex) const override;
  TRef<IPathNode> GetControlPointNode(std::int32_t) override { return nullptr; }
  /// Looks among the children.
  TRef<IPathNode> GetControlPointNode(std::string_view AName) override;
  std::int32_t GetControlPointNodeIndex(const IPathNode*) const override { return -1; }
  bool ContainsConnection(std::int32_t AFrom, std::int32_t ATo, bool AnOrdered) const override {
    return GetConnectionIndex(AFrom, ATo, AnOrdered) >= 0;
  }
  bool RemoveControlPointsConnection(std::int32_t AFrom, std::int32_t ATo, bool AnOrdered) override;
  void ConnectControlPoints(std::int32_t AFrom, std::int32_t ATo) override;
  std::int32_t GetConnectionCount() const override {
    return static_cast<std::int32_t>(FConnections.size());
  }
  void SetConnections(std::span<const TConnection> AConnections) override;
  TConnections GetConnections() const override { return FConnections; }
  /// The first such connection; -1 when there is none.
  std::int32_t GetConnectionIndex(std::int32_t AFrom, std::int32_t ATo, bool AnOrdered) const;
  /// By its place in the list; nothing is drawn anew.
  void RemoveConnection(std::int32_t AConnection);
  /// The first position of a number in a list, or -1.
  static std::int32_t FindPositionOfIndex(std::int32_t AnIndex,
                                          std::span<const std::int32_t> AList);

  /// Also on a connection: not further than 0.01 away.
  bool IsUnderGlobalPoint(TPointF APoint) const override;
  /// On the nearest connection; `NoPoint()` without connections.
  TPointF GetClosestPointToGlobalPoint(TPointF APoint, bool AGlobal) const override;
  IControlPointsShape* AsControlPointShape() override { return this; }

 protected:
  void MovedControlPointOnePositionBack(std::int32_t AFrom, std::int32_t ATo) override;
  void EndControlPointInsertion(std::int32_t AIndex) override;
  void Draw(Canvas::ICanvas& ACanvas, const TMatrix& AMatrix) override;
  /// Draws between the connections and what is below the shape; `AMatrix` is the global matrix of
  /// the parent.
  virtual void DoPaintBeforeChildren(Canvas::ICanvas&, const TMatrix& /*AMatrix*/) {}

 private:
  bool IsWhole(const TConnection& AConnection) const;
  void FindConnectionsByPoint();

  TConnections FConnections;
  /// Points and the connections that touch them, in their order; only during an insertion, which
  /// moves every point once.
  std::vector<std::pair<std::int32_t, std::size_t>> FConnectionsByPoint;
  float FConnectionsThickness = 1.0F;  // pixels
};

// ---------------------------------------------------------------- TShapeProperties

/// Nothing yet: a place for what shapes may come to have in common.
class TShapeProperties : public TObject {};

}  // namespace System::Beacon::Fencing::Scene
