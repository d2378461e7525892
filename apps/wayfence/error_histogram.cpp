#include "apps/wayfence/error_histogram.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "apps/wayfence/chart_drawing.h"

namespace Wayfence {

using namespace System;

namespace {

constexpr double MostBars = 40.0;
constexpr double MostNumbers = 8.0;  // of an axis
constexpr TAlphaColor AxisColor{0xFF303840}, GridColor{0xFFD8DCE0};

/// The smallest of 1, 2, 5, 10, … times a power of ten that divides a length into so few parts.
double StepOf(double ALength, double AMostParts) {
  const double Power = std::pow(10.0, std::floor(std::log10(ALength / AMostParts)));
  for (const double Part : {1.0, 2.0, 5.0})
    if (ALength / (Part * Power) <= AMostParts) return Part * Power;
  return 10.0 * Power;
}

/// How many errors lie in each step; those at the end of the last one count there.
std::vector<int> CountErrors(const std::vector<double>& AErrors, double AStep, std::size_t ACount) {
  std::vector<int> Result(ACount);
  for (const double Error : AErrors)
    ++Result[std::min(static_cast<std::size_t>(Error / AStep), ACount - 1)];
  return Result;
}

/// The place of a number of metres and a count in the rectangle of the axes.
struct TAxes {
  TRectF Rect;
  double Metres;  // at the right
  double Count;   // at the top

  TPointF ToPixels(double AMetres, double ACount) const {
    return {Rect.Left + static_cast<float>(AMetres / Metres) * Rect.GetWidth(),
            Rect.Bottom - static_cast<float>(ACount / Count) * Rect.GetHeight()};
  }
};

void DrawNumbers(TDrawing& ADrawing, const TAxes& AAxes) {
  TPath Grid;
  const double CountStep = std::max(1.0, StepOf(AAxes.Count, MostNumbers));
  for (int I = 0; I * CountStep <= AAxes.Count; ++I) {
    const double Count = I * CountStep;
    const TPointF At = AAxes.ToPixels(0.0, Count);
    DrawWords(ADrawing, fmt::format("{:.0f}", Count), At - TPointF{8, 0}, SmallText, {1, 0.5F});
    Grid.MoveTo(At);
    Grid.LineTo(AAxes.ToPixels(AAxes.Metres, Count));
  }
  DrawLines(ADrawing, Grid, 1.0F, GridColor);
  const double MetreStep = StepOf(AAxes.Metres, 2.0 * MostNumbers);
  const auto Numbers = static_cast<int>(AAxes.Metres / MetreStep + 1e-6);
  for (int I = 0; I <= Numbers; ++I)
    DrawWords(ADrawing,
              fmt::format("{:g}", I * MetreStep),
              AAxes.ToPixels(I * MetreStep, 0.0) + TPointF{0, 6},
              SmallText,
              {0.5F, 0});
}

void DrawBars(TDrawing& ADrawing,
              const TAxes& AAxes,
              const std::vector<int>& ACounts,
              TAlphaColor AColor) {
  const double Step = AAxes.Metres / static_cast<double>(ACounts.size());
  for (std::size_t I = 0; I < ACounts.size(); ++I) {
    const double Begin = static_cast<double>(I) * Step;
    const TPointF Top = AAxes.ToPixels(Begin, ACounts[I]);
    const TPointF Bottom = AAxes.ToPixels(Begin + Step, 0.0);
    FillRect(ADrawing, {Top.X + 1.0F, Top.Y, Bottom.X - 1.0F, Bottom.Y}, AColor);
  }
}

void DrawSteps(TDrawing& ADrawing,
               const TAxes& AAxes,
               const std::vector<int>& ACounts,
               TAlphaColor AColor) {
  const double Step = AAxes.Metres / static_cast<double>(ACounts.size());
  TPath Path;
  Path.MoveTo(AAxes.ToPixels(0.0, 0.0));
  for (std::size_t I = 0; I < ACounts.size(); ++I) {
    const double Begin = static_cast<double>(I) * Step;
    Path.LineTo(AAxes.ToPixels(Begin, ACounts[I]));
    Path.LineTo(AAxes.ToPixels(Begin + Step, ACounts[I]));
  }
  Path.LineTo(AAxes.ToPixels(AAxes.Metres, 0.0));
  DrawLines(ADrawing, Path, 2.5F, AColor);
}

}  // namespace

void DrawErrorHistogram(TDrawing& ADrawing,
                        const TRectF& ARect,
                        const TErrorSeries& ABars,
                        const TErrorSeries& ALine) {
  double Longest = 0.1;
  for (const auto* const Errors : {&ABars.Errors, &ALine.Errors})
    for (const double Error : *Errors) Longest = std::max(Longest, Error);
  const double Step = StepOf(Longest, MostBars);
  const auto Count = static_cast<std::size_t>(std::ceil(Longest / Step));
  const std::vector<int> Bars = CountErrors(ABars.Errors, Step, Count);
  const std::vector<int> Line = CountErrors(ALine.Errors, Step, Count);
  const int Most = std::max({1,
                             *std::max_element(Bars.begin(), Bars.end()),
                             *std::max_element(Line.begin(), Line.end())});
  const TAxes Axes{{ARect.Left + 60.0F, ARect.Top + 30.0F, ARect.Right, ARect.Bottom - 60.0F},
                   Step * static_cast<double>(Count),
                   static_cast<double>(Most)};
  DrawNumbers(ADrawing, Axes);
  DrawBars(ADrawing, Axes, Bars, ABars.Color);
  DrawSteps(ADrawing, Axes, Line, ALine.Color);
  TPath Cross;
  Cross.MoveTo(Axes.ToPixels(0.0, Axes.Count));
  Cross.LineTo(Axes.ToPixels(0.0, 0.0));
  Cross.LineTo(Axes.ToPixels(Axes.Metres, 0.0));
  DrawLines(ADrawing, Cross, 2.0F, AxisColor);
  DrawWords(ADrawing, "estimates", {ARect.Left, ARect.Top}, SmallText);
  DrawWords(ADrawing, "error, metres", {ARect.Right, ARect.Bottom}, SmallText, {1, 1});
}

}  // namespace Wayfence
