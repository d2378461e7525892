// The canvas that draws on the drawings and controls of the platform.
#pragma once

#include <string>

#include "platform/controls/control.h"
#include "platform/drawing.h"
#include "scene/canvas/System.Beacon.Fencing.Canvas.h"
#include "scene/canvas/path_canvas.h"

namespace System::Beacon::Fencing::Canvas {

inline constexpr TCanvasType WyxCanvasType = "Wyx";

class TWyxPolygon final : public TPointsPolygon {
 public:
  TWyxPolygon() : TPointsPolygon(WyxCanvasType) {}
};

class TWyxBitmap final : public TInterfacedObject, public virtual IBitmap {
 public:
  TCanvasType GetCanvasType() const override { return WyxCanvasType; }
  int GetWidth() const override { return FPicture ? FPicture->GetSize().Width : 0; }
  int GetHeight() const override { return FPicture ? FPicture->GetSize().Height : 0; }
  void LoadFromFile(const std::string& AFileName, const std::string& AName) override;
  void LoadFromStream(std::istream& AStream, const std::string& AName) override;
  TRectF GetLocalRect() const override;
  /// Empty as long as nothing was loaded.
  const TRef<TPicture>& GetPicture() const noexcept { return FPicture; }

 private:
  TRef<TPicture> FPicture;
};

/// A drawing as a layer. The drawing belongs to the host, which also gives it its size.
class TWyxLayer final : public TInterfacedObject, public virtual ILayer {
 public:
  explicit TWyxLayer(TDrawing* ADrawing = nullptr) : FDrawing(ADrawing) {}

  TCanvasType GetCanvasType() const override { return WyxCanvasType; }
  void Resized() override {}
  void Resize(int, int) override {}
  void CopyToView(TCanvasHandle) override {}
  void UpdateCanvasHandle(TCanvasHandle) override {}
  /// A `TDrawing` or nothing; raises `EGeneralError` for any other object.
  void UpdateCanvasObject(TObject* AnObject) override;
  void UpdateViewHandle(TCanvasHandle) override {}
  TCanvasHandle GetHandle() const override { return 0; }
  bool IsPersistent() const override { return false; }
  TDrawing* GetDrawing() const noexcept { return FDrawing; }

 private:
  TDrawing* FDrawing;
};

/// Paints into a `TWyxLayer`. The transform, fill and pen that the drawing has when a scene begins
/// are put back when it ends; the transform stays in force meanwhile, after the current matrix, so
/// that a host can scale for a dense screen. Pixels of stroke widths are scaled with it.
class TWyxCanvas final : public TPathCanvas {
 public:
  TWyxCanvas();
  ~TWyxCanvas() override;

  TCanvasType GetCanvasType() const override { return WyxCanvasType; }
  void BeginScene(const TRef<ILayer>& ALayer) override;
  void EndScene() override;

  TRef<IPolygon> CreatePolygon() override { return New<TWyxPolygon>(); }

  void SetFillColor(TAlphaColor AColor, float AnOpacity) override;
  void SetFillBitmap(const TRef<IBitmap>& ABitmap, float AnOpacity) override;
  void SetStrokeColor(TAlphaColor AColor, float AnOpacity) override;
  void SetStrokeBitmap(const TRef<IBitmap>& ABitmap, float AnOpacity) override;
  void SetStrokeWidth(float AWidth, bool AnInScreenUnits) override;
  void SetStrokePattern(TStrokePattern APattern) override;

  void Clear(TAlphaColor AColor) override;
  void DrawText(const std::string& AText, TPointF AnAt) override;
  TPointF MeasureString(const std::string& AText) override;
  TRectF GetPaintArea() const override;

 protected:
  void Paint(const TPath& APath, TParts AParts) override;
  TRef<IBitmap> NewBitmap() override { return New<TWyxBitmap>(); }

 private:
  TDrawing& GetDrawing() const;
  TPaint PaintOf(const TRef<IBitmap>& ABitmap, float AnOpacity) const;
  void SetFill(const TPaint& APaint);
  void SetStroke(const TPaint& APaint);
  void ApplyPen();

  TRef<ILayer> FLayer;           // the one that is painted into
  TDrawing* FDrawing = nullptr;  // its drawing; nothing between scenes
  TMatrix FBaseMatrix;           // what the drawing had when the scene began
  TPaint FFillToRestore;
  TPen FPenToRestore;
  TPen FPen;  // its width not yet scaled to the drawing's pixels
};

/// A canvas for the drawings of the platform.
inline TRef<ICanvas> CreateWyxCanvas() {
  return New<TWyxCanvas>();
}

/// Asks a control to repaint what becomes invalid; does nothing once the control is gone.
class TInvalidateRegionWyx final : public TInterfacedObject, public virtual IInvalidateRegion {
 public:
  explicit TInvalidateRegionWyx(TControl* AControl);
  ~TInvalidateRegionWyx() override;
  void InvalidateRect(const TRectF& ARect) override;
  void Invalidate() override;

 private:
  class TListener;
  const std::unique_ptr<TListener> FListener;
};

struct TWyxInvlaidator {
  static TRef<IInvalidateRegion> Create(TControl* AControl);
};

}  // namespace System::Beacon::Fencing::Canvas
