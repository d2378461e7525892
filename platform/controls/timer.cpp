#include "platform/controls/timer.h"

#include <utility>

#include "platform/errors.h"
#include "platform/threads.h"

namespace System {
namespace {

// Plain pointers, so that timers may go while static objects are destroyed.
constinit TTimer* First = nullptr;
constinit TTimer* Last = nullptr;

}  // namespace

TTimer::~TTimer() {
  Stop();
}

void TTimer::SetOnTimer(TMethod<void()> AHandler) {
  FOnTimer = std::move(AHandler);
}

void TTimer::SetEnabled(bool AValue) {
  if (AValue == FEnabled) return;
  FEnabled = AValue;
  Restart();
}

void TTimer::SetInterval(std::uint32_t AMilliseconds) {
  if (AMilliseconds == FInterval) return;
  FInterval = AMilliseconds;
  Restart();
}

void TTimer::Restart() {
  Stop();
  if (FEnabled && FInterval > 0) Start();
}

void TTimer::Start() {
  if (!IsMainThread()) FatalError("a timer was enabled outside the main thread");
  FDeadline = After(Ticks(), FInterval * TicksPerMillisecond);
  FPrevious = std::exchange(Last, this);
  (FPrevious ? FPrevious->FNext : First) = this;
  FIsRunning = true;
}

void TTimer::Stop() noexcept {
  if (!FIsRunning) return;
  if (!IsMainThread()) FatalError("a timer was changed outside the main thread");
  (FPrevious ? FPrevious->FNext : First) = FNext;
  (FNext ? FNext->FPrevious : Last) = FPrevious;
  FPrevious = FNext = nullptr;
  FIsRunning = false;
}

TTimer* TTimer::Earliest() noexcept {
  TTimer* Result = First;
  for (TTimer* Timer = First; Timer; Timer = Timer->FNext)
    if (Timer->FDeadline < Result->FDeadline) Result = Timer;
  return Result;
}

TTicks TTimer::NextDeadline() noexcept {
  const TTimer* const Timer = Earliest();
  return Timer ? Timer->FDeadline : NoDeadline;
}

void TTimer::ServeDue() {
  if (!IsMainThread()) FatalError("timers were served outside the main thread");
  const TTicks Now = Ticks();
  // A timer that has fired is due after `Now`, so that each comes once.
  for (TTimer* Due = Earliest(); Due && Due->FDeadline <= Now; Due = Earliest()) {
    Due->Restart();
    const TMethod<void()> Handler = Due->FOnTimer;  // the timer may go meanwhile
    Handler();
  }
}

}  // namespace System
