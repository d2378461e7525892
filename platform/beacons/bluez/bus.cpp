#include "platform/beacons/bluez/bus.h"

#include <fmt/format.h>
#include <poll.h>
#include <systemd/sd-bus.h>
#include <time.h>

#include <cstring>

#include "platform/beacons/advertisement.h"
#include "platform/beacons/bluez/messages.h"

namespace System::Beacon {
namespace {

constexpr TTicks CallTimeout = 5 * TicksPerSecond;
constexpr TTicks WaitingCallTimeout = TicksPerSecond;

int CallSignalHandler(sd_bus_message* AMessage, void* AHandler, sd_bus_error*) noexcept {
  TBusReader Reader(AMessage);
  (*static_cast<TBus::TSignalHandler*>(AHandler))(Reader);
  return 0;
}

TBusError ErrorOf(sd_bus_message* AMessage) {
  const sd_bus_error* Error = sd_bus_message_get_error(AMessage);
  if (!Error || !Error->name) return {};
  return {Error->name, Error->message ? Error->message : ""};
}

// The clock that the bus library counts its timeouts in.
TTicks BusClock() noexcept {
  timespec Time{};
  clock_gettime(CLOCK_MONOTONIC, &Time);
  return Time.tv_sec * TicksPerSecond + Time.tv_nsec / 1'000;
}

}  // namespace

void TBusRelease::operator()(sd_bus* ABus) const noexcept {
  sd_bus_close_unref(ABus);
}
void TBusRelease::operator()(sd_bus_slot* ASlot) const noexcept {
  sd_bus_slot_unref(ASlot);
}
void TBusRelease::operator()(sd_bus_message* AMessage) const noexcept {
  sd_bus_message_unref(AMessage);
}

TBus::TBus() {
  sd_bus* Bus = nullptr;
  const int Result = sd_bus_open_system(&Bus);
  FBus.reset(Bus);
  if (Result < 0) throw EBeaconSourceError(fmt::format(Messages::SNoBus, std::strerror(-Result)));
}

void TBus::Match(const std::string& ARule, TSignalHandler AHandler) {
  FHandlers.push_back(std::make_unique<TSignalHandler>(std::move(AHandler)));
  sd_bus_slot* Slot = nullptr;
  if (sd_bus_add_match_async(
          FBus.get(), &Slot, ARule.c_str(), CallSignalHandler, nullptr, FHandlers.back().get()) < 0)
    FIsLost = true;
  FMatches.emplace_back(Slot);
}

TBus::TMessage TBus::MakeMessage(const TBusCall& ACall) noexcept {
  sd_bus_message* Raw = nullptr;
  int Result = sd_bus_message_new_method_call(
      FBus.get(), &Raw, "org.bluez", ACall.Path.c_str(), ACall.Interface, ACall.Method);
  TMessage Message(Raw);
  if (Result >= 0) Result = sd_bus_message_set_auto_start(Raw, 0);
  if (Result >= 0 && ACall.AppendArguments) Result = ACall.AppendArguments(Raw);
  if (Result < 0) Message.reset();
  return Message;
}

void TBus::Call(const TBusCall& ACall, TReplyHandler AHandler) {
  CancelCall();
  FReplyHandler = std::move(AHandler);
  const auto HandOver = [](sd_bus_message* AMessage, void* ASelf, sd_bus_error*) noexcept {
    static_cast<TBus*>(ASelf)->HandleReply(AMessage);
    return 0;
  };
  const TMessage Message = MakeMessage(ACall);
  sd_bus_slot* Slot = nullptr;
  if (!Message ||
      sd_bus_call_async(FBus.get(), &Slot, Message.get(), HandOver, this, CallTimeout) < 0)
    FIsLost = true;
  FCall.reset(Slot);
}

void TBus::CancelCall() noexcept {
  FCall.reset();
  FReplyHandler = nullptr;
}

void TBus::HandleReply(sd_bus_message* AMessage) noexcept {
  const TReplyHandler Handler = std::move(FReplyHandler);  // it may start the next call
  CancelCall();
  if (sd_bus_is_open(FBus.get()) <= 0) return;  // the connection ends, and all calls with it
  TBusReader Reader(AMessage);
  Handler(Reader, ErrorOf(AMessage));
}

void TBus::CallAndWait(const TBusCall& ACall) noexcept {
  if (const TMessage Message = MakeMessage(ACall))
    sd_bus_call(FBus.get(), Message.get(), WaitingCallTimeout, nullptr, nullptr);
}

TBus::TProgress TBus::Process() {
  const int Result = FIsLost ? -ENOTCONN : sd_bus_process(FBus.get(), nullptr);
  if (Result < 0) return TProgress::Lost;
  return Result > 0 ? TProgress::Worked : TProgress::Idle;
}

int TBus::GetFd() const noexcept {
  return sd_bus_get_fd(FBus.get());
}

short TBus::GetEvents() const noexcept {
  const int Events = sd_bus_get_events(FBus.get());
  return static_cast<short>(Events < 0 ? POLLIN : Events);
}

TTicks TBus::GetDeadline() const noexcept {
  std::uint64_t Deadline = 0;
  if (FIsLost || sd_bus_get_timeout(FBus.get(), &Deadline) < 0) return Ticks();
  if (Deadline == UINT64_MAX) return NoDeadline;
  return After(Ticks(), static_cast<TTicks>(Deadline) - BusClock());
}

}  // namespace System::Beacon
