// Objects, lists and their items are walked by index and read afresh at each step: animations call
// handlers, and handlers add animations. Only the walks themselves take anything out.
#include <string>

#include "platform/errors.h"
#include "scene/System.Beacon.Fencing.Scene.Animations.h"
#include "scene/messages.h"

namespace System::Beacon::Fencing::Scene {
namespace {

constexpr std::uint32_t IntervalInMs = 30;

/// Raises a flag for the length of a block.
class TRaisedFlag {
 public:
  explicit TRaisedFlag(bool& AFlag) : FFlag(AFlag) { FFlag = true; }
  ~TRaisedFlag() { FFlag = false; }
  TRaisedFlag(const TRaisedFlag&) = delete;
  TRaisedFlag& operator=(const TRaisedFlag&) = delete;

 private:
  bool& FFlag;
};

/// Processes the items of an array, and moves those that have finished to a pool. `AProcess`
/// answers whether an item goes on. Whether any item is left.
template <class T, class TProcess>
bool ProcessAll(TArrayArray<TRef<T>>& AnArray, TPool<T>& APool, const TProcess& AProcess) {
  for (std::size_t I = 0; I < AnArray.Length();) {
    const TRef<T> Item = AnArray[I];
    const bool GoesOn = AProcess(*Item);
    if (GoesOn) {
      ++I;
    } else if (I < AnArray.Length() && AnArray[I] == Item) {  // a handler may have finished all
      AnArray.SwapLastAndSet(I, nullptr);
      APool.ReleaseInstance(Item);
    }
  }
  return AnArray.Length() > 0;
}

/// The item of which a test is true; if there is none, one from the pool, appended and set up.
template <class T, class TTest, class TSetUp>
TRef<T> FindOrAdd(TArrayArray<TRef<T>>& AnArray,
                  TPool<T>& APool,
                  const TTest& ATest,
                  const TSetUp& ASetUp) {
  for (std::size_t I = 0; I < AnArray.Length(); ++I)
    if (ATest(*AnArray[I])) return AnArray[I];
  TRef<T> Result = APool.GetInstance([] { return New<T>(); });
  ASetUp(*Result);
  AnArray.Add(Result);
  return Result;
}

}  // namespace

std::int32_t NewAnimationId() {
  static constinit std::int32_t Last = 0;
  return ++Last;
}

// ---------------------------------------------------------------- TAnimationList

/// The animations of one kind on one object.
class TAnimationsEngine::TAnimationList : public TInterfacedObject {
 public:
  std::int32_t GetIdentifier() const { return FIdentifier; }
  void SetIdentifier(std::int32_t AnId) { FIdentifier = AnId; }

  void Add(const TRef<IAnimation>& AnAnimation, bool AReplace) {
    if (FIsProcessing)
      FAdded.Add({AnAnimation, 0.0F, AReplace});
    else
      Put(AnAnimation, AReplace);
  }

  /// Whether any animation is left.
  bool Process(float ADeltaTime) {
    PutAdded();  // when the last time ended with an error
    if (FList.Length() == 0) return false;
    ProcessItems(ADeltaTime);
    PutAdded();
    return FList.Length() > 0;
  }

 private:
  struct TItem {
    TRef<IAnimation> Animation;
    float Weight = 0.0F;
    bool Replaces = false;  // of items that wait to be put into the list
  };

  void Put(const TRef<IAnimation>& AnAnimation, bool AReplace) {
    if (AReplace) FList.Init();
    FList.Add({AnAnimation});
  }
  void PutAdded() {
    for (std::size_t I = 0; I < FAdded.Length(); ++I) Put(FAdded[I].Animation, FAdded[I].Replaces);
    if (FAdded.Length() > 0) FAdded.Init();
  }

  /// Sets the weights; gives the factor that makes their sum 1.
  float Weigh() {
    if (FList.Length() == 1) {
      FList[0].Weight = 1.0F;
      return 1.0F;
    }
    float Sum = 0.0F;
    for (std::size_t I = 0; I < FList.Length(); ++I) {
      FList[I].Weight = FList[I].Animation->GetWeight();
      Sum += FList[I].Weight;
    }
    return Sum == 0.0F ? 1.0F : 1.0F / Sum;
  }

  void ProcessItems(float ADeltaTime) {
    const TRaisedFlag Flag(FIsProcessing);
    const float Factor = Weigh();
    const TRef<IAnimation> First = FList[0].Animation;
    First->Prepare();
    for (std::size_t I = 0; I < FList.Length();) {
      if (FList[I].Animation->Process(FList[I].Weight * Factor, ADeltaTime))
        ++I;
      else
        FList.SwapLastAndSet(I, {});
    }
    First->Commit();
  }

  std::int32_t FIdentifier = 0;
  TArrayArray<TItem> FList;
  TArrayArray<TItem> FAdded;  // while the list is processed
  bool FIsProcessing = false;
};

// ---------------------------------------------------------------- TAnimationObject

/// What is animated, with its animations.
class TAnimationsEngine::TAnimationObject : public TInterfacedObject {
 public:
  bool Animates(const TObject* AnObject) const { return FObject == AnObject; }
  /// `ATick` is the tick that is running, or was the last to run.
  void SetUp(const TObject* AnObject, std::uint64_t ATick) {
    FObject = AnObject;
    FKept = dynamic_cast<const IInterface*>(AnObject);
    FTick = ATick;
  }

  void Add(std::int32_t AnId, const TRef<IAnimation>& AnAnimation, bool AReplace) {
    const auto IsOfKind = [AnId](const TAnimationList& AList) {
      return AList.GetIdentifier() == AnId;
    };
    const auto SetUpList = [AnId](TAnimationList& AList) { AList.SetIdentifier(AnId); };
    FindOrAdd(FAnimations, FPool, IsOfKind, SetUpList)->Add(AnAnimation, AReplace);
  }

  /// Whether any animation is left; an object that was added in this very tick waits for the next.
  bool Process(float ADeltaTime, std::uint64_t ATick) {
    if (FTick == ATick) return true;
    const auto ProcessList = [ADeltaTime](TAnimationList& AList) {
      return AList.Process(ADeltaTime);
    };
    if (ProcessAll(FAnimations, FPool, ProcessList)) return true;
    FObject = nullptr;
    FKept = nullptr;
    return false;
  }

 private:
  const TObject* FObject = nullptr;
  TRef<const IInterface> FKept;  // the object, where it is counted
  std::uint64_t FTick = 0;
  TArrayArray<TRef<TAnimationList>> FAnimations;
  TPool<TAnimationList> FPool;
};

// ---------------------------------------------------------------- TAnimationsEngine

struct TAnimationsEngine::TState {
  TRef<ITimer> Timer;
  TArrayArray<TRef<TAnimationObject>> Objects;
  TPool<TAnimationObject> Pool;
  std::uint64_t Tick = 0;
  bool IsProcessing = false;
};

TAnimationsEngine::TState& TAnimationsEngine::State() {
  struct TAtEnd {
    ~TAtEnd() { Finish(); }
  };
  // Emptied at the end, but never destroyed: objects that go later may still call the engine.
  static TState* const Instance = new TState;
  static const TAtEnd AtEnd;
  return *Instance;
}

void TAnimationsEngine::SetTimer(const TRef<ITimer>& ATimer) {
  const TRef<ITimer> Timer(ATimer.Get());  // the argument may go meanwhile
  const TRef<ITimer> Former = std::exchange(State().Timer, Timer);
  if (Timer) Timer->SetOnTimer(&TAnimationsEngine::Tick);
  if (!Former || Former == Timer) return;
  const bool IsRunning = Former->GetEnabled();
  Former->SetEnabled(false);
  Former->SetOnTimer({});
  if (!Timer || !IsRunning) return;
  Timer->SetInterval(Former->GetInterval());
  Timer->SetEnabled(true);
}

void TAnimationsEngine::AddAnimation(const TObject* AnObject,
                                     std::int32_t AnId,
                                     const TRef<IAnimation>& AnAnimation,
                                     bool AReplace) {
  if (!AnObject || !AnAnimation) return;
  TState& Engine = State();
  const auto IsTheObject = [AnObject](const TAnimationObject& AnEntry) {
    return AnEntry.Animates(AnObject);
  };
  const auto SetUp = [&](TAnimationObject& AnEntry) { AnEntry.SetUp(AnObject, Engine.Tick); };
  FindOrAdd(Engine.Objects, Engine.Pool, IsTheObject, SetUp)->Add(AnId, AnAnimation, AReplace);
  if (!Engine.Timer) throw EGeneralError(std::string(Messages::SAnimationTimer));
  if (Engine.Timer->GetEnabled()) return;
  Engine.Timer->SetInterval(IntervalInMs);
  Engine.Timer->SetEnabled(true);
}

bool TAnimationsEngine::Process(float ADeltaTime) {
  TState& Engine = State();
  if (Engine.IsProcessing) return Engine.Objects.Length() > 0;
  const TRaisedFlag Flag(Engine.IsProcessing);
  const std::uint64_t Tick = ++Engine.Tick;
  return ProcessAll(Engine.Objects, Engine.Pool, [&](TAnimationObject& AnEntry) {
    return AnEntry.Process(ADeltaTime, Tick);
  });
}

/// A second is as many ticks as the interval has milliseconds.
void TAnimationsEngine::Tick() {
  TState& Engine = State();
  const std::uint32_t Interval = Engine.Timer ? Engine.Timer->GetInterval() : 0;
  if (Interval == 0 || Process(1.0F / static_cast<float>(Interval))) return;
  if (Engine.Timer) Engine.Timer->SetEnabled(false);
}

void TAnimationsEngine::Finish() {
  SetTimer(nullptr);
  State().Objects.Init();
  State().Pool.Finish();
}

}  // namespace System::Beacon::Fencing::Scene
