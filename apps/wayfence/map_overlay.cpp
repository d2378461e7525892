#include "apps/wayfence/map_overlay.h"

namespace Wayfence {

using namespace System;

namespace {

constexpr float Gap = 8.0F;
constexpr float StatusHeight = TDrawing::TextSize + 2 * Gap;
constexpr TAlphaColor PaperColor{0xE6FFFFFF};
constexpr TAlphaColor InkColor{0xFF202428};

constexpr std::string_view Keys =
    "PageUp, PageDown, 1 to 9\n"
    "R, Shift+R\n"
    "wheel, +, -\n"
    "drag, arrows\n"
    "F\n"
    "B\n"
    "S\n"
    "Z\n"
    "P\n"
    "H\n"
    "Esc\n"
    "\n"
    "black, violet disc\n"
    "other discs\n"
    "\n"
    "squares\n"
    "green line";
constexpr std::string_view Meanings =
    "floor\n"
    "turn\n"
    "zoom\n"
    "move the map\n"
    "fit the floor in\n"
    "beacons\n"
    "signal circles\n"
    "zones\n"
    "paths\n"
    "this help\n"
    "close\n"
    "\n"
    "position, and on the path\n"
    "beacons: green, yellow, orange, red the\n"
    "further away; white: not heard yet\n"
    "places on paths\n"
    "the way to go";

/// A sheet to write on.
void DrawPaper(TDrawing& ADrawing, const TRectF& ARect) {
  TPath Path;
  Path.AddRect(ARect);
  ADrawing.SetFill({.Color = PaperColor});
  ADrawing.Fill(Path);
  ADrawing.SetFill({.Color = InkColor});
}

}  // namespace

TRectF GetStatusRect(const TRectF& AControl) {
  return {0, AControl.Bottom - StatusHeight, AControl.Right, AControl.Bottom};
}

void DrawStatus(TDrawing& ADrawing, const TRectF& AControl, const std::string& AText) {
  const TRectF Rect = GetStatusRect(AControl);
  DrawPaper(ADrawing, Rect);
  const float TextHeight = TDrawing::MeasureText(AText).Y;
  ADrawing.DrawText(AText, {Gap, Rect.GetCentre().Y - TextHeight / 2});
}

void DrawHelp(TDrawing& ADrawing) {
  const TPointF KeysSize = TDrawing::MeasureText(Keys);
  const TPointF MeaningsSize = TDrawing::MeasureText(Meanings);
  constexpr float Left = 2 * Gap;
  const float Second = Left + KeysSize.X + 2 * Gap;
  DrawPaper(ADrawing, {Gap, Gap, Second + MeaningsSize.X + Gap, 3 * Gap + KeysSize.Y});
  ADrawing.DrawText(Keys, {Left, 2 * Gap});
  ADrawing.DrawText(Meanings, {Second, 2 * Gap});
}

}  // namespace Wayfence
