#include <fmt/format.h>

#include <algorithm>
#include <istream>

#include "platform/files.h"
#include "scene/canvas/System.Beacon.Fencing.Canvas.GDIP.h"
#include "scene/canvas/gdip_painter.h"
#include "scene/canvas/messages.h"

namespace System::Beacon::Fencing::Canvas {

using namespace Gdip;

// ---------------------------------------------------------------- TGDIPBitmap

TGDIPBitmap::TGDIPBitmap() {
  TLibrary::Get();
}

TGDIPBitmap::~TGDIPBitmap() = default;

void TGDIPBitmap::SetPicture(TRef<TPicture> APicture) {
  FTextures = std::make_unique<TTextures>(APicture);
  FPicture = std::move(APicture);
}

void TGDIPBitmap::LoadFromFile(const std::string& AFileName, const std::string& AName) {
  SetPicture(LoadPicture(AFileName, AName));
}

void TGDIPBitmap::LoadFromStream(std::istream& AStream, const std::string& AName) {
  SetPicture(DecodePicture(ReadWholeStream(AStream, AName, MaxPictureFileSize), AName));
}

TRectF TGDIPBitmap::GetLocalRect() const {
  return {0, 0, static_cast<float>(GetWidth()), static_cast<float>(GetHeight())};
}

// ---------------------------------------------------------------- TGDIPBitmapLayer

struct TGDIPBitmapLayer::TBuffer {
  TPictureSize Size;
  std::vector<std::uint32_t> Pixels;  // what the image consists of
  TOwned<TImage> Image;
  TOwned<TGraphics> Graphics;
};

TGDIPBitmapLayer::TGDIPBitmapLayer(int AWidth, int AHeight) {
  Resize(AWidth, AHeight);
}

TGDIPBitmapLayer::~TGDIPBitmapLayer() = default;

void TGDIPBitmapLayer::Resize(int AWidth, int AHeight) {
  if (std::min(AWidth, AHeight) < 1 || std::max(AWidth, AHeight) > MaxPictureSide)
    throw EGeneralError(fmt::format(Messages::SLayerSize, AWidth, AHeight, MaxPictureSide));
  const TLibrary& Library = TLibrary::Get();
  auto Buffer = std::make_unique<TBuffer>();
  Buffer->Size = {AWidth, AHeight};
  Buffer->Pixels.resize(static_cast<std::size_t>(AWidth) * static_cast<std::size_t>(AHeight));
  Buffer->Image = Make<TImage>("GdipCreateBitmapFromScan0",
                               Library.GdipCreateBitmapFromScan0,
                               AWidth,
                               AHeight,
                               AWidth * 4,
                               FormatMultipliedARGB,
                               reinterpret_cast<std::uint8_t*>(Buffer->Pixels.data()));
  Buffer->Graphics = Make<TGraphics>(
      "GdipGetImageGraphicsContext", Library.GdipGetImageGraphicsContext, Buffer->Image.get());
  FBuffer = std::move(Buffer);
}

void TGDIPBitmapLayer::CopyToView(TCanvasHandle AHandle) {
  const TCanvasHandle View = AHandle ? AHandle : GetView();
  if (!View) return;
  const TLibrary& Library = TLibrary::Get();
  const TOwned<TGraphics> Graphics = OpenContext(View);
  const TPictureSize Size = FBuffer->Size;
  // A copy reaches beyond the bitmap where nothing stops it.
  Library.GdipSetClipRectI(Graphics.get(), 0, 0, Size.Width, Size.Height, ClipReplace);
  Library.GdipSetCompositingMode(Graphics.get(), ComposeCopy);
  Check(Library.GdipDrawImageRect(Graphics.get(),
                                  FBuffer->Image.get(),
                                  0,
                                  0,
                                  static_cast<float>(Size.Width),
                                  static_cast<float>(Size.Height)),
        "GdipDrawImageRect");
}

TCanvasHandle TGDIPBitmapLayer::GetHandle() const {
  return reinterpret_cast<TCanvasHandle>(FBuffer->Graphics.get());
}

TPictureSize TGDIPBitmapLayer::GetSize() const noexcept {
  return FBuffer->Size;
}

std::span<const std::uint32_t> TGDIPBitmapLayer::GetPixels() const {
  return FBuffer->Pixels;
}

}  // namespace System::Beacon::Fencing::Canvas
