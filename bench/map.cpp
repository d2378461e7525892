// The live map: frames while it changes, and zones over a point.
#include <benchmark/benchmark.h>

#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "map/project_builder.h"
#include "platform/controls/offscreen_control.h"
#include "runtimepaint/System.Beacon.Fencing.RuntimePaint.Painter.h"
#include "runtimepaint/project_extraction.h"

namespace {

using namespace System;
using namespace System::Beacon::Fencing;
using namespace System::Beacon::Fencing::Scene::Beacons;
using enum TFencingMapOption;

// ---------------------------------------------------------------- zones over a point

/// Rooms of 5 by 5 metres, so many to a row; every tenth is round.
TMapBuilder AddRooms(TProjectBuilder& ABuilder, int ACount) {
  const int Columns = static_cast<int>(std::ceil(std::sqrt(ACount)));
  const float Side = 5.0F * static_cast<float>(Columns);
  TMapBuilder Result = ABuilder.AddMap("Floor", Side, Side);
  for (int I = 0; I < ACount; ++I) {
    const auto X = static_cast<float>(I % Columns) * 5, Y = static_cast<float>(I / Columns) * 5;
    const std::string Name = "Room " + std::to_string(I);
    if (I % 10 == 0)
      Result.AddCircularZone(Name, {X + 2.5F, Y + 2.5F}, 2.5F);
    else
      Result.AddZone(Name, {X, Y, X + 5, Y + 5});
  }
  return Result;
}

void ZonesOverPoint(benchmark::State& AState, bool AIsFound) {
  const auto Count = static_cast<int>(AState.range(0));
  TProjectBuilder Builder("Rooms");
  AddRooms(Builder, Count);
  TFencingMap Map = ExtractProject(*Builder.GetScene()).Maps[0];
  if (!AIsFound) Map.ZoneFinder = nullptr;
  const float Side = Map.Map->GetGlobalRect().Right;
  int I = 0;
  for (auto _ : AState) {
    ++I;
    const TPointF Point{std::fmod(static_cast<float>(I) * 7.3F, Side),
                        std::fmod(static_cast<float>(I) * 3.7F, Side)};
    benchmark::DoNotOptimize(Map.GetZonesOverPoint(Point).GetLength());
  }
}
BENCHMARK_CAPTURE(ZonesOverPoint, ours, true)
    ->Name("ZonesOverPoint/ours")
    ->Arg(10)
    ->Arg(100)
    ->Arg(1'000)
    ->Arg(10'000);
BENCHMARK_CAPTURE(ZonesOverPoint, walk, false)
    ->Name("ZonesOverPoint/walk")
    ->Arg(10)
    ->Arg(100)
    ->Arg(1'000)
    ->Arg(10'000);

// ---------------------------------------------------------------- frames

constexpr float Width = 100.0F;
constexpr float Height = 75.0F;
constexpr int ScreenWidth = 1280;
constexpr int ScreenHeight = 800;

/// 4,000 by 3,000 pixels of fine lines.
std::string DrawPlan() {
  TDrawing Drawing(4000, 3000);
  Drawing.Clear(TAlphaColor{0xFFF4F4EE});
  Drawing.SetPen({.Paint = {.Color = TAlphaColor{0xFF606870}}, .Width = 2.0F});
  TPath Lines;
  for (int I = 0; I < 400; ++I) {
    const auto At = static_cast<float>(I) * 10;
    Lines.MoveTo({At, 0});
    Lines.LineTo({4000 - At, 3000});
  }
  Drawing.Stroke(Lines);
  return EncodePng(*Drawing.GetPicture());
}

/// 200 beacons, 100 zones and 2,000 path nodes on a plan.
std::string MakeProject() {
  TProjectBuilder Builder("Hall");
  TMapBuilder Map = Builder.AddMap("Floor", Width, Height);
  Map.SetPicture("plan.png", DrawPlan());
  for (int I = 0; I < 100; ++I) {
    const auto X = static_cast<float>(I % 10) * 10, Y = static_cast<float>(I / 10) * 7.5F;
    Map.AddZone("Zone " + std::to_string(I), {X + 1, Y + 1, X + 9, Y + 7});
  }
  for (int I = 0; I < 40; ++I) {
    std::vector<TNamedPoint> Points;
    for (int J = 0; J < 50; ++J)
      Points.push_back({"", {static_cast<float>(J) * 2 + 1, static_cast<float>(I) * 1.85F + 1}});
    Map.AddPath("Path " + std::to_string(I), Points);
  }
  for (int I = 0; I < 200; ++I)
    Map.AddBeacon("Beacon " + std::to_string(I),
                  {static_cast<float>(I % 20) * 5 + 2, static_cast<float>(I / 20) * 7.5F + 3},
                  "2F234454-CF6D-4A0F-ADF2-F4911BA9FFA6",
                  1,
                  I);
  return Builder.MakeBundle()->SerializeToXML();
}

/// The hall on a screen, all of it shown.
struct THall {
  THall() : Control(ScreenWidth, ScreenHeight) {
    static const std::string Text = MakeProject();
    Control.SetOnPaint(Bind<&TBeaconFencingMapPainter::ControlPaint>(&Painter));
    Painter.SetControl(&Control);
    Painter.SetXmlData(Text);
    Painter.SetMapOptions(
        {ShowPosition, ShowPositionInPath, ShowBeacons, ShowBeaconSignal, ShowZones, ShowPaths});
    Record = Painter.GetProjectInformation();
    Control.Update();
  }
  static TPointF PlaceAt(int AStep) {
    const float Angle = static_cast<float>(AStep) * 0.01F;
    return {Width / 2 + Width * 0.4F * std::cos(Angle),
            Height / 2 + Height * 0.4F * std::sin(Angle)};
  }

  TBeaconFencingMapPainter Painter;
  TOffscreenControl Control;
  TFencingProject Record;
};

/// One frame after each change.
template <class TChange>
void Frame(benchmark::State& AState, TChange AChange) {
  THall Hall;
  int Step = 0;
  for (auto _ : AState) {
    AChange(Hall, ++Step);
    Hall.Control.Update();
  }
  AState.counters["frames/s"] =
      benchmark::Counter(static_cast<double>(Step), benchmark::Counter::kIsRate);
}

void MoveMarkers(THall& AHall, int AStep) {
  AHall.Painter.SetRawPosition(THall::PlaceAt(AStep));
  AHall.Painter.SetPathPosition(THall::PlaceAt(AStep + 5));
}
void JumpWithMarkers(THall& AHall, int AStep) {
  MoveMarkers(AHall, AStep * 157);
}
void HighlightAnotherZone(THall& AHall, int AStep) {
  AHall.Painter.HighLightZone(AHall.Record.Maps[0].Zones[static_cast<std::size_t>(AStep) % 100]);
}
void PaintAll(THall& AHall, int) {
  AHall.Control.Repaint();
}
void Zoom(THall& AHall, int AStep) {
  const float Factor = 0.5F + static_cast<float>(AStep % 50) * 0.01F;
  AHall.Painter.GetCamera()->SetFrustum({-Width * Factor / 2,
                                         -Width * 0.3125F * Factor,
                                         Width * Factor / 2,
                                         Width * 0.3125F * Factor});
}
BENCHMARK_CAPTURE(Frame, move, &MoveMarkers)
    ->Name("Frame/markers_move")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Frame, jump, &JumpWithMarkers)
    ->Name("Frame/markers_jump")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Frame, zone, &HighlightAnotherZone)
    ->Name("Frame/zone_lights_up")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Frame, all, &PaintAll)->Name("Frame/everything")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Frame, zoom, &Zoom)->Name("Frame/zoom")->Unit(benchmark::kMillisecond);

}  // namespace
