// What scenes draw on: canvases, their layers, polygons and bitmaps, and the region that takes
// damaged areas. Adapters over drawing libraries implement these interfaces.
//
// Points are in drawing coordinates; the current matrix takes them to the pixels of the layer, from
// its upper left corner. A shape that has a coordinate, or is drawn with a matrix, that is not
// finite is not drawn, nor is anything under a singular matrix.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <span>
#include <string>
#include <string_view>

#include "platform/color.h"
#include "platform/geometry.h"
#include "platform/ref.h"

namespace System {
class IXMLNode;
}  // namespace System

namespace System::Beacon::Fencing::Canvas {

enum class TStrokePattern : std::uint8_t { Solid, Dots, Dash };

/// Tells canvases apart: a canvas accepts only elements of its own type.
using TCanvasType = std::string_view;

/// A window, a device or an image of the drawing library; 0 stands for none.
using TCanvasHandle = std::uintptr_t;

/// A resource that canvases of one type draw with.
class ICanvasElement : public virtual IInterface {
 public:
  virtual TCanvasType GetCanvasType() const = 0;

 protected:
  ~ICanvasElement() = default;
};

/// A list of points. An index that is out of range reads (0, 0) and writes nothing.
class IPolygon : public virtual ICanvasElement {
 public:
  virtual void AddPoint(TPointF APoint) = 0;
  virtual void SetPonts(std::span<const TPointF> APoints) = 0;
  /// New points are (0, 0); a negative count is 0.
  virtual void SetPointCount(int ACount) = 0;
  virtual int GetPointCount() const = 0;
  virtual TPointF GetPointAt(int AIndex) const = 0;
  virtual void SetPointAt(int AIndex, TPointF APoint) = 0;

 protected:
  ~IPolygon() = default;
};

/// A picture to fill with: PNG, JPEG or WebP, told apart by their first bytes. Loading raises
/// `EFileError`, whose message begins with `AName`, and leaves the bitmap as it was.
class IBitmap : public virtual ICanvasElement {
 public:
  /// In pixels; 0 as long as nothing was loaded.
  virtual int GetWidth() const = 0;
  virtual int GetHeight() const = 0;
  /// `AName` is the name that the picture is known by; empty: the name of the file.
  virtual void LoadFromFile(const std::string& AFileName, const std::string& AName) = 0;
  /// Reads to the end of the stream.
  virtual void LoadFromStream(std::istream& AStream, const std::string& AName) = 0;
  /// (0, 0, width, height).
  virtual TRectF GetLocalRect() const = 0;

 protected:
  ~IBitmap() = default;
};

/// The surface that a scene is painted into. What a kind of layer has no use for does nothing.
class ILayer : public virtual ICanvasElement {
 public:
  /// Tells that the surface behind the layer has another size.
  virtual void Resized() = 0;
  /// In pixels.
  virtual void Resize(int AWidth, int AHeight) = 0;
  /// Copies the pixels of a persistent layer to a view.
  virtual void CopyToView(TCanvasHandle AHandle) = 0;
  virtual void UpdateCanvasHandle(TCanvasHandle AHandle) = 0;
  /// The host's canvas, or nothing. It is not owned and outlives its use here.
  virtual void UpdateCanvasObject(TObject* AnObject) = 0;
  virtual void UpdateViewHandle(TCanvasHandle AHandle) = 0;
  virtual TCanvasHandle GetHandle() const = 0;
  /// Whether the layer keeps its pixels between paints.
  virtual bool IsPersistent() const = 0;

 protected:
  ~ILayer() = default;
};

/// Draws shapes, paths and text with a current matrix, fill and stroke. One thread at a time.
/// Drawing, and setting fill or stroke, outside `BeginScene` and `EndScene` raises `EGeneralError`,
/// and so does an element of another canvas type.
///
/// Opacities are from 0 to 1 and multiply the colour's alpha. A bitmap fills as a texture that is
/// stretched to the bounding rectangle of what is filled.
class ICanvas : public virtual IInterface {
 public:
  /// The type of this canvas and of the elements that it makes.
  virtual TCanvasType GetCanvasType() const = 0;

  /// Begins to paint into a layer, with black strokes one pixel wide, white fill and the identity.
  virtual void BeginScene(const TRef<ILayer>& ALayer) = 0;
  virtual void EndScene() = 0;

  virtual TRef<IPolygon> CreatePolygon() = 0;
  /// As `IBitmap::LoadFromFile`; without a file name, a bitmap that is still to be loaded.
  virtual TRef<IBitmap> CreateBitmap(const std::string& AFileName, const std::string& AName) = 0;

  /// From drawing coordinates to the layer's pixels.
  virtual void SetMatrix(const TMatrix& AMatrix) = 0;
  virtual TMatrix GetMatrix() const = 0;

  virtual void SetFillColor(TAlphaColor AColor, float AnOpacity) = 0;
  virtual void SetFillBitmap(const TRef<IBitmap>& ABitmap, float AnOpacity) = 0;
  virtual void SetStrokeColor(TAlphaColor AColor, float AnOpacity) = 0;
  virtual void SetStrokeBitmap(const TRef<IBitmap>& ABitmap, float AnOpacity) = 0;
  /// A width in screen units is in pixels, which the matrix does not scale; otherwise it is in
  /// drawing units. Nothing is stroked with a width that is not above 0.
  virtual void SetStrokeWidth(float AWidth, bool AnInScreenUnits) = 0;
  virtual void SetStrokePattern(TStrokePattern APattern) = 0;

  /// A path is stroked and filled, as asked for here, by `EndPath`.
  virtual void BeginPath(bool AStroke, bool AFill) = 0;
  virtual void MoveTo(TPointF APoint) = 0;
  virtual void LineTo(TPointF APoint) = 0;
  virtual void CubicBezierTo(TPointF AControl1, TPointF AControl2, TPointF AnEnd) = 0;
  virtual void CloseContour() = 0;
  virtual void EndPath() = 0;

  virtual void Clear(TAlphaColor AColor) = 0;

  /// In the fill's colour; `AnAt` is the upper left corner of the first line. UTF-8.
  virtual void DrawText(const std::string& AText, TPointF AnAt) = 0;
  /// Width (X) and height (Y) in drawing units, the same under every matrix.
  virtual TPointF MeasureString(const std::string& AText) = 0;

  // With the current stroke and fill. The outline of a polygon is open unless its last point is
  // its first one.
  virtual void DrawLine(TPointF AFrom, TPointF ATo) = 0;
  virtual void DrawRectangle(const TRectF& ARect) = 0;
  virtual void DrawEllipse(const TRectF& ARect) = 0;
  virtual void DrawPolygon(const IPolygon* APolygon) = 0;
  // Outline only.
  virtual void StrokeRectangle(const TRectF& ARect) = 0;
  virtual void StrokePolygon(const IPolygon* APolygon) = 0;
  virtual void StrokeEllipse(const TRectF& ARect) = 0;
  // Fill only.
  virtual void FillEllipse(const TRectF& ARect) = 0;
  virtual void FillRect(const TRectF& ARect) = 0;

  /// One polygon of five points that all canvases of this type share, for outlines of
  /// rectangles; released with the last canvas of the type. Its points belong to the thread that
  /// paints.
  virtual TRef<IPolygon> GetRectPolygon() = 0;

 protected:
  ~ICanvas() = default;
};

/// What some canvases can tell beside: where a paint shows, so that it can leave out the rest.
class IPaintArea : public virtual IInterface {
 public:
  /// In pixels of the layer, between `BeginScene` and `EndScene`.
  virtual TRectF GetPaintArea() const = 0;

 protected:
  ~IPaintArea() = default;
};

/// Takes what must be redrawn. Rectangles are in pixels of the screen.
class IInvalidateRegion : public virtual IInterface {
 public:
  virtual void InvalidateRect(const TRectF& ARect) = 0;
  virtual void Invalidate() = 0;

 protected:
  ~IInvalidateRegion() = default;
};

/// The container in which a project travels: named files (the scene's text, pictures), known by
/// the path that they were added under and by a generated id. They are kept in memory, in a working
/// directory beside a table of ids, or in a zip archive that is only read. Unknown paths and ids
/// give empty results.
class IBundle : public virtual IInterface {
 public:
  /// Keeps files in a directory, and reads its table of ids; nothing unless it exists. The path is
  /// put before names as it is, so it ends in a separator.
  virtual void SetWorkingDirectory(const std::string& APath) = 0;
  /// Reads files from an archive; nothing unless it exists.
  virtual void SetWorkingFile(const std::string& AFile) = 0;
  virtual std::string GetIdMapFilePath() const = 0;
  /// Writes the table of ids, with one more pair at its end.
  virtual void GenerateTableWithNewPath(const std::string& APath, const std::string& AnId) = 0;

  /// Adds a file, or replaces the one of that path. With `AReuse` a known path is left alone.
  /// `AnId` becomes its id, or empty when there is no such file.
  virtual void AddFile(const std::string& AFilePath, std::string& AnId, bool AReuse) = 0;
  /// The same with a text in UTF-8; keeps files in memory from then on.
  virtual void AddString(const std::string& APath,
                         const std::string& AText,
                         std::string& AnId,
                         bool AReuse) = 0;
  virtual void AddFileWithEncode64(const std::string& APath,
                                   const std::string& AnId,
                                   const std::string& ABase64) = 0;

  virtual bool ContainsFileWithId(const std::string& AnId) const = 0;
  virtual bool ContainsFileWithPath(const std::string& APath) const = 0;
  virtual std::string GetFileIdWithPath(const std::string& APath) const = 0;
  virtual std::string GetFilePathWithId(const std::string& AnId) const = 0;

  /// A file as text in UTF-8.
  virtual std::string GetStringForKey(const std::string& APath) = 0;
  virtual std::string GetBase64FromFileId(const std::string& AnId) = 0;
  virtual std::string GetBase64FromFilePath(const std::string& APath) = 0;
  /// The bitmap of a file, made once; empty when there is none.
  virtual TRef<IBitmap> GetImageForPath(const std::string& APath) = 0;
  /// The path of a bitmap that this bundle made.
  virtual std::string GetPathForImage(const IBitmap* ABitmap) const = 0;

  virtual std::string SerializeToXML() = 0;
  /// These raise `EXMLError` for a malformed text, and answer whether there was a document.
  virtual bool UnserializeFromXML(const std::string& AnXML) = 0;
  virtual bool UnserializeFromXMLFile(const std::string& AFile) = 0;
  /// `ANode` is the node above the bundle element.
  virtual bool UnserializeFromXMLNode(const TRef<IXMLNode>& ANode) = 0;
  /// Does nothing.
  virtual void Update() = 0;

 protected:
  ~IBundle() = default;
};

/// The ellipse inscribed in a rectangle as four cubic Bézier arcs, taken through a matrix: the
/// start point, then two control points and the end of each arc. The last point is the first one.
void GenerateCircleWithBeziers(const TRectF& ARect,
                               const TMatrix& AMatrix,
                               std::span<TPointF, 13> APoints);

}  // namespace System::Beacon::Fencing::Canvas
