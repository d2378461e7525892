#include <exception>

#include "platform/errors.h"
#include "positioning/System.Beacon.Fencing.PositionCalculator.h"

namespace System::Beacon::Fencing {

TTrilateration::TThreadPositionCalculator::TThreadPositionCalculator(TTrilateration& ACalculator,
                                                                     TEvent& AAwakeningEvent)
    : TThread("position calculator"),
      FThTTrilateration(ACalculator),
      FThAwakeningEvent(AAwakeningEvent) {}

void TTrilateration::TThreadPositionCalculator::Execute() {
  while (true) {
    FThAwakeningEvent.WaitUntil(NoDeadline);
    FThAwakeningEvent.ResetEvent();
    if (GetTerminated()) return;
    if (!CalculateStep()) return Terminate();  // and go on refusing steps
    FisExecuting.store(false, std::memory_order_release);
  }
}

/// False when the calculation has failed.
bool TTrilateration::TThreadPositionCalculator::CalculateStep() {
  try {
    FThTTrilateration.RunStep(FBeaconsList, FNearestBeacons);
    return true;
  } catch (...) {
    HandleCurrentException(this);
    return false;
  }
}

bool TTrilateration::DoCalculateStep(const TFencingBeacons& ABeaconsList,
                                     const TFencingBeacons& ANearestBeacons) {
  TThreadPositionCalculator& Thread = *FThreadPositionCalculator;
  if (Thread.FisExecuting.exchange(true, std::memory_order_acq_rel)) return false;
  try {
    Thread.Start();
  } catch (...) {
    Thread.FisExecuting.store(false, std::memory_order_release);
    throw;
  }
  Thread.FBeaconsList = ABeaconsList;
  Thread.FNearestBeacons = ANearestBeacons;
  FAwakeningEvent.SetEvent();
  return true;
}

bool TTrilateration::Calculate(const TFencingBeacons& ABeaconsList,
                               const TFencingBeacons& ANearestBeacons) {
  std::atomic<bool>& IsExecuting = FThreadPositionCalculator->FisExecuting;
  if (IsExecuting.exchange(true, std::memory_order_acq_rel)) return false;
  struct TFree {
    std::atomic<bool>& IsExecuting;
    ~TFree() { IsExecuting.store(false, std::memory_order_release); }
  } const Free{IsExecuting};
  RunStep(ABeaconsList, ANearestBeacons);
  return true;
}

}  // namespace System::Beacon::Fencing
