#include "platform/beacons/replay_source.h"

#include <algorithm>

namespace System::Beacon {

void TReplaySource::Open() {
  if (FIsOpen) throw EBeaconSourceError("a recording can be replayed once; open it again");
  FIsOpen = true;
  FDue = Ticks();
}

TSourceResult TReplaySource::Next(TAdvertisement& AAdvertisement, TTicks ADeadline) {
  if (!FHasPending && !ReadNext()) {
    FFinished.SetEvent();
    return TSourceResult::Finished;
  }
  if (FWake.WaitUntil(std::min(FDue, ADeadline))) {
    FWake.ResetEvent();
    return TSourceResult::Interrupted;
  }
  if (FDue > ADeadline) return TSourceResult::TimedOut;
  AAdvertisement = FPending;
  AAdvertisement.Time = FDue;
  FHasPending = false;
  return TSourceResult::Advertisement;
}

bool TReplaySource::ReadNext() {
  if (!FReader->Read(FPending)) return false;
  FHasPending = true;
  if (!FHasBegun) FOffset = FDue - FPending.Time;
  FHasBegun = true;
  FDue = std::max(FDue, FPending.Time + FOffset);
  return true;
}

}  // namespace System::Beacon
