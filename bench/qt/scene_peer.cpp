// The same field of squares in the graphics scene of Qt.
#include <benchmark/benchmark.h>

#include <QApplication>
#include <QGraphicsRectItem>
#include <QGraphicsScene>
#include <QImage>
#include <QPainter>
#include <memory>
#include <vector>

#include "bench/scene_field.h"

namespace {

using Bench::TField;

/// Qt wants an application before anything else; without a display it draws off-screen.
void NeedApplication() {
  static int Count = 3;
  static char Name[] = "bench", Option[] = "-platform", Value[] = "offscreen";
  static char* Values[] = {Name, Option, Value, nullptr};
  static QApplication Application(Count, Values);
}

class TSceneOfSquares {
 public:
  explicit TSceneOfSquares(int ACount) : Field(ACount) {
    NeedApplication();
    Scene = std::make_unique<QGraphicsScene>(0, 0, Field.GetSide() * 1.6F, Field.GetSide());
    for (int I = 0; I < ACount; ++I) {
      auto* const Square = new QGraphicsRectItem(0, 0, TField::Size, TField::Size);
      Square->setPos(Field.GetX(I), Field.GetY(I));
      Square->setBrush(QColor::fromRgba(Field.GetColor(I)));
      QPen Pen(Qt::black);
      Pen.setCosmetic(true);
      Square->setPen(Pen);
      Scene->addItem(Square);
      Squares.push_back(Square);
    }
  }

  TField Field;
  std::unique_ptr<QGraphicsScene> Scene;
  std::vector<QGraphicsRectItem*> Squares;
};

void Hit(benchmark::State& AState) {
  const TSceneOfSquares Squares(static_cast<int>(AState.range(0)));
  int I = 0;
  for (auto _ : AState) {
    ++I;
    benchmark::DoNotOptimize(
        Squares.Scene->itemAt(Squares.Field.GetX(I) + 1, Squares.Field.GetY(I) + 1, QTransform()));
  }
}
BENCHMARK(Hit)->Name("Hit/plain")->Arg(1'000)->Arg(10'000)->Arg(100'000);

void MoveAndHit(benchmark::State& AState) {
  const TSceneOfSquares Squares(static_cast<int>(AState.range(0)));
  int I = 0;
  for (auto _ : AState) {
    ++I;
    const QPointF Place(Squares.Field.GetX(I * 7), Squares.Field.GetY(I * 7));
    Squares.Squares[I % Squares.Squares.size()]->setPos(Place);
    benchmark::DoNotOptimize(Squares.Scene->itemAt(Place + QPointF(1, 1), QTransform()));
  }
}
BENCHMARK(MoveAndHit)->Name("MoveAndHit/plain")->Arg(1'000)->Arg(10'000)->Arg(100'000);

void Paint(benchmark::State& AState, const QRectF& AnArea) {
  const TSceneOfSquares Squares(static_cast<int>(AState.range(0)));
  QImage Image(TField::ScreenWidth, TField::ScreenHeight, QImage::Format_ARGB32_Premultiplied);
  const double Scale = TField::ScreenHeight / static_cast<double>(Squares.Field.GetSide());
  const QRectF Source(
      AnArea.x() / Scale, AnArea.y() / Scale, AnArea.width() / Scale, AnArea.height() / Scale);
  for (auto _ : AState) {
    QPainter Painter(&Image);
    Painter.setRenderHint(QPainter::Antialiasing);
    Painter.setClipRect(AnArea);
    Painter.fillRect(AnArea, Qt::white);
    Squares.Scene->render(&Painter, AnArea, Source);
  }
}
BENCHMARK_CAPTURE(Paint, whole, QRectF(0, 0, TField::ScreenWidth, TField::ScreenHeight))
    ->Name("Paint/plain")
    ->Arg(10'000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Paint, part, QRectF(600, 400, 60, 60))
    ->Name("PaintPart/plain")
    ->Arg(1'000)
    ->Arg(10'000)
    ->Arg(100'000)
    ->Unit(benchmark::kMicrosecond);

void Create(benchmark::State& AState) {
  NeedApplication();
  for (auto _ : AState) {
    QGraphicsScene Scene;
    for (int I = 0; I < AState.range(0); ++I) Scene.addRect(0, 0, 10, 10);
  }
}
BENCHMARK(Create)->Name("Create/plain")->Arg(1'000)->Arg(100'000)->Unit(benchmark::kMillisecond);

}  // namespace
