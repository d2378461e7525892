#include <gtest/gtest.h>

#include <array>
#include <sstream>

#include "scene/canvas/System.Beacon.Fencing.Canvas.Wyx.h"
#include "support/canvas_scenes.h"
#include "support/pictures.h"
#include "support/raised.h"

namespace System::Beacon::Fencing::Canvas {
namespace {

constexpr TAlphaColor White{0xFFFFFFFF};
constexpr TAlphaColor Black{0xFF000000};

/// A canvas that paints into a white drawing.
struct TPainting {
  explicit TPainting(int AWidth = 200, int AHeight = 150) : Drawing(AWidth, AHeight) {
    Canvas->BeginScene(New<TWyxLayer>(&Drawing));
    Canvas->Clear(White);
    Canvas->SetFillColor(Black, 1);
  }
  /// How much black there is, in pixels.
  double GetInk() const {
    double Result = 0;
    for (const std::uint32_t Pixel : Drawing.GetPixels()) Result += 255 - (Pixel & 255);
    return Result / 255;
  }

  TDrawing Drawing;
  const TRef<TWyxCanvas> Canvas = New<TWyxCanvas>();
};

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

TEST(WyxCanvas, DrawsTheScenes) {
  for (const TCanvasScene& Scene : CanvasScenes) {
    TPainting Painting;
    Scene.Draw(*Painting.Canvas);
    ExpectPicture(Painting.Drawing.GetPicture(), Scene.Name);
  }
}

TEST(WyxCanvas, StrokesInScreenUnitsAreAsWideAtEveryZoom) {
  for (const float Zoom : {0.01F, 1.0F, 50.0F, 5000.0F}) {
    TPainting Painting;
    Painting.Canvas->SetMatrix(TMatrix::Scaling(Zoom, Zoom));
    Painting.Canvas->SetStrokeWidth(2, true);
    Painting.Canvas->DrawLine({100 / Zoom, -50 / Zoom}, {100 / Zoom, 500 / Zoom});
    EXPECT_NEAR(Painting.GetInk(), 2 * 150, 1) << Zoom;
  }
}

TEST(WyxCanvas, LeavesOutWhatIsNotFiniteOrSingularAndGoesOn) {
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

TEST(WyxCanvas, MeasuresTextTheSameAtEveryZoomAndCutsBadText) {
  TPainting Painting;
  const TPointF Size = Painting.Canvas->MeasureString("Meeting room");
  EXPECT_GT(Size.X, 50);
  EXPECT_LT(Size.X, 120);
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

TEST(WyxCanvas, PaintsOnlyWithinTheClipAndTellsWhereThatIs) {
  TPainting Painting;
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

TEST(WyxCanvas, RefusesToPaintOutsideAScene) {
  TDrawing Drawing(10, 10);
  const auto Canvas = New<TWyxCanvas>();
  const auto Layer = New<TWyxLayer>();
  EXPECT_EQ(Raised<EGeneralError>([&] {
              Canvas->FillRect({0, 0, 1, 1});
            }),
            "A canvas draws only between BeginScene and EndScene");
  EXPECT_EQ(Raised<EGeneralError>([&] { Canvas->BeginScene(Layer); }),
            "The layer has no surface to paint on");
  EXPECT_EQ(Raised<EGeneralError>([&] { Layer->UpdateCanvasObject(Canvas.Get()); }),
            "The layer can be bound to a drawing only");
  Layer->UpdateCanvasObject(&Drawing);
  Canvas->BeginScene(Layer);
  EXPECT_EQ(Raised<EGeneralError>([&] { Canvas->BeginScene(Layer); }),
            "BeginScene was called before EndScene had ended the last paint");
}

TEST(WyxCanvas, RefusesElementsOfOtherCanvases) {
  TPainting Painting;
  const auto Polygon = New<TPointsPolygon>("Other");
  EXPECT_EQ(Raised<EGeneralError>([&] { Painting.Canvas->DrawPolygon(Polygon.Get()); }),
            "A canvas of the type Wyx cannot draw with an element of the type Other");
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

TEST(WyxInvalidateRegion, AsksTheControlAsLongAsItLives) {
  class TLoggingControl final : public TControl {
   public:
    explicit TLoggingControl(std::string& ALog) : TControl(nullptr), FLog(ALog) {}
    TRectF GetLocalRect() const override { return {}; }
    void RepaintRect(const TRectF& ARect) override {
      FLog += "rect " + std::to_string(ARect.Right);
    }
    void Repaint() override { FLog += "all "; }

   private:
    std::string& FLog;
  };
  std::string Log;
  auto Control = std::make_unique<TLoggingControl>(Log);
  const TRef<IInvalidateRegion> Region = TWyxInvlaidator::Create(Control.get());
  Region->Invalidate();
  Region->InvalidateRect({0, 0, 2, 1});
  Control.reset();
  Region->Invalidate();
  Region->InvalidateRect({0, 0, 2, 1});
  EXPECT_EQ(Log, "all rect 2.000000");
}

}  // namespace
}  // namespace System::Beacon::Fencing::Canvas
