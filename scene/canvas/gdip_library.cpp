#include "scene/canvas/gdip_library.h"

#include <dlfcn.h>
#include <fmt/format.h>

#include <algorithm>
#include <new>
#include <string_view>

#include "platform/errors.h"
#include "platform/xml_characters.h"
#include "scene/canvas/messages.h"

namespace System::Beacon::Fencing::Canvas::Gdip {
namespace {

constexpr TStatus OutOfMemory = 3;
constexpr std::size_t MaxTextSize = 16384;

[[noreturn]] void RaiseMissing(const char* AFileName) {
  throw EGeneralError(fmt::format(Messages::SNoGdip, AFileName, dlerror()));
}

}  // namespace

TLibrary::TLibrary(const char* AFileName) {
  void* const Library = dlopen(AFileName, RTLD_NOW | RTLD_LOCAL);
  if (!Library) RaiseMissing(AFileName);
  LoadFunctions(Library);
  const TStartup Startup;
  std::uintptr_t Token = 0;
  Check(GdiplusStartup(&Token, &Startup, nullptr), "GdiplusStartup");
}

const TLibrary& TLibrary::Get() {
  static const TLibrary Library("libgdiplus.so.0");
  return Library;
}

template <class TFunction>
void TLibrary::Load(void* ALibrary, const char* AName, TFunction& AFunction) {
  AFunction = reinterpret_cast<TFunction>(dlsym(ALibrary, AName));
  if (!AFunction) RaiseMissing(AName);
}

void TLibrary::LoadFunctions(void* ALibrary) {
  Load(ALibrary, "GdiplusStartup", GdiplusStartup);
  Load(ALibrary, "GdipCreateBitmapFromScan0", GdipCreateBitmapFromScan0);
  Load(ALibrary, "GdipDisposeImage", GdipDisposeImage);
  Load(ALibrary, "GdipGetImageGraphicsContext", GdipGetImageGraphicsContext);
  Load(ALibrary, "GdipCreateFromHDC", GdipCreateFromHDC);
  Load(ALibrary, "GdipDeleteGraphics", GdipDeleteGraphics);
  Load(ALibrary, "GdipFlush", GdipFlush);
  Load(ALibrary, "GdipGetVisibleClipBounds", GdipGetVisibleClipBounds);
  Load(ALibrary, "GdipGraphicsClear", GdipGraphicsClear);
  Load(ALibrary, "GdipSetCompositingMode", GdipSetCompositingMode);
  Load(ALibrary, "GdipSetClipRectI", GdipSetClipRectI);
  Load(ALibrary, "GdipSetSmoothingMode", GdipSetSmoothingMode);
  Load(ALibrary, "GdipSetInterpolationMode", GdipSetInterpolationMode);
  Load(ALibrary, "GdipSetTextRenderingHint", GdipSetTextRenderingHint);
  Load(ALibrary, "GdipSetWorldTransform", GdipSetWorldTransform);
  Load(ALibrary, "GdipResetWorldTransform", GdipResetWorldTransform);
  Load(ALibrary, "GdipDrawImageRect", GdipDrawImageRect);
  Load(ALibrary, "GdipCreateMatrix2", GdipCreateMatrix2);
  Load(ALibrary, "GdipDeleteMatrix", GdipDeleteMatrix);
  Load(ALibrary, "GdipCreateSolidFill", GdipCreateSolidFill);
  Load(ALibrary, "GdipCreateTexture", GdipCreateTexture);
  Load(ALibrary, "GdipSetTextureTransform", GdipSetTextureTransform);
  Load(ALibrary, "GdipDeleteBrush", GdipDeleteBrush);
  Load(ALibrary, "GdipCreatePen2", GdipCreatePen2);
  Load(ALibrary, "GdipSetPenDashArray", GdipSetPenDashArray);
  Load(ALibrary, "GdipDeletePen", GdipDeletePen);
  Load(ALibrary, "GdipCreatePath2", GdipCreatePath2);
  Load(ALibrary, "GdipDeletePath", GdipDeletePath);
  Load(ALibrary, "GdipFillPolygon2", GdipFillPolygon2);
  Load(ALibrary, "GdipDrawPath", GdipDrawPath);
  Load(ALibrary, "GdipCreateFontFamilyFromName", GdipCreateFontFamilyFromName);
  Load(ALibrary, "GdipGetGenericFontFamilySansSerif", GdipGetGenericFontFamilySansSerif);
  Load(ALibrary, "GdipDeleteFontFamily", GdipDeleteFontFamily);
  Load(ALibrary, "GdipCreateFont", GdipCreateFont);
  Load(ALibrary, "GdipDeleteFont", GdipDeleteFont);
  Load(ALibrary, "GdipStringFormatGetGenericTypographic", GdipStringFormatGetGenericTypographic);
  Load(ALibrary, "GdipDeleteStringFormat", GdipDeleteStringFormat);
  Load(ALibrary, "GdipDrawString", GdipDrawString);
  Load(ALibrary, "GdipMeasureString", GdipMeasureString);
}

void TDeleter::operator()(TGraphics* AnObject) const noexcept {
  TLibrary::Get().GdipDeleteGraphics(AnObject);
}

void TDeleter::operator()(TImage* AnObject) const noexcept {
  TLibrary::Get().GdipDisposeImage(AnObject);
}

void TDeleter::operator()(TBrush* AnObject) const noexcept {
  TLibrary::Get().GdipDeleteBrush(AnObject);
}

void TDeleter::operator()(TPen* AnObject) const noexcept {
  TLibrary::Get().GdipDeletePen(AnObject);
}

void TDeleter::operator()(TPath* AnObject) const noexcept {
  TLibrary::Get().GdipDeletePath(AnObject);
}

void TDeleter::operator()(TTransform* AnObject) const noexcept {
  TLibrary::Get().GdipDeleteMatrix(AnObject);
}

void TDeleter::operator()(TFont* AnObject) const noexcept {
  TLibrary::Get().GdipDeleteFont(AnObject);
}

void TDeleter::operator()(TFontFamily* AnObject) const noexcept {
  TLibrary::Get().GdipDeleteFontFamily(AnObject);
}

void TDeleter::operator()(TFormat* AnObject) const noexcept {
  TLibrary::Get().GdipDeleteStringFormat(AnObject);
}

void Check(TStatus AStatus, const char* AFunction) {
  if (AStatus == OutOfMemory) throw std::bad_alloc();
  if (AStatus != 0) throw EGeneralError(fmt::format(Messages::SGdipStatus, AFunction, AStatus));
}

TOwned<TGraphics> OpenContext(std::uintptr_t AHandle) {
  void* const Context = reinterpret_cast<void*>(AHandle);  // NOLINT(performance-no-int-to-ptr)
  return Make<TGraphics>("GdipCreateFromHDC", TLibrary::Get().GdipCreateFromHDC, Context);
}

std::u16string ToUTF16(std::string_view AText) {
  constexpr char16_t Replacement = 0xFFFD;
  std::u16string Result;
  AText = AText.substr(0, MaxTextSize);
  while (!AText.empty()) {
    const TUTF8Character Character = DecodeUTF8(AText);
    AText.remove_prefix(std::max<std::size_t>(Character.Length, 1));
    if (Character.Length == 0 || Character.Code == 0) {
      Result += Replacement;
    } else if (Character.Code < 0x10000) {
      Result += static_cast<char16_t>(Character.Code);
    } else {
      Result += static_cast<char16_t>(0xD800 + ((Character.Code - 0x10000) >> 10));
      Result += static_cast<char16_t>(0xDC00 + ((Character.Code - 0x10000) & 0x3FF));
    }
  }
  return Result;
}

}  // namespace System::Beacon::Fencing::Canvas::Gdip
