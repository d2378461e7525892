// The events of a zone component as lines of text.
#pragma once

#include <functional>
#include <string>

#include "fencing/System.Beacon.Fencing.h"

namespace System::Beacon::Fencing {

/// Writes down every event of one component: "ZoneEnter A by 1", "ZoneBeaconProximity A.1 Near".
/// Beacons and items go by their minor, zones by their names. Main thread.
class TZoneEventLog final : public TObject {
 public:
  /// Sets all handlers of the component.
  explicit TZoneEventLog(TCustomBeaconZonesFencing& AComponent);

  /// Called after each event was written, with its line: what an application does in its handler.
  std::function<void(const std::string& ALine)> OnEvent;

  /// The lines since the last call, separated by "; ".
  std::string Take();
  /// The same, only those of `ZoneEnter` and `ZoneExit`.
  std::string TakeZones();

 private:
  void Add(TObject* ASender, const std::string& ALine);

  TCustomBeaconZonesFencing& FComponent;
  std::string FText;
  std::string FZoneText;
};

}  // namespace System::Beacon::Fencing
