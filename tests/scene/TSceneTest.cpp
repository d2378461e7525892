// Scenes: who belongs to one, what is drawn anew, what is found under a point, where the pointer's
// doings go.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <numbers>
#include <stdexcept>
#include <string>
#include <utility>

#include "scene/System.Beacon.Fencing.Scene.Shapes.h"
#include "scene/canvas/System.Beacon.Fencing.Canvas.Wyx.h"
#include "support/logged_region.h"

namespace System::Beacon::Fencing::Scene {
namespace {

/// A rectangle that writes down when it is painted, and what the pointer does.
class TBox final : public TRectangle {
 public:
  TBox(const std::string& AName, const TRectF& ARect, std::string* ALog) : FLog(ALog) {
    SetName(AName);
    SetRect(ARect);
    ConnectMouseEnter([this](ISceneNode*) { Write("enter"); });
    ConnectMouseExit([this](ISceneNode*) { Write("exit"); });
    ConnectMouseDown([this](ISceneNode*, const TPointF& P) { Write("down", P); });
    ConnectMouseUp([this](ISceneNode*, const TPointF& P) { Write("up", P); });
    ConnectMouseMove([this](ISceneNode*, const TPointF& P, bool AIsDragged) {
      Write(AIsDragged ? "drag" : "move", P);
    });
  }
  std::function<void()> OnPaint;

 protected:
  void DoPaint(Canvas::ICanvas& ACanvas, const TMatrix& AMatrix) override {
    Write("paint");
    if (OnPaint) OnPaint();
    TRectangle::DoPaint(ACanvas, AMatrix);
  }

 private:
  void Write(const char* AWhat) { *FLog += fmt::format("{} {}; ", AWhat, GetName()); }
  void Write(const char* AWhat, TPointF P) {
    *FLog += fmt::format("{} {} {},{}; ", AWhat, GetName(), P.X, P.Y);
  }

  std::string* FLog;
};

struct TSceneTest : testing::Test {
  TRef<TBox> Box(const std::string& AName, const TRectF& ARect = {0, 0, 10, 10}) {
    return New<TBox>(AName, ARect, &Log);
  }
  std::string Taken() { return std::exchange(Log, {}); }
  std::string Hit(TPointF APoint) {
    const ISceneNode* const Node = Scene->GetSceneNodeUnderGlobalPoint(APoint);
    return Node ? Node->GetName() : "";
  }

  std::string Log;
  TRef<TScene> Scene = New<TScene>();
  TRef<TLayer> Layer = New<TLayer>();
  TRef<TBox> A = Box("a"), B = Box("b");
};

TEST_F(TSceneTest, GivesItsNodesTheSceneAndTakesItBack) {
  Layer->AddChild(A);
  const auto NameOf = [](const IScene* AScene) { return AScene ? AScene->GetName() : "none"; };
  A->ConnectSceneChange([&](ISceneNode* ANode, IScene* AOld, IScene* ANew) {
    Log += ANode->GetName() + ": " + NameOf(AOld) + ">" + NameOf(ANew) + "; ";
  });
  Scene->AddChild(Layer);
  EXPECT_EQ(A->GetScene(), Scene.Get());
  Scene->RemoveChild(Layer.Get());
  EXPECT_EQ(Taken(), "a: none>Scene; a: Scene>none; ");
  Scene->AddChild(Layer);
  Layer->RemoveChild(A.Get());
  EXPECT_EQ(A->GetScene(), Scene.Get()) << "a child that leaves a layer keeps the scene";
  const auto Camera = New<TCamera>();
  Scene->SetCamera(Camera);
  Scene = nullptr;
  EXPECT_EQ(A->GetScene(), nullptr) << "but not longer than the scene lives";
  EXPECT_EQ(Camera->GetScene(), nullptr);
  A->Repaint();
}

TEST_F(TSceneTest, HasExactlyWhatChangedDrawnAnew) {
  Scene->AddChild(Layer);
  Scene->SetInvalidator(New<TLoggedRegion>(&Log));
  Layer->AddChild(A);
  EXPECT_EQ(Taken(), "paint -5,-5,15,15; paint -5,-5,15,15; paint -5,-5,15,15; ");
  A->AddChild(B);
  B->SetDisplacement({50, 0});
  Log.clear();
  A->SetDisplacement({100, 0});
  EXPECT_EQ(Taken(), "paint -5,-5,165,15; ");
  A->SetDisplacement({100, 0});
  A->SetDisplacement({std::numeric_limits<float>::quiet_NaN(), 0});
  EXPECT_EQ(Taken(), "");
  A->SetRotation(0);
  EXPECT_EQ(Taken(), "paint 95,-5,165,15; ");
  A->SetOpacity(0.5F);
  A->SetMode({TMode::Visible});
  EXPECT_EQ(Taken(), "paint 95,-5,115,15; paint 95,-5,115,15; ");
  A->RepaintRect({2, 2, 30, 4});
  EXPECT_EQ(Taken(), "paint 102,2,110,4; ");
  Layer->MoveChildToFront(0);
  EXPECT_EQ(Taken(), "paint 95,-5,165,15; ");
  Layer->ReorderChildren({"a"});
  Scene->SetCamera(New<TCamera>());
  Scene->GetCamera()->SetRotation(1);
  EXPECT_EQ(Taken(), "paint all; paint all; paint all; ");
}

TEST_F(TSceneTest, FindsTheTopmostActiveNodeUnderAPoint) {
  Scene->AddChild(Layer);
  Layer->SetChildren({TRef<INode>(A), TRef<INode>(B)});
  EXPECT_EQ(Hit({5, 5}), "b");
  Layer->MoveChildToFront(1);
  EXPECT_EQ(Hit({5, 5}), "a");
  Layer->SwapChildren(0, 1);
  TSceneNodes Nodes;
  EXPECT_EQ(Scene->GetSceneNodeUnderGlobalPoint({5, 5}, Nodes), static_cast<ISceneNode*>(B.Get()));
  EXPECT_EQ(Nodes, (TSceneNodes{B.Get(), A.Get()}));
  B->SetMode({TMode::Visible});
  EXPECT_EQ(Hit({5, 5}), "a");
  const TRef<TBox> C = Box("c", {20, 0, 30, 10});
  A->AddChild(C);
  EXPECT_EQ(Hit({25, 5}), "c");
  A->SetClipChildren(true);
  EXPECT_EQ(Hit({25, 5}), "");
  A->SetClipChildren(false);
  C->SetRotation(std::numbers::pi_v<float> / 2);
  A->SetDisplacement({100, 0});
  EXPECT_EQ(Hit({-5, 125}), "c") << "points go through the parent's matrix first";
  A->SetScaling({0, 1});
  EXPECT_EQ(Hit({100, 5}), "") << "a node without extent is never hit, nor its children";
}

TEST_F(TSceneTest, SendsThePointersDoingsToTheNodes) {
  Scene->SetChildren({TRef<INode>(A), TRef<INode>(B)});
  B->SetDisplacement({20, 0});
  struct TCase {
    char What;  // m: move, g: drag, d: down, u: up
    TPointF At;
    const char* Log;
  };
  for (const TCase& C : {TCase{'m', {1, 1}, "enter a; move a 1,1; "},
                         TCase{'m', {21, 1}, "exit a; enter b; move b 1,1; "},
                         TCase{'d', {22, 2}, "down b 2,2; "},
                         TCase{'g', {1, 1}, "drag b -19,1; "},
                         TCase{'u', {2, 2}, "up b -18,2; "},
                         TCase{'g', {3, 3}, "exit b; enter a; drag a 3,3; "},
                         TCase{'m', {50, 1}, "exit a; "},
                         TCase{'u', {1, 2}, "up a 1,2; "},
                         TCase{'d', {50, 1}, ""}}) {
    if (C.What == 'd') Scene->MouseDown(nullptr, C.At);
    if (C.What == 'u') Scene->MouseUp(nullptr, C.At);
    if (C.What == 'm' || C.What == 'g') Scene->MouseMove(nullptr, C.At, C.What == 'g');
    EXPECT_EQ(Taken(), C.Log);
  }
  EXPECT_EQ(Scene->GetMouseDownPoint(), (TPointF{50, 1}));
  Scene->MouseMove(nullptr, {1, 1}, false);
  A->Detach();
  Log.clear();
  Scene->MouseMove(nullptr, {21, 1}, false);
  EXPECT_EQ(Taken(), "enter b; move b 1,1; ") << "what has left is not told any more";
}

TEST_F(TSceneTest, PaintsVisibleNodesFromTheFrontToTheBackOfTheList) {
  TDrawing Drawing(10, 10);
  const auto Paint = [&, Canvas = New<Canvas::TWyxCanvas>()] {
    Scene->PaintScene(New<Canvas::TWyxLayer>(&Drawing), Canvas);
  };
  Scene->SetChildren({TRef<INode>(A), TRef<INode>(B)});
  A->AddChild(Box("c"));
  B->OnPaint = [] { throw std::runtime_error("out of paint"); };
  EXPECT_THROW(Paint(), std::runtime_error);
  EXPECT_EQ(Taken(), "paint a; paint c; paint b; ");
  EXPECT_FALSE(Scene->GetDrawingScene());
  A->SetMode({TMode::Active});
  B->OnPaint = nullptr;
  Paint();
  EXPECT_EQ(Taken(), "paint b; ");
}

TEST_F(TSceneTest, IsSeenThroughItsCamera) {
  EXPECT_EQ(Scene->ViewportSpaceToGlobalSpace(nullptr, {3, 4}), (TPointF{3, 4}));
  const auto Camera = New<TCamera>();
  Scene->SetCamera(Camera);
  Scene->GetViewport()->SetScreenSize(200, 100);
  Camera->SetFrustum({-50, -50, 50, 50});
  Camera->SetDisplacement({10, 0});
  EXPECT_EQ(Scene->GlobalSpaceToViewportSpace(nullptr, {60, 50}), (TPointF{200, 100}));
  EXPECT_EQ(Scene->ViewportSpaceToGlobalSpace(nullptr, {0, 50}), (TPointF{-40, 0}));
  EXPECT_EQ(Scene->WorldVectorToViewport(nullptr, {1, 1}), (TPointF{2, 1}));
  Camera->SetFrustumAspectRatio(2);
  EXPECT_EQ(Camera->GetFrustum(), (TRectF{-50, -50, 50, 0}));
  Camera->SetFrustumAspectRatio(0);
  Camera->SetFrustum({0, 0, 0, 10});
  EXPECT_EQ(Camera->GetProjectionMatrix(), TMatrix::Identity());
}

TEST_F(TSceneTest, LayersMoveTheirShapes) {
  Scene->AddChild(Layer);
  Layer->SetChildren({TRef<INode>(A), TRef<INode>(B)});
  B->SetDisplacement({20, 5});
  Layer->SetDisplacement({5, 0});
  EXPECT_EQ(A->GetDisplacement(), (TPointF{5, 0}));
  EXPECT_EQ(Layer->GetRect(), (TRectF{5, 0, 35, 15}));
  EXPECT_EQ(Layer->GetDisplacement(), TPointF{});
}

TEST_F(TSceneTest, SurvivesHandlersThatTakeNodesAway) {
  Scene->AddChild(B);
  B->ConnectMouseMove([&](ISceneNode*, const TPointF&, bool) {});
  Scene->ConnectMouseMove([&](ISceneNode*, const TPointF&, bool) {
    B->Detach();
    B = nullptr;
  });
  Scene->MouseMove(nullptr, {1, 1}, false);
  EXPECT_EQ(Taken(), "");
}

}  // namespace
}  // namespace System::Beacon::Fencing::Scene
