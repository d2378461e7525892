// Advertisements that a test makes up, as a source.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "platform/beacons/System.Beacon.h"
#include "platform/threads.h"

namespace System::Beacon {

using TPayload = std::vector<std::uint8_t>;

// Payloads of one frame; powers in dBm at 1 m (Eddystone: at 0 m, 41 dB more).
TPayload iBeaconPayload(const TGUID& AGUID, int AMajor, int AMinor, int APower = -59);
TPayload AltBeaconPayload(
    int ACompany, const TGUID& AGUID, int AMajor, int AMinor, int APower = -59);
TPayload EddystoneUIDPayload(const TEddystoneUID& AUID, int APowerAtZero = -18);
/// "https://" and the text.
TPayload EddystoneURLPayload(const std::string& AText);
TPayload EddystoneTLMPayload(int AMillivolts);

/// One advertisement, some time after the one before it (the first: after the source was opened).
struct TSourceStep {
  TTicks Delay = 0;  ///< microseconds
  TPayload Payload;
  int Rssi = -59;  ///< dBm
  std::uint8_t Address = 0;
};

/// Delivers steps one after the other. Opened again, it goes on where it was.
class TScriptedSource final : public TInterfacedObject, public virtual IAdvertisementSource {
 public:
  /// Fills in the next step; false at the end. Called on the reporting thread.
  using TNextStep = std::function<bool(TSourceStep& AStep)>;

  explicit TScriptedSource(TNextStep ANextStep) : FNextStep(std::move(ANextStep)) {}
  explicit TScriptedSource(std::vector<TSourceStep> ASteps);

  /// Makes `Open` raise it; empty: it opens.
  std::string OpenError;
  /// Raised at the end of the script in place of its end; empty: it ends.
  std::string EndError;
  int OpenCount = 0;

  void Open() override;
  void Close() noexcept override { --OpenCount; }
  TSourceResult Next(TAdvertisement& AAdvertisement, TTicks ADeadline) override;
  void Interrupt() noexcept override { FWake.SetEvent(); }
  bool IsLive() const override { return false; }
  /// Set when the last step has been delivered and taken in. Any thread.
  TEvent& GetFinished() noexcept { return FFinished; }

 private:
  const TNextStep FNextStep;
  TEvent FWake{"the next step of a script"};
  TEvent FFinished{"the end of a script"};
  TSourceStep FStep;
  TSourceStep FDelivered;  // owns the payload that was handed out
  bool FHasStep = false;
  TTicks FDue = 0;
};

}  // namespace System::Beacon
