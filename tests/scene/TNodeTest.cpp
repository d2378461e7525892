// The tree of nodes: what is announced, in which order; and beside a model, over a long random use.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "platform/random.h"
#include "scene/System.Beacon.Fencing.Scene.Classes.h"
#include "scene/System.Beacon.Fencing.Scene.Helpers.h"

namespace System::Beacon::Fencing::Scene {
namespace {

std::string NameOf(const INode* ANode) {
  return ANode ? ANode->GetName() : "nil";
}

/// Writes down what it is told, and what its overrides hear.
class TLoggedNode final : public TNode {
 public:
  TLoggedNode(const std::string& AName, std::string* ALog) : FLog(ALog) {
    SetName(AName);
    ConnectParentChange([this](INode* ANode, INode* AOld, INode* ANew) {
      Write("parent " + NameOf(ANode) + " " + NameOf(AOld) + ">" + NameOf(ANew));
    });
    ConnectDestroying([this](INode* ANode) { Write("destroying " + NameOf(ANode)); });
  }

 protected:
  void AddedChild(INode* AChild, bool AFront) override {
    Write((AFront ? "added first " : "added ") + NameOf(AChild) + " to " + GetName());
  }
  void RemovedChild(INode* AChild) override {
    Write("removed " + NameOf(AChild) + " from " + GetName());
  }
  void MovedChildToFront(INode* AChild) override { Write("front " + NameOf(AChild)); }
  void MovedChildToBack(INode* AChild) override { Write("back " + NameOf(AChild)); }
  void ChangedChildrenOrder(const TNodes&) override { Write("order"); }
  void SettedMode(TModeSet AMode) override { Write("mode " + std::to_string(AMode.GetCode())); }

 private:
  void Write(const std::string& AText) const { *FLog += (FLog->empty() ? "" : "; ") + AText; }
  std::string* FLog;
};

struct TNodeTest : testing::Test {
  TRef<TNode> Make(const std::string& AName) { return New<TLoggedNode>(AName, &Log); }
  /// What was written since the last call.
  std::string Taken() {
    std::string Result;
    Result.swap(Log);
    return Result;
  }
  static std::string Children(const TRef<TNode>& ANode) {
    std::string Result;
    for (const std::string& Name : TNodeHelper::GetChildrenNames(*ANode)) Result += Name;
    return Result;
  }

  std::string Log;
  TRef<TNode> A = Make("A"), B = Make("B"), X = Make("x"), Y = Make("y"), Z = Make("z");
};

TEST_F(TNodeTest, TellsAMoveBetweenParentsInTwoSteps) {
  A->AddChild(X);
  EXPECT_EQ(Taken(), "parent x nil>A; added x to A");
  X->SetParent(B.Get());
  EXPECT_EQ(Taken(), "parent x A>nil; removed x from A; added x to B; parent x A>B");
  A->AddFrontChild(X);
  EXPECT_EQ(Taken(), "parent x B>nil; removed x from B; parent x B>A; added first x to A");
  EXPECT_EQ(Children(B), "");
  X->Detach();
  EXPECT_EQ(Taken(), "parent x A>nil; removed x from A");
  EXPECT_EQ(X->GetRootNode(), X.Get());
}

TEST_F(TNodeTest, ChangesTheOrderOfChildrenByNames) {
  A->SetChildren({TRef<INode>(X), TRef<INode>(Y), TRef<INode>(Z)});
  const TNames Many{"Z", "u1", "u2", "u3", "u4", "u5", "X", "x", "u6"};
  const std::vector<std::function<void()>> Changes{
      [&] { A->MoveChildToBack(TNames{"X"}); },
      [&] {
        A->MoveChildToFront(TNames({"Z", "?", "X"}));
      },
      [&] { A->MoveChildToBack(0); },
      [&] { A->MoveChildToFront(3); },
      [&] { A->ReorderChildren({"z"}); },
      [&] { A->ReorderChildren(Many); },
  };
  std::string Orders;
  for (const auto& Change : Changes) {
    Log.clear();
    Change();
    Orders += Children(A) + " " + Log + "\n";
  }
  EXPECT_EQ(Orders, "yzx back x\nzxy front x; front z\nxyz back z\nxyz \nzxy order\nzxy order\n");
}

TEST_F(TNodeTest, KeepsEditAidsOutOfItsChildrenProperty) {
  A->AddChild(X);
  A->AddChild(Y);
  Log.clear();
  X->EnableModes(std::array{TMode::Edit});
  EXPECT_EQ(Taken(), "mode 7");
  X->EnableMode(TMode::Edit);
  EXPECT_EQ(A->GetChildCount(), 2);
  EXPECT_EQ(A->GetProperty("children").As<TNodes>(), TNodes{TRef<INode>(Y)});
  EXPECT_EQ(
      TNodeHelper::FilterNodesWithMode({TRef<INode>(X), TRef<INode>(Y)}, {TMode::Edit}, false),
      TNodes{TRef<INode>(Y)});
}

TEST_F(TNodeTest, DetachesItsChildrenFromTheLastToTheFirstWhenItGoes) {
  A->SetChildren({TRef<INode>(X), TRef<INode>(Y)});
  A->AddChild(B);
  B->AddChild(Z);
  B = nullptr;
  Log.clear();
  A = nullptr;
  EXPECT_EQ(Taken(),
            "destroying A; parent B A>nil; removed B from A; destroying B; parent z B>nil; "
            "removed z from B; parent y A>nil; removed y from A; parent x A>nil; removed x from A");
  EXPECT_EQ(X->GetParent(), nullptr);
}

TEST_F(TNodeTest, AnnouncesNodesAndNames) {
  std::string Seen;
  const TCreatedObjectEvent Created = [&](INode*) { Seen += "new; "; };
  const TNameChangeEvent Renamed = [&](INode*, const std::string& AOld, const std::string& ANew) {
    Seen += AOld + ">" + ANew + "; ";
  };
  TSceneRegistry::Connect(Created);
  TSceneRegistry::Connect(Renamed);
  New<TNode>();
  X->ConnectNameChange(Renamed);
  for (const char* Name : {"X", "X"}) X->SetName(Name);
  for (const TAnyMethod& Each : {TAnyMethod(Created), TAnyMethod(Renamed)})
    TSceneRegistry::Disconnect(Each.GetReceiver());
  X->SetName("x");
  EXPECT_EQ(Seen, "new; x>X; x>X; X>x; ");
}

TEST_F(TNodeTest, FindsNodesByName) {
  A->SetChildren({TRef<INode>(B), TRef<INode>(Z)});
  B->SetChildren({TRef<INode>(X), TRef<INode>(Y)});
  EXPECT_EQ(TNodeHelper::GetNames(TNodeHelper::GetSubnodes(A.Get())),
            (TNames{"A", "B", "x", "y", "z"}));
  EXPECT_EQ(TNodeHelper::FindNodeWithName(A.Get(), "Y", true, false), TRef<INode>(Y));
  EXPECT_EQ(TNodeHelper::FindNodeWithName(A.Get(), "Y", false, false), nullptr);
  EXPECT_EQ(TNodeHelper::GetNames(TNodeHelper::FindNodesWithNames(A.Get(), {"Z", "?", "a", "z"})),
            (TNames{"z", "A", "z"}));
  EXPECT_EQ(TNodeHelper::GetNames(X->GetHierarchyPath()), (TNames{"A", "B", "x"}));
  EXPECT_FALSE(A->RemoveChild(X.Get()));
  EXPECT_TRUE(A->RemoveDescendant(X.Get()));
}

TEST(TModeSet, IsACodeOfBits) {
  const TModeSet Some{TMode::Visible, TMode::Active};
  const TModeSet AllButEdit = TModeSet::CreateWithNotArray(std::array{TMode::Edit});
  EXPECT_EQ(Some.GetCode(), 5U);
  EXPECT_EQ(AllButEdit.GetCode(), ~2U);
  EXPECT_EQ(TModeSet(TSet<TMode>{TMode::Edit}).GetCode(), 2U);
  EXPECT_TRUE(AllButEdit.Contains(Some) && Some.Contains(TModeSet()));
  EXPECT_FALSE(Some.ContainsSomeMode(TModeSet()) || Some.Contains(AllButEdit));
}

// ---------------------------------------------------------------- random use beside a model

/// Parents and orders of children, by number.
struct TTreeModel {
  std::map<int, std::vector<int>> Children;
  std::map<int, int> Parents;

  bool IsBelow(int ANode, int AAncestor) {
    while (ANode != AAncestor && Parents.contains(ANode)) ANode = Parents[ANode];
    return ANode == AAncestor;
  }
  void Leave(int ANode) {
    if (const auto Parent = Parents.find(ANode); Parent != Parents.end()) {
      std::erase(Children[Parent->second], ANode);
      Parents.erase(Parent);
    }
  }
  void Add(int AParent, int ANode, bool AFront) {
    if (IsBelow(AParent, ANode) || (Parents.contains(ANode) && Parents[ANode] == AParent)) return;
    Leave(ANode);
    auto& List = Children[AParent];
    List.insert(AFront ? List.begin() : List.end(), ANode);
    Parents[ANode] = AParent;
  }
};

TEST(NodeModel, AgreesOnALongRandomUse) {
  constexpr int Count = 24;
  TRandomStream Random(3);
  const auto Below = [&Random](int ABound) {
    return static_cast<int>(Random.NextBelow(static_cast<std::uint32_t>(ABound)));
  };
  bool IsOver = false;
  TTreeModel Model;
  std::vector<TRef<TLayer>> Nodes;
  const auto AddNew = [&](int AAt) {
    Nodes[AAt] = New<TLayer>();
    Nodes[AAt]->SetName(std::to_string(AAt));
    // Handlers change the tree, too.
    Nodes[AAt]->ConnectParentChange([&, AAt](INode*, INode*, INode* ANew) {
      if (IsOver || ANew || Below(8) != 0) return;
      const int Other = (AAt + 1) % Count;
      Nodes[Other]->Detach();
      Model.Leave(Other);
    });
  };
  Nodes.resize(Count);
  for (int I = 0; I < Count; ++I) AddNew(I);

  for (int Step = 0; Step < 100'000 && !testing::Test::HasFailure(); ++Step) {
    const int Node = Below(Count), Other = Below(Count);
    auto& List = Model.Children[Node];
    const auto Size = static_cast<int>(List.size());
    const int First = Below(Size + 1), Second = Below(Size + 1);
    switch (Below(8)) {
      case 0:
      case 1: {
        const bool IsFront = Below(2) == 0;
        Model.Add(Node, Other, IsFront);
        IsFront ? Nodes[Node]->AddFrontChild(Nodes[Other]) : Nodes[Node]->AddChild(Nodes[Other]);
        break;
      }
      case 2:
        Model.Add(Node, Other, false);
        Nodes[Other]->SetParent(Nodes[Node].Get());
        break;
      case 3:
        Model.Leave(Other);
        Nodes[Other]->Detach();
        break;
      case 4:
        ASSERT_EQ(Nodes[Node]->SetChildIndex(Size > 0 ? Nodes[List[0]].Get() : nullptr, Second),
                  Second > 0 && Second < Size);
        if (Second < Size) std::rotate(List.begin(), List.begin() + 1, List.begin() + Second + 1);
        break;
      case 5:
        Nodes[Node]->SwapChildren(First, Second);
        if (First < Size && Second < Size) std::swap(List[First], List[Second]);
        break;
      case 6:
        if (First == Size || Second % 2 == 0)
          Nodes[Node]->MoveChildToFront(First);
        else
          Nodes[Node]->MoveChildToFront(TNames{std::to_string(List[First])});
        if (First < Size) std::rotate(List.begin(), List.begin() + First, List.begin() + First + 1);
        break;
      default:
        while (!List.empty()) Model.Leave(List.back());
        Model.Leave(Node);
        Nodes[Node]->Detach();
        Nodes[Node]->RemoveAllChilds();
        AddNew(Node);
    }
    for (int I = 0; I < Count; ++I) {
      const auto Wanted = Model.Children[I];
      ASSERT_EQ(Nodes[I]->GetChildCount(), static_cast<int>(Wanted.size())) << "step " << Step;
      for (std::size_t J = 0; J < Wanted.size(); ++J) {
        ASSERT_EQ(Nodes[I]->GetChildAt(static_cast<int>(J)), TRef<INode>(Nodes[Wanted[J]]));
        ASSERT_EQ(Nodes[I]->GetChildIndex(Nodes[Wanted[J]].Get()), static_cast<int>(J));
        ASSERT_EQ(Nodes[I]->GetSceneChildIndex(Nodes[Wanted[J]].Get()), static_cast<int>(J));
        ASSERT_EQ(Nodes[Wanted[J]]->GetParent(), Nodes[I].Get());
      }
    }
  }
  IsOver = true;
  Nodes.clear();
}

}  // namespace
}  // namespace System::Beacon::Fencing::Scene
