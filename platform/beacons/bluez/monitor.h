// The advertisement monitor that the daemon is asked to run for this library.
#pragma once

#include <functional>

#include "platform/beacons/bluez/bus.h"

namespace System::Beacon {

/// Object on the bus that tells the daemon which advertisements matter: iBeacon, AltBeacon and
/// Eddystone. While one is registered the controller passes on every advertisement, not only the
/// first of each device. Lives as long as its bus at most; served inside `TBus::Process`.
class TBeaconMonitor {
 public:
  /// What `RegisterMonitor` and `UnregisterMonitor` are given.
  static constexpr char Path[] = "/wayfence";

  /// `AReleased` is called when the daemon gives the monitor up.
  TBeaconMonitor(TBus& ABus, std::function<void()> AReleased);
  TBeaconMonitor(const TBeaconMonitor&) = delete;
  TBeaconMonitor& operator=(const TBeaconMonitor&) = delete;

 private:
  std::function<void()> FReleased;
  TBusSlot FManager;
  TBusSlot FMonitor;
};

}  // namespace System::Beacon
