// Keeps a discovery running on one adapter over one connection to the bus.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/beacons/bluez/bus.h"
#include "platform/beacons/bluez/devices.h"
#include "platform/beacons/bluez/monitor.h"
#include "platform/time.h"

namespace System::Beacon {

/// Starts discovery with an advertisement monitor beside it, and starts it again whenever the
/// adapter or the daemon comes back. The steps, one call each: list the daemon's objects, register
/// the monitor, set the filter, start; a step that fails waits for a signal or a while, then the
/// list is taken anew. What is heard goes to the devices. One thread at a time.
class TBluezSession {
 public:
  /// `AAdapter` is a name such as "hci1", or empty for the first. `ADevices` outlives the session.
  /// Raises `EBeaconSourceError` when there is no bus.
  TBluezSession(std::string AAdapter, TBluezDevices& ADevices);
  TBluezSession(const TBluezSession&) = delete;
  TBluezSession& operator=(const TBluezSession&) = delete;

  /// Does the next thing that is due. `Lost` is final: the connection has ended.
  TBus::TProgress Process();
  const TBus& GetBus() const noexcept { return FBus; }
  /// When `Process` is due without anything on the bus, in `Ticks`.
  TTicks GetDeadline() const noexcept;

  bool IsScanning() const noexcept { return FStep == TStep::Scanning; }
  /// Why it does not scan, and what to do; empty when it scans or is about to.
  const std::string& GetTrouble() const noexcept { return FTrouble; }
  /// Why reception is reduced; empty when it is not.
  const std::string& GetNotice() const noexcept { return FNotice; }
  /// The name of the adapter in use.
  std::string GetAdapterName() const;

  /// Ends discovery and monitor at the daemon; 2 seconds at most.
  void Stop() noexcept;

 private:
  enum class TStep : std::uint8_t { Calling, Scanning, Waiting };
  struct TAdapter {
    std::string Path;
    bool IsPowered = false;
    bool HasMonitors = false;
  };

  void AddMatches();
  void OwnerChanged(TBusReader& ASignal);
  void InterfacesAdded(TBusReader& ASignal);
  void InterfacesRemoved(TBusReader& ASignal);
  void PropertiesChanged(TBusReader& ASignal);
  void DeviceChanged(TBusReader& ASignal);
  void AdapterChanged(TBusReader& ASignal);
  void MonitorReleased();

  void ListObjects();
  void TakeObjects(TBusReader& AObjects);
  bool ReadObject(TBusReader& AObjects, TAdapter& AAdapter, bool AIsNew);
  void ReadDevice(TBusReader& AProperties, std::string_view APath, bool AIsNew);
  void UseAdapter(const std::vector<TAdapter>& AAdapters);
  std::string DescribeMissing(const std::vector<TAdapter>& AAdapters) const;
  void RegisterMonitor();
  void SetFilter();
  void StartDiscovery();
  void StartRefused(const TBusError& AError);
  void Call(const char* AInterface,
            const char* AMethod,
            int (*AArguments)(sd_bus_message*),
            TBus::TReplyHandler AHandler);

  void Fail(const char* AMethod, const TBusError& AError);
  void WaitForSignal(std::string ATrouble);
  void TryLater(std::string ATrouble);
  void LoseAdapter(std::string ATrouble);
  bool IsOnAdapter(std::string_view APath) const noexcept;

  const std::string FWanted;
  TBluezDevices& FDevices;
  TBus FBus;
  TBeaconMonitor FMonitor;
  TStep FStep = TStep::Waiting;
  std::string FAdapter;  // its path; empty when there is none
  std::string FTrouble;
  std::string FNotice;
  bool FIsMonitorRegistered = false;
  int FBusyTries = 0;
  TTicks FRetryDelay;
  TTicks FRetryAt = NoDeadline;
};

}  // namespace System::Beacon
