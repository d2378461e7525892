// A stand-in for the Bluetooth daemon, which behaves as version 5.66 was recorded to.
#pragma once

#include <poll.h>
#include <sys/eventfd.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <functional>
#include <future>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/beacons/bluez/fake_messages.h"

namespace System::Beacon {

struct TFakePattern {
  int Offset;
  int Type;
  TFakeBytes Bytes;
  bool operator==(const TFakePattern&) const = default;
};

struct TFakeSettings {
  std::vector<std::string> Adapters{"hci0"};
  bool IsPowered = true;
  bool HasMonitors = true;
  bool IsSilent = false;           ///< answers no call
  bool AnnouncesLate = false;      ///< adapters appear after the name, as at a restart
  bool IgnoresDuplicates = false;  ///< reports only what changes
  std::map<std::string, std::string> Refused{};  ///< method to the name of its error
  std::map<std::string, int> RefusedTimes{};     ///< how often; absent: always
  std::vector<TFakeAdvertisement> Known{};       ///< devices seen before the client came
};

/// Runs on a thread of its own with a connection of its own, from construction to destruction.
/// Operations may be called on any thread; they return when their signals are sent.
class TFakeDaemon {
 public:
  TFakeDaemon(std::string AAddress, TFakeSettings ASettings)
      : FAddress(std::move(AAddress)), FSettings(std::move(ASettings)) {
    std::promise<void> Ready;
    FThread = std::thread([&] { Run(Ready); });
    Ready.get_future().wait();
  }
  ~TFakeDaemon() {
    Do([this] {
      EndDiscovery(false);
      for (const auto& Name : std::exchange(FSettings.Adapters, {})) EmitAdapterRemoved(Name);
      FIsStopping = true;
    });
    FThread.join();
    close(FWakeUp);
  }
  TFakeDaemon(const TFakeDaemon&) = delete;
  TFakeDaemon& operator=(const TFakeDaemon&) = delete;

  /// Runs `AWork` on the daemon's thread and waits for it.
  void Do(std::function<void()> AWork) {
    std::packaged_task<void()> Task(std::move(AWork));
    auto Done = Task.get_future();
    {
      const std::lock_guard Guard(FLock);
      FTasks.push_back(std::move(Task));
    }
    eventfd_write(FWakeUp, 1);
    Done.get();
  }

  /// Has the radio receive an advertisement; heard of only while a client discovers.
  void Receive(const TFakeAdvertisement& AAdvertisement) {
    Do([&] {
      if (!FSessions.empty()) Report(AAdvertisement);
    });
  }
  void SetPowered(bool AIsPowered) {
    Do([=, this] {
      if (!AIsPowered) EndDiscovery(false);
      FSettings.IsPowered = AIsPowered;
      const int Is = AIsPowered;
      EmitChanged(AdapterPath(), Adapter, 2, "Powered", "b", Is, "Discovering", "b", 0, 0);
    });
  }
  void RemoveAdapter() {
    Do([this] {
      EndDiscovery(false);
      FPatterns.clear();
      EmitAdapterRemoved(FSettings.Adapters.front());
      FSettings.Adapters.erase(FSettings.Adapters.begin());
    });
  }
  void AddAdapter(const std::string& AName) {
    Do([&] {
      FSettings.Adapters.push_back(AName);
      EmitAdapterAdded(AName);
    });
  }
  /// Has the daemon give up the monitor that was registered last.
  void ReleaseMonitor() {
    Do([this] { CallMonitor("Release"); });
  }
  std::size_t CountSessions() { return Copy(FSessions).size(); }
  std::vector<TFakePattern> GetPatterns() { return Copy(FPatterns); }
  std::string GetFilter() { return Copy(FFilter); }
  /// Sends a signal with arguments of any types; on the daemon's thread.
  template <class... TValues>
  void Emit(const std::string& APath,
            const char* AInterface,
            const char* AMember,
            const char* ATypes,
            TValues... AValues) {
    sd_bus_emit_signal(FBus, APath.c_str(), AInterface, AMember, ATypes, AValues...);
  }
  /// Tells of changed properties: interface, count, each name, type and value, then those
  /// withdrawn.
  template <class... TValues>
  void EmitChanged(const std::string& APath, TValues... AValues) {
    Emit(APath, Properties, "PropertiesChanged", "sa{sv}as", AValues...);
  }
  /// Tells that an object has lost interfaces: their count and names.
  template <class... TValues>
  void EmitRemoved(const std::string& APath, TValues... AValues) {
    Emit("/", Objects, "InterfacesRemoved", "oas", APath.c_str(), AValues...);
  }
  static constexpr char Properties[] = "org.freedesktop.DBus.Properties";
  static constexpr char Objects[] = "org.freedesktop.DBus.ObjectManager";
  static constexpr char Device[] = "org.bluez.Device1";

 private:
  template <class T>
  T Copy(const T& AMember) {
    T Result;
    Do([&] { Result = AMember; });
    return Result;
  }

  static constexpr char Adapter[] = "org.bluez.Adapter1";
  static constexpr char Monitors[] = "org.bluez.AdvertisementMonitorManager1";
  std::string AdapterPath() const { return "/org/bluez/" + FSettings.Adapters.front(); }

  void Run(std::promise<void>& AReady) {
    sd_bus_new(&FBus);
    sd_bus_set_address(FBus, FAddress.c_str());
    sd_bus_set_bus_client(FBus, 1);
    sd_bus_start(FBus);
    sd_bus_add_filter(FBus, nullptr, HandleCall, this);
    const char* const Bus = "org.freedesktop.DBus";
    sd_bus_match_signal(
        FBus, nullptr, Bus, nullptr, Bus, "NameOwnerChanged", HandleOwnerChanged, this);
    for (const auto& Known : FSettings.Known) FDevices[Known.Address] = Known;
    auto Late = FSettings.AnnouncesLate ? std::exchange(FSettings.Adapters, {})
                                        : std::vector<std::string>{};
    sd_bus_request_name(FBus, "org.bluez", 0);
    for (const auto& Name : Late) {
      FSettings.Adapters.push_back(Name);
      EmitAdapterAdded(Name);
    }
    AReady.set_value();
    while (!FIsStopping) Turn();
    sd_bus_flush_close_unref(FBus);
  }

  void Turn() {
    if (sd_bus_process(FBus, nullptr) > 0) return;
    std::array<pollfd, 2> Polled{pollfd{FWakeUp, POLLIN, 0},
                                 pollfd{sd_bus_get_fd(FBus), POLLIN, 0}};
    poll(Polled.data(), Polled.size(), 100);
    eventfd_t Count = 0;
    eventfd_read(FWakeUp, &Count);
    std::vector<std::packaged_task<void()>> Tasks;
    {
      const std::lock_guard Guard(FLock);
      Tasks.swap(FTasks);
    }
    for (auto& Task : Tasks) {
      Task();
      if (!FIsStopping) sd_bus_flush(FBus);
    }
  }

  // --- Calls of clients ---

  static int HandleCall(sd_bus_message* ACall, void* ASelf, sd_bus_error* AError) {
    auto& Self = *static_cast<TFakeDaemon*>(ASelf);
    std::uint8_t Type = 0;
    sd_bus_message_get_type(ACall, &Type);
    return Type == SD_BUS_MESSAGE_METHOD_CALL ? Self.Answer(ACall, AError) : 0;
  }

  int Answer(sd_bus_message* ACall, sd_bus_error* AError) {
    const std::string Member = sd_bus_message_get_member(ACall);
    const std::string Sender = sd_bus_message_get_sender(ACall);
    if (FSettings.IsSilent) return 1;
    if (const char* Name = Refusal(Member)) return sd_bus_error_set(AError, Name, "because");
    if (Member == "GetManagedObjects") return AnswerObjects(ACall);
    if (Member == "RegisterMonitor") return AskForMonitor(ACall);
    const bool NeedsPower = Member == "StartDiscovery" || Member == "SetDiscoveryFilter";
    if (NeedsPower && !FSettings.IsPowered)
      return sd_bus_error_set(AError, "org.bluez.Error.NotReady", "Resource Not Ready");
    if (Member == "SetDiscoveryFilter") ReadFilter(ACall);
    if (Member == "StartDiscovery" && !FSessions.insert(Sender).second)
      return sd_bus_error_set(AError, "org.bluez.Error.InProgress", "Operation in progress");
    if (Member == "StopDiscovery" && !Leave(Sender))
      return sd_bus_error_set(AError, "org.bluez.Error.Failed", "No discovery started");
    if (Member == "UnregisterMonitor") FPatterns.clear();
    return sd_bus_reply_method_return(ACall, nullptr);
  }

  void ReadFilter(sd_bus_message* ACall) {
    const char *First = nullptr, *Transport = nullptr, *Second = nullptr;
    int Duplicates = 0;
    sd_bus_message_read(ACall, "a{sv}", 2, &First, "s", &Transport, &Second, "b", &Duplicates);
    FFilter = std::string(First) + '=' + Transport + ' ' + Second + '=' + (Duplicates ? "1" : "0");
  }

  const char* Refusal(const std::string& AMethod) {
    const auto Refused = FSettings.Refused.find(AMethod);
    if (Refused == FSettings.Refused.end()) return nullptr;
    const auto Times = FSettings.RefusedTimes.find(AMethod);
    if (Times != FSettings.RefusedTimes.end() && Times->second-- == 0) return nullptr;
    return Refused->second.c_str();
  }

  int AnswerObjects(sd_bus_message* ACall) {
    sd_bus_message* Reply = nullptr;
    sd_bus_message_new_method_return(ACall, &Reply);
    sd_bus_message_open_container(Reply, 'a', "{oa{sa{sv}}}");
    for (const auto& Name : FSettings.Adapters) {
      sd_bus_message_open_container(Reply, 'e', "oa{sa{sv}}");
      AppendAdapter(Reply, Name);
      sd_bus_message_close_container(Reply);
    }
    for (const auto& [Address, Known] : FDevices) {
      sd_bus_message_open_container(Reply, 'e', "oa{sa{sv}}");
      AppendDevice(Reply, Known);
      sd_bus_message_close_container(Reply);
    }
    sd_bus_message_close_container(Reply);
    const int Result = sd_bus_send(FBus, Reply, nullptr);
    sd_bus_message_unref(Reply);
    return Result;
  }

  // The reply to a registration is sent when the client has said what its monitor is for.
  int AskForMonitor(sd_bus_message* ACall) {
    const char* Path = nullptr;
    sd_bus_message_read(ACall, "o", &Path);
    FRegistration = sd_bus_message_ref(ACall);
    const char* const Client = sd_bus_message_get_sender(ACall);
    return sd_bus_call_method_async(
        FBus, nullptr, Client, Path, Objects, "GetManagedObjects", TakeMonitor, this, "");
  }

  static int TakeMonitor(sd_bus_message* AReply, void* ASelf, sd_bus_error*) {
    auto& Self = *static_cast<TFakeDaemon*>(ASelf);
    sd_bus_message* Registration = std::exchange(Self.FRegistration, nullptr);
    const char* Path = nullptr;
    if (FindPatterns(AReply, Path)) {
      Self.ReadPatterns(AReply);
      Self.FMonitor = {sd_bus_message_get_sender(AReply), Path};
      Self.CallMonitor("Activate");
    }
    const int Result = sd_bus_reply_method_return(Registration, nullptr);
    sd_bus_message_unref(Registration);
    return Result;
  }

  void CallMonitor(const char* AMethod) {
    const auto& [Client, Path] = FMonitor;
    const char* const Interface = "org.bluez.AdvertisementMonitor1";
    sd_bus_call_method_async(
        FBus, nullptr, Client.c_str(), Path.c_str(), Interface, AMethod, nullptr, nullptr, "");
  }

  /// Walks into a list of objects up to the first patterns; `APath` is that of their object.
  static bool FindPatterns(sd_bus_message* AMessage, const char*& APath) {
    char Type = 0;
    const char* Contents = nullptr;
    while (sd_bus_message_peek_type(AMessage, &Type, &Contents) > 0) {
      if (Type == 'v' && Contents == std::string_view("a(yyay)")) return true;
      if (Type == 'o') {
        sd_bus_message_read(AMessage, "o", &APath);
      } else if (Type != 'a' && Type != 'e') {
        sd_bus_message_skip(AMessage, std::string(1, Type).c_str());
      } else {
        sd_bus_message_enter_container(AMessage, Type, Contents);
        if (FindPatterns(AMessage, APath)) return true;
        sd_bus_message_exit_container(AMessage);
      }
    }
    return false;
  }

  void ReadPatterns(sd_bus_message* AProperty) {
    FPatterns.clear();
    sd_bus_message_enter_container(AProperty, 'v', "a(yyay)");
    sd_bus_message_enter_container(AProperty, 'a', "(yyay)");
    while (sd_bus_message_enter_container(AProperty, 'r', "yyay") > 0) {
      std::uint8_t Offset = 0, Type = 0;
      const void* First = nullptr;
      std::size_t Size = 0;
      sd_bus_message_read(AProperty, "yy", &Offset, &Type);
      sd_bus_message_read_array(AProperty, 'y', &First, &Size);
      const auto* Bytes = static_cast<const std::uint8_t*>(First);
      FPatterns.push_back({Offset, Type, TFakeBytes(Bytes, Bytes + Size)});
      sd_bus_message_exit_container(AProperty);
    }
  }

  static int HandleOwnerChanged(sd_bus_message* ASignal, void* ASelf, sd_bus_error*) {
    const char *Name = nullptr, *Old = nullptr, *New = nullptr;
    sd_bus_message_read(ASignal, "sss", &Name, &Old, &New);
    if (!*New) static_cast<TFakeDaemon*>(ASelf)->Leave(Name);
    return 0;
  }

  // --- Discovery ---

  bool Leave(const std::string& AClient) {
    if (!FSessions.contains(AClient)) return false;
    if (FSessions.size() == 1) EndDiscovery(true);
    FSessions.erase(AClient);
    return true;
  }

  // Strengths are withdrawn and devices removed before discovery is said to end.
  void EndDiscovery(bool AIsToldOfAdapter) {
    FSessions.clear();
    for (const auto& [Address, Known] : std::exchange(FDevices, {})) {
      EmitChanged(FakeDevicePath(Address), Device, 0, 1, "RSSI");
      EmitRemoved(FakeDevicePath(Address), 1, Device);
    }
    if (AIsToldOfAdapter) EmitChanged(AdapterPath(), Adapter, 1, "Discovering", "b", 0, 0);
  }

  // The first sight of a device is an added object with all that is known; after that, strength
  // and data, or only what is new.
  void Report(const TFakeAdvertisement& AHeard) {
    const auto Known = FDevices.find(AHeard.Address);
    const bool IsNew = Known == FDevices.end();
    TFakeAdvertisement Told = AHeard;
    if (!IsNew && FSettings.IgnoresDuplicates) {
      if (Told.Manufacturer == Known->second.Manufacturer) Told.Manufacturer.clear();
      if (Told.Service == Known->second.Service) Told.Service.clear();
    }
    FDevices[AHeard.Address] = AHeard;
    sd_bus_message* Signal = nullptr;
    const std::string Path = IsNew ? "/" : FakeDevicePath(AHeard.Address);
    const char* const Member = IsNew ? "InterfacesAdded" : "PropertiesChanged";
    sd_bus_message_new_signal(FBus, &Signal, Path.c_str(), IsNew ? Objects : Properties, Member);
    if (IsNew) {
      AppendDevice(Signal, AHeard);
    } else {
      sd_bus_message_append(Signal, "s", Device);
      AppendProperties(Signal, Told, false);
      sd_bus_message_append(Signal, "as", 0);
    }
    sd_bus_send(FBus, Signal, nullptr);
    sd_bus_message_unref(Signal);
  }

  // --- Messages ---

  void AppendAdapter(sd_bus_message* AMessage, const std::string& AName) {
    sd_bus_message_append(AMessage, "o", ("/org/bluez/" + AName).c_str());
    const int Is = FSettings.IsPowered;
    sd_bus_message_open_container(AMessage, 'a', "{sa{sv}}");
    sd_bus_message_append(AMessage, "{sa{sv}}", Adapter, 1, "Powered", "b", Is);
    const char *Name = "SupportedMonitorTypes", *Value = "or_patterns";
    if (FSettings.HasMonitors)
      sd_bus_message_append(AMessage, "{sa{sv}}", Monitors, 1, Name, "as", 1, Value);
    sd_bus_message_close_container(AMessage);
  }

  void EmitAdapterAdded(const std::string& AName) {
    sd_bus_message* Signal = nullptr;
    sd_bus_message_new_signal(FBus, &Signal, "/", Objects, "InterfacesAdded");
    AppendAdapter(Signal, AName);
    sd_bus_send(FBus, Signal, nullptr);
    sd_bus_message_unref(Signal);
  }

  void EmitAdapterRemoved(const std::string& AName) {
    EmitRemoved("/org/bluez/" + AName, 2, Adapter, Monitors);
  }

  const std::string FAddress;
  TFakeSettings FSettings;
  sd_bus* FBus = nullptr;
  std::set<std::string> FSessions;  // the clients that discover
  std::map<std::string, TFakeAdvertisement> FDevices;
  std::vector<TFakePattern> FPatterns;
  std::pair<std::string, std::string> FMonitor;  // its client and path
  std::string FFilter;
  sd_bus_message* FRegistration = nullptr;
  bool FIsStopping = false;
  int FWakeUp = eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
  std::mutex FLock;  // guards FTasks
  std::vector<std::packaged_task<void()>> FTasks;
  std::thread FThread;
};

}  // namespace System::Beacon
