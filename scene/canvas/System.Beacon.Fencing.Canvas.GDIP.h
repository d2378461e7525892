// The canvas that draws with GDI+, on windows and on bitmaps in memory. The library is loaded when
// the first object of this header is made; where it is missing, that raises `EGeneralError`.
//
// Handles are the library's device contexts. All objects belong to one thread at a time.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "platform/drawing.h"
#include "scene/canvas/System.Beacon.Fencing.Canvas.h"
#include "scene/canvas/path_canvas.h"
#include "scene/canvas/polygon.h"

namespace System::Beacon::Fencing::Canvas {

namespace Gdip {
class TPainter;
class TTextures;
class TTypesetter;
}  // namespace Gdip

inline constexpr TCanvasType GDIPCanvasType = "GDIP";

class TGDIPPolygon final : public TPointsPolygon {
 public:
  TGDIPPolygon() : TPointsPolygon(GDIPCanvasType) {}
};

/// A picture, and the texture brushes that were made of it.
class TGDIPBitmap final : public TInterfacedObject, public virtual IBitmap {
 public:
  TGDIPBitmap();
  ~TGDIPBitmap() override;

  TCanvasType GetCanvasType() const override { return GDIPCanvasType; }
  int GetWidth() const override { return FPicture ? FPicture->GetSize().Width : 0; }
  int GetHeight() const override { return FPicture ? FPicture->GetSize().Height : 0; }
  void LoadFromFile(const std::string& AFileName, const std::string& AName) override;
  void LoadFromStream(std::istream& AStream, const std::string& AName) override;
  TRectF GetLocalRect() const override;
  const TRef<TPicture>& GetPicture() const noexcept { return FPicture; }
  Gdip::TTextures& GetTextures() const noexcept { return *FTextures; }

 private:
  void SetPicture(TRef<TPicture> APicture);

  TRef<TPicture> FPicture;  // empty as long as nothing was loaded
  std::unique_ptr<Gdip::TTextures> FTextures;
};

/// What the layers have in common: a device context to paint on.
class TGDIPLayer : public TInterfacedObject, public virtual ILayer {
 public:
  TCanvasType GetCanvasType() const override { return GDIPCanvasType; }
  void Resized() override {}
  void UpdateCanvasObject(TObject*) override {}
  void UpdateViewHandle(TCanvasHandle AHandle) override { FView = AHandle; }

 protected:
  TCanvasHandle GetView() const noexcept { return FView; }

 private:
  TCanvasHandle FView = 0;
};

/// Draws straight onto the device context of a window, which belongs to the host.
class TGDIPViewLayer final : public TGDIPLayer {
 public:
  explicit TGDIPViewLayer(TCanvasHandle AHandle = 0) : FHandle(AHandle) {}

  void Resize(int, int) override {}
  void CopyToView(TCanvasHandle) override {}
  void UpdateCanvasHandle(TCanvasHandle AHandle) override { FHandle = AHandle; }
  TCanvasHandle GetHandle() const override { return FHandle; }
  bool IsPersistent() const override { return false; }

 private:
  TCanvasHandle FHandle;
};

/// Draws into a bitmap in memory, transparent at first, which keeps its pixels between paints.
class TGDIPBitmapLayer final : public TGDIPLayer {
 public:
  /// Sides from 1 to `MaxPictureSide`; raises `EGeneralError`.
  TGDIPBitmapLayer(int AWidth, int AHeight);
  ~TGDIPBitmapLayer() override;

  /// Makes a new, transparent bitmap; not while it is painted into.
  void Resize(int AWidth, int AHeight) override;
  /// Copies the bitmap to a device context, or with 0 to the one of `UpdateViewHandle`.
  void CopyToView(TCanvasHandle AHandle) override;
  void UpdateCanvasHandle(TCanvasHandle) override {}
  /// The bitmap's own device context.
  TCanvasHandle GetHandle() const override;
  bool IsPersistent() const override { return true; }
  TPictureSize GetSize() const noexcept;
  /// Row by row, each pixel as in platform/drawing.h.
  std::span<const std::uint32_t> GetPixels() const;

 private:
  struct TBuffer;
  std::unique_ptr<TBuffer> FBuffer;
};

/// Paints into a `TGDIPLayer`. Text is in Arial, 12 points, or what stands in for it.
class TGDIPCanvas final : public TPathCanvas {
 public:
  TGDIPCanvas();
  ~TGDIPCanvas() override;

  TCanvasType GetCanvasType() const override { return GDIPCanvasType; }
  void BeginScene(const TRef<ILayer>& ALayer) override;
  void EndScene() override;

  TRef<IPolygon> CreatePolygon() override { return New<TGDIPPolygon>(); }

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
  TRef<IBitmap> NewBitmap() override { return New<TGDIPBitmap>(); }

 private:
  /// A colour, or a bitmap that may be none or not loaded.
  struct TFilling {
    TPaint Paint{};
    TRef<IBitmap> Bitmap{};
  };
  TFilling FillingOf(const TRef<IBitmap>& ABitmap, float AnOpacity) const;
  static Gdip::TTextures* TexturesOf(const TFilling& AFilling);
  Gdip::TPainter& GetPainter() const;

  std::unique_ptr<Gdip::TTypesetter> FTypesetter;
  TRef<ILayer> FLayer;                       // the one that is painted into
  std::unique_ptr<Gdip::TPainter> FPainter;  // nothing between scenes
  TFilling FFill;
  TFilling FStroke;
  TPen FPen;  // without its paint
};

}  // namespace System::Beacon::Fencing::Canvas
