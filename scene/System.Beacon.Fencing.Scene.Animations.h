// Smooth movement: animations, and the engine that runs them. Scene thread only.
//
//     TAnimationsEngine::SetTimer(New<TWyxTimer>());
//     TDisplacementAnimation::Add(Shape, Shape->GetDisplacement(), Goal, 0.5F, 0.1F, 0.1F, false);
//
// Time is counted in ticks of the timer, not measured: a late tick slows an animation down and
// skips nothing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "scene/System.Beacon.Fencing.Scene.h"

namespace System::Beacon::Fencing::Scene {

// ---------------------------------------------------------------- IAnimation

/// One animation of an object. Those of one kind on one object are blended: at each tick the first
/// is asked to prepare, each adds its share, the first commits the sum.
class IAnimation : public virtual IInterface {
 public:
  virtual void Prepare() = 0;
  /// How much it counts beside others.
  virtual float GetWeight() const = 0;
  /// Adds its share, so much of it, and goes on in time, by seconds. False when it has finished.
  virtual bool Process(float AWeight, float ADeltaTime) = 0;
  virtual void Commit() = 0;
  /// Has the animation finish at its end, at the next tick but the first.
  virtual void Invalidate() = 0;

 protected:
  ~IAnimation() = default;
};

// ---------------------------------------------------------------- TArrayArray, TPool

/// A growable array with a length of its own: what stands beyond it stays for reuse. Indexes are
/// not checked. Letting go of an item may change the array.
template <class T>
class TArrayArray {
 public:
  /// Makes the array empty.
  void Init() {
    const std::vector<T> Dropped = std::exchange(FItems, {});
    FLength = 0;
  }
  void Add(T AnItem) {
    if (FLength == FItems.size()) FItems.emplace_back();
    std::swap(FItems[FLength++], AnItem);
  }
  std::size_t Length() const { return FLength; }
  T& operator[](std::size_t AnIndex) { return FItems[AnIndex]; }
  T& GetLast() { return FItems[FLength - 1]; }
  /// Removes an item: the last one takes its place, and `AValue` the place of the last, beyond the
  /// length. The order changes.
  void SwapLastAndSet(std::size_t AnIndex, T AValue) {
    --FLength;
    std::swap(FItems[AnIndex], FItems[FLength]);
    std::swap(FItems[FLength], AValue);
  }

 private:
  std::vector<T> FItems;
  std::size_t FLength = 0;
};

/// Keeps counted instances for reuse.
template <class T>
class TPool {
 public:
  /// Both let go of all instances.
  void Init() { FInstances.Init(); }
  void Finish() { FInstances.Init(); }
  /// The instance that was released last; what `AFactory` makes when there is none.
  template <class TFactory>
  TRef<T> GetInstance(TFactory&& AFactory) {
    if (FInstances.Length() == 0) return std::forward<TFactory>(AFactory)();
    TRef<T> Result = FInstances.GetLast();
    FInstances.SwapLastAndSet(FInstances.Length() - 1, nullptr);
    return Result;
  }
  void ReleaseInstance(TRef<T> AnInstance) { FInstances.Add(std::move(AnInstance)); }

 private:
  TArrayArray<TRef<T>> FInstances;
};

// ---------------------------------------------------------------- TAnimationId

/// A number that no `TAnimationId` has given before.
std::int32_t NewAnimationId();

/// The number of a class of animations; another one for each class.
template <class T>
class TAnimationId {
 public:
  static std::int32_t GetId() {
    static const std::int32_t Id = NewAnimationId();
    return Id;
  }
};

// ---------------------------------------------------------------- TAnimationsEngine

/// Runs all animations of the process, grouped by animated object and, within it, by kind. Handlers
/// of what moves may call every operation: what they add begins in the same tick or the next. What
/// is still running when the program ends is released, without a last tick.
class TAnimationsEngine {
 public:
  /// The timer that ticks while there is something to animate; its handler becomes the engine's.
  /// A former timer is stopped and released; if it was running, the new one runs on in its place.
  static void SetTimer(const TRef<ITimer>& ATimer);
  /// Adds an animation of a kind to an object, or puts it in place of the object's others of that
  /// kind, and starts the timer. A counted object is kept until its animations have finished;
  /// others have to live that long. Without a timer raises `EGeneralError`; the animation is then
  /// added nevertheless.
  static void AddAnimation(const TObject* AnObject,
                           std::int32_t AnId,
                           const TRef<IAnimation>& AnAnimation,
                           bool AReplace);
  /// Takes every animation further by so many seconds; whether anything is left to animate. Does
  /// nothing else when a handler calls it while animations run.
  static bool Process(float ADeltaTime);
  /// Releases all animations and the timer. Done at the end of the program; before it by programs
  /// whose scenes need something that goes earlier.
  static void Finish();

 private:
  class TAnimationList;
  class TAnimationObject;
  struct TState;
  static TState& State();
  static void Tick();
};

// ---------------------------------------------------------------- TDisplacementAnimation

/// Moves a shape on a straight line at an even pace. When it overlaps with others of the same shape
/// its weight rises at first and falls in the end, so that one takes over from the other smoothly.
class TDisplacementAnimation : public TInterfacedObject, public virtual IAnimation {
 public:
  /// Starts an animation of a shape's displacement; times in seconds. Without a shape there is
  /// none. Raises as `TAnimationsEngine::AddAnimation`.
  static TRef<IAnimation> Add(IShape* AShape,
                              TPointF AFrom,
                              TPointF ATo,
                              float ADuration,
                              float ARiseTime,
                              float AFallTime,
                              bool AReplace);

  TDisplacementAnimation(IShape* AShape,
                         TPointF AFrom,
                         TPointF ATo,
                         float ADuration,
                         float ARiseTime,
                         float AFallTime);

  void Prepare() override;
  float GetWeight() const override;
  bool Process(float AWeight, float ADeltaTime) override;
  void Commit() override;
  void Invalidate() override { FDuration = -1.0F; }

 private:
  const TPointF FFrom;
  const TPointF FTo;
  const TRef<IShape> FNode;
  float FDuration;
  const float FInverseDuration;
  float FTime = 0.0F;
  const float FUpTime;    // how long the weight rises
  const float FFallTime;  // when the weight begins to fall
};

}  // namespace System::Beacon::Fencing::Scene
