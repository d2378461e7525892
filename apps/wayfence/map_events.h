// The events of a map component as JSON lines.
#pragma once

#include <functional>
#include <string>

#include "apps/wayfence/json_line.h"
#include "fencing/System.Beacon.Fencing.h"

namespace Wayfence {

/// Gives a line for every event of a component to whoever wants it. Main thread.
class TMapEvents final : public System::TObject {
 public:
  using TSink = std::function<void(const TJsonLine& ALine)>;
  /// Seconds since the first advertisement.
  using TClock = std::function<double()>;

  /// Sets the handlers of the component; goes before it.
  TMapEvents(System::Beacon::Fencing::TCustomBeaconMapFencing& AComponent,
             TClock AClock,
             TSink ASink);

  /// Called after the line of a position was given.
  std::function<void()> OnPosition;
  /// Tells of a map that was changed since the last event. Called at the end.
  void TellMapChange();

 private:
  using TComponent = System::Beacon::Fencing::TCustomBeaconMapFencing;
  using TZoneRef = System::TRef<System::Beacon::Fencing::IDesignZone>;

  void ListenToBeacons();
  void ListenToFrames();
  void ListenToPositions();
  void Tell(const TJsonLine& ALine);
  void Zone(const char* AEvent, const TZoneRef& AZone);
  TJsonLine BeaconLine(const char* AEvent, const System::Beacon::Fencing::TFencingBeacon& ABeacon);
  void Position(const System::TPointF& ARaw, const System::TPointF& APath);

  TComponent& FComponent;
  const TClock FClock;
  const TSink FSink;
  int FMap = 0;                // that was told last
  double FTimeOfChange = 0.0;  // when the service last asked for another
  int FAskedFor = -1;
};

}  // namespace Wayfence
