// Controls: what is painted again, and what their handlers are told.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <utility>

#include "platform/controls/offscreen_control.h"
#include "support/raised.h"

namespace System {
namespace {

std::string TextOf(const TRectF& R) {
  return fmt::format("{},{},{},{}; ", R.Left, R.Top, R.Right, R.Bottom);
}

TEST(Damage, IsAFewRectanglesThatHoldAll) {
  constexpr float Infinite = std::numeric_limits<float>::infinity();
  for (const auto& [Added, Rects] :
       {std::pair<std::vector<TRectF>, const char*>{{{0, 0, 2, 2}, {9, 9, 9, 10}}, "0,0,2,2; "},
        {{{0, 0, 2, 2}, {1, 0, 3, 2}}, "0,0,3,2; "},
        {{{0, 0, 2, 2}, {50, 50, 52, 52}}, "0,0,2,2; 50,50,52,52; "},
        {{{0, 0, 2, 2}, {4, 0, 6, 2}, {2, 0, 4, 2}}, "0,0,6,2; "},
        {{{0, 0, Infinite, 2}}, ""}}) {
    TDamage Damage;
    for (const TRectF& Rect : Added) Damage.Add(Rect);
    std::string Text;
    for (const TRectF& Rect : Damage.GetRects()) Text += TextOf(Rect);
    EXPECT_EQ(Text, Rects);
  }
  TDamage Many;
  for (int I = 0; I < 100; ++I) {
    const auto At = static_cast<float>(I * 10);
    Many.Add({At, At, At + 1, At + 1});
  }
  TRectF Bounds;
  for (const TRectF& Rect : Many.GetRects()) Bounds = UnionRect(Bounds, Rect);
  EXPECT_EQ(Many.GetRects().size(), TDamage::MaxCount);
  EXPECT_EQ(Bounds, (TRectF{0, 0, 991, 991}));
}

struct TControlTest : testing::Test {
  TControlTest() {
    Control.SetOnPaint([this](TObject*, TDrawing* ADrawing, const TRectF& ARect) {
      Log += TextOf(ADrawing->GetClip());
      TPath Path;
      Path.AddRect(ARect);
      ADrawing->SetFill({.Color = Color});
      ADrawing->Fill(Path);
    });
  }
  std::string Updated() {
    Control.Update();
    return std::exchange(Log, "");
  }
  std::uint32_t PixelAt(std::size_t AnIndex) { return Control.GetDrawing().GetPixels()[AnIndex]; }

  TOffscreenControl Control{30, 20, 2};
  TAlphaColor Color{0xFF112233};
  std::string Log;
};

TEST_F(TControlTest, PaintsOnlyWhatIsDamaged) {
  EXPECT_EQ(Control.GetLocalRect(), (TRectF{0, 0, 30, 20}));
  EXPECT_EQ(Updated(), "0,0,60,40; ");
  EXPECT_EQ(Updated(), "");
  Color = {0xFF445566};
  Control.RepaintRect({1.2F, -5, 3.1F, 1});
  EXPECT_EQ(Updated(), "2,0,7,2; ");
  EXPECT_EQ(PixelAt(2), 0xFF445566);
  EXPECT_EQ(PixelAt(7), 0xFF112233) << "what is not damaged stays";
  Control.RepaintRect({40, 0, 50, 10});
  EXPECT_EQ(Updated(), "");
  Control.SetOnPaint({});
  Control.SetBackground({0xFF778899});
  Control.Update();
  EXPECT_EQ(PixelAt(0), 0xFF778899);
}

TEST_F(TControlTest, KeepsTheDamageThatAHandlerLeaves) {
  Updated();
  Control.SetOnPaint([this](TObject*, TDrawing*, const TRectF&) {
    Control.RepaintRect({0, 0, 1, 1});
    throw std::runtime_error("out of paint");
  });
  Control.RepaintRect({20, 10, 21, 11});
  EXPECT_THROW(Control.Update(), std::runtime_error);
  Control.SetOnPaint(
      [this](TObject*, TDrawing* ADrawing, const TRectF&) { Log += TextOf(ADrawing->GetClip()); });
  EXPECT_EQ(Updated(), "0,0,2,2; 40,20,42,22; ");
}

TEST_F(TControlTest, StartsANewPictureWhenItIsResized) {
  Updated();
  Control.SetOnResize([this](TObject*) { Log += "resized "; });
  Control.Resize(30, 20);
  Control.Resize(5, 4);
  EXPECT_EQ(Updated(), "resized 0,0,10,8; ");
  EXPECT_EQ(Raised<EGeneralError>([&] { Control.Resize(-1, 1e9F); }),
            "A drawing of 0 x 32768 pixels is not possible; sides are from 1 to 32767 pixels");
  EXPECT_EQ(Control.GetLocalRect(), (TRectF{0, 0, 5, 4}));
}

TEST_F(TControlTest, TellsWhetherThePointerIsDragged) {
  Control.SetOnPointerDown(
      [&](TObject*, const TPointF& P) { Log += fmt::format("down {} ", P.X); });
  Control.SetOnPointerUp([&](TObject*, const TPointF& P) { Log += fmt::format("up {} ", P.X); });
  Control.SetOnPointerMove([&](TObject*, const TPointF& P, bool ADragged) {
    Log += fmt::format("{} {} ", ADragged ? "drag" : "move", P.X);
    Control.SetOnPointerMove({});  // a handler may take itself away
  });
  const auto Move = Control.GetOnPointerMove();
  Control.PointerMove({1, 0});
  Control.PointerDown({2, 0});
  Control.SetOnPointerMove(Move);
  Control.PointerMove({3, 0});
  Control.PointerUp({4, 0});
  Control.SetOnPointerMove(Move);
  Control.PointerMove({5, 0});
  EXPECT_EQ(Log, "move 1 down 2 drag 3 up 4 move 5 ");
}

}  // namespace
}  // namespace System
