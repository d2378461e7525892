#include "support/canvas_scenes.h"

#include <limits>

#include "support/pictures.h"

namespace System::Beacon::Fencing::Canvas {
namespace {

constexpr float NotANumber = std::numeric_limits<float>::quiet_NaN();
constexpr float Infinite = std::numeric_limits<float>::infinity();
constexpr TAlphaColor Black{0xFF000000};
constexpr TAlphaColor Red{0xFFD02020};
constexpr TAlphaColor Green{0xFF20A040};
constexpr TAlphaColor Blue{0xFF2050C0};

TRef<IPolygon> MakePolygon(ICanvas& ACanvas, std::initializer_list<TPointF> APoints) {
  const TRef<IPolygon> Result = ACanvas.CreatePolygon();
  Result->SetPonts({APoints.begin(), APoints.size()});
  return Result;
}

// Every kind of shape, filled, stroked and both; opacities; polygons that are open and closed.
void DrawShapes(ICanvas& ACanvas) {
  ACanvas.SetStrokeWidth(3, true);
  ACanvas.SetStrokeColor(Blue, 1);
  ACanvas.SetFillColor(Red, 1);
  ACanvas.DrawRectangle({10, 10, 60, 50});
  ACanvas.DrawEllipse({70, 10, 130, 50});
  ACanvas.DrawPolygon(MakePolygon(ACanvas, {{140, 10}, {190, 10}, {165, 50}}).Get());
  ACanvas.StrokeRectangle({10, 60, 60, 90});
  ACanvas.StrokeEllipse({70, 60, 130, 90});
  ACanvas.StrokePolygon(MakePolygon(ACanvas, {{140, 60}, {190, 60}, {165, 90}, {140, 60}}).Get());
  ACanvas.SetFillColor(Green, 0.5F);
  ACanvas.SetStrokeColor(Blue, 0.5F);
  ACanvas.FillRect({30, 30, 110, 110});
  ACanvas.FillEllipse({90, 30, 170, 130});
  ACanvas.DrawLine({10, 140}, {190, 100});
}

// Turned and scaled shapes: strokes in pixels keep their width, the others do not.
void DrawTransforms(ICanvas& ACanvas) {
  const auto DrawBoth = [&](const TMatrix& AMatrix) {
    ACanvas.SetMatrix(AMatrix);
    ACanvas.SetStrokeWidth(2, true);
    ACanvas.DrawRectangle({0, 0, 20, 10});
    ACanvas.SetStrokeWidth(2, false);
    ACanvas.StrokeEllipse({0, 15, 20, 25});
  };
  ACanvas.SetFillColor(Green, 0.6F);
  DrawBoth(TMatrix::Translation(5, 5));
  DrawBoth(TMatrix::Scaling(3, 3) * TMatrix::Translation(60, 10));
  DrawBoth(TMatrix::Rotation(0.5F) * TMatrix::Scaling(2, 2) * TMatrix::Translation(40, 60));
  DrawBoth(TMatrix::Scaling(1, 4) * TMatrix::Rotation(-0.4F) * TMatrix::Translation(130, 40));
}

// A star that crosses itself, a hole, curves, an open contour, and the stroke patterns.
void DrawPaths(ICanvas& ACanvas) {
  ACanvas.SetFillColor(Red, 1);
  ACanvas.BeginPath(true, true);
  ACanvas.MoveTo({50, 5});
  for (const TPointF Point : {TPointF{75, 80}, {10, 32}, {90, 32}, {25, 80}}) ACanvas.LineTo(Point);
  ACanvas.CloseContour();
  ACanvas.EndPath();

  ACanvas.SetFillColor(Blue, 1);
  ACanvas.BeginPath(false, true);
  for (const float Inset : {0.0F, 12.0F}) {
    ACanvas.MoveTo({105 + Inset, 10 + Inset});
    ACanvas.LineTo({155 - Inset, 10 + Inset});
    ACanvas.LineTo({155 - Inset, 60 - Inset});
    ACanvas.LineTo({105 + Inset, 60 - Inset});
    ACanvas.CloseContour();
  }
  ACanvas.EndPath();

  ACanvas.SetStrokeWidth(2, true);
  ACanvas.BeginPath(true, false);
  ACanvas.MoveTo({165, 80});
  ACanvas.CubicBezierTo({165, 0}, {195, 80}, {195, 5});
  ACanvas.LineTo({180, 5});
  ACanvas.EndPath();

  float Y = 95;
  for (const TStrokePattern Pattern :
       {TStrokePattern::Solid, TStrokePattern::Dots, TStrokePattern::Dash}) {
    ACanvas.SetStrokePattern(Pattern);
    ACanvas.SetStrokeWidth(4, true);
    ACanvas.DrawLine({10, Y}, {190, Y});
    ACanvas.SetStrokeWidth(1, true);
    ACanvas.DrawLine({10, Y + 10}, {190, Y + 10});
    Y += 20;
  }
}

// A picture as fill, at its size and smaller, turned, round, half transparent, and as stroke.
void DrawBitmaps(ICanvas& ACanvas) {
  const TRef<IBitmap> Bitmap = ACanvas.CreateBitmap(SourceFile("tests/pictures/plan.png"), "plan");
  ACanvas.SetFillBitmap(Bitmap, 1);
  ACanvas.FillRect(Bitmap->GetLocalRect());
  ACanvas.DrawRectangle({100, 5, 150, 45});
  ACanvas.FillRect({160, 5, 180, 15});
  ACanvas.DrawEllipse({100, 50, 150, 90});
  ACanvas.SetFillBitmap(Bitmap, 0.4F);
  ACanvas.DrawPolygon(MakePolygon(ACanvas, {{160, 50}, {195, 50}, {195, 90}}).Get());
  ACanvas.SetMatrix(TMatrix::Rotation(0.3F) * TMatrix::Translation(50, 90));
  ACanvas.SetFillBitmap(Bitmap, 1);
  ACanvas.FillRect({0, 0, 50, 40});
  ACanvas.SetStrokeBitmap(Bitmap, 1);
  ACanvas.SetStrokeWidth(8, true);
  ACanvas.StrokeRectangle({70, -10, 120, 25});
}

void DrawTexts(ICanvas& ACanvas) {
  ACanvas.SetFillColor(Blue, 1);
  ACanvas.DrawText("Lobby, 1st floor\nsecond line", {5, 5});
  ACanvas.SetFillColor(Red, 1);
  ACanvas.DrawText("Αίθουσα, Вход", {100, 5});
  ACanvas.SetMatrix(TMatrix::Scaling(3, 3) * TMatrix::Translation(5, 40));
  ACanvas.DrawText("Zoom", {0, 0});
  ACanvas.SetMatrix(TMatrix::Rotation(0.6F) * TMatrix::Translation(130, 50));
  const TPointF Size = ACanvas.MeasureString("turned");
  ACanvas.StrokeRectangle({0, 0, Size.X, Size.Y});
  ACanvas.DrawText("turned", {0, 0});
  ACanvas.SetMatrix(TMatrix::Scaling(40, 40) * TMatrix::Translation(-250, -180));
  ACanvas.SetFillColor(Green, 0.4F);
  ACanvas.DrawText("Room", {0, 0});
}

// Shapes that reach, or lie, far outside of what can be seen.
void DrawFar(ICanvas& ACanvas) {
  constexpr float Far = 1.7E7F;
  ACanvas.SetFillColor({0xFFE0E8FF}, 1);
  ACanvas.DrawRectangle({-Far, -Far * 100, 190, 1E30F});
  ACanvas.SetFillColor(Green, 0.5F);
  ACanvas.DrawEllipse({20, 75 - Far, 20 + Far * 2, 75 + Far});
  ACanvas.SetStrokeWidth(4, true);
  ACanvas.SetFillColor(Red, 0.5F);
  ACanvas.DrawPolygon(
      MakePolygon(ACanvas, {{100, 100}, {Far, Far}, {Far, 0}, {100, 30}, {100, 100}}).Get());
  ACanvas.SetStrokePattern(TStrokePattern::Dash);
  ACanvas.DrawLine({-Far, 140}, {Far * 100, 140});
  ACanvas.SetMatrix(TMatrix::Scaling(1E6F, 1E6F) * TMatrix::Translation(-5E5F, -5E5F));
  ACanvas.SetStrokePattern(TStrokePattern::Solid);
  ACanvas.SetStrokeWidth(1E-5F, false);
  ACanvas.StrokeRectangle({0.50006F, 0.50001F, 0.50007F, 2});
  ACanvas.FillRect({5, 5, 6, 6});
}

// Matrices that are singular or not finite.
void DrawNowhere(ICanvas& ACanvas) {
  for (const TMatrix& Matrix : {TMatrix::Scaling(1, 0),
                                TMatrix::Scaling(NotANumber, 1),
                                TMatrix::Translation(Infinite, 0)}) {
    ACanvas.SetMatrix(Matrix);
    ACanvas.DrawRectangle({0, 0, 50, 50});
    ACanvas.DrawEllipse({0, 0, 50, 50});
    ACanvas.DrawLine({0, 0}, {50, 50});
    ACanvas.DrawText("text", {0, 0});
  }
}

}  // namespace

const TCanvasScene CanvasScenes[6] = {{"shapes", &DrawShapes},
                                      {"transforms", &DrawTransforms},
                                      {"paths", &DrawPaths},
                                      {"bitmaps", &DrawBitmaps},
                                      {"texts", &DrawTexts},
                                      {"far", &DrawFar}};

const TCanvasScene EmptyCanvasScenes[5] = {
    {"matrices that map nothing anywhere", &DrawNowhere},
    {"points without numbers",
     [](ICanvas& ACanvas) {
       ACanvas.BeginPath(true, true);
       for (const TPointF Point : {TPointF{5, 5}, {NotANumber, 50}, {50, 50}})
         ACanvas.LineTo(Point);
       ACanvas.EndPath();
       ACanvas.DrawText("text", {NotANumber, 1});
     }},
    {"widths and opacities that are none",
     [](ICanvas& ACanvas) {
       for (const float Width : {0.0F, -1.0F, NotANumber}) {
         ACanvas.SetStrokeWidth(Width, true);
         ACanvas.DrawLine({0, 0}, {50, 50});
       }
       ACanvas.SetStrokeWidth(1, true);
       ACanvas.SetFillColor(Black, NotANumber);
       ACanvas.SetStrokeColor(Black, -1);
       ACanvas.DrawRectangle({0, 0, 50, 50});
     }},
    {"a bitmap that was not loaded, and one on a line",
     [](ICanvas& ACanvas) {
       ACanvas.SetFillBitmap(ACanvas.CreateBitmap("", ""), 1);
       ACanvas.FillRect({0, 0, 50, 50});
       ACanvas.SetFillBitmap(ACanvas.CreateBitmap(SourceFile("tests/pictures/plan.png"), ""), 1);
       ACanvas.FillRect({0, 10, 50, 10});
     }},
    {"nothing, and letters as large as a house", [](ICanvas& ACanvas) {
       ACanvas.DrawPolygon(ACanvas.CreatePolygon().Get());
       ACanvas.BeginPath(true, true);
       ACanvas.EndPath();
       ACanvas.DrawText("", {0, 0});
       ACanvas.SetMatrix(TMatrix::Scaling(1E6F, 1E6F));
       ACanvas.DrawText("text", {0, 0});
     }}};

}  // namespace System::Beacon::Fencing::Canvas
