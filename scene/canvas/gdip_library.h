// The flat interface of GDI+, loaded when it is first needed: on Linux from libgdiplus.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace System::Beacon::Fencing::Canvas::Gdip {

struct TGraphics;
struct TImage;
struct TBrush;
struct TPen;
struct TPath;
struct TTransform;
struct TFont;
struct TFontFamily;
struct TFormat;

struct TPoint {
  float X = 0;
  float Y = 0;
};
struct TRect {
  float X = 0;
  float Y = 0;
  float Width = 0;
  float Height = 0;
};
struct TStartup {
  std::uint32_t Version = 1;
  void* DebugCallback = nullptr;
  int SuppressThread = 0;
  int SuppressCodecs = 0;
};

/// 0 is success.
using TStatus = int;

inline constexpr int UnitWorld = 0;
inline constexpr int UnitPoint = 3;
inline constexpr int FormatMultipliedARGB = 0xE200B;
inline constexpr int SmoothingAntiAlias = 4;
inline constexpr int InterpolationBilinear = 3;
inline constexpr int TextAntiAlias = 4;
inline constexpr int WrapMirrored = 3;
inline constexpr int FillAlternate = 0;
inline constexpr int ComposeCopy = 1;
inline constexpr int ClipReplace = 0;
inline constexpr std::uint8_t PointStart = 0;
inline constexpr std::uint8_t PointLine = 1;
inline constexpr std::uint8_t PointBezier = 3;
inline constexpr std::uint8_t PointCloses = 0x80;

/// The functions that the canvas calls, under their names. It stays loaded, and started, until the
/// process ends.
class TLibrary {
 public:
  /// Raises `EGeneralError` when the file cannot be loaded or lacks a function.
  explicit TLibrary(const char* AFileName);
  /// The one of the process; loaded at the first call that succeeds.
  static const TLibrary& Get();

  TStatus (*GdiplusStartup)(std::uintptr_t*, const TStartup*, void*);

  TStatus (*GdipCreateBitmapFromScan0)(int, int, int, int, std::uint8_t*, TImage**);
  TStatus (*GdipDisposeImage)(TImage*);
  TStatus (*GdipGetImageGraphicsContext)(TImage*, TGraphics**);
  TStatus (*GdipCreateFromHDC)(void*, TGraphics**);
  TStatus (*GdipDeleteGraphics)(TGraphics*);
  TStatus (*GdipFlush)(TGraphics*, int);
  TStatus (*GdipGetVisibleClipBounds)(TGraphics*, TRect*);
  TStatus (*GdipGraphicsClear)(TGraphics*, std::uint32_t);
  TStatus (*GdipSetCompositingMode)(TGraphics*, int);
  TStatus (*GdipSetClipRectI)(TGraphics*, int, int, int, int, int);
  TStatus (*GdipSetSmoothingMode)(TGraphics*, int);
  TStatus (*GdipSetInterpolationMode)(TGraphics*, int);
  TStatus (*GdipSetTextRenderingHint)(TGraphics*, int);
  TStatus (*GdipSetWorldTransform)(TGraphics*, TTransform*);
  TStatus (*GdipResetWorldTransform)(TGraphics*);
  TStatus (*GdipDrawImageRect)(TGraphics*, TImage*, float, float, float, float);

  TStatus (*GdipCreateMatrix2)(float, float, float, float, float, float, TTransform**);
  TStatus (*GdipDeleteMatrix)(TTransform*);

  TStatus (*GdipCreateSolidFill)(std::uint32_t, TBrush**);
  TStatus (*GdipCreateTexture)(TImage*, int, TBrush**);
  TStatus (*GdipSetTextureTransform)(TBrush*, const TTransform*);
  TStatus (*GdipDeleteBrush)(TBrush*);
  TStatus (*GdipCreatePen2)(TBrush*, float, int, TPen**);
  TStatus (*GdipSetPenDashArray)(TPen*, const float*, int);
  TStatus (*GdipDeletePen)(TPen*);

  TStatus (*GdipCreatePath2)(const TPoint*, const std::uint8_t*, int, int, TPath**);
  TStatus (*GdipDeletePath)(TPath*);
  TStatus (*GdipFillPolygon2)(TGraphics*, TBrush*, const TPoint*, int, int);
  TStatus (*GdipDrawPath)(TGraphics*, TPen*, TPath*);

  TStatus (*GdipCreateFontFamilyFromName)(const char16_t*, void*, TFontFamily**);
  TStatus (*GdipGetGenericFontFamilySansSerif)(TFontFamily**);
  TStatus (*GdipDeleteFontFamily)(TFontFamily*);
  TStatus (*GdipCreateFont)(const TFontFamily*, float, int, int, TFont**);
  TStatus (*GdipDeleteFont)(TFont*);
  TStatus (*GdipStringFormatGetGenericTypographic)(TFormat**);
  TStatus (*GdipDeleteStringFormat)(TFormat*);
  TStatus (*GdipDrawString)(
      TGraphics*, const char16_t*, int, const TFont*, const TRect*, const TFormat*, const TBrush*);
  TStatus (*GdipMeasureString)(TGraphics*,
                               const char16_t*,
                               int,
                               const TFont*,
                               const TRect*,
                               const TFormat*,
                               TRect*,
                               int*,
                               int*);

 private:
  template <class TFunction>
  void Load(void* ALibrary, const char* AName, TFunction& AFunction);
  void LoadFunctions(void* ALibrary);
};

struct TDeleter {
  void operator()(TGraphics* AnObject) const noexcept;
  void operator()(TImage* AnObject) const noexcept;
  void operator()(TBrush* AnObject) const noexcept;
  void operator()(TPen* AnObject) const noexcept;
  void operator()(TPath* AnObject) const noexcept;
  void operator()(TTransform* AnObject) const noexcept;
  void operator()(TFont* AnObject) const noexcept;
  void operator()(TFontFamily* AnObject) const noexcept;
  void operator()(TFormat* AnObject) const noexcept;
};

template <class T>
using TOwned = std::unique_ptr<T, TDeleter>;

/// Raises `EGeneralError` naming the function, or `std::bad_alloc`, unless the status is success.
void Check(TStatus AStatus, const char* AFunction);

/// Paints on a device context, which a handle stands for.
TOwned<TGraphics> OpenContext(std::uintptr_t AHandle);

/// Calls a function whose last argument takes a new object.
template <class T, class... TParameters, class... TArguments>
TOwned<T> Make(const char* AName,
               TStatus (*AFunction)(TParameters...),
               const TArguments&... AnArguments) {
  T* Result = nullptr;
  Check(AFunction(AnArguments..., &Result), AName);
  return TOwned<T>(Result);
}

/// UTF-8 as UTF-16; what is no UTF-8 becomes replacement characters, a very long
/// text is cut.
std::u16string ToUTF16(std::string_view AText);

}  // namespace System::Beacon::Fencing::Canvas::Gdip
