// Both canvases: what they draw, measure and refuse alike, and what each has of its own.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <array>
#include <sstream>

#include "scene/canvas/System.Beacon.Fencing.Canvas.GDIP.h"
#include "scene/canvas/System.Beacon.Fencing.Canvas.Wyx.h"
#include "scene/canvas/gdip_library.h"
#include "support/canvas_scenes.h"
#include "support/pictures.h"
#include "support/raised.h"

namespace System::Beacon::Fencing::Canvas {
namespace {

constexpr TAlphaColor White{0xFFFFFFFF};
constexpr TAlphaColor Black{0xFF000000};

struct TWyxTarget {
  static constexpr float MinTextWidth = 50, MaxTextWidth = 120;
  using TEmptyLayer = TWyxLayer;
  static std::string GetProblem() { return ""; }
  static std::string PictureOf(const std::string& AScene) { return AScene; }
  std::span<const std::uint32_t> GetPixels() const { return Drawing.GetPixels(); }

  TDrawing Drawing{200, 150};
  const TRef<ILayer> Layer = New<TWyxLayer>(&Drawing);
  const TRef<TWyxCanvas> Canvas = New<TWyxCanvas>();
};

struct TGDIPTarget {
  static constexpr float MinTextWidth = 60, MaxTextWidth = 150;
  using TEmptyLayer = TGDIPViewLayer;
  static std::string GetProblem() {
#ifdef __SANITIZE_THREAD__
    return "the GDI+ library starts threads that ThreadSanitizer cannot follow";
#endif
    const std::string Missing = Raised<EGeneralError>([] { New<TGDIPCanvas>(); });
    return Missing == "nothing was raised" ? "" : Missing;
  }
  /// Texts are in another font, and pictures as strokes continue mirrored: two of its own.
  static std::string PictureOf(const std::string& AScene) {
    return AScene == "texts" || AScene == "bitmaps" ? AScene + "_gdip" : AScene;
  }
  std::span<const std::uint32_t> GetPixels() const {
    return Layer->GetPixels();
  }

  const TRef<TGDIPBitmapLayer> Layer = New<TGDIPBitmapLayer>(200, 150);
  const TRef<TGDIPCanvas> Canvas = New<TGDIPCanvas>();
};

/// A canvas that paints into something white.
template <class TTarget>
struct TPainting : TTarget {
  TPainting() {
    this->Canvas->BeginScene(this->Layer);
    this->Canvas->Clear(White);
    this->Canvas->SetFillColor(Black, 1);
  }
  /// How much black there is, in pixels.
  double GetInk() const {
    double Result = 0;
    for (const std::uint32_t Pixel : this->GetPixels()) Result += 255 - (Pixel & 255);
    return Result / 255;
  }
};

template <class TTarget>
class Canvases : public testing::Test {
 protected:
  void SetUp() override {
    const std::string Problem = TTarget::GetProblem();
    if (!Problem.empty()) GTEST_SKIP() << Problem;
  }
};
using GDIPCanvas = Canvases<TGDIPTarget>;
using TTargets = testing::Types<TWyxTarget, TGDIPTarget>;
TYPED_TEST_SUITE(Canvases, TTargets);

TYPED_TEST(Canvases, DrawTheScenes) {
  for (const TCanvasScene& Scene : CanvasScenes) {
    TPainting<TypeParam> Painting;
    Scene.Draw(*Painting.Canvas);
    Painting.Canvas->EndScene();
    ExpectPicture(MakePicture({200, 150}, Painting.GetPixels()), TypeParam::PictureOf(Scene.Name));
  }
}

TYPED_TEST(Canvases, StrokeInScreenUnitsAsWideAtEveryZoom) {
  for (const float Zoom : {0.01F, 1.0F, 2.0F, 50.0F, 5000.0F}) {
    TPainting<TypeParam> Painting;
    Painting.Canvas->SetMatrix(TMatrix::Scaling(Zoom, Zoom));
    Painting.Canvas->SetStrokeWidth(2, true);
    Painting.Canvas->DrawLine({100 / Zoom, -50 / Zoom}, {100 / Zoom, 500 / Zoom});
    EXPECT_NEAR(Painting.GetInk(), 2 * 150, 1) << Zoom;
  }
}

TYPED_TEST(Canvases, LeaveOutWhatIsNotFiniteOrSingularAndGoOn) {
  for (const TCanvasScene& Case : EmptyCanvasScenes) {
    TPainting<TypeParam> Painting;
    Case.Draw(*Painting.Canvas);
    EXPECT_EQ(Painting.GetInk(), 0) << Case.Name;
    Painting.Canvas->SetMatrix(TMatrix::Identity());
    Painting.Canvas->SetFillColor(Black, 1);
    Painting.Canvas->FillRect({0, 0, 10, 10});
    EXPECT_NEAR(Painting.GetInk(), 100, 0.01) << Case.Name;
  }
}

TYPED_TEST(Canvases, MeasureTextTheSameAtEveryZoomAndCutBadText) {
  TPainting<TypeParam> Painting;
  const TPointF Size = Painting.Canvas->MeasureString("Meeting room");
  EXPECT_GT(Size.X, TypeParam::MinTextWidth);
  EXPECT_LT(Size.X, TypeParam::MaxTextWidth);
  for (const float Zoom : {0.3F, 3.7F}) {
    Painting.Canvas->SetMatrix(TMatrix::Scaling(Zoom, Zoom));
    Painting.Canvas->DrawText("Meeting room", {0, 0});
    EXPECT_EQ(Painting.Canvas->MeasureString("Meeting room"), Size) << Zoom;
  }
  EXPECT_EQ(Painting.Canvas->MeasureString("a\xFF"
                                           "b"),
            Painting.Canvas->MeasureString("a\uFFFDb"));
  EXPECT_GT(Painting.Canvas->MeasureString(std::string(1'000'000, 'x')).X, 1000);
}

TYPED_TEST(Canvases, RefuseToPaintOutsideAScene) {
  const TypeParam Target;
  EXPECT_EQ(Raised<EGeneralError>([&] { Target.Canvas->Clear(Black); }),
            "A canvas draws only between BeginScene and EndScene");
  const auto Empty = New<typename TypeParam::TEmptyLayer>();
  EXPECT_EQ(Raised<EGeneralError>([&] { Target.Canvas->BeginScene(Empty); }),
            "The layer has no surface to paint on");
  Target.Canvas->BeginScene(Target.Layer);
  EXPECT_EQ(Raised<EGeneralError>([&] { Target.Canvas->BeginScene(Target.Layer); }),
            "BeginScene was called before EndScene had ended the last paint");
}

TYPED_TEST(Canvases, RefuseElementsOfOtherCanvases) {
  TPainting<TypeParam> Painting;
  const auto Polygon = New<TPointsPolygon>("Other");
  EXPECT_EQ(Raised<EGeneralError>([&] { Painting.Canvas->DrawPolygon(Polygon.Get()); }),
            fmt::format("A canvas of the type {} cannot draw with an element of the type Other",
                        Painting.Canvas->GetCanvasType()));
}

TEST(GenerateCircleWithBeziers, DescribesTheInscribedEllipse) {
  std::array<TPointF, 13> Points;
  GenerateCircleWithBeziers({0, 0, 20, 10}, TMatrix::Identity(), Points);
  const TPointF Expected[] = {{10, 10}, {20, 5}, {10, 0}, {0, 5}, {10, 10}};
  for (std::size_t I = 0; I < 5; ++I) {
    EXPECT_EQ(Points[I * 3], Expected[I]) << I;
  }
  EXPECT_EQ(Points[1], (TPointF{10 + 10 * 0.55191505F, 10}));
  GenerateCircleWithBeziers({0, 0, 20, 10}, TMatrix::Translation(1, 2), Points);
  EXPECT_EQ(Points[3], (TPointF{21, 7}));
}

TEST(WyxCanvas, PaintsOnlyWithinTheClipAndTellsWhereThatIs) {
  TPainting<TWyxTarget> Painting;
  Painting.Drawing.SetClip({9.5F, 20, 30, 40});
  EXPECT_EQ(Painting.Canvas->GetPaintArea(), (TRectF{9, 20, 30, 40}));
  Painting.Canvas->Clear(Black);
  Painting.Canvas->FillRect({0, 0, 100, 100});
  Painting.Canvas->DrawText("text", {0, 0});
  EXPECT_EQ(Painting.GetInk(), 21 * 20);
}

TEST(WyxCanvas, KeepsTheTransformOfTheDrawingAndPutsEverythingBack) {
  TDrawing Drawing(200, 100);
  const TMatrix Dense = TMatrix::Scaling(2, 2);
  Drawing.SetMatrix(Dense);
  Drawing.SetFill({.Opacity = 0.25F});
  Drawing.SetPen({.Width = 7});
  const auto Canvas = New<TWyxCanvas>();
  Canvas->BeginScene(New<TWyxLayer>(&Drawing));
  EXPECT_EQ(Canvas->GetPaintArea(), (TRectF{0, 0, 100, 50}));
  Canvas->SetMatrix(TMatrix::Translation(10, 0));
  Canvas->SetStrokeWidth(3, true);
  Canvas->DrawLine({0, 25}, {50, 25});
  EXPECT_EQ(Drawing.GetPixels()[47 * 200 + 25], 0xFF000000U);
  EXPECT_EQ(Drawing.GetPixels()[46 * 200 + 25], 0U);
  EXPECT_EQ(Drawing.GetPixels()[47 * 200 + 15], 0U);
  Canvas->EndScene();
  EXPECT_EQ(Drawing.GetMatrix(), Dense);
  EXPECT_EQ(Drawing.GetFill().Opacity, 0.25F);
  EXPECT_EQ(Drawing.GetPen().Width, 7);
}

TEST(WyxLayer, IsBoundToDrawingsOnly) {
  const auto Layer = New<TWyxLayer>();
  EXPECT_EQ(Raised<EGeneralError>([&] { Layer->UpdateCanvasObject(New<TWyxCanvas>().Get()); }),
            "The layer can be bound to a drawing only");
  TDrawing Drawing(10, 10);
  Layer->UpdateCanvasObject(&Drawing);
  New<TWyxCanvas>()->BeginScene(Layer);
}

TEST(WyxCanvas, SharesAnOutlineThatGoesWithTheLastCanvas) {
  TRef<IPolygon> Outline;
  {
    const auto First = New<TWyxCanvas>();
    const auto Second = New<TWyxCanvas>();
    Outline = First->GetRectPolygon();
    EXPECT_EQ(Outline->GetPointCount(), 5);
    EXPECT_TRUE(IsSame(Outline.Get(), Second->GetRectPolygon().Get()));
  }
  EXPECT_FALSE(IsSame(Outline.Get(), New<TWyxCanvas>()->GetRectPolygon().Get()));
}

TEST(CanvasPolygon, IgnoresIndexesThatAreOutOfRange) {
  const auto Polygon = New<TWyxPolygon>();
  Polygon->AddPoint({1, 2});
  Polygon->SetPointAt(1, {3, 4});
  Polygon->SetPointAt(-1, {3, 4});
  EXPECT_EQ(Polygon->GetPointAt(0), (TPointF{1, 2}));
  EXPECT_EQ(Polygon->GetPointAt(1), TPointF{});
  Polygon->SetPointCount(-1);
  EXPECT_EQ(Polygon->GetPointCount(), 0);
}

TEST(WyxBitmap, KeepsItsPictureWhenLoadingFails) {
  const auto Bitmap = New<TWyxBitmap>();
  std::istringstream Good(ReadWholeFile(SourceFile("tests/pictures/plan.png"), 1 << 20));
  Bitmap->LoadFromStream(Good, "plan.png");
  const TRectF Rect = Bitmap->GetLocalRect();
  EXPECT_EQ(Rect, (TRectF{0, 0, 80, 60}));
  std::istringstream Bad("no picture");
  EXPECT_EQ(Raised<EFileError>([&] { Bitmap->LoadFromStream(Bad, "floor 2"); }),
            "floor 2: this is no PNG, JPEG or WebP picture");
  EXPECT_EQ(Bitmap->GetLocalRect(), Rect);
}

// ---------------------------------------------------------------- the GDI+ canvas only

TEST(GDIPLibrary, SaysWhatToInstallWhenItIsMissing) {
  EXPECT_EQ(Raised<EGeneralError>([] { Gdip::TLibrary("libnone.so"); }),
            "GDI+ cannot be used: libnone.so is missing (libnone.so: cannot open shared object "
            "file: No such file or directory); install the Debian package libgdiplus");
}

TEST_F(GDIPCanvas, PaintsIntoViewsAndCopiesBitmapsToThem) {
  const auto View = New<TGDIPBitmapLayer>(20, 10);  // stands for a window
  const auto Canvas = New<TGDIPCanvas>();
  Canvas->BeginScene(New<TGDIPViewLayer>(View->GetHandle()));
  EXPECT_EQ(Canvas->GetPaintArea(), (TRectF{0, 0, 20, 10}));
  Canvas->Clear(Black);
  Canvas->EndScene();
  EXPECT_EQ(View->GetPixels()[19], Black.Value);

  const auto Buffer = New<TGDIPBitmapLayer>(5, 5);
  Buffer->Resize(10, 10);
  Canvas->BeginScene(Buffer);
  Canvas->Clear({0x80FF0000});
  Canvas->EndScene();
  Buffer->UpdateViewHandle(View->GetHandle());
  Buffer->CopyToView(0);
  EXPECT_LE(Difference(View->GetPixels()[9], 0x80800000), 1);
  EXPECT_EQ(View->GetPixels()[11], Black.Value);
  EXPECT_TRUE(Buffer->IsPersistent());
}

TEST_F(GDIPCanvas, RefusesOtherLayersBitmapsAndSizes) {
  TDrawing Drawing(10, 10);
  const auto Canvas = New<TGDIPCanvas>();
  EXPECT_EQ(Raised<EGeneralError>([&] { Canvas->BeginScene(New<TWyxLayer>(&Drawing)); }),
            "A canvas of the type GDIP cannot draw with an element of the type Wyx");
  TPainting<TGDIPTarget> Painting;
  EXPECT_THROW(Painting.Canvas->SetFillBitmap(New<TWyxBitmap>(), 1), EGeneralError);
  EXPECT_EQ(Raised<EGeneralError>([&] { Painting.Layer->Resize(0, 10); }),
            "A layer of 0 x 10 pixels is not possible; sides are from 1 to 32767 pixels");
}

}  // namespace
}  // namespace System::Beacon::Fencing::Canvas
