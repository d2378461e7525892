// Taking the project record out of a large scene.
#include <benchmark/benchmark.h>

#include <string>

#include "map/project_builder.h"
#include "runtimepaint/project_extraction.h"

namespace {

using namespace System;
using namespace System::Beacon::Fencing;
using namespace System::Beacon::Fencing::Scene::Beacons;

constexpr int MapCount = 20;

TPointF PlaceOf(int AIndex) {
  return {static_cast<float>(AIndex % 50) * 2.0F, static_cast<float>(AIndex / 50) * 2.0F};
}

void Furnish(TMapBuilder AMap, int AFloor) {
  constexpr int Beacons = 500, Zones = 100, PathNodes = 2500;
  const std::string Floor = std::to_string(AFloor) + " ";
  for (int I = 0; I < Beacons; ++I)
    AMap.AddBeacon(
        Floor + std::to_string(I), PlaceOf(I), "2F234454-CF6D-4A0F-ADF2-F4911BA9FFA6", AFloor, I);
  for (int I = 0; I < Zones; ++I) {
    const TPointF At = PlaceOf(I * 5);
    Describe(*AMap.AddZone(Floor + "zone " + std::to_string(I), {At.X, At.Y, At.X + 5, At.Y + 5}),
             "number",
             std::to_string(I));
  }
  std::vector<TNamedPoint> Points;
  for (int I = 0; I < PathNodes; ++I)
    Points.push_back({Floor + "node " + std::to_string(I), PlaceOf(I)});
  AMap.AddPath(Floor + "path", Points);
}

/// 20 maps, 10,000 beacons, 2,000 zones and 50,000 path nodes.
void Extract(benchmark::State& AState) {
  TProjectBuilder Project("Large");
  for (int I = 0; I < MapCount; ++I) {
    Furnish(Project.AddMap(std::to_string(I), 100, 100), I);
    if (I > 0) Project.Connect(std::to_string(I - 1) + " node 0", std::to_string(I) + " node 0");
  }
  for (auto _ : AState) benchmark::DoNotOptimize(ExtractProject(*Project.GetScene()));
}
BENCHMARK(Extract)->Unit(benchmark::kMillisecond);

}  // namespace
