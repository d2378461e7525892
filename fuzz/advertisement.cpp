// Advertising payloads, through decoder and tracker.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "platform/beacons/tracker.h"

namespace {

using namespace System;
using namespace System::Beacon;

/// Checks what every report must hold.
class TCheckingListener final : public ITrackerListener {
 public:
  void BeaconEntered(const TRef<IBeacon>& ABeacon, const TBeaconList& AList) override {
    if (!ABeacon->IsAlive() || AList.IsEmpty() || !LookUpKeyOf(*ABeacon)) std::abort();
  }
  void BeaconExited(const TRef<IBeacon>& ABeacon, const TBeaconList&) override {
    if (ABeacon->IsAlive() || ABeacon->GetDistance() != -1.0) std::abort();
  }
  void ProximityChanged(const TRef<IBeacon>& ABeacon, TBeaconProximity AProximity) override {
    if (ABeacon->GetProximity() != AProximity) std::abort();
  }
  void EddystoneURLSeen(const TRef<IBeacon>& ABeacon, const TEddystoneURL& AURL) override {
    if (!ABeacon->GetEddystoneView() || AURL.URL.empty()) std::abort();
  }
  void EddystoneTLMSeen(const TRef<IBeacon>& ABeacon, const TEddystoneTLM&) override {
    if (!ABeacon->GetEddystoneView()) std::abort();
  }
  bool WantsSightings() const override { return false; }
  bool WantsDistances() const override { return false; }
  void Sighted(const TRef<IBeacon>&) override {}
  void CalcDistance(const TRef<IBeacon>&, int, int, double&) override {}
};

/// Regions that accept whatever the corpus begins with.
void AcceptAll(TBeaconTracker& ATracker) {
  std::vector<TBeaconsRegion> Regions(2);
  Regions[1].KindofBeacon = TKindofBeacon::Eddystone;
  ATracker.SetRegions(Regions, {TKindofBeacon::iBeaconAltBeacon, TKindofBeacon::Eddystone});
}

}  // namespace

/// The input is a sequence of (length, payload); UUID and namespace of the regions are all zero.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* AData, std::size_t ASize) {
  static TCheckingListener Listener;
  static TBeaconTracker Tracker(Listener);
  AcceptAll(Tracker);
  Tracker.Clear();
  TTicks Now = 0;
  for (std::size_t At = 0; At < ASize; Now += 700 * TicksPerMillisecond) {
    const std::size_t Length = std::min<std::size_t>(AData[At], ASize - At - 1);
    TAdvertisement Advertisement;
    Advertisement.Address.Bytes[5] = static_cast<std::uint8_t>(Length & 3);
    Advertisement.Rssi = static_cast<std::int8_t>(AData[At] ^ 0xB0);
    Advertisement.Payload = {AData + At + 1, Length};
    Tracker.Expire(Now);
    Tracker.Process(Advertisement, Now);
    At += 1 + Length;
  }
  Tracker.Expire(Now + 100 * TicksPerSecond);
  if (Tracker.GetPresentCount() != 0) std::abort();
  return 0;
}
