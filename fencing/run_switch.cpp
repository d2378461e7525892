#include "fencing/run_switch.h"

#include <utility>

namespace System::Beacon::Fencing {

TRunSwitch::TRunSwitch(TSteps ASteps) : FSteps(std::move(ASteps)) {
  FGate.SetAfterHandler([this] { HandlerReturned(); });
}

bool TRunSwitch::IsBusy() const {
  return FIsStopping || FGate.IsInHandler() || (FSteps.IsInsideThread && FSteps.IsInsideThread());
}

void TRunSwitch::Start() {
  FPending = TPending::Nothing;
  Halt();
  if (IsBusy()) {
    FPending = TPending::Restart;
    return;
  }
  // A hand-off that was served while the threads ended may have stopped the component again.
  if (std::exchange(FPending, TPending::Nothing) == TPending::Stop) return;
  FGate.Open();
  try {
    FSteps.Begin();
  } catch (...) {
    FSteps.StartFailed();
    Halt();
    throw;
  }
}

void TRunSwitch::Stop() {
  Halt();
  if (!IsBusy()) DoPending();
}

void TRunSwitch::Halt() {
  FGate.Close();
  if (IsBusy()) {
    FPending = TPending::Stop;
    FSteps.AskToEnd();
  } else {
    WaitForEnd();
  }
}

void TRunSwitch::WaitForEnd() {
  FIsStopping = true;
  FSteps.WaitForEnd();
  FIsStopping = false;
}

void TRunSwitch::DoPending() {
  if (std::exchange(FPending, TPending::Nothing) == TPending::Restart) Start();
}

void TRunSwitch::HandlerReturned() {
  if (FPending == TPending::Nothing || FIsStopping) return;
  WaitForEnd();
  DoPending();
}

}  // namespace System::Beacon::Fencing
