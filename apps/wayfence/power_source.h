// Powers from a list of beacons, for frames that carry none.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "apps/wayfence/beacon_list.h"
#include "platform/beacons/advertisement.h"
#include "platform/beacons/identity.h"

namespace Wayfence {

/// Passes another source on. A frame of a listed beacon that carries no power gets the listed one,
/// in a copy of the payload; everything else is passed on as it is. Delivers on whichever thread
/// asks, one at a time.
class TPowerSource final : public System::TInterfacedObject,
                           public virtual System::Beacon::IAdvertisementSource {
 public:
  TPowerSource(System::TRef<System::Beacon::IAdvertisementSource> ASource,
               const std::vector<System::TRef<TListedBeacon>>& ABeacons);

  void Open() override { FSource->Open(); }
  void Close() noexcept override { FSource->Close(); }
  System::Beacon::TSourceResult Next(System::Beacon::TAdvertisement& AAdvertisement,
                                     System::TTicks ADeadline) override;
  void Interrupt() noexcept override { FSource->Interrupt(); }
  bool IsLive() const override { return FSource->IsLive(); }

 private:
  void SupplyPowers(System::Beacon::TAdvertisement& AAdvertisement);

  const System::TRef<System::Beacon::IAdvertisementSource> FSource;
  System::Beacon::TIdentityTable<std::uint8_t> FPowers;                 // as the frames carry them
  std::array<std::uint8_t, System::Beacon::MaxPayloadSize> FPayload{};  // the copy
};

}  // namespace Wayfence
