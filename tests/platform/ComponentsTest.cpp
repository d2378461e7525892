#include "platform/components.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "support/raised.h"

namespace System {
namespace {

/// Writes down what it hears, under its name.
class TTeller : public TComponent {
 public:
  TTeller(TComponent* AOwner, const std::string& AName, std::string& ALog)
      : TComponent(AOwner), FLog(ALog) {
    SetName(AName);
  }
  ~TTeller() override { FLog += "~" + GetName() + " "; }

 protected:
  void Loaded() override {
    TComponent::Loaded();
    FLog += GetName() + " loaded ";
  }
  void Notification(TComponent* AComponent, TOperation AOperation) override {
    FLog += fmt::format(
        "{}{}{} ", GetName(), AOperation == TOperation::Insert ? "+" : "-", AComponent->GetName());
  }

 private:
  std::string& FLog;
};

TEST(TComponent, AnOwnerFreesItsComponentsLastToFirst) {
  std::string Log;
  {
    TTeller Owner(nullptr, "owner", Log);
    new TTeller(&Owner, "a", Log);
    const TComponent* const B = new TTeller(&Owner, "b", Log);
    auto* const C = new TTeller(&Owner, "c", Log);
    new TTeller(C, "d", Log);
    delete B;
    EXPECT_EQ(Owner.GetComponentCount(), 2);
    EXPECT_EQ(Owner.GetComponent(1), C);
    EXPECT_EQ(Log, "owner+ owner+ owner+ c+ ~b owner-b ");
    Log.clear();
  }
  EXPECT_EQ(Log, "~owner ~c ~d ~a ");
}

TEST(TComponent, BothSidesOfAFreeNotificationHearOfTheOther) {
  std::string Log;
  TTeller Watcher(nullptr, "watcher", Log), Bystander(nullptr, "bystander", Log);
  {
    TTeller Watched(nullptr, "watched", Log);
    Watched.FreeNotification(&Watcher);
    Watched.FreeNotification(&Watcher);
    Watched.FreeNotification(&Watched);
    Watched.FreeNotification(&Bystander);
    Watched.RemoveFreeNotification(&Bystander);
    {
      TTeller Brief(nullptr, "brief", Log);
      Watched.FreeNotification(&Brief);
    }
    EXPECT_EQ(Log, "~brief watched-brief ");
    Log.clear();
  }
  EXPECT_EQ(Log, "~watched watcher-watched ");
}

TEST(TComponent, ComponentsOfOneOwnerShareItsDesignStateAndNoName) {
  TComponent Owner(nullptr);
  Owner.SetDesigning(true);
  auto* const First = new TComponent(&Owner);
  EXPECT_TRUE(First->GetComponentState().Contains(TComponentStateFlag::Designing));
  auto* const Second = new TComponent(&Owner);
  First->SetName("Fence");
  EXPECT_EQ(Raised<EComponentError>([&] { Second->SetName("fENCE"); }),
            "A component named fENCE already exists");
  EXPECT_EQ(Second->GetName(), "");
  First->SetName("FENCE");
  Second->SetName("Fence 2");
  First->SetName("");
  Second->SetName("");
}

TEST(TComponent, LoadedFollowsLoadingOnceAndNotAFailedOne) {
  std::string Log;
  TTeller Component(nullptr, "it", Log);
  Component.BeginLoading();
  EXPECT_TRUE(Component.GetComponentState().Contains(TComponentStateFlag::Loading));
  for (int I = 0; I < 2; ++I) {
    Component.EndLoading();
    EXPECT_FALSE(Component.GetComponentState().Contains(TComponentStateFlag::Loading));
    EXPECT_EQ(Log, "it loaded ");
  }
  Component.BeginLoading();
  Component.CancelLoading();
  Component.EndLoading();
  EXPECT_EQ(Log, "it loaded ");
}

// ---------------------------------------------------------------- collections

class TNumber : public TCollectionItem {
 public:
  explicit TNumber(TCollection* ACollection) : TCollectionItem(ACollection) {
    if (FailsToBeMade) RaiseComponentError("not made");
  }
  void SetValue(int AValue) {
    Value = AValue;
    Changed(false);
  }
  static inline bool FailsToBeMade = false;
  int Value = 0;

 protected:
  void AssignTo(TPersistent* ADest) override {
    auto* const Dest = dynamic_cast<TNumber*>(ADest);
    if (!Dest) RaiseAssignError(ADest);
    Dest->SetValue(Value);
  }
};

/// Writes down its updates: "all" or the place of one item.
class TNumbers final : public TOwnedCollection {
 public:
  TNumbers() : TOwnedCollection(nullptr, &MakeItem<TNumber>) {}

  void Fill(std::initializer_list<int> AValues) {
    for (const int Value : AValues) static_cast<TNumber*>(Add())->SetValue(Value);
    Log.clear();
  }
  std::string GetValues() const {
    std::string Result;
    for (int I = 0; I < GetCount(); ++I)
      Result += fmt::format("{} ", static_cast<TNumber*>(GetItem(I))->Value);
    return Result;
  }
  std::string Log;

 protected:
  void Update(TCollectionItem* AItem) override {
    Log += AItem ? fmt::format("{} ", AItem->GetIndex()) : "all ";
  }
};

TEST(TCollection, ItemsAreAddedMovedAndDeletedWithOneUpdateEach) {
  struct TCase {
    const char* Name;
    void (*Change)(TNumbers&);
    const char *Values, *Updates;
  };
  const std::vector<TCase> Cases{
      {"add", [](TNumbers& A) { A.Add(); }, "1 2 3 0 ", "all "},
      {"insert", [](TNumbers& A) { A.Insert(1); }, "1 0 2 3 ", "all "},
      {"delete", [](TNumbers& A) { A.Delete(1); }, "1 3 ", "all "},
      {"clear", [](TNumbers& A) { A.Clear(); }, "", "all "},
      {"move up", [](TNumbers& A) { A.GetItem(2)->SetIndex(0); }, "3 1 2 ", "all "},
      {"move down", [](TNumbers& A) { A.GetItem(0)->SetIndex(2); }, "2 3 1 ", "all "},
      {"stay", [](TNumbers& A) { A.GetItem(1)->SetIndex(1); }, "1 2 3 ", ""},
      {"set item", [](TNumbers& A) { A.SetItem(2, A.GetItem(0)); }, "1 2 1 ", "2 "},
      {"display name", [](TNumbers& A) { A.GetItem(1)->SetDisplayName("x"); }, "1 2 3 ", "1 "},
      {"held back",
       [](TNumbers& A) {
         A.BeginUpdate();
         A.BeginUpdate();
         A.Add();
         A.EndUpdate();
         static_cast<TNumber*>(A.GetItem(0))->SetValue(9);
         EXPECT_EQ(A.Log, "");
         A.EndUpdate();
       },
       "9 2 3 0 ",
       "all "},
  };
  for (const TCase& C : Cases) {
    TNumbers Numbers;
    Numbers.Fill({1, 2, 3});
    C.Change(Numbers);
    EXPECT_EQ(Numbers.GetValues(), C.Values) << C.Name;
    EXPECT_EQ(Numbers.Log, C.Updates) << C.Name;
  }
}

TEST(TCollection, RefusalsLeaveItAsItWas) {
  TNumbers Numbers;
  Numbers.Fill({1, 2});
  const auto Refusal = [&](auto ACall) { return Raised<EComponentError>(ACall); };
  const auto OutOfBounds = [](int AIndex) {
    return fmt::format("List index out of bounds ({}) in TOwnedCollection", AIndex);
  };
  EXPECT_EQ(Refusal([&] { Numbers.GetItem(2); }), OutOfBounds(2));
  EXPECT_EQ(Refusal([&] { Numbers.Delete(-1); }), OutOfBounds(-1));
  EXPECT_EQ(Refusal([&] { Numbers.Insert(3); }), OutOfBounds(3));
  EXPECT_EQ(Refusal([&] { Numbers.GetItem(0)->SetIndex(2); }), OutOfBounds(2));
  TNumber::FailsToBeMade = true;
  EXPECT_EQ(Refusal([&] { Numbers.Add(); }), "not made");
  TNumber::FailsToBeMade = false;
  EXPECT_EQ(Numbers.GetValues(), "1 2 ");
  EXPECT_EQ(Numbers.Log, "");
}

TEST(TCollection, AssignTakesCopiesWithOneUpdate) {
  TNumbers Source, Dest;
  Source.Fill({4, 5});
  Dest.Fill({1, 2, 3});
  const int LastID = Dest.GetItem(2)->GetID();
  Dest.Assign(&Source);
  EXPECT_EQ(Dest.GetValues(), "4 5 ");
  EXPECT_EQ(Dest.Log, "all ");
  EXPECT_GT(Dest.GetItem(0)->GetID(), LastID);
  Dest.Assign(&Dest);
  EXPECT_EQ(Dest.GetValues(), "4 5 ");
}

TEST(TPersistent, AssigningWhatIsNotUnderstoodIsRefused) {
  TNumbers Numbers;
  Numbers.Fill({1});
  TComponent Component(nullptr);
  const auto Refusal = [](TPersistent& ADest, TPersistent* ASource) {
    return Raised<EComponentError>([&] { ADest.Assign(ASource); });
  };
  EXPECT_EQ(Refusal(Component, nullptr), "Cannot assign a nil to a TComponent");
  EXPECT_EQ(Refusal(Component, Numbers.GetItem(0)),
            "Cannot assign a TCollectionItem to a TComponent");
  EXPECT_EQ(Refusal(Numbers, &Component), "Cannot assign a TComponent to a TOwnedCollection");
}

}  // namespace
}  // namespace System
