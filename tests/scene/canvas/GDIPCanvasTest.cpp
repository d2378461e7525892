#include <gtest/gtest.h>

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

class GDIPCanvas : public testing::Test {
 protected:
  void SetUp() override {
#ifdef __SANITIZE_THREAD__
    GTEST_SKIP() << "the GDI+ library starts threads that ThreadSanitizer cannot follow";
#endif
    const std::string Missing = Raised<EGeneralError>([] { New<TGDIPCanvas>(); });
    if (Missing != "nothing was raised") GTEST_SKIP() << Missing;
  }
};

/// A canvas that paints into a white bitmap layer.
struct TPainting {
  TPainting() {
    Canvas->BeginScene(Layer);
    Canvas->Clear(White);
    Canvas->SetFillColor(Black, 1);
  }
  /// How much black there is, in pixels.
  double GetInk() const {
    double Result = 0;
    for (const std::uint32_t Pixel : Layer->GetPixels()) Result += 255 - (Pixel & 255);
    return Result / 255;
  }

  const TRef<TGDIPBitmapLayer> Layer = New<TGDIPBitmapLayer>(200, 150);
  const TRef<TGDIPCanvas> Canvas = New<TGDIPCanvas>();
};

TEST(GDIPLibrary, SaysWhatToInstallWhenItIsMissing) {
  EXPECT_EQ(Raised<EGeneralError>([] { Gdip::TLibrary("libnone.so"); }),
            "GDI+ cannot be used: libnone.so is missing (libnone.so: cannot open shared object "
            "file: No such file or directory); install the Debian package libgdiplus");
}

// Texts are in another font, and pictures as strokes continue mirrored: two pictures of its own.
TEST_F(GDIPCanvas, DrawsTheScenes) {
  for (const TCanvasScene& Scene : CanvasScenes) {
    TPainting Painting;
    Scene.Draw(*Painting.Canvas);
    Painting.Canvas->EndScene();
    const std::string Name = Scene.Name;
    ExpectPicture(MakePicture(Painting.Layer->GetSize(), Painting.Layer->GetPixels()),
                  Name == "texts" || Name == "bitmaps" ? Name + "_gdip" : Name);
  }
}

TEST_F(GDIPCanvas, StrokesInScreenUnitsAreAsWideAtEveryZoom) {
  for (const float Zoom : {0.01F, 1.0F, 2.0F, 50.0F, 5000.0F}) {
    TPainting Painting;
    Painting.Canvas->SetMatrix(TMatrix::Scaling(Zoom, Zoom));
    Painting.Canvas->SetStrokeWidth(2, true);
    Painting.Canvas->DrawLine({100 / Zoom, -50 / Zoom}, {100 / Zoom, 500 / Zoom});
    EXPECT_NEAR(Painting.GetInk(), 2 * 150, 1) << Zoom;
  }
}

TEST_F(GDIPCanvas, LeavesOutWhatIsNotFiniteOrSingularAndGoesOn) {
  for (const TCanvasScene& Case : EmptyCanvasScenes) {
    TPainting Painting;
    Case.Draw(*Painting.Canvas);
    EXPECT_EQ(Painting.GetInk(), 0) << Case.Name;
    Painting.Canvas->SetMatrix(TMatrix::Identity());
    Painting.Canvas->SetFillColor(Black, 1);
    Painting.Canvas->FillRect({0, 0, 10, 10});
    EXPECT_NEAR(Painting.GetInk(), 100, 0.01) << Case.Name;
  }
}

TEST_F(GDIPCanvas, MeasuresTextTheSameAtEveryZoomAndCutsBadText) {
  TPainting Painting;
  const TPointF Size = Painting.Canvas->MeasureString("Meeting room");
  EXPECT_GT(Size.X, 60);
  EXPECT_LT(Size.X, 150);
  Painting.Canvas->SetMatrix(TMatrix::Scaling(3.7F, 3.7F));
  Painting.Canvas->DrawText("Meeting room", {0, 0});
  EXPECT_EQ(Painting.Canvas->MeasureString("Meeting room"), Size);
  EXPECT_EQ(Painting.Canvas->MeasureString("a\xFF"
                                           "b"),
            Painting.Canvas->MeasureString("a\uFFFDb"));
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

TEST_F(GDIPCanvas, RefusesOtherLayersElementsAndSizes) {
  TDrawing Drawing(10, 10);
  const auto Canvas = New<TGDIPCanvas>();
  EXPECT_EQ(Raised<EGeneralError>([&] { Canvas->BeginScene(New<TWyxLayer>(&Drawing)); }),
            "A canvas of the type GDIP cannot draw with an element of the type Wyx");
  EXPECT_EQ(Raised<EGeneralError>([&] { Canvas->BeginScene(New<TGDIPViewLayer>()); }),
            "The layer has no surface to paint on");
  EXPECT_EQ(Raised<EGeneralError>([&] { Canvas->Clear(Black); }),
            "A canvas draws only between BeginScene and EndScene");
  TPainting Painting;
  EXPECT_THROW(Painting.Canvas->SetFillBitmap(New<TWyxBitmap>(), 1), EGeneralError);
  EXPECT_EQ(Raised<EGeneralError>([&] { Painting.Layer->Resize(0, 10); }),
            "A layer of 0 x 10 pixels is not possible; sides are from 1 to 32767 pixels");
}

}  // namespace
}  // namespace System::Beacon::Fencing::Canvas
