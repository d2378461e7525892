// The list of handlers against a model that is written as plainly as can be, and the rules that are
// easy to lose.
#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/random.h"
#include "scene/System.Beacon.Fencing.Scene.Events.h"

namespace System::Beacon::Fencing::Scene {
namespace {

constexpr TEventMask Bit = 0x20;

/// Writes its name when it is called, then does what the test wants.
struct TListener : TObject {
  explicit TListener(char AName, std::string* ALog) : Name(AName), Log(ALog) {}
  void Hear() {
    *Log += Name;
    if (OnHear) OnHear();
  }
  void HearToo() { *Log += static_cast<char>(Name - 'a' + 'A'); }

  char Name;
  std::string* Log;
  std::function<void()> OnHear;
};

struct TEventListTest : testing::Test {
  void Add(TListener& AListener, std::uint16_t AnId = 1) {
    List.AddEvent(Bit, AnId, Bind<&TListener::Hear>(&AListener));
  }
  void Remove(TListener& AListener, std::uint16_t AnId = 1) {
    List.RemoveEvent(Bit, AnId, Bind<&TListener::Hear>(&AListener));
  }
  std::string Emit(int AnId = 1) {
    Log.clear();
    TEventCall0::Call(List, Bit, AnId);
    return Log;
  }
  std::vector<int> Ids() const { return {List.GetIdList().begin(), List.GetIdList().end()}; }

  TEventList List;
  std::string Log;
  TListener A{'a', &Log}, B{'b', &Log}, C{'c', &Log}, D{'d', &Log};
};

TEST_F(TEventListTest, KeepsTheHandlersOfAKindTogetherInTheOrderOfTheirAdding) {
  Add(A, 5);
  Add(B, 7);
  Add(C, 5);
  Add(A, 5);

  EXPECT_EQ(Ids(), (std::vector<int>{5, 5, 5, 7}));
  EXPECT_EQ(Emit(5), "aca");
  EXPECT_EQ(sizeof(TEventList), 16U);
}

TEST_F(TEventListTest, ClearsTheFilterBitOfAKindThatNobodyListensTo) {
  Add(A, 1);
  List.RemoveEvent(&A);
  EXPECT_TRUE(List.IsEnabledMask(Bit)) << "only an emission looks";
  EXPECT_EQ(Emit(), "");
  EXPECT_FALSE(List.IsEnabledMask(Bit));
  Add(B);
  EXPECT_EQ(Emit(), "b");
  Remove(B);
  EXPECT_FALSE(List.IsEnabledMask(Bit));
}

TEST_F(TEventListTest, RemovesTheFirstEqualHandlerWhateverItsKind) {
  Add(A, 1);
  Add(A, 2);
  Remove(A, 2);
  EXPECT_EQ(Ids(), (std::vector<int>{2}));
  List.AddEvent(Bit, 2, Bind<&TListener::HearToo>(&A));
  Remove(A, 2);
  EXPECT_EQ(Emit(2), "A") << "code and receiver must both be equal";
}

TEST_F(TEventListTest, DoesNotCallWhatWasRemovedMeanwhile) {
  for (TListener* Each : {&A, &B, &C}) Add(*Each);
  Add(C, 2);
  A.OnHear = [this] {
    Remove(A);
    List.RemoveEvent(&C);
    EXPECT_EQ(List.GetEventCount(), 4);
  };
  EXPECT_EQ(Emit(), "ab");
  EXPECT_EQ(List.GetEventCount(), 1);
  EXPECT_EQ(Emit(), "b");
}

TEST_F(TEventListTest, CallsWhatIsAddedMeanwhileOnlyAtTheEndOfTheList) {
  Add(A, 2);
  A.OnHear = [this] {
    A.OnHear = nullptr;
    Add(B, 2);
  };
  EXPECT_EQ(Emit(2), "ab");
  Add(C, 3);
  A.OnHear = [this] {
    A.OnHear = nullptr;
    Add(D, 2);
  };
  EXPECT_EQ(Emit(2), "ab") << "another kind stands between";
  EXPECT_EQ(Ids(), (std::vector<int>{2, 2, 2, 3}));
}

TEST_F(TEventListTest, TidiesUpAtTheEndOfAnInnerEmission) {
  for (TListener* Each : {&A, &B, &C, &D}) Add(*Each);
  A.OnHear = [this] {
    A.OnHear = nullptr;
    Remove(A);
    TEventCall0::Call(List, Bit, 1);  // b c d; then a is gone and the outer walk is one too far
    Remove(D);                        // at once, as if no emission were running
  };
  EXPECT_EQ(Emit(), "abcdc");
  EXPECT_EQ(Emit(), "bc");
}

TEST_F(TEventListTest, EndsAnEmissionThatRaises) {
  Add(A);
  A.OnHear = [this] {
    Remove(A);
    throw std::runtime_error("not today");
  };
  EXPECT_THROW(Emit(), std::runtime_error);
  EXPECT_EQ(List.GetEventCount(), 0);
}

TEST_F(TEventListTest, KeepsACallableUntilItHasReturned) {
  const auto Kept = std::make_shared<int>(7);
  TMethod<void()> Handler([this, Kept] {
    List.RemoveEvent(List.GetEventList()[0].GetReceiver());
    EXPECT_EQ(*Kept, 7);
  });
  List.AddEvent(Bit, 1, Handler);
  Handler = {};
  Emit();
  EXPECT_EQ(Kept.use_count(), 1);
}

// ---------------------------------------------------------------- random use beside a model

/// The same rules over a vector.
struct TModel {
  struct TEntry {
    int Id;
    int Listener;  // -1: cleared
  };
  std::vector<TEntry> Entries;
  bool Calling = false, HasCleared = false, HasStrays = false;

  void Add(int AnId, int AListener) {
    auto At = Entries.end();
    for (auto I = Entries.begin(); I != Entries.end(); ++I)
      if (I->Id == AnId) At = I + 1;
    if (Calling && At != Entries.end()) {
      HasStrays = true;
      At = Entries.end();
    } else if (Calling && !Entries.empty() && Entries.back().Id == AnId) {
      HasStrays = true;
    }
    Entries.insert(At, {AnId, AListener});
  }
  void Remove(int AListener, bool AAll) {
    for (std::size_t I = 0; I < Entries.size(); ++I) {
      if (Entries[I].Listener != AListener) continue;
      Entries[I].Listener = -1;
      HasCleared = true;
      if (!AAll) break;
    }
    if (!Calling) Tidy();
  }
  void Tidy() {
    if (HasCleared) std::erase_if(Entries, [](const TEntry& E) { return E.Listener < 0; });
    HasCleared = false;
  }
  void End() {
    Calling = false;
    Tidy();
    for (std::size_t I = 0; HasStrays && I + 1 < Entries.size(); ++I)
      for (std::size_t J = I + 1; J < Entries.size(); ++J)
        if (Entries[J].Id < Entries[I].Id) std::swap(Entries[I], Entries[J]);
    HasStrays = false;
  }
};

/// Does the same to the list and to the model, inside handlers too.
class TRandomUse : public TObject {
 public:
  explicit TRandomUse(std::uint64_t ASeed) : FRandom(ASeed) {
    for (int I = 0; I < Listeners; ++I) FListeners.emplace_back('a', &FHeard).Name = Name(I);
    for (TListener& Listener : FListeners) Listener.OnHear = [this] { Heard(); };
  }
  void Step() {
    const int Id = Below(Kinds), Listener = Below(Listeners), What = Below(8);
    if (What < 3 && FModel.Entries.size() < 40) {
      FList.AddEvent(Bit << Id, static_cast<std::uint16_t>(Id), Handler(Listener));
      FModel.Add(Id, Listener);
    } else if (What < 5) {
      FList.RemoveEvent(Bit << Id, static_cast<std::uint16_t>(Id), Handler(Listener));
      FModel.Remove(Listener, false);
    } else if (What == 5) {
      FList.RemoveEvent(&FListeners[Listener]);
      FModel.Remove(Listener, true);
    } else if (FDepth < 3) {
      Emit(Id);
    }
    Compare();
  }

 private:
  static constexpr int Kinds = 4, Listeners = 6;

  static char Name(int AListener) { return static_cast<char>('a' + AListener); }
  int Below(int ABound) {
    return static_cast<int>(FRandom.NextBelow(static_cast<std::uint32_t>(ABound)));
  }
  TMethod<void()> Handler(int AListener) { return Bind<&TListener::Hear>(&FListeners[AListener]); }

  void Emit(int AnId) {
    ++FDepth;
    const auto Start = std::find_if(FModel.Entries.begin(),
                                    FModel.Entries.end(),
                                    [&](const TModel::TEntry& E) { return E.Id == AnId; });
    const bool IsHeard = FList.IsEnabledMask(Bit << AnId) && Start != FModel.Entries.end();
    FWalks.push_back({AnId, static_cast<std::size_t>(Start - FModel.Entries.begin())});
    if (IsHeard) FModel.Calling = true;
    TEventCall0::Call(FList, Bit << AnId, AnId);
    if (IsHeard) {
      EXPECT_EQ(NextOf(FWalks.back()), -1) << "a handler was left out";
      FModel.End();
    }
    FWalks.pop_back();
    --FDepth;
  }

  struct TWalk {
    int Id;
    std::size_t At;
  };
  /// The listener that the walk comes to next.
  int NextOf(TWalk& AWalk) {
    for (auto& E = FModel.Entries; AWalk.At < E.size() && E[AWalk.At].Id == AWalk.Id;)
      if (const int Listener = E[AWalk.At++].Listener; Listener >= 0) return Listener;
    return -1;
  }
  void Heard() {
    EXPECT_EQ(std::string(1, FHeard.back()), std::string(1, Name(NextOf(FWalks.back()))));
    for (int Steps = Below(3); Steps > 0; --Steps) Step();
  }
  void Compare() {
    ASSERT_EQ(static_cast<std::size_t>(FList.GetEventCount()), FModel.Entries.size());
    for (std::size_t I = 0; I < FModel.Entries.size(); ++I) {
      const auto [Id, Listener] = FModel.Entries[I];
      ASSERT_EQ(FList.GetIdList()[I], Id);
      ASSERT_EQ(FList.GetEventList()[I].GetReceiver(),
                Listener < 0 ? nullptr : &FListeners[Listener]);
    }
  }

  TRandomStream FRandom;
  std::string FHeard;
  std::deque<TListener> FListeners;
  TEventList FList;
  TModel FModel;
  std::vector<TWalk> FWalks;
  int FDepth = 0;
};

TEST(EventListModel, AgreesOnALongRandomUse) {
  TRandomUse Use(1);
  for (int Step = 0; Step < 100'000 && !testing::Test::HasFailure(); ++Step) Use.Step();
}

}  // namespace
}  // namespace System::Beacon::Fencing::Scene
