// Live scanning through the Bluetooth daemon of the system.
#pragma once

#include <functional>
#include <string>

#include "platform/beacons/advertisement.h"

namespace System::Beacon {

/// How a live source behaves beyond the choice of its adapter.
struct TBluezOptions {
  /// Told in words, once each, what changes while scanning goes on: adapter off, daemon stopped,
  /// scanning again, reduced reception. Called on the thread of `Next`, inside it; may call
  /// `Interrupt`, nothing else of the source.
  std::function<void(const std::string&)> OnDiagnostic;
};

/// A radio, reached through the Bluetooth daemon on the system bus. `AAdapter` names it ("hci1");
/// empty takes the first one there is. Nothing is opened yet; the source has no thread of its own.
/// It waits in the real runtime only.
///
/// `Open` raises `EBeaconSourceError` when there is no bus, no daemon, no such adapter, no right
/// to use it, or when it is off; it waits 5 seconds at most for each answer of the daemon. From
/// then on nothing that happens to adapter, daemon or bus makes `Next` raise: an adapter that is
/// switched off or unplugged, a daemon that restarts, even a bus that goes away is waited for, as
/// long as it takes, and scanning starts again by itself. `Close` takes 2 seconds at most. In a
/// library built without libsystemd `Open` always raises.
TRef<IAdvertisementSource> NewBluezSource(const std::string& AAdapter = {},
                                          TBluezOptions AOptions = {});

}  // namespace System::Beacon
