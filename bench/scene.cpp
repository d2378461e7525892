// Finding, moving, painting and making the nodes of a scene, and telling of events.
#include <benchmark/benchmark.h>

#include <array>
#include <functional>
#include <memory>
#include <vector>

#include "bench/scene_field.h"
#include "scene/System.Beacon.Fencing.Scene.Shapes.h"
#include "scene/canvas/System.Beacon.Fencing.Canvas.Wyx.h"

namespace {

using namespace System;
using namespace System::Beacon::Fencing;
using namespace System::Beacon::Fencing::Scene;
using Bench::TField;

/// A layer of squares on a field, looked at as a whole.
class TSceneOfSquares {
 public:
  explicit TSceneOfSquares(int ACount) : Field(ACount) {
    Scene = New<TScene>();
    const TRef<TCamera> Camera = New<TCamera>();
    Camera->SetFrustum({0, 0, Field.GetSide() * 1.6F, Field.GetSide()});
    Scene->SetCamera(Camera);
    Scene->GetViewport()->SetScreenSize(TField::ScreenWidth, TField::ScreenHeight);
    const TRef<TLayer> Layer = New<TLayer>();
    Scene->AddChild(Layer);
    for (int I = 0; I < ACount; ++I) {
      const TRef<TRectangle> Square = New<TRectangle>();
      Square->SetRect({0, 0, TField::Size, TField::Size});
      Square->SetDisplacement({Field.GetX(I), Field.GetY(I)});
      Square->SetFillColor(TAlphaColor{Field.GetColor(I)});
      Layer->AddChild(Square);
      Squares.push_back(Square);
    }
  }

  TField Field;
  TRef<TScene> Scene;
  std::vector<TRef<TRectangle>> Squares;
};

// ---------------------------------------------------------------- hit tests

void Hit(benchmark::State& AState) {
  const TSceneOfSquares Squares(static_cast<int>(AState.range(0)));
  int I = 0;
  for (auto _ : AState) {
    ++I;
    benchmark::DoNotOptimize(Squares.Scene->GetSceneNodeUnderGlobalPoint(
        {Squares.Field.GetX(I) + 1, Squares.Field.GetY(I) + 1}));
  }
}
BENCHMARK(Hit)->Name("Hit/ours")->Arg(1'000)->Arg(10'000)->Arg(100'000);

void MoveAndHit(benchmark::State& AState) {
  const TSceneOfSquares Squares(static_cast<int>(AState.range(0)));
  int I = 0;
  for (auto _ : AState) {
    ++I;
    const TPointF Place{Squares.Field.GetX(I * 7), Squares.Field.GetY(I * 7)};
    Squares.Squares[I % Squares.Squares.size()]->SetDisplacement(Place);
    benchmark::DoNotOptimize(
        Squares.Scene->GetSceneNodeUnderGlobalPoint({Place.X + 1, Place.Y + 1}));
  }
}
BENCHMARK(MoveAndHit)->Name("MoveAndHit/ours")->Arg(1'000)->Arg(10'000)->Arg(100'000);

// ---------------------------------------------------------------- painting

void Paint(benchmark::State& AState, const TRectF& AnArea) {
  const TSceneOfSquares Squares(static_cast<int>(AState.range(0)));
  TDrawing Drawing(TField::ScreenWidth, TField::ScreenHeight);
  const auto Canvas = New<Canvas::TWyxCanvas>();
  const auto Layer = New<Canvas::TWyxLayer>(&Drawing);
  Drawing.SetClip(AnArea);
  for (auto _ : AState) {
    Drawing.Clear(TAlphaColor{0xFFFFFFFF});
    Squares.Scene->PaintScene(Layer, Canvas);
  }
}
BENCHMARK_CAPTURE(Paint, whole, TRectF{0, 0, TField::ScreenWidth, TField::ScreenHeight})
    ->Name("Paint/ours")
    ->Arg(10'000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Paint, whole_again, TRectF{0, 0, TField::ScreenWidth, TField::ScreenHeight})
    ->Name("PaintAsCairo/ours")
    ->Arg(10'000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Paint, part, TRectF{600, 400, 660, 460})
    ->Name("PaintPart/ours")
    ->Arg(1'000)
    ->Arg(10'000)
    ->Arg(100'000)
    ->Unit(benchmark::kMicrosecond);

// ---------------------------------------------------------------- events

struct TCounter final : TInterfacedObject {
  void Moved(ISceneNode*) { benchmark::DoNotOptimize(++Count); }
  std::int64_t Count = 0;
};

void Emit(benchmark::State& AState) {
  const TRef<TRectangle> Node = New<TRectangle>();
  std::vector<TRef<TCounter>> Counters(static_cast<std::size_t>(AState.range(0)));
  for (auto& Counter : Counters) {
    Counter = New<TCounter>();
    Node->ConnectDidMove(Bind<&TCounter::Moved>(Counter.Get()));
  }
  for (auto _ : AState) Node->EmitDidMove(static_cast<ISceneNode*>(Node.Get()));
}
BENCHMARK(Emit)->Name("Emit/ours")->Arg(0)->Arg(1)->Arg(4);

/// A loop over calls that are bound to their receivers.
void EmitPlainly(benchmark::State& AState) {
  const TRef<TRectangle> Node = New<TRectangle>();
  std::vector<std::unique_ptr<TCounter>> Counters;
  std::vector<std::function<void(ISceneNode*)>> Calls;
  for (int I = 0; I < AState.range(0); ++I) {
    Counters.push_back(std::make_unique<TCounter>());
    Calls.emplace_back(
        [Counter = Counters.back().get()](ISceneNode* ANode) { Counter->Moved(ANode); });
  }
  for (auto _ : AState) {
    benchmark::DoNotOptimize(Calls.data());
    for (const auto& Call : Calls) Call(Node.Get());
  }
}
BENCHMARK(EmitPlainly)->Name("Emit/plain")->Arg(0)->Arg(1)->Arg(4);

// ---------------------------------------------------------------- creating and freeing

void Create(benchmark::State& AState) {
  for (auto _ : AState) {
    const TRef<TLayer> Layer = New<TLayer>();
    TNodes Nodes;
    for (int I = 0; I < AState.range(0); ++I) Nodes.emplace_back(New<TRectangle>());
    Layer->SetChildren(Nodes);
  }
}
BENCHMARK(Create)->Name("Create/ours")->Arg(1'000)->Arg(100'000)->Unit(benchmark::kMillisecond);

}  // namespace
