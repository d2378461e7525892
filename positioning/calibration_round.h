// Automatic calibration: what waits for the device to stand still beside a beacon.
#pragma once

#include "positioning/System.Beacon.Fencing.PositionCalculator.h"

namespace System::Beacon::Fencing {

/// The attempts to calibrate at the place of one beacon, on a thread of their own. The
/// destructor waits for the thread; the calculator ends its waits before.
class TTrilateration::TRound final : public TThread {
 public:
  /// Called under the lock of the calculator.
  TRound(TTrilateration& ACalculator, TCalibration& ACalibration, TRef<IBeacon> ASighting);
  ~TRound() override { TerminateAndWait(); }

 protected:
  void Execute() override;

 private:
  bool TryAttempt() noexcept;
  bool Attempt();
  bool IsBesideBeacon() const;

  TTrilateration& FCalculator;
  TCalibration& FCalibration;
  const TRef<IBeacon> FSighting;
  const TPointF FPlace;  // of the beacon, calculator units
  const double FExponent;
  const double FMotionThreshold;
};

}  // namespace System::Beacon::Fencing
