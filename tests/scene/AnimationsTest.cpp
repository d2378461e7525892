// Animations, told by where shapes are after each tick.
#include "scene/System.Beacon.Fencing.Scene.Animations.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <string>
#include <utility>

#include "platform/errors.h"
#include "platform/simulation.h"
#include "platform/threads.h"
#include "scene/System.Beacon.Fencing.Scene.Shapes.h"
#include "scene/System.Beacon.Fencing.Scene.Wyx.h"
#include "support/raised.h"

namespace System::Beacon::Fencing::Scene {
namespace {

constexpr TPointF Start{0, 0}, Goal{80, 0}, Aside{100, 0};

struct TAnimationsTest : testing::Test, TObject {
  TRef<TWyxTimer> Timer = New<TWyxTimer>();
  TRef<IShape> Shape = Watched("a"), Other = Watched("b");
  std::function<void()> OnMove;
  std::string Log;

  TAnimationsTest() { TAnimationsEngine::SetTimer(Timer); }
  ~TAnimationsTest() override { TAnimationsEngine::Finish(); }

  TRef<IShape> Watched(const char* AName) {
    const TRef<IShape> Result = New<TRectangle>();
    Result->SetName(AName);
    Result->ConnectDidMove(Bind<&TAnimationsTest::Moved>(this));
    return Result;
  }
  /// Writes down where a shape is, then does what is to be done on a move.
  void Moved(ISceneNode* ANode) {
    const float X = Supports<IShape>(ANode)->GetDisplacement().X;
    Log += fmt::format("{}{:.4g} ", ANode->GetName(), X);
    if (const auto Then = std::exchange(OnMove, nullptr)) Then();
  }
  static TRef<IAnimation> Add(const TRef<IShape>& AShape,
                              TPointF AFrom,
                              TPointF ATo,
                              bool AReplace) {
    return TDisplacementAnimation::Add(AShape.Get(), AFrom, ATo, 1.0F, 0.5F, 0.5F, AReplace);
  }
  /// Ticks of a quarter second until nothing is left, 20 at most; what has moved meanwhile.
  std::string Run() {
    int Ticks = 0;
    do Log += "| ";
    while (++Ticks < 20 && TAnimationsEngine::Process(0.25F));
    return std::exchange(Log, {});
  }
};

TEST_F(TAnimationsTest, ATimerMovesAShapeUntilItIsThere) {
  const TSimulation Simulation;
  Shape->SetDisplacement({5, 5});
  TDisplacementAnimation::Add(Shape.Get(), Start, {30, 0}, 1.0F, 0.0F, 0.0F, false);
  EXPECT_EQ(Timer->GetInterval(), 30U);
  std::string Places;
  int Ticks = 0;
  for (; TTimer::NextDeadline() != NoDeadline && Ticks < 100; ++Ticks) {
    Sleep(30);
    TTimer::ServeDue();
    if (Ticks % 15 == 0) Places += fmt::format("{:.3f} ", Shape->GetDisplacement().X);
  }
  EXPECT_EQ(Places, "0.000 15.000 30.000 ");
  EXPECT_EQ(Ticks, 31);
  EXPECT_FALSE(Timer->GetEnabled());
}

TEST_F(TAnimationsTest, OverlappingAnimationsAreBlendedOrReplaced) {
  Add(Shape, Start, Goal, false);
  EXPECT_EQ(Run(), "| | a20 | a40 | a60 | a80 ");
  for (const auto& [Replace, Expected] :
       {std::pair{true, "| a100 | | | | "}, std::pair{false, "| a40 | a80 | a100 | | "}}) {
    Shape->SetDisplacement(Start);
    Add(Shape, Start, Goal, true);
    TAnimationsEngine::Process(0.25F);
    TAnimationsEngine::Process(0.25F);
    Log.clear();
    Add(Shape, Aside, Aside, Replace);
    EXPECT_EQ(Run(), Expected) << Replace;
  }
}

TEST_F(TAnimationsTest, AnInvalidatedAnimationJumpsToItsEnd) {
  Add(Shape, Start, Goal, false)->Invalidate();
  EXPECT_EQ(Run(), "| | a80 ");
  TDisplacementAnimation::Add(Shape.Get(), Start, Goal, std::nanf(""), 0, 0, false);
  EXPECT_EQ(Run(), "| a0 | a80 ");
}

TEST_F(TAnimationsTest, HandlersOfAMoveMayDoAnything) {
  struct TCase {
    const char* Name;
    std::function<void()> OnMove;
    const char* Expected;
  };
  const TCase Cases[] = {
      {"replaces",
       [&] { Add(Shape, Aside, Start, true); },
       "| | a20 | a100 | a75 | a50 | a25 | a0 "},
      {"adds", [&] { Add(Other, Aside, Aside, false); }, "| | a20 | a40 b100 | a60 | a80 | | "},
      {"nests", [] { TAnimationsEngine::Process(0.25F); }, "| | a20 | a40 | a60 | a80 "},
      {"finishes", [] { TAnimationsEngine::Finish(); }, "| | a20 "},
      {"lets go", [&] { Shape = nullptr; }, "| | a20 | a40 | a60 | a80 "}};
  for (const TCase& Case : Cases) {
    TAnimationsEngine::SetTimer(Timer);
    Shape->SetDisplacement(Start);
    Log.clear();
    Add(Shape, Start, Goal, false);
    OnMove = Case.OnMove;
    EXPECT_EQ(Run(), Case.Expected) << Case.Name;
  }
}

TEST_F(TAnimationsTest, WithoutATimerAnAnimationWaits) {
  TAnimationsEngine::SetTimer(nullptr);
  EXPECT_EQ(Raised<EGeneralError>([&] { Add(Shape, Start, Goal, false); }),
            "Please assign a timer to animation system (TAnimationsEngine.SetTimer(your timer)).");
  TAnimationsEngine::SetTimer(Timer);
  EXPECT_FALSE(Timer->GetEnabled());
  Add(Other, Start, Goal, false);
  const TRef<TWyxTimer> Next = New<TWyxTimer>();
  TAnimationsEngine::SetTimer(Next);
  EXPECT_TRUE(!Timer->GetEnabled() && Next->GetEnabled() && Next->GetInterval() == 30);
  EXPECT_EQ(Run(), "| | a20 b20 | a40 b40 | a60 b60 | a80 b80 ");
}

/// Lasts two ticks, and knows nothing of what it animates.
class TPlainAnimation final : public TInterfacedObject, public virtual IAnimation {
 public:
  void Prepare() override {}
  float GetWeight() const override { return 1.0F; }
  bool Process(float, float) override { return ++FTicks < 2; }
  void Commit() override {}
  void Invalidate() override {}

 private:
  int FTicks = 0;
};

TEST_F(TAnimationsTest, WhatIsAnimatedIsKeptUntilTheEnd) {
  Other->ConnectDestroying([this](INode*) { Log += "gone "; });
  TAnimationsEngine::AddAnimation(Other->GetObject(), 99, New<TPlainAnimation>(), false);
  Other = nullptr;
  EXPECT_EQ(Run(), "| | gone ");
}

}  // namespace
}  // namespace System::Beacon::Fencing::Scene
