// Zones and sightings written as text.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "fencing/System.Beacon.Fencing.h"
#include "support/fake_beacon.h"

namespace System::Beacon::Fencing {

/// The rows of a table of texts: each begins with "- " on a line of its own, "|" separates its
/// cells, a run of blanks and line ends counts as one blank.
std::vector<std::vector<std::string>> Rows(std::string_view ATable);

/// Adds zones and their beacons of `TestGUID` by minor: "A Near 1 2, B Immediate 3".
void AddZones(TBeaconZones& AZones, std::string_view AText);

/// Plays the beacon service for one component: calls what the component installs on it.
class TZoneScript {
 public:
  explicit TZoneScript(TCustomBeaconZonesFencing& AComponent) : FComponent(AComponent) {}

  /// Steps separated by ";", beacons by minor, distances in metres:
  ///   enter 1 Near 2.5   a new beacon is seen
  ///   report 1 Far 6     its proximity has changed
  ///   drift 1 Far 6      the same, before the service has come to report it
  ///   lose 1             it is not alive any more, before the service has come to report it
  ///   exit 1             it is lost
  void Play(std::string_view ASteps);

  /// The beacon of that minor; made when it is first asked for.
  TFakeBeacon& GetBeacon(int AMinor);

 private:
  void PlayStep(std::string_view AStep);
  void Leave(TFakeBeacon& ABeacon);

  TCustomBeaconZonesFencing& FComponent;
  std::map<int, TRef<TFakeBeacon>> FBeacons;
  TBeaconList FList;
};

}  // namespace System::Beacon::Fencing
