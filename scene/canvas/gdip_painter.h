// Painting with GDI+: paths and texts under a matrix, with colours and textures.
#pragma once

#include <map>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/drawing.h"
#include "platform/drawing/device_path.h"
#include "scene/canvas/gdip_library.h"

namespace System::Beacon::Fencing::Canvas::Gdip {

/// The texture brushes of one picture: one for each size and opacity that it was drawn with lately.
class TTextures {
 public:
  explicit TTextures(TRef<TPicture> APicture) : FPicture(std::move(APicture)) {}

  TPictureSize GetSize() const noexcept { return FPicture->GetSize(); }
  /// The brush of a copy that is 2^`ALevel` times smaller, or of the smallest; `ALevel` becomes its
  /// level.
  TBrush* Get(int& ALevel, double AnOpacity);

 private:
  struct TTexture {
    std::vector<std::uint32_t> Pixels;  // the brush is made of them
    TOwned<TImage> Image;
    TOwned<TBrush> Brush;
  };
  const TRef<TPicture> FPicture;
  std::map<std::pair<int, int>, TTexture> FTextures;  // by level and opacity
};

/// The font that texts are in.
class TTypesetter {
 public:
  TTypesetter();

  /// Width and height, in drawing units.
  TPointF Measure(std::u16string_view AText) const;
  void Draw(TGraphics* AGraphics, std::u16string_view AText, TPointF AnAt, TBrush* ABrush) const;

 private:
  TOwned<TImage> FImage;  // what is measured on
  TOwned<TGraphics> FGraphics;
  TOwned<TFont> FFont;
  TOwned<TFormat> FFormat;
};

/// A device context, for the time of one paint. A paint's picture is looked for in the textures.
class TPainter {
 public:
  explicit TPainter(TOwned<TGraphics> AGraphics);
  ~TPainter();

  const TRectF& GetBounds() const noexcept { return FBounds; }
  void Clear(TAlphaColor AColor);
  void Fill(const System::TPath& APath,
            const TMatrix& AMatrix,
            const TPaint& APaint,
            TTextures* ATextures);
  void Stroke(const System::TPath& APath,
              const TMatrix& AMatrix,
              const System::TPen& APen,
              TTextures* ATextures);
  void DrawText(const TTypesetter& ATypesetter,
                std::string_view AText,
                TPointF AnAt,
                const TMatrix& AMatrix,
                const TPaint& APaint,
                TTextures* ATextures);

 private:
  bool IsVisible(const Drawing::TBox& ABox) const;
  /// Nothing when there is nothing to paint.
  TBrush* PrepareBrush(const TPaint& APaint,
                       TTextures* ATextures,
                       const TRectF& ABounds,
                       const TMatrix& AMatrix);
  /// The contours of the path, which consists of lines, as one: lines from each to the next and
  /// back again leave no trace. (The library fills a path with an outline around it.)
  std::vector<TPoint> JoinContours() const;
  /// The path, taken through a matrix.
  TOwned<TPath> MakePath(const TMatrix& AMatrix);
  void SetTransform(const TMatrix& AMatrix);

  TOwned<TGraphics> FGraphics;
  TRectF FBounds;
  TOwned<TBrush> FSolid;       // of the last colour
  Drawing::TDevicePath FPath;  // the memory is used again
};

}  // namespace System::Beacon::Fencing::Canvas::Gdip
