#include "support/scripted_source.h"

#include <algorithm>
#include <array>
#include <memory>

#include "platform/beacons/simulated/beacon_payload.h"

namespace System::Beacon {
namespace {

std::uint16_t ToWord(int AValue) {
  return static_cast<std::uint16_t>(AValue);
}

void Append16(TPayload& APayload, int AValue) {
  APayload.push_back(static_cast<std::uint8_t>(AValue >> 8));
  APayload.push_back(static_cast<std::uint8_t>(AValue));
}

TPayload EddystonePayload(const TPayload& AFrame) {
  const std::array<std::uint8_t, 4> Head{
      static_cast<std::uint8_t>(AFrame.size() + 3), 0x16, 0xAA, 0xFE};
  TPayload Result(Head.size() + AFrame.size());
  std::copy(AFrame.begin(), AFrame.end(), std::copy(Head.begin(), Head.end(), Result.begin()));
  return Result;
}

}  // namespace

TPayload iBeaconPayload(const TGUID& AGUID, int AMajor, int AMinor, int APower) {
  return MakeiBeaconPayload(AGUID, ToWord(AMajor), ToWord(AMinor), APower);
}

TPayload AltBeaconPayload(int ACompany, const TGUID& AGUID, int AMajor, int AMinor, int APower) {
  return MakeAltBeaconPayload(ToWord(ACompany), AGUID, ToWord(AMajor), ToWord(AMinor), APower);
}

TPayload EddystoneUIDPayload(const TEddystoneUID& AUID, int APowerAtZero) {
  constexpr int LossInFirstMetre = 41;  // dB
  return MakeEddystonePayload(AUID, APowerAtZero - LossInFirstMetre);
}

TPayload EddystoneURLPayload(const std::string& AText) {
  TPayload Frame{0x10, 0x00, 0x03};
  Frame.insert(Frame.end(), AText.begin(), AText.end());
  return EddystonePayload(Frame);
}

TPayload EddystoneTLMPayload(int AMillivolts) {
  TPayload Frame{0x20, 0x00};
  Append16(Frame, AMillivolts);
  Frame.resize(14);
  return EddystonePayload(Frame);
}

// ---------------------------------------------------------------- TScriptedSource

TScriptedSource::TScriptedSource(std::vector<TSourceStep> ASteps)
    : FNextStep([Steps = std::move(ASteps), I = std::size_t{0}](TSourceStep& AStep) mutable {
        if (I == Steps.size()) return false;
        AStep = Steps[I++];
        return true;
      }) {}

void TScriptedSource::Open() {
  if (!OpenError.empty()) throw EBeaconSourceError(OpenError);
  FWake.ResetEvent();
  FDue = Ticks() + FStep.Delay;
  ++OpenCount;
}

TSourceResult TScriptedSource::Next(TAdvertisement& AAdvertisement, TTicks ADeadline) {
  if (!FHasStep) {
    FHasStep = FNextStep(FStep);
    if (!FHasStep) {
      FFinished.SetEvent();
      if (!EndError.empty()) throw EBeaconSourceError(EndError);
      return TSourceResult::Finished;
    }
    FDue += FStep.Delay;
  }
  if (FWake.WaitUntil(std::min(FDue, ADeadline))) {
    FWake.ResetEvent();
    return TSourceResult::Interrupted;
  }
  if (FDue > ADeadline) return TSourceResult::TimedOut;
  FHasStep = false;
  std::swap(FDelivered, FStep);
  FStep.Delay = 0;
  AAdvertisement.Time = FDue;
  AAdvertisement.Address = {{0xC0, 0, 0, 0, 0, FDelivered.Address}};
  AAdvertisement.Rssi = static_cast<std::int8_t>(FDelivered.Rssi);
  AAdvertisement.Payload = FDelivered.Payload;
  return TSourceResult::Advertisement;
}

}  // namespace System::Beacon
