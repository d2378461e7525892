#include "scene/canvas/gdip_painter.h"

#include <algorithm>
#include <cmath>

#include "platform/drawing/matrices.h"
#include "platform/drawing/source.h"
#include "platform/drawing/surface.h"

namespace System::Beacon::Fencing::Canvas::Gdip {
namespace {

using Drawing::TBox;
using Drawing::TDevicePoint;

// How far outside the bounds lines may go before they are cut; and pens, which are cut to this.
constexpr double GuardWidth = 4096;
constexpr double MaxPenWidth = 500'000;
constexpr double MinPenWidth = 0.001;
constexpr double MaxCoordinate = 4'000'000;

const TLibrary& Library() {
  return TLibrary::Get();
}

TOwned<TTransform> MakeTransform(const TMatrix& AMatrix) {
  const auto& M = AMatrix.M;
  return Make<TTransform>("GdipCreateMatrix2",
                          Library().GdipCreateMatrix2,
                          M[0][0],
                          M[0][1],
                          M[1][0],
                          M[1][1],
                          M[2][0],
                          M[2][1]);
}

TOwned<TImage> MakeImage(TPictureSize ASize, std::uint32_t* APixels) {
  return Make<TImage>("GdipCreateBitmapFromScan0",
                      Library().GdipCreateBitmapFromScan0,
                      ASize.Width,
                      ASize.Height,
                      ASize.Width * 4,
                      FormatMultipliedARGB,
                      reinterpret_cast<std::uint8_t*>(APixels));
}

constexpr std::uint32_t Scaled(std::uint32_t AChannel, int AnOpacity) {
  return (AChannel * static_cast<std::uint32_t>(AnOpacity) + 127) / 255;
}

// A pixel that is multiplied with its alpha becomes more transparent.
constexpr std::uint32_t Fade(std::uint32_t APixel, int AnOpacity) {
  std::uint32_t Result = 0;
  for (int Shift = 0; Shift < 32; Shift += 8)
    Result |= Scaled((APixel >> Shift) & 255, AnOpacity) << Shift;
  return Result;
}

std::uint32_t ColorOf(const TPaint& APaint) {
  const auto Opacity = static_cast<int>(std::lround(Drawing::OpacityOf(APaint) * 255));
  return Scaled(APaint.Color.GetAlpha(), Opacity) << 24 | (APaint.Color.Value & 0xFFFFFF);
}

// The matrix that a pen draws under: a pen in drawing units is stretched with the drawing. The
// library moves lines by half a pixel under matrices that do not scale.
TMatrix WorldFor(const System::TPen& APen, const TMatrix& AMatrix) {
  const TMatrix Result = APen.IsInPixels ? TMatrix::Identity() : AMatrix;
  const bool IsMoved = std::abs(Drawing::StretchOf(Result).Most - 1) < 0.01;
  return IsMoved ? TMatrix::Scaling(0.5F, 0.5F) * Result : Result;
}

// Dashes are as long as the pen is wide, times these; at least a pixel.
void SetDash(Gdip::TPen* APen, TDashStyle AStyle, double AWidth, double AStretch) {
  if (AStyle == TDashStyle::Solid) return;
  const auto Unit = static_cast<float>(std::max(1.0, 1 / (AStretch * AWidth)));
  const float Dash[] = {(AStyle == TDashStyle::Dash ? 3.0F : 1.0F) * Unit, Unit};
  Check(Library().GdipSetPenDashArray(APen, Dash, 2), "GdipSetPenDashArray");
}

}  // namespace

// ---------------------------------------------------------------- TTextures

TBrush* TTextures::Get(int& ALevel, double AnOpacity) {
  constexpr std::size_t MaxTextures = 8;
  cairo_surface_t* const Surface = FPicture->GetLevels().GetLevel(ALevel);
  const auto Opacity = static_cast<int>(std::lround(AnOpacity * 255));
  if (FTextures.size() >= MaxTextures && !FTextures.contains({ALevel, Opacity})) FTextures.clear();
  TTexture& Texture = FTextures[{ALevel, Opacity}];
  if (Texture.Brush) return Texture.Brush.get();

  std::span<std::uint32_t> Pixels = Drawing::GetPixels(Surface);
  if (Opacity < 255) {
    Texture.Pixels.assign(Pixels.begin(), Pixels.end());
    for (std::uint32_t& Pixel : Texture.Pixels) Pixel = Fade(Pixel, Opacity);
    Pixels = Texture.Pixels;
  }
  Texture.Image = MakeImage(Drawing::GetSize(Surface), Pixels.data());
  Texture.Brush = Make<TBrush>(
      "GdipCreateTexture", Library().GdipCreateTexture, Texture.Image.get(), WrapMirrored);
  return Texture.Brush.get();
}

// ---------------------------------------------------------------- TTypesetter

TTypesetter::TTypesetter()
    : FImage(MakeImage({1, 1}, nullptr)),
      FGraphics(Make<TGraphics>(
          "GdipGetImageGraphicsContext", Library().GdipGetImageGraphicsContext, FImage.get())) {
  Library().GdipSetTextRenderingHint(FGraphics.get(), TextAntiAlias);
  TFontFamily* Found = nullptr;
  if (Library().GdipCreateFontFamilyFromName(u"Arial", nullptr, &Found) != 0)
    Check(Library().GdipGetGenericFontFamilySansSerif(&Found), "GdipGetGenericFontFamilySansSerif");
  const TOwned<TFontFamily> Family(Found);
  FFont =
      Make<TFont>("GdipCreateFont", Library().GdipCreateFont, Family.get(), 12.0F, 0, UnitPoint);
  FFormat = Make<TFormat>("GdipStringFormatGetGenericTypographic",
                          Library().GdipStringFormatGetGenericTypographic);
}

TPointF TTypesetter::Measure(std::u16string_view AText) const {
  const TRect Unlimited;
  TRect Result;
  int Letters = 0;
  int Lines = 0;
  Check(Library().GdipMeasureString(FGraphics.get(),
                                    AText.data(),
                                    static_cast<int>(AText.size()),
                                    FFont.get(),
                                    &Unlimited,
                                    FFormat.get(),
                                    &Result,
                                    &Letters,
                                    &Lines),
        "GdipMeasureString");
  return {Result.Width, Result.Height};
}

void TTypesetter::Draw(TGraphics* AGraphics,
                       std::u16string_view AText,
                       TPointF AnAt,
                       TBrush* ABrush) const {
  const TRect Place{.X = AnAt.X, .Y = AnAt.Y};
  Library().GdipDrawString(AGraphics,
                           AText.data(),
                           static_cast<int>(AText.size()),
                           FFont.get(),
                           &Place,
                           FFormat.get(),
                           ABrush);
}

// ---------------------------------------------------------------- TPainter

TPainter::TPainter(TOwned<TGraphics> AGraphics) : FGraphics(std::move(AGraphics)) {
  Library().GdipSetSmoothingMode(FGraphics.get(), SmoothingAntiAlias);
  Library().GdipSetInterpolationMode(FGraphics.get(), InterpolationBilinear);
  Library().GdipSetTextRenderingHint(FGraphics.get(), TextAntiAlias);
  TRect Rect;
  Check(Library().GdipGetVisibleClipBounds(FGraphics.get(), &Rect), "GdipGetVisibleClipBounds");
  FBounds = {Rect.X, Rect.Y, Rect.X + Rect.Width, Rect.Y + Rect.Height};
}

TPainter::~TPainter() {
  constexpr int WaitForIt = 1;
  Library().GdipFlush(FGraphics.get(), WaitForIt);
}

bool TPainter::IsVisible(const TBox& ABox) const {
  return ABox.Touches(TBox::Of(GetBounds()));
}

void TPainter::Clear(TAlphaColor AColor) {
  Library().GdipGraphicsClear(FGraphics.get(), AColor.Value);
}

void TPainter::SetTransform(const TMatrix& AMatrix) {
  Library().GdipSetWorldTransform(FGraphics.get(), MakeTransform(AMatrix).get());
}

TBrush* TPainter::PrepareBrush(const TPaint& APaint,
                               TTextures* ATextures,
                               const TRectF& ABounds,
                               const TMatrix& AMatrix) {
  const double Opacity = Drawing::OpacityOf(APaint);
  if (Opacity == 0) return nullptr;
  if (!ATextures) {
    FSolid = Make<TBrush>("GdipCreateSolidFill", Library().GdipCreateSolidFill, ColorOf(APaint));
    return FSolid.get();
  }
  const TPictureSize Size = ATextures->GetSize();
  const TMatrix Placing = TMatrix::Scaling(ABounds.GetWidth() / static_cast<float>(Size.Width),
                                           ABounds.GetHeight() / static_cast<float>(Size.Height)) *
                          TMatrix::Translation(ABounds.Left, ABounds.Top) * AMatrix;
  if (!Drawing::IsUsable(Placing)) return nullptr;
  int Level = Drawing::LevelFor(Drawing::StretchOf(Placing));
  TBrush* const Result = ATextures->Get(Level, Opacity);
  const float Enlarging = std::ldexp(1.0F, Level);
  const TMatrix FromLevel = TMatrix::Scaling(Enlarging, Enlarging) * Placing;
  Library().GdipSetTextureTransform(Result, MakeTransform(FromLevel).get());
  return Result;
}

TOwned<TPath> TPainter::MakePath(const TMatrix& AMatrix) {
  const auto& M = AMatrix.M;
  std::vector<TPoint> Points;
  std::vector<std::uint8_t> Types;
  std::size_t Start = 0;  // of the contour
  const auto Add = [&](TDevicePoint APoint, std::uint8_t AType) {
    Points.push_back({static_cast<float>(APoint.X * M[0][0] + APoint.Y * M[1][0] + M[2][0]),
                      static_cast<float>(APoint.X * M[0][1] + APoint.Y * M[1][1] + M[2][1])});
    Types.push_back(AType);
  };
  auto Point = FPath.GetPoints().begin();
  for (const TPathStep Step : FPath.GetSteps()) {
    if (Step == TPathStep::Close) {
      Types.back() |= PointCloses;
      continue;
    }
    if (Step == TPathStep::Move) {
      Start = Points.size();
      Add(*Point++, PointStart);
      continue;
    }
    if (Types.back() & PointCloses) {  // goes on where the closed contour began
      Points.push_back(Points[Start]);
      Types.push_back(PointStart);
      Start = Points.size() - 1;
    }
    const bool IsLine = Step == TPathStep::Line;
    for (int I = 0; I < (IsLine ? 1 : 3); ++I) Add(*Point++, IsLine ? PointLine : PointBezier);
  }
  return Make<TPath>("GdipCreatePath2",
                     Library().GdipCreatePath2,
                     Points.data(),
                     Types.data(),
                     static_cast<int>(Points.size()),
                     FillAlternate);
}

void TPainter::Fill(const System::TPath& APath,
                    const TMatrix& AMatrix,
                    const TPaint& APaint,
                    TTextures* ATextures) {
  if (!Drawing::IsUsable(AMatrix) || !FPath.Assign(APath, AMatrix)) return;
  if (!IsVisible(FPath.GetBounds())) return;
  FPath.ClipFill(TBox::Of(GetBounds()).Inflated(GuardWidth));
  const std::vector<TPoint> Outline = JoinContours();
  if (Outline.empty()) return;
  TBrush* const Brush = PrepareBrush(APaint, ATextures, APath.GetBounds(), AMatrix);
  if (!Brush) return;
  Library().GdipFillPolygon2(
      FGraphics.get(), Brush, Outline.data(), static_cast<int>(Outline.size()), FillAlternate);
}

std::vector<TPoint> TPainter::JoinContours() const {
  std::vector<TPoint> Result;
  std::vector<TPoint> Starts;
  auto Point = FPath.GetPoints().begin();
  for (const TPathStep Step : FPath.GetSteps()) {
    if (Step == TPathStep::Move && !Starts.empty()) Result.push_back(Starts.back());
    Result.push_back({static_cast<float>(Point->X), static_cast<float>(Point->Y)});
    if (Step == TPathStep::Move) Starts.push_back(Result.back());
    ++Point;
  }
  Result.insert(Result.end(), Starts.rbegin(), Starts.rend());
  return Result;
}

void TPainter::Stroke(const System::TPath& APath,
                      const TMatrix& AMatrix,
                      const System::TPen& APen,
                      TTextures* ATextures) {
  if (!Drawing::IsUsable(AMatrix) || !FPath.Assign(APath, AMatrix)) return;
  const TMatrix World = WorldFor(APen, AMatrix);
  const double Stretch = Drawing::StretchOf(World).Most;
  const double Scale = APen.IsInPixels ? 1 : Drawing::StretchOf(AMatrix).Most;
  const double Width = std::min(APen.Width * Scale, MaxPenWidth) / Stretch;
  if (!(Width * Stretch >= MinPenWidth)) return;

  const double Reach = Width * Stretch * 6;  // half the width, with the longest mitre
  if (!IsVisible(FPath.GetBounds().Inflated(Reach))) return;
  const TBox Guard = TBox::Of(GetBounds()).Inflated(GuardWidth + Reach);
  if (!Guard.Contains(FPath.GetBounds())) FPath.ClipStroke(Guard, APen.Dash == TDashStyle::Solid);
  if (FPath.GetPoints().empty()) return;
  const TMatrix ToWorld = World.Inverse();
  TBrush* const Brush = PrepareBrush(APen.Paint, ATextures, APath.GetBounds(), AMatrix * ToWorld);
  if (!Brush) return;
  const auto Pen = Make<Gdip::TPen>(
      "GdipCreatePen2", Library().GdipCreatePen2, Brush, static_cast<float>(Width), UnitWorld);
  SetDash(Pen.get(), APen.Dash, Width, Stretch);
  SetTransform(World);
  Library().GdipDrawPath(FGraphics.get(), Pen.get(), MakePath(ToWorld).get());
  Library().GdipResetWorldTransform(FGraphics.get());
}

void TPainter::DrawText(const TTypesetter& ATypesetter,
                        std::string_view AText,
                        TPointF AnAt,
                        const TMatrix& AMatrix,
                        const TPaint& APaint,
                        TTextures* ATextures) {
  // Larger letters are no text any more, and smaller ones no letters.
  constexpr double MinStretch = 1 / 32.0;
  constexpr double MaxStretch = 250;
  constexpr double LetterSize = 16;
  if (!Drawing::IsUsable(AMatrix)) return;
  const double Stretch = Drawing::StretchOf(AMatrix).Most;
  if (Stretch < MinStretch || Stretch > MaxStretch) return;

  const std::u16string Text = ToUTF16(AText);
  const TPointF Size = ATypesetter.Measure(Text);
  const TRectF Bounds{AnAt.X, AnAt.Y, AnAt.X + Size.X, AnAt.Y + Size.Y};
  System::TPath Outline;
  Outline.AddRect(Bounds);
  if (!FPath.Assign(Outline, AMatrix)) return;
  if (!IsVisible(FPath.GetBounds().Inflated(LetterSize * Stretch))) return;
  if (!TBox{}.Inflated(MaxCoordinate).Contains(FPath.GetBounds())) return;
  TBrush* const Brush = PrepareBrush(APaint, ATextures, Bounds, TMatrix::Identity());
  if (!Brush) return;
  SetTransform(AMatrix);
  ATypesetter.Draw(FGraphics.get(), Text, AnAt, Brush);
  Library().GdipResetWorldTransform(FGraphics.get());
}

}  // namespace System::Beacon::Fencing::Canvas::Gdip
