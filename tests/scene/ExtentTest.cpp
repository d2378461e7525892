// Searching and painting with what is known of where nodes lie, and without: the answers and the
// pictures are the same.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "map/System.Beacon.Fencing.Scene.Beacons.h"
#include "scene/System.Beacon.Fencing.Scene.Shapes.h"
#include "scene/canvas/System.Beacon.Fencing.Canvas.Wyx.h"
#include "support/pictures.h"

namespace System::Beacon::Fencing::Scene {
namespace {

using Beacons::TBeacon;
using Beacons::TMapPath;

/// Says nothing of where it lies, so that it is asked and painted always.
template <class TBase>
class TSilent final : public TBase {};

/// Two scenes that everything is done to; they differ only in what their nodes tell.
class TTwins {
 public:
  TTwins() {
    for (const auto& Scene : {FTelling, FSilent}) {
      const TRef<TCamera> Camera = New<TCamera>();
      Camera->SetFrustum({-100, -100, 100, 100});
      Scene->SetCamera(Camera);
      Scene->GetViewport()->SetScreenSize(Side, Side);
    }
    const TPair Layers = Make<TLayer>();
    FTelling->AddChild(Layers[0]);
    FSilent->AddChild(Layers[1]);
  }

  using TPair = std::array<TRef<TSceneNode>, 2>;
  std::vector<TPair> Nodes;

  template <class TNodeClass>
  TPair Make() {
    TPair Result{New<TNodeClass>(), New<TSilent<TNodeClass>>()};
    for (const auto& Node : Result) Node->SetName(std::to_string(Nodes.size()));
    Nodes.push_back(Result);
    return Result;
  }

  void ExpectSameFound(TPointF APoint) {
    std::array<std::string, 2> Found;
    for (const auto& Scene : {FTelling, FSilent}) {
      std::string& Text = Found[Scene == FSilent];
      TSceneNodes All;
      if (const ISceneNode* Top = Scene->GetSceneNodeUnderGlobalPoint(APoint))
        Text = Top->GetName() + " of";
      Scene->GetSceneNodeUnderGlobalPoint(APoint, All);
      for (const ISceneNode* Node : All) Text += " " + Node->GetName();
    }
    ASSERT_EQ(Found[0], Found[1]) << APoint.X << "," << APoint.Y;
    FoundCount += !Found[0].empty();
  }

  /// In an area of 30 by 20 pixels.
  void ExpectSamePictures(int ALeft, int ATop) {
    TDrawing Telling(Side, Side), Silent(Side, Side);
    const auto Left = static_cast<float>(ALeft), Top = static_cast<float>(ATop);
    Paint(*FTelling, Telling, {Left, Top, Left + 30, Top + 20});
    Paint(*FSilent, Silent, {0, 0, Side, Side});
    for (int Y = ATop; Y < ATop + 20; ++Y)
      for (int X = ALeft; X < ALeft + 30; ++X) {
        const auto I = static_cast<std::size_t>(Y * Side + X);
        ASSERT_LE(Difference(Telling.GetPixels()[I], Silent.GetPixels()[I]), 32) << X << "," << Y;
      }
  }

  int FoundCount = 0;

 private:
  static constexpr int Side = 200;

  static void Paint(TScene& AScene, TDrawing& ADrawing, const TRectF& AnArea) {
    ADrawing.SetClip(AnArea);
    AScene.PaintScene(New<Canvas::TWyxLayer>(&ADrawing), New<Canvas::TWyxCanvas>());
  }

  TRef<TScene> FTelling = New<TScene>();
  TRef<TScene> FSilent = New<TScene>();
};

class TRandomOperations {
 public:
  explicit TRandomOperations(TTwins& ATwins) : FTwins(ATwins) {}

  void Step() {
    switch (Below(12)) {
      case 0:
        return Add(FTwins.Make<TRectangle>());
      case 1:
        return Add(FTwins.Make<TEllipse>());
      case 2:
        return Add(FTwins.Make<TSegment>());
      case 10:
        return Add(FTwins.Make<TBeacon>());
      case 11:
        return Add(FTwins.Make<TMapPath>());
      case 3:
        return Below(8) == 0 ? Add(FTwins.Make<TLayer>()) : TurnAndScale();
      case 4:
        return Remove();
      case 5:
        return Reorder();
      default:
        return MoveOne();
    }
  }
  float Coordinate() { return std::uniform_real_distribution<float>(-110, 110)(FNumbers); }
  int Below(std::size_t ACount) {
    return std::uniform_int_distribution<int>(0, static_cast<int>(ACount) - 1)(FNumbers);
  }

 private:
  TTwins::TPair& Any() { return FTwins.Nodes[Below(FTwins.Nodes.size())]; }

  /// Most nodes stand in the layer, which becomes wide; some on others.
  void Add(TTwins::TPair ANodes) {
    const TTwins::TPair& Parent = Below(4) == 0 ? Any() : FTwins.Nodes[0];
    const float Size = Below(20) == 0 ? 80.0F : 8.0F;
    const float Width = Size * static_cast<float>(Below(10)) / 10.0F;
    const bool IsFront = Below(5) == 0;
    const TAlphaColor Color{0xC0000000 + static_cast<std::uint32_t>(Below(0x1000000))};
    for (int I = 0; I < 2; ++I) {
      if (auto* Path = dynamic_cast<TMapPath*>(ANodes[I].Get())) {
        Path->SetControlPoints(std::array{TPointF{0, 0}, TPointF{30, 9}});
        Path->SetHighLitPath(std::array{0, 1});
      }
      ANodes[I]->SetRect({-Width, -2, Size, 4});
      IsFront ? Parent[I]->AddFrontChild(ANodes[I]) : Parent[I]->AddChild(ANodes[I]);
      if (auto* Shape = dynamic_cast<TShapeBase*>(ANodes[I].Get())) Shape->SetFillColor(Color);
    }
    MoveBoth(ANodes);
  }
  void MoveBoth(TTwins::TPair& ANodes) {
    const TPointF Place{Coordinate(), Coordinate()};
    for (const auto& Node : ANodes)
      if (!dynamic_cast<TLayer*>(Node.Get())) Node->SetDisplacement(Place);
  }
  void MoveOne() { MoveBoth(Any()); }
  void TurnAndScale() {
    const float Angle = Coordinate(), Scale = std::abs(Coordinate()) / 40.0F;
    const float Thickness = static_cast<float>(Below(30));
    for (const auto& Node : Any())
      if (auto* Shape = dynamic_cast<TShapeBase*>(Node.Get())) {
        Shape->SetRotation(Angle);
        Shape->SetScaling({Scale, Scale + 0.2F});
        Shape->SetStrokeThickness(Thickness);
        auto* const Beacon = dynamic_cast<TBeacon*>(Shape);
        if (!Beacon) continue;
        Beacon->SetVisualizationMode({Beacons::TBeaconVisualizationMode::SignalDistance});
        Beacon->SetSignalDistance(Thickness);
      }
  }
  void Remove() {
    const int Index = Below(FTwins.Nodes.size());
    if (Index == 0) return;
    for (const auto& Node : FTwins.Nodes[Index]) Node->Detach();
    if (Below(2) == 0) FTwins.Nodes.erase(FTwins.Nodes.begin() + Index);
  }
  void Reorder() {
    const int Child = Below(200), Other = Below(200), What = Below(4);
    for (const auto& Layer : FTwins.Nodes[0]) {
      if (What == 0) Layer->MoveChildToFront(Child);
      if (What == 1) Layer->MoveChildToBack(Child);
      if (What == 2) Layer->SwapChildren(Child, Other);
      if (What == 3 && Child < Layer->GetChildCount())
        Layer->SetChildIndex(Layer->GetChildAt(Child).Get(), Other);
    }
  }

  TTwins& FTwins;
  std::mt19937 FNumbers{20261123};
};

TEST(Extents, ChangeNothingThatIsFoundOrPainted) {
  TTwins Twins;
  TRandomOperations Random(Twins);
  for (int I = 0; I < 6000 && !testing::Test::HasFatalFailure(); ++I) {
    Random.Step();
    if (I % 3 == 0) Twins.ExpectSameFound({Random.Coordinate(), Random.Coordinate()});
    if (I % 60 == 59) Twins.ExpectSamePictures(Random.Below(170), Random.Below(180));
  }
  EXPECT_GT(Twins.FoundCount, 1000);
}

}  // namespace
}  // namespace System::Beacon::Fencing::Scene
