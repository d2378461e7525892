#include "platform/beacons/bluez/session.h"

#include <fmt/format.h>
#include <systemd/sd-bus.h>

#include <algorithm>
#include <utility>

#include "platform/beacons/bluez/messages.h"

namespace System::Beacon {
namespace {

constexpr char AdapterInterface[] = "org.bluez.Adapter1";
constexpr char DeviceInterface[] = "org.bluez.Device1";
constexpr char MonitorsInterface[] = "org.bluez.AdvertisementMonitorManager1";

constexpr TTicks FirstRetryDelay = TicksPerSecond;
constexpr TTicks LastRetryDelay = 30 * TicksPerSecond;
constexpr TTicks BusyDelay = 200 * TicksPerMillisecond;
constexpr int BusyTries = 10;

std::string NameOfPath(std::string_view APath) {
  return std::string(APath.substr(APath.rfind('/') + 1));
}

// The shorter path first: hci2 before hci10.
bool IsEarlier(std::string_view A, std::string_view B) {
  return A.size() != B.size() ? A.size() < B.size() : A < B;
}

std::optional<bool> ReadPowered(TBusReader& AProperties) {
  std::optional<bool> Result;
  AProperties.ForEachEntry("sv", [&] {
    if (AProperties.ReadText() == "Powered") Result = AProperties.ReadVariant<bool>();
  });
  return Result;
}

int AppendMonitorPath(sd_bus_message* ACall) {
  return sd_bus_message_append(ACall, "o", TBeaconMonitor::Path);
}

int AppendFilter(sd_bus_message* ACall) {
  return sd_bus_message_append(ACall, "a{sv}", 2, "Transport", "s", "le", "DuplicateData", "b", 1);
}

}  // namespace

TBluezSession::TBluezSession(std::string AAdapter, TBluezDevices& ADevices)
    : FWanted(std::move(AAdapter)),
      FDevices(ADevices),
      FMonitor(FBus, [this] { MonitorReleased(); }),
      FRetryDelay(FirstRetryDelay) {
  AddMatches();
  ListObjects();
}

void TBluezSession::AddMatches() {
  FBus.Match(
      "type='signal',sender='org.freedesktop.DBus',path='/org/freedesktop/DBus',"
      "interface='org.freedesktop.DBus',member='NameOwnerChanged',arg0='org.bluez'",
      [this](TBusReader& ASignal) { OwnerChanged(ASignal); });
  const std::string Objects =
      "type='signal',sender='org.bluez',path='/',interface='org.freedesktop.DBus.ObjectManager',";
  FBus.Match(Objects + "member='InterfacesAdded'",
             [this](TBusReader& ASignal) { InterfacesAdded(ASignal); });
  FBus.Match(Objects + "member='InterfacesRemoved'",
             [this](TBusReader& ASignal) { InterfacesRemoved(ASignal); });
  FBus.Match(
      "type='signal',sender='org.bluez',path_namespace='/org/bluez',"
      "interface='org.freedesktop.DBus.Properties',member='PropertiesChanged'",
      [this](TBusReader& ASignal) { PropertiesChanged(ASignal); });
}

TBus::TProgress TBluezSession::Process() {
  if (FStep == TStep::Waiting && Ticks() >= FRetryAt) {
    ListObjects();
    return TBus::TProgress::Worked;
  }
  return FBus.Process();
}

TTicks TBluezSession::GetDeadline() const noexcept {
  return FStep == TStep::Waiting ? std::min(FRetryAt, FBus.GetDeadline()) : FBus.GetDeadline();
}

std::string TBluezSession::GetAdapterName() const {
  return NameOfPath(FAdapter);
}

void TBluezSession::Stop() noexcept {
  FBus.CancelCall();
  if (FAdapter.empty()) return;
  FBus.CallAndWait({FAdapter, AdapterInterface, "StopDiscovery"});
  if (FIsMonitorRegistered)
    FBus.CallAndWait({FAdapter, MonitorsInterface, "UnregisterMonitor", AppendMonitorPath});
}

// --- What the daemon tells ---

void TBluezSession::OwnerChanged(TBusReader& ASignal) {
  ASignal.ReadText();
  ASignal.ReadText();
  const bool HasOwner = !ASignal.ReadText().empty();
  LoseAdapter(Messages::SDaemonStopped);
  if (HasOwner) ListObjects();
}

void TBluezSession::InterfacesAdded(TBusReader& ASignal) {
  TAdapter Added;
  if (ReadObject(ASignal, Added, true) && FStep == TStep::Waiting) ListObjects();
}

void TBluezSession::InterfacesRemoved(TBusReader& ASignal) {
  const std::string_view Path = ASignal.ReadText();
  TBluetoothAddress Device;
  ASignal.ForEachText([&](std::string_view AInterface) {
    if (AInterface == DeviceInterface && IsOnAdapter(Path) && AddressOfDevicePath(Path, Device))
      FDevices.Forget(Device);
    if (AInterface == AdapterInterface && Path == FAdapter) {
      LoseAdapter(fmt::format(Messages::SAdapterGone, GetAdapterName()));
      ListObjects();
    }
  });
}

void TBluezSession::PropertiesChanged(TBusReader& ASignal) {
  const std::string_view Interface = ASignal.ReadText();
  if (Interface == DeviceInterface) DeviceChanged(ASignal);
  if (Interface == AdapterInterface && ASignal.GetPath() == FAdapter) AdapterChanged(ASignal);
}

void TBluezSession::DeviceChanged(TBusReader& ASignal) {
  TBluetoothAddress Device;
  const std::string_view Path = ASignal.GetPath();
  if (!IsOnAdapter(Path) || !AddressOfDevicePath(Path, Device)) return;
  TDeviceProperties Properties = ReadDeviceProperties(ASignal);
  ASignal.ForEachText([&](std::string_view AName) {
    if (AName == "RSSI") Properties.IsOutOfSight = true;
  });
  FDevices.Hear(Device, std::move(Properties), Ticks());
}

void TBluezSession::AdapterChanged(TBusReader& ASignal) {
  const std::optional<bool> IsPowered = ReadPowered(ASignal);
  if (!IsPowered) return;
  if (*IsPowered) {
    if (FStep == TStep::Waiting) ListObjects();
  } else {
    FBus.CancelCall();
    FDevices.ForgetAll();
    WaitForSignal(fmt::format(Messages::SAdapterOff, GetAdapterName()));
  }
}

void TBluezSession::MonitorReleased() {
  FIsMonitorRegistered = false;
  FNotice = Messages::SMonitorDropped;
}

// --- The steps of starting ---

void TBluezSession::ListObjects() {
  FStep = TStep::Calling;
  FBus.Call({"/", "org.freedesktop.DBus.ObjectManager", "GetManagedObjects"},
            [this](TBusReader& AObjects, const TBusError& AError) {
              if (AError) return Fail("GetManagedObjects", AError);
              TakeObjects(AObjects);
            });
}

void TBluezSession::TakeObjects(TBusReader& AObjects) {
  std::vector<TAdapter> Adapters;
  AObjects.ForEachEntry("oa{sa{sv}}", [&] {
    TAdapter Adapter;
    if (ReadObject(AObjects, Adapter, false)) Adapters.push_back(std::move(Adapter));
  });
  std::sort(Adapters.begin(), Adapters.end(), [](const TAdapter& A, const TAdapter& B) {
    return IsEarlier(A.Path, B.Path);
  });
  UseAdapter(Adapters);
}

// Whether the object is an adapter. A device that was just added is heard when it comes with a
// strength; the strength of a listed one is old.
bool TBluezSession::ReadObject(TBusReader& AObjects, TAdapter& AAdapter, bool AIsNew) {
  bool IsAdapter = false;
  const std::string_view Path = AObjects.ReadText();
  AAdapter.Path = Path;
  AObjects.ForEachEntry("sa{sv}", [&] {
    const std::string_view Interface = AObjects.ReadText();
    if (Interface == DeviceInterface) ReadDevice(AObjects, Path, AIsNew);
    if (Interface == MonitorsInterface) AAdapter.HasMonitors = true;
    if (Interface != AdapterInterface) return;
    IsAdapter = true;
    AAdapter.IsPowered = ReadPowered(AObjects).value_or(false);
  });
  return IsAdapter;
}

void TBluezSession::ReadDevice(TBusReader& AProperties, std::string_view APath, bool AIsNew) {
  TBluetoothAddress Device;
  if (!AddressOfDevicePath(APath, Device) || (AIsNew && !IsOnAdapter(APath))) return;
  TDeviceProperties Properties = ReadDeviceProperties(AProperties);
  if (AIsNew && Properties.Rssi) {
    FDevices.Hear(Device, std::move(Properties), Ticks());
  } else {
    FDevices.Remember(Device, std::move(Properties));
  }
}

void TBluezSession::UseAdapter(const std::vector<TAdapter>& AAdapters) {
  const auto Chosen = std::find_if(AAdapters.begin(), AAdapters.end(), [&](const TAdapter& A) {
    return FWanted.empty() || NameOfPath(A.Path) == FWanted;
  });
  if (Chosen == AAdapters.end())
    return WaitForSignal(FTrouble.empty() ? DescribeMissing(AAdapters) : FTrouble);
  if (std::exchange(FAdapter, Chosen->Path) != Chosen->Path) FIsMonitorRegistered = false;
  if (!Chosen->IsPowered)
    return WaitForSignal(fmt::format(Messages::SAdapterOff, GetAdapterName()));
  FNotice = Chosen->HasMonitors ? "" : Messages::SNoMonitor;
  if (Chosen->HasMonitors && !FIsMonitorRegistered) return RegisterMonitor();
  SetFilter();
}

std::string TBluezSession::DescribeMissing(const std::vector<TAdapter>& AAdapters) const {
  if (AAdapters.empty()) return Messages::SNoAdapter;
  std::string Names;
  for (const TAdapter& Adapter : AAdapters)
    Names += (Names.empty() ? "" : ", ") + NameOfPath(Adapter.Path);
  return fmt::format(Messages::SWrongAdapter, FWanted, Names);
}

void TBluezSession::RegisterMonitor() {
  Call(MonitorsInterface,
       "RegisterMonitor",
       AppendMonitorPath,
       [this](TBusReader&, const TBusError& AError) {
         FIsMonitorRegistered = !AError || AError.Name == "org.bluez.Error.AlreadyExists";
         if (!FIsMonitorRegistered)
           FNotice = fmt::format(Messages::SMonitorRefused, AError.Name, AError.Text);
         SetFilter();
       });
}

void TBluezSession::SetFilter() {
  Call(AdapterInterface,
       "SetDiscoveryFilter",
       AppendFilter,
       [this](TBusReader&, const TBusError& AError) {
         if (AError) return Fail("SetDiscoveryFilter", AError);
         StartDiscovery();
       });
}

void TBluezSession::StartDiscovery() {
  Call(AdapterInterface, "StartDiscovery", nullptr, [this](TBusReader&, const TBusError& AError) {
    if (AError) return StartRefused(AError);
    FStep = TStep::Scanning;
    FTrouble.clear();
    FBusyTries = 0;
    FRetryDelay = FirstRetryDelay;
  });
}

// The daemon is busy while it starts discovery for another program, and also when it still holds
// a session of this connection, whose reply came too late: that one is ended.
void TBluezSession::StartRefused(const TBusError& AError) {
  if (AError.Name != "org.bluez.Error.InProgress") return Fail("StartDiscovery", AError);
  if (++FBusyTries > BusyTries) return TryLater(fmt::format(Messages::SBusy, GetAdapterName()));
  Call(AdapterInterface, "StopDiscovery", nullptr, [this](TBusReader&, const TBusError&) {
    FStep = TStep::Waiting;
    FRetryAt = After(Ticks(), BusyDelay);
  });
}

void TBluezSession::Call(const char* AInterface,
                         const char* AMethod,
                         int (*AArguments)(sd_bus_message*),
                         TBus::TReplyHandler AHandler) {
  FStep = TStep::Calling;
  FBus.Call({FAdapter, AInterface, AMethod, AArguments}, std::move(AHandler));
}

// --- What goes wrong ---

void TBluezSession::Fail(const char* AMethod, const TBusError& AError) {
  const auto Is = [&](const char* AName) { return AError.Name == AName; };
  if (Is(SD_BUS_ERROR_NAME_HAS_NO_OWNER) || Is(SD_BUS_ERROR_SERVICE_UNKNOWN))
    return WaitForSignal(Messages::SNoDaemon);
  if (Is("org.bluez.Error.NotReady"))
    return TryLater(fmt::format(Messages::SAdapterOff, GetAdapterName()));
  if (Is(SD_BUS_ERROR_ACCESS_DENIED))
    return TryLater(fmt::format(Messages::SAccessDenied, AError.Text));
  if (Is(SD_BUS_ERROR_NO_REPLY) || Is(SD_BUS_ERROR_TIMEOUT)) return TryLater(Messages::SNoAnswer);
  TryLater(fmt::format(Messages::SCallFailed, AMethod, AError.Name, AError.Text));
}

void TBluezSession::WaitForSignal(std::string ATrouble) {
  FStep = TStep::Waiting;
  FTrouble = std::move(ATrouble);
  FRetryAt = NoDeadline;
}

void TBluezSession::TryLater(std::string ATrouble) {
  WaitForSignal(std::move(ATrouble));
  FRetryAt = After(Ticks(), FRetryDelay);
  FRetryDelay = std::min(2 * FRetryDelay, LastRetryDelay);
  FBusyTries = 0;
}

void TBluezSession::LoseAdapter(std::string ATrouble) {
  FBus.CancelCall();
  FDevices.ForgetAll();
  FAdapter.clear();
  WaitForSignal(std::move(ATrouble));
}

bool TBluezSession::IsOnAdapter(std::string_view APath) const noexcept {
  return !FAdapter.empty() && APath.size() > FAdapter.size() && APath[FAdapter.size()] == '/' &&
         APath.compare(0, FAdapter.size(), FAdapter) == 0;
}

}  // namespace System::Beacon
