#include "fencing/run_switch.h"

#include <utility>

namespace System::Beacon::Fencing {

/// While it lives, threads are being started or waited for.
class TRunSwitch::TChange {
 public:
  explicit TChange(bool& AIsChanging) : FIsChanging(AIsChanging) { FIsChanging = true; }
  ~TChange() { FIsChanging = false; }
  TChange(const TChange&) = delete;
  TChange& operator=(const TChange&) = delete;

 private:
  bool& FIsChanging;
};

TRunSwitch::TRunSwitch(TSteps ASteps) : FSteps(std::move(ASteps)) {
  const auto DoWhatIsPending = [this] {
    if (FPending == TPending::Nothing || IsBusy()) return;
    WaitForEnd();
    DoPending();
  };
  FGate.SetAfterHandler(DoWhatIsPending);
  FServiceGate.SetAfterHandler(DoWhatIsPending);
}

bool TRunSwitch::IsBusy() const {
  return FIsChanging || FGate.IsInHandler() || IsInsideThread();
}

void TRunSwitch::Start() {
  if (FIsShut) return;
  FIsOn = true;
  try {
    TryStart();
  } catch (...) {
    FIsOn = false;
    FSteps.StartFailed();
    Halt();
    if (!IsBusy()) DoPending();  // asked for while the threads were waited for
    throw;
  }
}

/// A hand-off that is served while threads end or start may ask for something else.
void TRunSwitch::TryStart() {
  do {
    FPending = TPending::Nothing;
    Halt();
    if (IsBusy()) {
      FPending = TPending::Restart;
      return;
    }
    if (std::exchange(FPending, TPending::Nothing) == TPending::Stop) return;
    Begin();
  } while (FPending == TPending::Restart);
  if (std::exchange(FPending, TPending::Nothing) == TPending::Stop) Stop();
}

void TRunSwitch::Begin() {
  const TChange Change(FIsChanging);
  FGate.Open();
  FSteps.Begin();
}

void TRunSwitch::Stop() {
  FIsOn = false;
  Halt();
  if (!IsBusy()) DoPending();
}

void TRunSwitch::Shut() {
  FIsShut = true;
  Stop();
}

void TRunSwitch::Halt() {
  FGate.Close();
  if (IsBusy()) {
    FPending = TPending::Stop;
    if (IsInsideThread()) FIsAskedInside.store(true);
    FSteps.AskToEnd();
  } else {
    WaitForEnd();
  }
}

void TRunSwitch::WaitForEnd() {
  const TChange Change(FIsChanging);
  FSteps.WaitForEnd();
}

void TRunSwitch::DoPending() {
  if (std::exchange(FPending, TPending::Nothing) == TPending::Restart) Start();
}

void TRunSwitch::ThreadHasLeft() {
  // The thread is released before what follows the hand-off, which may wait for the thread.
  if (FIsAskedInside.exchange(false)) TThread::Synchronize(FServiceGate, [] {});
}

}  // namespace System::Beacon::Fencing
