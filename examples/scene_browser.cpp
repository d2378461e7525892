// A small editor: a scene in a window, or with --picture FILE in a picture.
//
// Drag a shape to move it, the background to pan; the wheel zooms about the pointer, the button
// lets everything glide back home. Escape closes the window.
#include <cmath>
#include <cstdio>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "platform/controls/offscreen_control.h"
#include "platform/controls/window.h"
#include "scene/System.Beacon.Fencing.Scene.Animations.h"
#include "scene/System.Beacon.Fencing.Scene.Shapes.h"
#include "scene/System.Beacon.Fencing.Scene.Wyx.h"
#include "scene/scene_host.h"

using namespace System;
using namespace System::Beacon::Fencing;
using namespace System::Beacon::Fencing::Scene;

namespace {

constexpr float Width = 900,
                Height = 600;  // of the window; at first a pixel is a unit of the scene

/// A shape of our own: `Draw` is all that a shape has to bring. The brush is set up, coordinates
/// are the shape's own.
class TButton final : public TRectangle {
 public:
  explicit TButton(std::string AText) : FText(std::move(AText)) {}

 protected:
  void Draw(Canvas::ICanvas& ACanvas) override {
    TRectangle::Draw(ACanvas);
    ACanvas.SetFillColor({0xFFFFFFFF}, 1);
    ACanvas.DrawText(FText, GetRect().GetCentre() - ACanvas.MeasureString(FText) * 0.5F);
  }

 private:
  std::string FText;
};

/// Points joined by lines. What stands at the points is up to classes like this one; here: nothing.
class TLines final : public TConnectedControlPointsShape {
 public:
  TPathNodes GetControlPointNodes() override { return {}; }
  void AddNodeConnections(std::span<const TStringPair>) override {}
  TNodeConnections GetNodeConnections() override { return {}; }
  void AdjustNodes() override {}
};

/// The scene, and what the pointer does to it.
class TBrowser {
 public:
  TBrowser() {
    FCamera->SetFrustum({0, 0, Width, Height});
    FScene->SetCamera(FCamera);
    FScene->ConnectMouseMove([this](ISceneNode*, const TPointF&, bool ADragged) {
      // The scene reports every move; while a shape is held, the shape gets it, too.
      if (ADragged && !FIsShapeHeld)
        FCamera->SetDisplacement(FCamera->GetDisplacement() - FScene->GetMouseDelta());
    });
    AddShapes();
    AddButton();
  }

  const TRef<TScene>& GetScene() const { return FScene; }
  /// The place under the pointer stays where it is.
  void Zoom(const TPointF& APoint, float ASteps) {
    const TPointF Before = FScene->ViewportSpaceToGlobalSpace(nullptr, APoint);
    const float Factor = std::pow(0.9F, ASteps);
    const TRectF Old = FCamera->GetFrustum();
    FCamera->SetFrustum(
        {Old.Left * Factor, Old.Top * Factor, Old.Right * Factor, Old.Bottom * Factor});
    const TPointF After = FScene->ViewportSpaceToGlobalSpace(nullptr, APoint);
    FCamera->SetDisplacement(FCamera->GetDisplacement() + Before - After);
  }

 private:
  void AddShapes() {
    Place(New<TRectangle>(), {200, 180}, 0xFF4C78A8)->SetRect({-80, -50, 80, 50});
    const auto Turned = Place(New<TRectangle>(), {440, 180}, 0xFFF58518);
    Turned->SetRect({-60, -60, 60, 60});
    Turned->SetRotation(0.5F);  // radians, about the shape's origin
    Place(New<TEllipse>(), {680, 180}, 0xFFE45756)->SetRect({-100, -50, 100, 50});
    const auto Circle = Place(New<TEllipse>(), {200, 380}, 0xC072B7B2);
    Circle->SetRect({-100, -70, 100, 70});
    Circle->SetPerfectCircle(true);
    Place(New<TSegment>(), {340, 320}, 0)->SetRect({0, 0, 90, 130});

    // These have no place of their own: their points stand in the scene.
    const auto Star = New<TPolygonShape>();
    for (int I = 0; I < 5; ++I) {
      const float Angle = 2.513F * static_cast<float>(I) - 1.571F;
      Star->AddControlPoint({530 + 85 * std::cos(Angle), 385 + 85 * std::sin(Angle)});
    }
    Place(Star, {}, 0xFF54A24B);
    const auto Lines = New<TLines>();
    for (const TPointF Point : {TPointF{660, 310}, {800, 330}, {740, 400}, {670, 460}, {820, 450}})
      Lines->AddControlPoint(Point);
    for (const auto& [From, To] : {std::pair{0, 2}, {1, 2}, {2, 3}, {2, 4}, {3, 4}})
      Lines->ConnectControlPoints(From, To);
    Place(Lines, {}, 0);
  }

  void AddButton() {
    const auto Button = New<TButton>("Tidy up");
    Button->SetRect({20, 20, 120, 52});
    Button->SetFillColor({0xFF333333});
    Button->ConnectMouseUp([this](ISceneNode*, const TPointF&) { TidyUp(); });
    AddToScene(Button);
  }

  /// Puts a shape somewhere and lets it be dragged.
  template <class TShapeClass>
  TRef<TShapeClass> Place(const TRef<TShapeClass>& AShape, TPointF AHome, std::uint32_t AColor) {
    AShape->SetFillColor({AColor});
    AShape->SetStrokeThickness(2);  // pixels, at every zoom
    AShape->SetDisplacement(AHome);
    AShape->ConnectMouseMove([this](ISceneNode* ANode, const TPointF&, bool ADragged) {
      if (ADragged) Move(*Supports<IShape>(ANode), FScene->GetMouseDelta());
    });
    AddToScene(AShape);
    FHomes.emplace_back(TRef<IShape>(AShape.Get()), AShape->GetRect().GetCentre() + AHome);
    return AShape;
  }

  void AddToScene(const TRef<ISceneNode>& AShape) {
    AShape->ConnectMouseEnter([](ISceneNode* ANode) { ANode->SetOpacity(0.7F); });
    AShape->ConnectMouseExit([](ISceneNode* ANode) { ANode->SetOpacity(1); });
    AShape->ConnectMouseDown([this](ISceneNode* ANode, const TPointF&) {
      FIsShapeHeld = true;
      FScene->MoveChildToBack(FScene->GetChildIndex(ANode));  // the last one is painted topmost
    });
    AShape->ConnectMouseUp([this](ISceneNode*, const TPointF&) { FIsShapeHeld = false; });
    FScene->AddChild(AShape);
  }

  static void Move(IShape& AShape, TPointF ADelta) {
    // A shape without a place of its own moves its points by what it is given.
    const bool HasPlace = AShape.ContainsDisplacement();
    AShape.SetDisplacement(HasPlace ? AShape.GetDisplacement() + ADelta : ADelta);
  }

  void TidyUp() {
    for (const auto& [Shape, Home] : FHomes) {
      const TPointF From = Shape->GetDisplacement();
      if (Shape->ContainsDisplacement())
        TDisplacementAnimation::Add(Shape.Get(), From, Home, 0.6F, 0.1F, 0.1F, true);
      else
        Move(*Shape, Home - Shape->GetCenterInGlobalSpace());
    }
  }

  const TRef<TScene> FScene = New<TScene>();
  const TRef<TCamera> FCamera = New<TCamera>();
  std::vector<std::pair<TRef<IShape>, TPointF>> FHomes;
  bool FIsShapeHeld = false;
};

void SavePicture(TBrowser& ABrowser, const std::string& AFileName) {
  TOffscreenControl Control(Width, Height);
  const TSceneHost Host(Control, ABrowser.GetScene());
  Control.SavePicture(AFileName);
}

void ShowWindow(TBrowser& ABrowser) {
  TWindow Window("Scene browser", static_cast<int>(Width), static_cast<int>(Height));
  const TSceneHost Host(Window, ABrowser.GetScene());
  Window.SetOnWheel([&](TObject*, const TPointF& P, float ASteps) { ABrowser.Zoom(P, ASteps); });
  Window.SetOnKeyDown([&](TObject*, const TKeyPress& AKey) {
    if (AKey.Key == "Escape") Window.Close();
  });
  TAnimationsEngine::SetTimer(New<TWyxTimer>());
  TWindow::Run();
  TAnimationsEngine::Finish();
}

}  // namespace

int main(int AnArgumentCount, char** AnArguments) {
  const std::vector<std::string> Arguments(AnArguments + 1, AnArguments + AnArgumentCount);
  const bool WantsPicture = Arguments.size() == 2 && Arguments[0] == "--picture";
  if (!Arguments.empty() && !WantsPicture) {
    std::fprintf(stderr, "usage: scene_browser [--picture FILE.png]\n");
    return 2;
  }
  try {
    TBrowser Browser;
    if (WantsPicture)
      SavePicture(Browser, Arguments[1]);
    else
      ShowWindow(Browser);
  } catch (const EGeneralError& Error) {
    std::fprintf(stderr, "%s\n", Error.what());
    return 1;
  }
}
