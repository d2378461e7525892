#include "positioning/System.Beacon.Fencing.Math.h"
#include "scene/System.Beacon.Fencing.Scene.Animations.h"

namespace System::Beacon::Fencing::Scene {
namespace {

// The sum of the shares. One for all animations: they are prepared, processed and committed list by
// list.
constinit TPointF Accumulator;

}  // namespace

TRef<IAnimation> TDisplacementAnimation::Add(IShape* AShape,
                                             TPointF AFrom,
                                             TPointF ATo,
                                             float ADuration,
                                             float ARiseTime,
                                             float AFallTime,
                                             bool AReplace) {
  if (!AShape) return nullptr;
  TRef<IAnimation> Result =
      New<TDisplacementAnimation>(AShape, AFrom, ATo, ADuration, ARiseTime, AFallTime);
  TAnimationsEngine::AddAnimation(
      AShape->GetObject(), TAnimationId<TDisplacementAnimation>::GetId(), Result, AReplace);
  return Result;
}

TDisplacementAnimation::TDisplacementAnimation(
    IShape* AShape, TPointF AFrom, TPointF ATo, float ADuration, float ARiseTime, float AFallTime)
    : FFrom(AFrom),
      FTo(ATo),
      FNode(AShape),
      FDuration(ADuration),
      FInverseDuration(1.0F / ADuration),
      FUpTime(ARiseTime),
      FFallTime(ADuration - AFallTime) {}

void TDisplacementAnimation::Prepare() {
  Accumulator = {};
}

float TDisplacementAnimation::GetWeight() const {
  if (FTime < FUpTime) return SmoothStep(0.0F, FUpTime, FTime);
  if (FTime > FFallTime) return 1.0F - SmoothStep(FFallTime, FDuration, FTime);
  return 1.0F;
}

bool TDisplacementAnimation::Process(float AWeight, float ADeltaTime) {
  const bool IsFirst = FTime == 0.0F;
  const bool IsLast = !IsFirst && !(FTime < FDuration);  // times that are no numbers end it, too
  TPointF Place = IsFirst ? FFrom : FTo;
  if (!IsFirst && !IsLast) {
    const float Part = FTime * FInverseDuration;
    Place = FTo * Part + FFrom * (1.0F - Part);
  }
  Accumulator = Accumulator + Place * AWeight;
  FTime += ADeltaTime;
  return !IsLast;
}

void TDisplacementAnimation::Commit() {
  FNode->SetDisplacement(Accumulator);
}

}  // namespace System::Beacon::Fencing::Scene
