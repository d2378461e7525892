// A connection to the system bus, and what goes over it.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/beacons/bluez/bus_reader.h"
#include "platform/time.h"

struct sd_bus;
struct sd_bus_slot;

namespace System::Beacon {

/// Why a call failed: the name of the error on the bus and its text. No name: it did not fail.
struct TBusError {
  std::string Name;
  std::string Text;

  explicit operator bool() const noexcept { return !Name.empty(); }
};

/// A call of a method of the Bluetooth daemon.
struct TBusCall {
  std::string Path;
  const char* Interface;
  const char* Method;
  int (*AppendArguments)(sd_bus_message*) = nullptr;
};

struct TBusRelease {
  void operator()(sd_bus* ABus) const noexcept;
  void operator()(sd_bus_slot* ASlot) const noexcept;
  void operator()(sd_bus_message* AMessage) const noexcept;
};
using TBusSlot = std::unique_ptr<sd_bus_slot, TBusRelease>;

/// A connection of its own to the system bus. Nothing blocks except `CallAndWait`. One thread at
/// a time; handlers run inside `Process` and must not raise.
class TBus {
 public:
  using TSignalHandler = std::function<void(TBusReader&)>;
  using TReplyHandler = std::function<void(TBusReader&, const TBusError&)>;
  enum class TProgress : std::uint8_t { Idle, Worked, Lost };

  /// Connects. Raises `EBeaconSourceError` when there is no bus.
  TBus();
  TBus(const TBus&) = delete;
  TBus& operator=(const TBus&) = delete;

  /// Has `AHandler` called for every signal that the match rule lets through.
  void Match(const std::string& ARule, TSignalHandler AHandler);
  /// Calls, and has `AHandler` called with the reply or the error, within 5 seconds. One call is
  /// under way at a time: a new one gives up the one before it.
  void Call(const TBusCall& ACall, TReplyHandler AHandler);
  /// Gives up the call that is under way.
  void CancelCall() noexcept;
  /// Calls and waits for the reply, 1 second at most; what comes back is not looked at.
  void CallAndWait(const TBusCall& ACall) noexcept;

  /// Does what is due: sends, or takes one message and runs its handler. The handler of a call
  /// that had no reply in time runs even when the result is `Idle`.
  TProgress Process();
  int GetFd() const noexcept;
  /// The events of `poll` that the connection waits for.
  short GetEvents() const noexcept;
  /// When `Process` is due although nothing has happened on the socket, in `Ticks`.
  TTicks GetDeadline() const noexcept;
  /// The connection for what this class does not offer; stays its own.
  sd_bus* GetHandle() const noexcept { return FBus.get(); }

 private:
  using TMessage = std::unique_ptr<sd_bus_message, TBusRelease>;

  TMessage MakeMessage(const TBusCall& ACall) noexcept;
  void HandleReply(sd_bus_message* AMessage) noexcept;

  std::unique_ptr<sd_bus, TBusRelease> FBus;  // declared first: slots are released before it
  std::vector<std::unique_ptr<TSignalHandler>> FHandlers;
  std::vector<TBusSlot> FMatches;
  TReplyHandler FReplyHandler;
  TBusSlot FCall;
  bool FIsLost = false;  // refuses to send: of no more use
};

}  // namespace System::Beacon
