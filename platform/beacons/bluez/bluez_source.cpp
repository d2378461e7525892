#include "platform/beacons/bluez_source.h"

#include <fmt/format.h>
#include <poll.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <memory>
#include <utility>

#include "platform/beacons/bluez/devices.h"
#include "platform/beacons/bluez/messages.h"
#include "platform/beacons/bluez/session.h"
#include "platform/beacons/bluez/wake_up.h"

namespace System::Beacon {
namespace {

constexpr TTicks FirstReconnectDelay = TicksPerSecond / 2;
constexpr TTicks LastReconnectDelay = 30 * TicksPerSecond;
// The poll call counts milliseconds in an int.
constexpr TTicks LongestWait = 3'600 * TicksPerSecond;

class TBluezSource final : public TInterfacedObject, public virtual IAdvertisementSource {
 public:
  TBluezSource(const std::string& AAdapter, TBluezOptions AOptions)
      : FAdapter(AAdapter), FOptions(std::move(AOptions)) {}
  ~TBluezSource() override { TBluezSource::Close(); }

  void Open() override;
  void Close() noexcept override;
  TSourceResult Next(TAdvertisement& AAdvertisement, TTicks ADeadline) override;
  void Interrupt() noexcept override { FWakeUp.Set(); }
  bool IsLive() const override { return true; }

 private:
  void StartScanning();
  bool Take(TAdvertisement& AAdvertisement);
  bool Process();
  bool Reconnect();
  void LoseSession();
  void Wait(TTicks ADeadline);
  void TellChanges();
  void Tell(const std::string& AText);

  const std::string FAdapter;
  const TBluezOptions FOptions;
  TWakeUp FWakeUp;
  TBluezDevices FDevices;
  std::unique_ptr<TBluezSession> FSession;  // empty while closed or without a bus
  bool FIsOpen = false;
  THeardAdvertisement FHeard;  // what `Next` delivered last
  std::string FToldTrouble;    // empty: told that all is well, or nothing yet
  std::string FToldNotice;
  TTicks FReconnectDelay = FirstReconnectDelay;
  TTicks FReconnectAt = NoDeadline;
};

void TBluezSource::Open() {
  Close();
  try {
    StartScanning();
  } catch (...) {
    Close();
    throw;
  }
  FIsOpen = true;
}

void TBluezSource::StartScanning() {
  FSession = std::make_unique<TBluezSession>(FAdapter, FDevices);
  for (;;) {
    const TBus::TProgress Progress = FSession->Process();
    if (FSession->IsScanning()) return;
    if (!FSession->GetTrouble().empty()) throw EBeaconSourceError(FSession->GetTrouble());
    if (Progress == TBus::TProgress::Lost)
      throw EBeaconSourceError(fmt::format(Messages::SNoBus, "the connection was closed"));
    if (Progress == TBus::TProgress::Idle) Wait(NoDeadline);
  }
}

void TBluezSource::Close() noexcept {
  if (FSession) FSession->Stop();
  FSession.reset();
  FDevices = TBluezDevices();
  FToldTrouble.clear();
  FToldNotice.clear();
  FReconnectAt = NoDeadline;
  FWakeUp.Take();
  FIsOpen = false;
}

TSourceResult TBluezSource::Next(TAdvertisement& AAdvertisement, TTicks ADeadline) {
  if (!FIsOpen) throw EBeaconSourceError(Messages::SSourceClosed);
  for (;;) {
    if (FWakeUp.Take()) return TSourceResult::Interrupted;
    if (Take(AAdvertisement)) return TSourceResult::Advertisement;
    const bool HasWorked = Process();
    TellChanges();
    if (FDevices.HasHeard()) continue;
    if (Ticks() >= ADeadline) return TSourceResult::TimedOut;
    if (!HasWorked) Wait(ADeadline);
  }
}

bool TBluezSource::Take(TAdvertisement& AAdvertisement) {
  if (!FDevices.Take(FHeard)) return false;
  AAdvertisement = {FHeard.Time, FHeard.Address, FHeard.Rssi, FHeard.Payload};
  return true;
}

// Whether there was something to do.
bool TBluezSource::Process() {
  if (!FSession) return Reconnect();
  const TBus::TProgress Progress = FSession->Process();
  if (Progress == TBus::TProgress::Lost) LoseSession();
  return Progress != TBus::TProgress::Idle;
}

bool TBluezSource::Reconnect() {
  if (Ticks() < FReconnectAt) return false;
  try {
    FSession = std::make_unique<TBluezSession>(FAdapter, FDevices);
  } catch (const EBeaconSourceError&) {
    LoseSession();
  }
  return true;
}

void TBluezSource::LoseSession() {
  FSession.reset();
  FDevices.ForgetAll();
  FReconnectAt = After(Ticks(), FReconnectDelay);
  FReconnectDelay = std::min(2 * FReconnectDelay, LastReconnectDelay);
}

// Opening is not interrupted.
void TBluezSource::Wait(TTicks ADeadline) {
  std::array<pollfd, 2> Polled{pollfd{FIsOpen ? FWakeUp.GetFd() : -1, POLLIN, 0}, pollfd{-1, 0, 0}};
  if (FSession) Polled[1] = {FSession->GetBus().GetFd(), FSession->GetBus().GetEvents(), 0};
  const TTicks Due = FSession ? FSession->GetDeadline() : FReconnectAt;
  const TTicks Left = std::clamp<TTicks>(std::min(ADeadline, Due) - Ticks(), 0, LongestWait);
  const auto Milliseconds =
      static_cast<int>((Left + TicksPerMillisecond - 1) / TicksPerMillisecond);
  if (poll(Polled.data(), Polled.size(), Milliseconds) < 0 && errno != EINTR)
    throw EBeaconSourceError(fmt::format(Messages::SWaitFailed, std::strerror(errno)));
}

void TBluezSource::TellChanges() {
  if (!FSession) {
    if (FToldTrouble != Messages::SBusLost) Tell(FToldTrouble = Messages::SBusLost);
    return;
  }
  const std::string& Trouble = FSession->GetTrouble();
  if (!Trouble.empty() && Trouble != FToldTrouble) Tell(FToldTrouble = Trouble);
  if (!FSession->IsScanning()) return;
  FReconnectDelay = FirstReconnectDelay;
  if (!std::exchange(FToldTrouble, {}).empty())
    Tell(fmt::format(Messages::SScanningAgain, FSession->GetAdapterName()));
  if (std::exchange(FToldNotice, FSession->GetNotice()) != FSession->GetNotice() &&
      !FToldNotice.empty())
    Tell(FToldNotice);
}

void TBluezSource::Tell(const std::string& AText) {
  if (FOptions.OnDiagnostic) FOptions.OnDiagnostic(AText);
}

}  // namespace

TRef<IAdvertisementSource> NewBluezSource(const std::string& AAdapter, TBluezOptions AOptions) {
  return New<TBluezSource>(AAdapter, std::move(AOptions));
}

}  // namespace System::Beacon
