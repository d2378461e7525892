// The beacon service and the estimator on a recording, as the map component runs them.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

#include "apps/wayfence/baselines.h"
#include "apps/wayfence/beacon_list.h"
#include "apps/wayfence/source.h"
#include "fencing/System.Beacon.Fencing.Types.h"
#include "positioning/System.Beacon.Fencing.PositionCalculator.h"

namespace Wayfence {

/// An estimated position: seconds of the recording's clock, metres.
struct TEstimate {
  double Seconds = 0.0;
  System::TPointF Raw;       ///< filtered
  System::TPointF Reported;  ///< damped
};

/// Runs a recording once. Made and used on the main thread, within the simulation of the run.
class TPositionRun {
 public:
  /// `AOptions` outlive it; `AArea` is in metres. After `ADeathTime` seconds without a frame a
  /// beacon is lost, and its distance with it.
  TPositionRun(TRun& ARun,
               const std::vector<System::TRef<TListedBeacon>>& ABeacons,
               const System::Beacon::Fencing::TParticleFilterOptions& AOptions,
               const System::TRectF& AArea,
               int ADeathTime);
  ~TPositionRun();
  TPositionRun(const TPositionRun&) = delete;
  TPositionRun& operator=(const TPositionRun&) = delete;

  /// Runs to the end of the recording, once. Raises what the source raises, and what the estimator
  /// has failed with.
  void Perform();

  const std::vector<TEstimate>& GetEstimates() const noexcept { return FEstimates; }
  const TStrengthLog& GetStrengths() const noexcept { return FStrengths; }
  /// Frames of listed beacons without a power, in the frame and in the list: they have no distance.
  std::uint64_t GetFramesWithoutPower() const noexcept { return FFramesWithoutPower; }

 private:
  void ConfigureManager(const std::vector<System::TRef<TListedBeacon>>& ABeacons, int ADeathTime);
  void ConnectManager();
  double GetSeconds() const noexcept { return FRun.Start + FRun.Source->GetSeconds(); }

  // on the reporting thread
  void CalcDistance(const System::TRef<System::Beacon::IBeacon>& ABeacon,
                    int ATxPower,
                    int ARssi,
                    double& ANewDistance);
  void NoteStrength(const System::Beacon::IBeacon& ABeacon, const TListedBeacon& AListed);

  // on the main thread
  void StepUntilEnd();
  void Step();
  bool IsQuiet() const noexcept;
  void WaitUntilHeard();

  TRun& FRun;
  const System::Beacon::Fencing::TParticleFilterOptions& FOptions;
  System::Beacon::Fencing::TFencingMap FMap;
  TStrengthLog FStrengths;            // reporting thread while it runs
  std::vector<TEstimate> FEstimates;  // calculator's thread while there is one
  std::string FFailure;               // the same
  std::uint64_t FFramesWithoutPower = 0;
  std::atomic<System::TTicks> FLastHeard;
  const System::TTicks FQuietAfter;
  System::TEvent FHeard{"a listed beacon"};
  std::unique_ptr<System::Beacon::Fencing::TPositionCalculator> FCalculator;
  std::unique_ptr<System::Beacon::TBeaconManager> FManager;  // stops before all others go
};

}  // namespace Wayfence
