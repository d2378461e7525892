#include "apps/wayfence/evaluation_picture.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <utility>

#include "apps/wayfence/chart_drawing.h"
#include "apps/wayfence/error_histogram.h"
#include "apps/wayfence/floor_picture.h"
#include "apps/wayfence/map_units.h"

namespace Wayfence {

using namespace System;
using namespace System::Beacon::Fencing;

namespace {

constexpr int FloorSide = 800;  // pixels
constexpr float Gap = 24.0F, TitleHeight = 34.0F, LegendHeight = 44.0F, ChartHeight = 340.0F;
constexpr TAlphaColor TrueColor{0xFF1B7F3B}, RawColor{0xC0E8741E}, PathColor{0xC02A5FC4},
    ElsewhereColor{0xC0C02090};
constexpr TAlphaColor PaleVeil{0x70FFFFFF};  // over a floor, for what is drawn on it to stand out

/// A floor with its title, as large as it is drawn.
struct TFloor {
  int Map = 0;
  TFloorPicture Drawn;

  TPointF GetSize() const {
    const auto [Width, Height] = Drawn.Picture->GetSize();
    return {static_cast<float>(Width), static_cast<float>(Height)};
  }
};

class TEvaluationDrawing {
 public:
  TEvaluationDrawing(Scene::TScene& AScene,
                     const TFencingProject& AProject,
                     const TTruth& ATruth,
                     const std::vector<TMapEstimate>& AEstimates,
                     const TProjectComparison& AComparison)
      : FProject(AProject), FTruth(ATruth), FEstimates(AEstimates), FComparison(AComparison) {
    for (std::size_t I = 0; I < AProject.Maps.GetLength(); ++I)
      if (IsSeen(static_cast<int>(I))) FFloors.push_back(MakeFloor(AScene, static_cast<int>(I)));
    for (const TFloor& Floor : FFloors)
      FCell = {std::max(FCell.X, Floor.GetSize().X), std::max(FCell.Y, Floor.GetSize().Y)};
  }

  TRef<TPicture> Draw() const {
    const float Columns = FFloors.size() > 1 ? 2.0F : 1.0F;
    const std::size_t Rows = (FFloors.size() + 1) / 2;
    const float CellHeight = TitleHeight + FCell.Y + Gap;
    const float Floors = static_cast<float>(Rows) * CellHeight;
    const float Width = Gap + Columns * (FCell.X + Gap);
    const float Height = Gap + LegendHeight + Floors + TitleHeight + ChartHeight + Gap;
    TDrawing Drawing(static_cast<int>(Width), static_cast<int>(Height));
    Drawing.Clear(TAlphaColor{0xFFFFFFFF});
    DrawLegend(Drawing);
    for (std::size_t I = 0; I < FFloors.size(); ++I) {
      const std::size_t RowIndex = I / 2;
      const auto Column = static_cast<float>(I % 2), Row = static_cast<float>(RowIndex);
      DrawFloorAt(Drawing,
                  FFloors[I],
                  {Gap + Column * (FCell.X + Gap), Gap + LegendHeight + Row * CellHeight});
    }
    DrawErrors(Drawing, {Gap, Height - Gap - ChartHeight, Width - Gap, Height - Gap});
    return Drawing.GetPicture();
  }

 private:
  bool IsSeen(int AMap) const {
    const auto IsHere = [AMap](const auto& AEntry) { return AEntry.Map == AMap; };
    return std::any_of(FTruth.GetRows().begin(), FTruth.GetRows().end(), IsHere) ||
           std::any_of(FEstimates.begin(), FEstimates.end(), IsHere);
  }

  TFloor MakeFloor(Scene::TScene& AScene, int AMap) const {
    const TRectF Rect = FProject.Maps[static_cast<std::size_t>(AMap)].Map->GetGlobalRect();
    const TFloorOptions Options{.Margin = std::max(Rect.GetWidth(), Rect.GetHeight()) / 40.0F};
    return {AMap, DrawFloor(AScene, AMap, FloorWidth(AScene, AMap, FloorSide, Options), Options)};
  }

  static void DrawLegend(TDrawing& ADrawing) {
    struct TEntry {
      const char* Text;
      TAlphaColor Color;
    };
    TPointF At{Gap, Gap};
    for (const auto& [Text, Color] : std::array<TEntry, 4>{{{"true way", TrueColor},
                                                            {"raw estimate", RawColor},
                                                            {"on the paths", PathColor},
                                                            {"wrong map (raw)", ElsewhereColor}}}) {
      FillRect(ADrawing, {At.X, At.Y + 2.0F, At.X + 18.0F, At.Y + 18.0F}, Color);
      DrawWords(ADrawing, Text, At + TPointF{26, 10}, SmallText, {0, 0.5F});
      At.X += 26.0F + TDrawing::MeasureText(Text).X * SmallText + 2.0F * Gap;
    }
  }

  void DrawFloorAt(TDrawing& ADrawing, const TFloor& AFloor, TPointF AnAt) const {
    const auto& Map = *FProject.Maps[static_cast<std::size_t>(AFloor.Map)].Map;
    DrawWords(ADrawing, Map.GetName(), AnAt, LargeText);
    const TPointF Corner = AnAt + TPointF{0, TitleHeight};
    const TPointF Size = AFloor.GetSize();
    const TRectF Pixels{Corner.X, Corner.Y, Corner.X + Size.X, Corner.Y + Size.Y};
    TPath Frame;
    Frame.AddRect(Pixels);
    ADrawing.SetFill({.Picture = AFloor.Drawn.Picture});
    ADrawing.Fill(Frame);
    FillRect(ADrawing, Pixels, PaleVeil);
    DrawLines(ADrawing, Frame, 1.0F, TAlphaColor{0xFFB0B8C0});
    ADrawing.SetClip(Pixels);
    const TRectF& Shown = AFloor.Drawn.Rect;
    const TMatrix ToPixels =
        TMatrix::Translation(-Shown.Left, -Shown.Top) *
        TMatrix::Scaling(Size.X / Shown.GetWidth(), Size.Y / Shown.GetHeight()) *
        TMatrix::Translation(Corner.X, Corner.Y);
    DrawTruth(ADrawing, AFloor.Map, ToPixels);
    DrawEstimates(ADrawing, AFloor.Map, ToPixels);
    ADrawing.ResetClip();
  }

  void DrawTruth(TDrawing& ADrawing, int AMap, const TMatrix& AToPixels) const {
    const auto UnitsPerMetre = static_cast<float>(
        1.0 / MetresPerUnit(FProject.Maps[static_cast<std::size_t>(AMap)].Map.Get()));
    TPath Path;
    bool IsHere = false;
    for (const TTruth::TRow& Row : FTruth.GetRows()) {
      const bool WasHere = std::exchange(IsHere, Row.Map == AMap);
      if (!IsHere) continue;
      const TPointF At = Row.Place * UnitsPerMetre * AToPixels;
      WasHere ? Path.LineTo(At) : Path.MoveTo(At);
    }
    DrawLines(ADrawing, Path, 4.0F, TrueColor);
  }

  void DrawEstimates(TDrawing& ADrawing, int AMap, const TMatrix& AToPixels) const {
    for (const TMapEstimate& Estimate : FEstimates) {
      if (Estimate.Map != AMap) continue;
      const auto TrueMap = FTruth.GetMap(Estimate.Seconds);
      const bool IsElsewhere = TrueMap && *TrueMap != AMap;
      if (!IsElsewhere) DrawDot(ADrawing, Estimate.Path * AToPixels, 3.5F, PathColor);
      DrawDot(ADrawing, Estimate.Raw * AToPixels, 3.5F, IsElsewhere ? ElsewhereColor : RawColor);
    }
  }

  void DrawErrors(TDrawing& ADrawing, const TRectF& ARect) const {
    const auto Median = [](const TPositionErrors& AErrors) {
      return PercentileOf(AErrors.GetErrors(), 0.5);
    };
    const std::string Title =
        FComparison.Raw.GetErrors().empty()
            ? std::string("Errors: none")
            : fmt::format(
                  "Errors: {} estimates; median of raw ones {:.2f} m, on the paths {:.2f} m",
                  FComparison.Raw.GetErrors().size(),
                  Median(FComparison.Raw),
                  Median(FComparison.Path));
    DrawWords(ADrawing, Title, {ARect.Left, ARect.Top - TitleHeight}, LargeText);
    DrawErrorHistogram(ADrawing,
                       ARect,
                       {FComparison.Raw.GetErrors(), RawColor},
                       {FComparison.Path.GetErrors(), PathColor});
  }

  const TFencingProject& FProject;
  const TTruth& FTruth;
  const std::vector<TMapEstimate>& FEstimates;
  const TProjectComparison& FComparison;
  std::vector<TFloor> FFloors;
  TPointF FCell;  // the largest floor, pixels
};

}  // namespace

TRef<TPicture> DrawEvaluation(Scene::TScene& AScene,
                              const TFencingProject& AProject,
                              const TTruth& ATruth,
                              const std::vector<TMapEstimate>& AEstimates,
                              const TProjectComparison& AComparison) {
  return TEvaluationDrawing(AScene, AProject, ATruth, AEstimates, AComparison).Draw();
}

}  // namespace Wayfence
