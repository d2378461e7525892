#include "apps/wayfence/power_source.h"

#include <algorithm>
#include <span>

#include "platform/beacons/frame.h"

namespace Wayfence {

using namespace System;
using namespace System::Beacon;

namespace {

constexpr int EddystoneLossAtOneMetre = 41;  // dB; its frames give the power at 0 m

std::uint8_t PowerByteOf(const TListedBeacon& ABeacon) {
  const bool IsEddystone = ABeacon.GetKindofBeacon() == TKindofBeacon::Eddystone;
  return static_cast<std::uint8_t>(ABeacon.GetPower() +
                                   (IsEddystone ? EddystoneLossAtOneMetre : 0));
}

/// Whether the frame names a beacon, and carries no power.
bool LacksPower(const TBeaconFrame& AFrame) noexcept {
  return AFrame.Id && AFrame.Power == NoPower;
}

TBeaconIdentity IdentityOf(const TBeaconFrame& AFrame) noexcept {
  if (AFrame.Kind != TFrameKind::EddystoneUID)
    return TBeaconIdentity::OfUUID(AFrame.GetGUID(), AFrame.Major, AFrame.Minor);
  return TBeaconIdentity::OfEddystone(std::span<const std::uint8_t, 10>(AFrame.Id, 10),
                                      std::span<const std::uint8_t, 6>(AFrame.Id + 10, 6));
}

/// After UUID, major and minor; before the namespace.
const std::uint8_t* PlaceOfPower(const TBeaconFrame& AFrame) noexcept {
  return AFrame.Kind == TFrameKind::EddystoneUID ? AFrame.Id - 1 : AFrame.Id + 20;
}

}  // namespace

TPowerSource::TPowerSource(TRef<IAdvertisementSource> ASource,
                           const std::vector<TRef<TListedBeacon>>& ABeacons)
    : FSource(std::move(ASource)) {
  for (const TRef<TListedBeacon>& Beacon : ABeacons)
    if (Beacon->GetPower() != NoPower) FPowers.Insert(Beacon->GetIdentity(), PowerByteOf(*Beacon));
}

TSourceResult TPowerSource::Next(TAdvertisement& AAdvertisement, TTicks ADeadline) {
  const TSourceResult Result = FSource->Next(AAdvertisement, ADeadline);
  if (Result == TSourceResult::Advertisement) SupplyPowers(AAdvertisement);
  return Result;
}

void TPowerSource::SupplyPowers(TAdvertisement& AAdvertisement) {
  const std::span<const std::uint8_t> Payload = AAdvertisement.Payload;
  if (Payload.size() > FPayload.size()) return;
  TFrameReader Reader(Payload);
  TBeaconFrame Frame;
  while (Reader.Next(Frame)) {
    const std::uint8_t* const Power = LacksPower(Frame) ? FPowers.Find(IdentityOf(Frame)) : nullptr;
    if (!Power) continue;
    if (AAdvertisement.Payload.data() == Payload.data()) {
      std::copy(Payload.begin(), Payload.end(), FPayload.begin());
      AAdvertisement.Payload = std::span(FPayload).first(Payload.size());
    }
    FPayload[static_cast<std::size_t>(PlaceOfPower(Frame) - Payload.data())] = *Power;
  }
}

}  // namespace Wayfence
