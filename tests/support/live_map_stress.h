// An application that does with the map component, at random, whatever applications do.
#pragma once

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "fencing/System.Beacon.Fencing.h"
#include "platform/controls/control.h"
#include "platform/random.h"

namespace System::Beacon::Fencing {

/// How fast things happen.
struct TLivePace {
  std::uint32_t MeanDelay;  ///< between advertisements, microseconds
  int MaxSleep;             ///< between two things that the application does, milliseconds
  int Calm;                 ///< the higher, the less often it stops, reloads and starts
};

/// Real displays, real calculators, small projects of two floors that a receiver walks between.
/// Stops, starts, reloads, destroys, changes floors and options, paints; inside handlers, too.
/// Checks that what it is told makes sense. Main thread.
class TLiveMapStress : public TObject {
 public:
  TLiveMapStress(std::uint64_t ASeed, const TLivePace& APace, TControl& AControl);
  ~TLiveMapStress() override;

  /// Waits a little and does one thing.
  void Step();
  int GetEventCount() const { return FEvents; }
  int GetPositionCount() const { return FPositions; }
  int GetMapChangeCount() const { return FMapChanges; }

 private:
  void MakeComponent();
  void ListenToBeacons();
  void ListenToPositions();
  void Heard();
  void ZoneChanged(const TRef<IDesignZone>& AZone, bool AIsInside);
  void Act(bool AInHandler);
  void ActOnDisplay();
  void ActOnOptions();
  void Load(int AProject);
  void Switch(bool AOn);
  void Read();
  int Below(int ABound) {
    return static_cast<int>(FRandom.NextBelow(static_cast<std::uint32_t>(ABound)));
  }

  TRandomStream FRandom;
  const TLivePace FPace;
  TControl& FControl;
  std::unique_ptr<TBeaconMapFencing> FComponent;
  bool FIsOn = false;
  std::set<std::string> FInside;
  int FEvents = 0;
  int FPositions = 0;
  int FMapChanges = 0;
};

}  // namespace System::Beacon::Fencing
