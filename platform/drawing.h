// Drawing into memory: pictures that are read from files, and drawings of paths and text.
//
// A pixel is a 32-bit number, alpha in its top byte, then red, green and blue, which are already
// multiplied with alpha. Y grows downwards. The libraries that do the work stay behind this header.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/color.h"
#include "platform/errors.h"
#include "platform/geometry.h"
#include "platform/ref.h"

namespace System {

// ---------------------------------------------------------------- pictures

inline constexpr int MaxPictureSide = 32767;
inline constexpr std::size_t MaxPicturePixels = 100'000'000;
inline constexpr std::size_t MaxPictureFileSize = 256U << 20;

struct TPictureSize {
  int Width = 0;
  int Height = 0;
  bool operator==(const TPictureSize&) const = default;
};

namespace Drawing {
class TPictureLevels;
class TTarget;
}  // namespace Drawing

/// Pixels that do not change. Smaller copies are made when they are first needed, and kept: drawing
/// a large picture small costs what its small copy costs. Any thread.
class TPicture : public TInterfacedObject {
 public:
  /// Takes the pixels over.
  explicit TPicture(std::unique_ptr<Drawing::TPictureLevels> ALevels);
  ~TPicture() override;

  TPictureSize GetSize() const noexcept;
  /// Row by row, from the upper left corner.
  std::span<const std::uint32_t> GetPixels() const noexcept;
  Drawing::TPictureLevels& GetLevels() const noexcept { return *FLevels; }

 private:
  const std::unique_ptr<Drawing::TPictureLevels> FLevels;
};

/// Reads a PNG, JPEG or WebP picture; its first bytes tell which. Its size is judged before memory
/// is taken for it. Raises `EFileError`, "NAME: what is wrong", for anything else, for one that is
/// damaged or cut short, and for one of more than `AMaxPixels`.
TRef<TPicture> DecodePicture(std::string_view ABytes,
                             const std::string& AName,
                             std::size_t AMaxPixels = MaxPicturePixels);
/// The same from a file; `AName` is for messages, empty: the name of the file.
TRef<TPicture> LoadPicture(const std::string& AFileName, const std::string& AName = {});
/// The size of a picture by its header alone. Raises as `DecodePicture`, whatever the size.
TPictureSize ReadPictureSize(std::string_view ABytes, const std::string& AName);
/// A picture of pixels that are given row by row; as many as the size says.
TRef<TPicture> MakePicture(TPictureSize ASize, std::span<const std::uint32_t> APixels);
/// The picture as the bytes of a PNG file.
std::string EncodePng(const TPicture& APicture);

// ---------------------------------------------------------------- paths, paints, pens

enum class TPathStep : std::uint8_t { Move, Line, Cubic, Close };

/// Lines and curves, in contours.
class TPath {
 public:
  void MoveTo(TPointF APoint);
  /// Begins a contour where there is none.
  void LineTo(TPointF APoint);
  void CubicTo(TPointF AControl1, TPointF AControl2, TPointF AnEnd);
  void Close();
  void AddRect(const TRectF& ARect);
  void Clear();

  /// A move and a line have one point, a cubic three, a close none.
  const std::vector<TPathStep>& GetSteps() const noexcept { return FSteps; }
  const std::vector<TPointF>& GetPoints() const noexcept { return FPoints; }
  /// The bounding rectangle of all points, control points of curves included.
  TRectF GetBounds() const;

 private:
  void Begin(TPointF APoint);

  std::vector<TPathStep> FSteps;
  std::vector<TPointF> FPoints;
};

/// A colour or, when there is one, a picture that is stretched to the bounds of what is painted.
struct TPaint {
  TAlphaColor Color{0xFF000000};
  TRef<TPicture> Picture{};
  float Opacity = 1.0F;  ///< from 0 to 1, multiplies alpha
};

enum class TDashStyle : std::uint8_t { Solid, Dots, Dash };

struct TPen {
  TPaint Paint{};
  float Width = 1.0F;
  bool IsInPixels = true;  ///< otherwise the matrix scales the width
  TDashStyle Dash = TDashStyle::Solid;
};

// ---------------------------------------------------------------- drawings

/// A rectangle of pixels to draw on, with a current matrix, fill, pen and clip. One thread at a
/// time.
///
/// Shapes may lie, and reach, as far outside as they like. What has a coordinate that is not
/// finite, or is drawn under a matrix that is singular or not finite, is left out.
class TDrawing : public TObject {
 public:
  /// All transparent. Raises `EGeneralError` for sides outside 1 to `MaxPictureSide`.
  TDrawing(int AWidth, int AHeight);
  ~TDrawing() override;

  TPictureSize GetSize() const noexcept;
  /// All transparent again, the clip is everything; the rest stays.
  void Resize(int AWidth, int AHeight);
  std::span<const std::uint32_t> GetPixels() const;
  /// A copy of what was drawn.
  TRef<TPicture> GetPicture() const;

  /// From the coordinates of shapes to pixels.
  const TMatrix& GetMatrix() const noexcept { return FMatrix; }
  void SetMatrix(const TMatrix& AMatrix) { FMatrix = AMatrix; }
  const TPaint& GetFill() const noexcept { return FFill; }
  void SetFill(const TPaint& AFill) { FFill = AFill; }
  const TPen& GetPen() const noexcept { return FPen; }
  void SetPen(const TPen& APen) { FPen = APen; }
  /// In pixels, widened to whole ones; nothing outside it changes.
  const TRectF& GetClip() const noexcept { return FClip; }
  void SetClip(const TRectF& AClip);
  /// Everything.
  void ResetClip();

  /// Sets the pixels of the clip to one colour, alpha included.
  void Clear(TAlphaColor AColor);
  /// By the even-odd rule; open contours are filled as if they were closed.
  void Fill(const TPath& APath);
  void Stroke(const TPath& APath);

  /// Draws with the fill; `AnAt` is the upper left corner of the first line. UTF-8; line ends
  /// begin new lines. Under the identity letters are `TextSize` pixels high.
  void DrawText(std::string_view AText, TPointF AnAt);
  /// Width and height of a text, the same under every matrix. Any thread.
  static TPointF MeasureText(std::string_view AText);
  static constexpr float TextSize = 12.0F;

 private:
  TMatrix FMatrix = TMatrix::Identity();
  TPaint FFill{.Color{0xFFFFFFFF}};
  TPen FPen;
  TRectF FClip;
  std::unique_ptr<Drawing::TTarget> FTarget;
};

}  // namespace System
