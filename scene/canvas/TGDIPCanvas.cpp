#include "scene/canvas/System.Beacon.Fencing.Canvas.GDIP.h"
#include "scene/canvas/gdip_painter.h"
#include "scene/canvas/messages.h"

namespace System::Beacon::Fencing::Canvas {

using namespace Gdip;

namespace {

constinit TRectPolygonPool RectPolygons;

}  // namespace

TGDIPCanvas::TGDIPCanvas()
    : TPathCanvas(RectPolygons), FTypesetter(std::make_unique<TTypesetter>()) {}

TGDIPCanvas::~TGDIPCanvas() = default;

void TGDIPCanvas::BeginScene(const TRef<ILayer>& ALayer) {
  if (FPainter) throw EGeneralError(std::string(Messages::SAlreadyPainting));
  const TCanvasHandle Handle = ALayer ? Own<TGDIPLayer>(*ALayer).GetHandle() : 0;
  if (!Handle) throw EGeneralError(std::string(Messages::SNoSurface));
  FPainter = std::make_unique<TPainter>(OpenContext(Handle));
  FLayer = ALayer;
  SetMatrix(TMatrix::Identity());
  FFill = {.Paint{.Color{0xFFFFFFFF}}};
  FStroke = {};
  FPen = {};
}

void TGDIPCanvas::EndScene() {
  FPainter.reset();
  FLayer = nullptr;
  FFill = {};
  FStroke = {};
}

TPainter& TGDIPCanvas::GetPainter() const {
  if (!FPainter) throw EGeneralError(std::string(Messages::SNotPainting));
  return *FPainter;
}

TRectF TGDIPCanvas::GetPaintArea() const {
  return GetPainter().GetBounds();
}

// ---------------------------------------------------------------- fill and stroke

// A bitmap that is none, or is not loaded, paints nothing.
TGDIPCanvas::TFilling TGDIPCanvas::FillingOf(const TRef<IBitmap>& ABitmap, float AnOpacity) const {
  TFilling Result;
  const bool IsLoaded = ABitmap && Own<TGDIPBitmap>(*ABitmap).GetPicture();
  Result.Bitmap = IsLoaded ? ABitmap : nullptr;
  Result.Paint.Opacity = IsLoaded ? AnOpacity : 0.0F;
  return Result;
}

TTextures* TGDIPCanvas::TexturesOf(const TFilling& AFilling) {
  if (!AFilling.Bitmap) return nullptr;
  return &dynamic_cast<TGDIPBitmap&>(*AFilling.Bitmap).GetTextures();
}

void TGDIPCanvas::SetFillColor(TAlphaColor AColor, float AnOpacity) {
  GetPainter();
  FFill = {.Paint{.Color = AColor, .Opacity = AnOpacity}};
}

void TGDIPCanvas::SetFillBitmap(const TRef<IBitmap>& ABitmap, float AnOpacity) {
  GetPainter();
  FFill = FillingOf(ABitmap, AnOpacity);
}

void TGDIPCanvas::SetStrokeColor(TAlphaColor AColor, float AnOpacity) {
  GetPainter();
  FStroke = {.Paint{.Color = AColor, .Opacity = AnOpacity}};
}

void TGDIPCanvas::SetStrokeBitmap(const TRef<IBitmap>& ABitmap, float AnOpacity) {
  GetPainter();
  FStroke = FillingOf(ABitmap, AnOpacity);
}

void TGDIPCanvas::SetStrokeWidth(float AWidth, bool AnInScreenUnits) {
  GetPainter();
  FPen.Width = AWidth;
  FPen.IsInPixels = AnInScreenUnits;
}

void TGDIPCanvas::SetStrokePattern(TStrokePattern APattern) {
  GetPainter();
  FPen.Dash = static_cast<TDashStyle>(APattern);
}

// ---------------------------------------------------------------- drawing

void TGDIPCanvas::Paint(const System::TPath& APath, TParts AParts) {
  TPainter& Painter = GetPainter();
  if (AParts.Fill) Painter.Fill(APath, GetMatrix(), FFill.Paint, TexturesOf(FFill));
  FPen.Paint = FStroke.Paint;
  if (AParts.Stroke) Painter.Stroke(APath, GetMatrix(), FPen, TexturesOf(FStroke));
}

void TGDIPCanvas::Clear(TAlphaColor AColor) {
  GetPainter().Clear(AColor);
}

void TGDIPCanvas::DrawText(const std::string& AText, TPointF AnAt) {
  GetPainter().DrawText(*FTypesetter, AText, AnAt, GetMatrix(), FFill.Paint, TexturesOf(FFill));
}

TPointF TGDIPCanvas::MeasureString(const std::string& AText) {
  return FTypesetter->Measure(ToUTF16(AText));
}

}  // namespace System::Beacon::Fencing::Canvas
