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

#include "scene/System.Beacon.Fencing.Scene.Classes.h"
#include "support/recording_canvas.h"

namespace System::Beacon::Fencing::Scene {
namespace {

/// A rectangle that is drawn as its name, and writes down what the pointer does.
class TBox final : public TLocationShape {
 public:
  TBox(const std::string& AName, const TRectF& ARect, std::string* ALog)
      : FRect(ARect), FLog(ALog) {
    SetName(AName);
  }
  std::function<void()> OnPaint;

  void SetRect(const TRectF& R) override { FRect = R; }
  TRectF GetRect() const override { return FRect; }
  void SetEnableFill(bool) override {}
  bool GetEnableFill() const override { return true; }

  bool ContainsLocalPoint(TPointF P) const override { return FRect.Contains(P); }
  void MouseEnter() override { Write("enter"); }
  void MouseExit() override { Write("exit"); }
  void MouseMove(IViewport*, TPointF P, bool D) override { Write(D ? "drag" : "move", P); }
  void MouseDown(IViewport*, TPointF P) override { Write("down", P); }
  void MouseUp(IViewport*, TPointF P) override { Write("up", P); }

 protected:
  void DoPaint(Canvas::ICanvas& ACanvas, const TMatrix& AMatrix) override {
    ACanvas.DrawText(GetName(), {});
    if (OnPaint) OnPaint();
    TLocationShape::DoPaint(ACanvas, AMatrix);
  }

 private:
  void Write(const char* AWhat) { *FLog += fmt::format("{} {}; ", AWhat, GetName()); }
  void Write(const char* AWhat, TPointF P) {
    *FLog += fmt::format("{} {} {},{}; ", AWhat, GetName(), P.X, P.Y);
  }

  TRectF FRect;
  std::string* FLog;
};

/// Writes down what is to be drawn anew.
class TLoggedRegion final : public TInterfacedObject, public virtual Canvas::IInvalidateRegion {
 public:
  explicit TLoggedRegion(std::string* ALog) : FLog(ALog) {}
  void InvalidateRect(const TRectF& R) override {
    *FLog += fmt::format("{},{},{},{}; ", R.Left, R.Top, R.Right, R.Bottom);
  }
  void Invalidate() override { *FLog += "all; "; }

 private:
  std::string* FLog;
};

struct TSceneTest : testing::Test {
  TRef<TBox> Box(const std::string& AName, const TRectF& ARect = {0, 0, 10, 10}) {
    return New<TBox>(AName, ARect, &Log);
  }
  std::string Taken() {
    std::string Result;
    Result.swap(Log);
    return Result;
  }
  std::string Hit(TPointF APoint) {
    const ISceneNode* const Node = Scene->GetSceneNodeUnderGlobalPoint(APoint);
    return Node ? Node->GetName() : "";
  }
  void Watch() { Scene->SetInvalidator(New<TLoggedRegion>(&Log)); }

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
  Watch();
  Layer->AddChild(A);
  EXPECT_EQ(Taken(), "-5,-5,15,15; -5,-5,15,15; -5,-5,15,15; ");
  A->AddChild(B);
  B->SetDisplacement({50, 0});
  Log.clear();
  struct TCase {
    std::function<void()> Do;
    const char* Log;
  };
  const float NotFinite = std::numeric_limits<float>::quiet_NaN();
  for (const TCase& C : {
           TCase{[&] {
                   A->SetDisplacement({100, 0});
                 },
                 "-5,-5,165,15; "},
           TCase{[&] {
                   A->SetDisplacement({100, 0});
                 },
                 ""},
           TCase{[&] {
                   A->SetDisplacement({NotFinite, 0});
                 },
                 ""},
           TCase{[&] { A->SetRotation(0); }, "95,-5,165,15; "},
           TCase{[&] { A->SetOpacity(0.5F); }, "95,-5,115,15; "},
           TCase{[&] {
                   A->RepaintRect({2, 2, 30, 4});
                 },
                 "102,2,110,4; "},
           TCase{[&] { A->SetMode({TMode::Visible}); }, "95,-5,115,15; "},
           TCase{[&] { Layer->MoveChildToFront(0); }, "95,-5,165,15; "},
           TCase{[&] { Layer->ReorderChildren({"a"}); }, "all; "},
           TCase{[&] { Scene->SetCamera(New<TCamera>()); }, "all; "},
           TCase{[&] { Scene->GetCamera()->SetRotation(1); }, "all; "},
       }) {
    C.Do();
    EXPECT_EQ(Taken(), C.Log);
  }
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
  A->SetScaling({0, 1});
  EXPECT_EQ(Hit({0, 5}), "") << "a node without extent is never hit, nor its children";
}

TEST_F(TSceneTest, TakesAPointThroughTheParentsMatrixFirst) {
  Scene->AddChild(A);
  A->AddChild(B);
  A->SetDisplacement({100, 0});
  B->SetRotation(std::numbers::pi_v<float> / 2);
  const TPointF Origin = TPointF{} * B->GetGlobalMatrix();
  EXPECT_NEAR(Origin.X, 0, 1E-4);
  EXPECT_NEAR(Origin.Y, 100, 1E-4);
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
  const auto Canvas = New<Canvas::TRecordingCanvas>();
  const TRef<TBox> C = Box("c");
  Scene->SetChildren({TRef<INode>(A), TRef<INode>(B)});
  A->AddChild(C);
  Scene->PaintScene(nullptr, Canvas);
  EXPECT_EQ(std::exchange(Canvas->Log, ""), "begin a c b end ");
  A->SetMode({TMode::Active});
  B->OnPaint = [] { throw std::runtime_error("out of paint"); };
  EXPECT_THROW(Scene->PaintScene(nullptr, Canvas), std::runtime_error);
  EXPECT_EQ(Canvas->Log, "begin b end ");
  EXPECT_FALSE(Scene->GetDrawingScene());
}

TEST_F(TSceneTest, IsSeenThroughItsCamera) {
  EXPECT_EQ(Scene->ViewportSpaceToGlobalSpace(nullptr, {3, 4}), (TPointF{3, 4}));
  const auto Camera = New<TCamera>();
  Scene->SetCamera(Camera);
  Scene->GetViewport()->SetScreenSize(200, 100);
  Camera->SetFrustum({-50, -50, 50, 50});
  struct TCase {
    TPointF Camera, Global, Pixel;
  };
  for (const TCase& C : {TCase{{0, 0}, {-50, -50}, {0, 0}},
                         TCase{{0, 0}, {50, 50}, {200, 100}},
                         TCase{{10, 0}, {10, 0}, {100, 50}}}) {
    Camera->SetDisplacement(C.Camera);
    EXPECT_EQ(Scene->GlobalSpaceToViewportSpace(nullptr, C.Global), C.Pixel);
    EXPECT_EQ(Scene->ViewportSpaceToGlobalSpace(nullptr, C.Pixel), C.Global);
  }
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
  A->ConnectParentChange([&](INode* ANode, INode*, INode* ANew) {
    if (ANew) ANode->Detach();
  });
  Scene->AddChild(A);
  EXPECT_EQ(Scene->GetChildCount(), 0);
  EXPECT_EQ(Scene->GetSceneChildCount(), 0);
  Scene->SetChildren({TRef<INode>(B)});
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
