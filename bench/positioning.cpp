// Steps of the estimator, distances, and beacons in order.
#include <benchmark/benchmark.h>

#include "bench/plain_positioning.h"
#include "positioning/System.Beacon.Fencing.PositionCalculator.h"
#include "tests/support/fake_beacon.h"
#include "tests/support/fake_design.h"

namespace {

using namespace System;
using namespace System::Beacon;
using namespace System::Beacon::Fencing;

// ---------------------------------------------------------------- a step of the filter

constexpr double Spread = 15.0;
constexpr double RelativeStdDev = 0.15;

const std::vector<TMeasurement>& ThreeBeacons() {
  static const std::vector<TMeasurement> Value{
      {{100.0F, 100.0F}, 412.0}, {{900.0F, 200.0F}, 608.0}, {{500.0F, 800.0F}, 361.0}};
  return Value;
}

void FilterStep(benchmark::State& AState) {
  TParticleCloud Cloud({});
  Cloud.SetLength(static_cast<std::int32_t>(AState.range(0)));
  Cloud.PlaceAt({500.0F, 400.0F});
  for (auto _ : AState)
    benchmark::DoNotOptimize(Cloud.Step(ThreeBeacons(), Spread, RelativeStdDev));
}
BENCHMARK(FilterStep)->Name("Filter step/ours")->Arg(500)->Arg(5000)->Arg(50000);

void FilterStepPlainly(benchmark::State& AState) {
  Bench::TPlainCloud Cloud(static_cast<std::size_t>(AState.range(0)), {500.0F, 400.0F});
  for (auto _ : AState)
    benchmark::DoNotOptimize(Cloud.Step(ThreeBeacons(), Spread, RelativeStdDev));
}
BENCHMARK(FilterStepPlainly)->Name("Filter step/plain")->Arg(500)->Arg(5000)->Arg(50000);

// ---------------------------------------------------------------- beacons of a map

TFencingBeacons MakeBeacons(int ACount) {
  TFencingBeacons Result;
  TRandomStream Random(1);
  for (int I = 0; I < ACount; ++I) {
    const auto Design = New<TFakeDesignBeacon>();
    Design->Center = {static_cast<float>(Random.NextDouble() * 1000.0),
                      static_cast<float>(Random.NextDouble() * 1000.0)};
    const TRef<TFakeBeacon> Sighting = NewFakeBeacon(I);
    Sighting->Distance = Random.NextDouble() * 50.0;
    Result.Append({I % 3 == 2 ? nullptr : TRef<IBeacon>(Sighting), Design, 0.0});
  }
  return Result;
}

// ---------------------------------------------------------------- distances

/// A calculator that knows the signals of all beacons.
TTrilateration& Teach(TTrilateration& ACalculator, const TFencingBeacons& ABeacons) {
  ACalculator.Calculate(ABeacons, {});
  return ACalculator;
}

void DistanceCallback(benchmark::State& AState) {
  TParticleFilterOptions Options;
  Options.SetSPC(0.5F);
  const TFencingBeacons Beacons = MakeBeacons(static_cast<int>(AState.range(0)));
  TTrilateration Calculator(Options, {0.0F, 0.0F, 1000.0F, 1000.0F}, {});
  Teach(Calculator, Beacons);
  std::size_t Next = 0;
  for (auto _ : AState) {
    double Distance = 0.0;
    Calculator.DoCalcutateBeaconDistance(
        -59, -70 - static_cast<int>(Next % 5), Beacons[Next], Distance);
    benchmark::DoNotOptimize(Distance);
    if (++Next == Beacons.GetLength()) Next = 0;
  }
}
BENCHMARK(DistanceCallback)->Name("Distance callback/ours")->Arg(10)->Arg(1000)->Arg(10000);

/// The records of the signals as a list that is walked.
void DistanceCallbackPlainly(benchmark::State& AState) {
  struct TRecord {
    TRef<IBeacon> Beacon;
    double Strength = 0.0;
  };
  const TFencingBeacons Beacons = MakeBeacons(static_cast<int>(AState.range(0)));
  std::vector<TRecord> Records;
  for (const TFencingBeacon& Beacon : Beacons)
    if (Beacon.BTBeacon) Records.push_back({Beacon.BTBeacon});
  double Average = 0.0;
  std::size_t Next = 0;
  for (auto _ : AState) {
    const TRef<IBeacon>& Beacon = Beacons[Next].BTBeacon;
    double Strength = -70.0 - static_cast<double>(Next % 5);
    for (TRecord& Record : Records) {
      if (!Beacon || !IsSameBeacon(Record.Beacon.Get(), Beacon.Get())) continue;
      const auto Count = static_cast<double>(Records.size());
      if (Record.Strength == 0.0) Record.Strength = Strength;
      Average = Average / Count * (Count - 1.0) + std::abs(Record.Strength - Strength) / Count;
      Record.Strength += (Strength - Record.Strength) * (Average > 2.0 ? 0.2 : 0.1);
      Strength = Record.Strength = std::nearbyint(Record.Strength * 100.0) / 100.0;
      break;
    }
    benchmark::DoNotOptimize(std::pow(10.0, (Strength + 59.0) / -10.0 * 0.5));
    if (++Next == Beacons.GetLength()) Next = 0;
  }
}
BENCHMARK(DistanceCallbackPlainly)->Name("Distance callback/plain")->Arg(10)->Arg(1000)->Arg(10000);

// ---------------------------------------------------------------- nearest and ordered

void Nearest(benchmark::State& AState) {
  TFencingMap Map;
  Map.BeaconList = MakeBeacons(static_cast<int>(AState.range(0)));
  for (auto _ : AState) benchmark::DoNotOptimize(Map.NearestBeacon());
}
BENCHMARK(Nearest)->Name("Nearest beacon/ours")->RangeMultiplier(10)->Range(10, 10000);

void NearestPlainly(benchmark::State& AState) {
  const TFencingBeacons Beacons = MakeBeacons(static_cast<int>(AState.range(0)));
  for (auto _ : AState) {
    TFencingBeacon Result;
    for (const TFencingBeacon& Beacon : Beacons)
      if (!Result.BTBeacon || (Beacon.BTBeacon && Beacon.BTBeacon->GetDistance() >= 0.0 &&
                               Beacon.BTBeacon->GetDistance() < Result.BTBeacon->GetDistance()))
        Result = Beacon;
    benchmark::DoNotOptimize(Result);
  }
}
BENCHMARK(NearestPlainly)->Name("Nearest beacon/plain")->RangeMultiplier(10)->Range(10, 10000);

constexpr TPointF ReferencePoint{50'000.0F, 50'000.0F};

void Ordered(benchmark::State& AState) {
  TFencingMap Map;
  Map.BeaconList = MakeBeacons(static_cast<int>(AState.range(0)));
  for (auto _ : AState) benchmark::DoNotOptimize(Map.OrderedBeaconList());
}
BENCHMARK(Ordered)->Name("Beacons by distance/ours")->RangeMultiplier(10)->Range(10, 10000);

void OrderedTo(benchmark::State& AState) {
  TFencingMap Map;
  Map.BeaconList = MakeBeacons(static_cast<int>(AState.range(0)));
  for (auto _ : AState) benchmark::DoNotOptimize(Map.OrderedBeaconListTo(ReferencePoint));
}
BENCHMARK(OrderedTo)->Name("Beacons by place/ours")->RangeMultiplier(10)->Range(10, 10000);

/// A copy of the records, sorted with the comparer.
void SortPlainly(benchmark::State& AState, const TComparer<TFencingBeacon>& AComparer) {
  const TFencingBeacons Beacons = MakeBeacons(static_cast<int>(AState.range(0)));
  for (auto _ : AState) {
    TFencingBeacons Result = Beacons.Copy();
    std::stable_sort(
        Result.begin(), Result.end(), [&](const TFencingBeacon& A, const TFencingBeacon& B) {
          return AComparer.Compare(A, B) < 0;
        });
    benchmark::DoNotOptimize(Result);
  }
}
void OrderedPlainly(benchmark::State& AState) {
  SortPlainly(AState, TFencingBeaconComparer());
}
BENCHMARK(OrderedPlainly)->Name("Beacons by distance/plain")->RangeMultiplier(10)->Range(10, 10000);
void OrderedToPlainly(benchmark::State& AState) {
  SortPlainly(AState, TFencingBeaconToPointComparer(ReferencePoint));
}
BENCHMARK(OrderedToPlainly)->Name("Beacons by place/plain")->RangeMultiplier(10)->Range(10, 10000);

}  // namespace
