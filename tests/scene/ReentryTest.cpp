// Handlers that change the tree while it changes, or raise.
#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

#include "scene/System.Beacon.Fencing.Scene.Shapes.h"

namespace System::Beacon::Fencing::Scene {
namespace {

/// A scene with two layers and a square in the first one.
class ReentryTest : public testing::Test {
 protected:
  ReentryTest() {
    FScene->SetChildren({TRef<INode>(FLeft), TRef<INode>(FRight)});
    FSquare->SetRect({0, 0, 10, 10});
    FLeft->AddChild(FSquare);
  }

  /// What a parent says of its children agrees with what they say of it.
  void ExpectWhole() {
    for (TSceneNode* Parent : std::vector<TSceneNode*>{FScene.Get(), FLeft.Get(), FRight.Get()}) {
      EXPECT_EQ(Parent->GetSceneChildCount(), Parent->GetChildCount());
      for (std::int32_t I = 0; I < Parent->GetChildCount(); ++I) {
        const TRef<INode> Child = Parent->GetChildAt(I);
        EXPECT_EQ(Child->GetParent(), Parent);
        EXPECT_EQ(Parent->GetSceneChildIndex(Child.Get()), I);
        EXPECT_EQ(Supports<ISceneNode>(Child.Get())->GetSceneParent(), Parent);
        EXPECT_EQ(Supports<ISceneNode>(Child.Get())->GetScene(), FScene.Get());
      }
    }
    if (FSquare && !FSquare->GetParent()) {
      EXPECT_EQ(FSquare->GetSceneParent(), nullptr);
    }
  }
  ISceneNode* Found() { return FScene->GetSceneNodeUnderGlobalPoint({5, 5}); }

  TRef<TScene> FScene = New<TScene>();
  TRef<TLayer> FLeft = New<TLayer>();
  TRef<TLayer> FRight = New<TLayer>();
  TRef<TRectangle> FSquare = New<TRectangle>();
};

TEST_F(ReentryTest, RaisingHandlersLeaveTheTreeWhole) {
  FSquare->ConnectParentChange([](INode*, INode*, INode*) { throw std::runtime_error("no"); });
  EXPECT_THROW(FLeft->RemoveChild(FSquare.Get()), std::runtime_error);
  ExpectWhole();
  EXPECT_EQ(Found(), nullptr);
  EXPECT_THROW(FRight->AddChild(FSquare), std::runtime_error);
  ExpectWhole();
  EXPECT_THROW(FRight->SetChildren({TRef<INode>(New<TRectangle>()), TRef<INode>(FSquare)}),
               std::runtime_error);
  EXPECT_FALSE(FRight->GetLoadingChildren());
  ExpectWhole();
  FSquare = nullptr;
  FScene->GetRepaintRect(true, 5);
}

TEST_F(ReentryTest, NodesStayWhereHandlersPutThem) {
  bool IsDone = false;
  FSquare->ConnectParentChange([&](INode* ANode, INode*, INode* ANew) {
    if (!ANew && !std::exchange(IsDone, true)) FLeft->AddChild(TRef<INode>(ANode));
  });
  FSquare->SetParent(FRight.Get());
  EXPECT_EQ(FSquare->GetParent(), FLeft.Get());
  ExpectWhole();
  EXPECT_EQ(Found(), FSquare.Get());
  IsDone = false;
  FRight->AddChild(FSquare);
  EXPECT_EQ(FSquare->GetParent(), FLeft.Get());
  ExpectWhole();
  FLeft->RemoveChild(FSquare.Get());
  ExpectWhole();
}

TEST_F(ReentryTest, NodesThatHandlersTakeAwayStayAway) {
  FSquare = New<TRectangle>();
  FSquare->ConnectSceneChange([](ISceneNode* ANode, IScene*, IScene* ANew) {
    if (ANew) ANode->Detach();
  });
  FSquare->SetParent(FRight.Get());
  EXPECT_EQ(FSquare->GetParent(), nullptr);
  ExpectWhole();
}

TEST_F(ReentryTest, NoRingIsMade) {
  for (const bool IsAdded : {false, true}) {
    const TRef<TLayer> Below = New<TLayer>();
    const TRef<TLayer> Moved = New<TLayer>();
    FLeft->AddChild(Moved);
    Moved->ConnectParentChange([&](INode* ANode, INode*, INode* ANew) {
      if (!ANew) ANode->AddChild(Below);
    });
    if (IsAdded)
      Below->AddChild(Moved);
    else
      Moved->SetParent(Below.Get());
    EXPECT_EQ(Moved->GetRootNode(), Moved.Get());
    EXPECT_EQ(Below->GetParent(), Moved.Get());
    EXPECT_EQ(Below->GetChildCount(), 0);
    Moved->RemoveAllChilds();
  }
}

TEST_F(ReentryTest, ScenesMayGoWhileTheirNodesEnterThem) {
  FSquare = New<TRectangle>();
  const TRef<TRectangle> Inner = New<TRectangle>();
  FSquare->AddChild(Inner);
  const TRef<TLayer> Layer = FLeft;
  FSquare->ConnectSceneChange([&](ISceneNode*, IScene*, IScene* ANew) {
    if (ANew) FScene = nullptr;
  });
  Layer->AddChild(FSquare);
  EXPECT_EQ(Inner->GetScene(), nullptr);
  FScene = New<TScene>();
}

}  // namespace
}  // namespace System::Beacon::Fencing::Scene
