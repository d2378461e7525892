// Scenes on controls.
#include <gtest/gtest.h>

#include <memory>
#include <random>

#include "platform/controls/offscreen_control.h"
#include "scene/scene_host.h"
#include "support/pictures.h"
#include "support/window_scene.h"

namespace System::Beacon::Fencing::Scene {
namespace {

TEST(SceneHost, PicturesOfPartsAddUpToTheWholePicture) {
  for (const float Scale : {1.0F, 1.5F}) {
    TWindowScene Scene;
    TOffscreenControl Parts(300, 200, Scale);
    const TSceneHost Host(Parts, Scene.Scene);
    std::mt19937 Random(7);
    const auto Number = [&Random](float AFrom, float ATo) {
      return std::uniform_real_distribution<float>(AFrom, ATo)(Random);
    };
    for (int Step = 0; Step < 200; ++Step) {
      TShapeBase& Shape = *Scene.Shapes[Random() % Scene.Shapes.size()];
      switch (Random() % 4) {
        case 0:
          Shape.SetDisplacement({Number(-50, 50), Number(-40, 40)});
          break;
        case 1:
          Shape.SetRotation(Number(0, 6));
          break;
        case 2:
          Shape.SetScaling({Number(0.2F, 2), Number(0.2F, 2)});
          break;
        default:
          Shape.SetFillColor({static_cast<std::uint32_t>(0x80000000U | Random())});
          break;
      }
      if (Step % 3 != 0) Parts.Update();
      if (Step % 20 != 0) continue;
      Parts.Update();
      TOffscreenControl Whole(300, 200, Scale);
      Whole.SetOnPaint(Parts.GetOnPaint());
      Whole.Update();
      ASSERT_EQ(CountDifferent(Parts.GetDrawing(), Whole.GetDrawing()), 0) << "step " << Step;
    }
  }
}

TEST(SceneHost, KeepsSizesAndPlacesWhenTheControlIsResized) {
  TWindowScene Scene;
  TOffscreenControl Control(300, 200);
  const TSceneHost Host(Control, Scene.Scene);
  const auto PixelOf = [&Scene](TPointF APoint) {
    return Scene.Scene->GlobalSpaceToViewportSpace(nullptr, APoint);
  };
  EXPECT_EQ(PixelOf({10, 10}), (TPointF{30, 30})) << "not stretched";
  Control.Resize(600, 100);
  EXPECT_EQ(PixelOf({10, 10}), (TPointF{30, 30}));
  EXPECT_EQ(PixelOf({200, 0}), (TPointF{600, 0}));
}

TEST(SceneHost, AndItsControlMayGoInAnyOrder) {
  TWindowScene Scene;
  auto Control = std::make_unique<TOffscreenControl>(30.0F, 20.0F);
  auto Host = std::make_unique<TSceneHost>(*Control, Scene.Scene);
  Control.reset();
  Scene.Shapes[0]->SetDisplacement({1, 1});
  Host.reset();
  EXPECT_FALSE(Scene.Scene->GetInvalidateRegion());

  Control = std::make_unique<TOffscreenControl>(30.0F, 20.0F);
  Host = std::make_unique<TSceneHost>(*Control, Scene.Scene);
  Control->SetOnPointerUp([](TObject*, const TPointF&) {});
  Host.reset();
  Control->Update();
  EXPECT_FALSE(Control->GetOnPaint());
  EXPECT_TRUE(Control->GetOnPointerUp()) << "given to another since";
}

}  // namespace
}  // namespace System::Beacon::Fencing::Scene
