// The list of handlers against a model that is written as plainly as can be.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <functional>
#include <memory>
#include <stdexcept>
#include <utility>
#include <vector>

#include "platform/random.h"
#include "scene/System.Beacon.Fencing.Scene.Events.h"

namespace System::Beacon::Fencing::Scene {
namespace {

constexpr TEventMask Bit = 0x20;

/// Says which of its two handlers was called.
struct TListener : TObject {
  void Hear() { OnHear(0); }
  void HearToo() { OnHear(1); }

  std::function<void(int)> OnHear;
};

TEST(TEventList, KeepsACallableUntilItHasReturnedOrRaised) {
  for (const bool Raises : {false, true}) {
    TEventList List;
    const auto Kept = std::make_shared<int>(7);
    TMethod<void()> Handler([&List, Raises, Kept] {
      List.RemoveEvent(List.GetEventList()[0].GetReceiver());
      EXPECT_EQ(*Kept, 7);
      if (Raises) throw std::runtime_error("not today");
    });
    List.AddEvent(Bit, 1, std::exchange(Handler, {}));
    if (Raises) {
      EXPECT_THROW(TEventCall0::Call(List, Bit, 1), std::runtime_error);
    } else {
      TEventCall0::Call(List, Bit, 1);
    }
    EXPECT_EQ(List.GetEventCount(), 0);
    EXPECT_EQ(Kept.use_count(), 1);
  }
}

// ---------------------------------------------------------------- random use beside a model

/// The same rules over a vector. Handlers have numbers, two a listener.
struct TModel {
  struct TEntry {
    int Id;
    int Handler;  // -1: cleared
  };
  std::vector<TEntry> Entries;
  TEventMask Bits = 0;  // only removals and emissions look whether anybody listens
  bool Calling = false, HasCleared = false, HasStrays = false;

  void Add(int AnId, int AHandler) {
    Bits |= Bit << AnId;
    auto At = Entries.end();
    for (auto I = Entries.begin(); I != Entries.end(); ++I)
      if (I->Id == AnId) At = I + 1;
    if (Calling && At != Entries.end()) {
      HasStrays = true;
      At = Entries.end();
    } else if (Calling && !Entries.empty() && Entries.back().Id == AnId) {
      HasStrays = true;
    }
    Entries.insert(At, {AnId, AHandler});
  }
  void Remove(int AnId, int AHandler) {
    const auto Found = std::find_if(
        Entries.begin(), Entries.end(), [&](const TEntry& E) { return E.Handler == AHandler; });
    if (Found == Entries.end()) return;
    Clear(*Found);
    if (Calling) return;
    Tidy();
    if (Find(AnId) == Entries.end()) Bits &= ~(Bit << AnId);
  }
  void RemoveListener(int AListener) {
    for (TEntry& Entry : Entries)
      if (Entry.Handler >= 0 && Entry.Handler / 2 == AListener) Clear(Entry);
    if (!Calling) Tidy();
  }
  /// Whether anybody is to be called.
  bool Begin(int AnId) {
    if (Find(AnId) == Entries.end()) Bits &= ~(Bit << AnId);
    const bool IsHeard = (Bits & Bit << AnId) != 0;
    Calling = Calling || IsHeard;
    return IsHeard;
  }
  std::vector<TEntry>::iterator Find(int AnId) {
    return std::find_if(
        Entries.begin(), Entries.end(), [&](const TEntry& E) { return E.Id == AnId; });
  }
  void Clear(TEntry& AnEntry) {
    AnEntry.Handler = -1;
    HasCleared = true;
  }
  void Tidy() {
    if (HasCleared) std::erase_if(Entries, [](const TEntry& E) { return E.Handler < 0; });
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
    for (int I = 0; I < Listeners; ++I)
      FListeners[I].OnHear = [this, I](int AWhich) { Heard(2 * I + AWhich); };
  }
  void Step() {
    const int Id = Below(Kinds), Handler = Below(2 * Listeners), What = Below(8);
    if (What < 3 && FModel.Entries.size() < 40) {
      FList.AddEvent(Bit << Id, static_cast<std::uint16_t>(Id), Bound(Handler));
      FModel.Add(Id, Handler);
    } else if (What < 5) {
      FList.RemoveEvent(Bit << Id, static_cast<std::uint16_t>(Id), Bound(Handler));
      FModel.Remove(Id, Handler);
    } else if (What == 5) {
      FList.RemoveEvent(&FListeners[Handler / 2]);
      FModel.RemoveListener(Handler / 2);
    } else if (FWalks.size() < 3) {
      Emit(Id);
    }
    Compare();
  }

 private:
  static constexpr int Kinds = 4, Listeners = 6;

  int Below(int ABound) {
    return static_cast<int>(FRandom.NextBelow(static_cast<std::uint32_t>(ABound)));
  }
  TMethod<void()> Bound(int AHandler) {
    TListener* const Listener = &FListeners[AHandler / 2];
    return AHandler % 2 == 0 ? Bind<&TListener::Hear>(Listener)
                             : Bind<&TListener::HearToo>(Listener);
  }

  void Emit(int AnId) {
    const bool IsHeard = FModel.Begin(AnId);
    FWalks.push_back({AnId, static_cast<std::size_t>(FModel.Find(AnId) - FModel.Entries.begin())});
    TEventCall0::Call(FList, Bit << AnId, AnId);
    if (IsHeard) {
      EXPECT_EQ(NextOf(FWalks.back()), -1) << "a handler was left out";
      FModel.End();
    }
    FWalks.pop_back();
  }

  struct TWalk {
    int Id;
    std::size_t At;
  };
  /// The handler that the walk comes to next.
  int NextOf(TWalk& AWalk) {
    for (auto& E = FModel.Entries; AWalk.At < E.size() && E[AWalk.At].Id == AWalk.Id;)
      if (const int Handler = E[AWalk.At++].Handler; Handler >= 0) return Handler;
    return -1;
  }
  void Heard(int AHandler) {
    EXPECT_EQ(AHandler, NextOf(FWalks.back()));
    for (int Steps = Below(3); Steps > 0; --Steps) Step();
  }
  void Compare() {
    ASSERT_EQ(static_cast<std::size_t>(FList.GetEventCount()), FModel.Entries.size());
    for (std::size_t I = 0; I < FModel.Entries.size(); ++I) {
      const auto [Id, Handler] = FModel.Entries[I];
      ASSERT_EQ(FList.GetIdList()[I], Id);
      ASSERT_EQ(FList.GetEventList()[I].GetReceiver(),
                Handler < 0 ? nullptr : &FListeners[Handler / 2]);
    }
    for (int Id = 0; Id < Kinds; ++Id)
      ASSERT_EQ(FList.IsEnabledMask(Bit << Id), (FModel.Bits & Bit << Id) != 0);
  }

  TRandomStream FRandom;
  std::array<TListener, Listeners> FListeners;
  TEventList FList;
  TModel FModel;
  std::vector<TWalk> FWalks;
};

TEST(EventListModel, AgreesOnALongRandomUse) {
  EXPECT_EQ(sizeof(TEventList), 16U);
  TRandomUse Use(1);
  for (int Step = 0; Step < 100'000 && !testing::Test::HasFailure(); ++Step) Use.Step();
}

}  // namespace
}  // namespace System::Beacon::Fencing::Scene
