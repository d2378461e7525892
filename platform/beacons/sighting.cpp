#include "platform/beacons/sighting.h"

#include <algorithm>
#include <utility>

namespace System::Beacon {
namespace {

class TiBeaconSighting final : public TSighting, public virtual IiBeacon {
 public:
  explicit TiBeaconSighting(const TBeaconFrame& AFrame)
      : TSighting(AFrame.GetGUID(), AFrame.Major, AFrame.Minor) {}
  TKindofBeacon GetKindofBeacon() const override { return TKindofBeacon::iBeacon; }
  const IiBeacon* GetiBeaconView() const override { return this; }
};

class TAltBeaconSighting final : public TSighting, public virtual IAltBeacon {
 public:
  explicit TAltBeaconSighting(const TBeaconFrame& AFrame)
      : TSighting(AFrame.GetGUID(), AFrame.Major, AFrame.Minor),
        FManufacturerID(AFrame.ManufacturerID) {}
  TKindofBeacon GetKindofBeacon() const override { return TKindofBeacon::AltBeacon; }
  const IAltBeacon* GetAltBeaconView() const override { return this; }
  int GetManufacturerID() const override { return FManufacturerID; }

 private:
  const int FManufacturerID;
};

class TEddystoneSighting final : public TSighting, public virtual IEddystoneBeacon {
 public:
  explicit TEddystoneSighting(const TBeaconFrame& AFrame) {
    std::copy_n(AFrame.Id, 10, FUID.Namespace.begin());
    std::copy_n(AFrame.Id + 10, 6, FUID.Instance.begin());
  }
  TKindofBeacon GetKindofBeacon() const override { return TKindofBeacon::Eddystone; }
  const IEddystoneBeacon* GetEddystoneView() const override { return this; }
  TEddystoneUID GetEddystoneUID() const override { return FUID; }

 private:
  TEddystoneUID FUID;
};

}  // namespace

// ---------------------------------------------------------------- TStrengthMedian

void TStrengthMedian::Add(TTicks ATime, std::int8_t ARssi) noexcept {
  DropOld(ATime);
  if (FCount == Capacity) DropOldest();
  const std::size_t At = (FFirst + FCount) % Capacity;
  FNewest = ATime;
  FTimes[At] = static_cast<std::uint32_t>(ATime);
  FValues[At] = ARssi;
  auto* const End = FSorted.data() + FCount;
  auto* const Place = std::upper_bound(FSorted.data(), End, ARssi);
  std::move_backward(Place, End, End + 1);
  *Place = ARssi;
  ++FCount;
}

int TStrengthMedian::GetTwiceMedian() const noexcept {
  return FSorted[(FCount - 1U) / 2] + FSorted[FCount / 2U];
}

void TStrengthMedian::DropOld(TTicks ATime) noexcept {
  if (ATime - FNewest >= Window) FCount = 0;
  while (FCount > 0 && static_cast<std::uint32_t>(ATime) - FTimes[FFirst] >= Window) DropOldest();
}

void TStrengthMedian::DropOldest() noexcept {
  auto* const End = FSorted.data() + FCount;
  auto* const Place = std::lower_bound(FSorted.data(), End, FValues[FFirst]);
  std::move(Place + 1, End, Place);
  FFirst = static_cast<std::uint8_t>((FFirst + 1U) % Capacity);
  --FCount;
}

// ---------------------------------------------------------------- TSighting

TBluetoothAddress TSighting::GetAddress() const {
  const std::uint64_t Packed = FAddress.load(std::memory_order_relaxed);
  TBluetoothAddress Result;
  for (std::size_t I = 0; I < 6; ++I)
    Result.Bytes[I] = static_cast<std::uint8_t>(Packed >> (8 * (5 - I)));
  return Result;
}

void TSighting::SetAddress(const TBluetoothAddress& AValue) noexcept {
  std::uint64_t Packed = 0;
  for (const std::uint8_t Byte : AValue.Bytes) Packed = Packed << 8 | Byte;
  FAddress.store(Packed, std::memory_order_relaxed);
}

void TSighting::MarkLost() noexcept {
  SetDistance(-1.0);
  SetProximity(TBeaconProximity::Away);
  FIsAlive.store(false, std::memory_order_release);
}

TRef<TSighting> NewSighting(const TBeaconFrame& AFrame) {
  switch (AFrame.Kind) {
    case TFrameKind::iBeacon:
      return New<TiBeaconSighting>(AFrame);
    case TFrameKind::AltBeacon:
      return New<TAltBeaconSighting>(AFrame);
    default:
      return New<TEddystoneSighting>(AFrame);
  }
}

TBeaconIdentity KeyOf(const TBeaconFrame& AFrame) noexcept {
  if (AFrame.Kind == TFrameKind::EddystoneUID)
    return TBeaconIdentity::OfEddystone(std::span<const std::uint8_t, 10>(AFrame.Id, 10),
                                        std::span<const std::uint8_t, 6>(AFrame.Id + 10, 6));
  const std::uint8_t Tag = AFrame.Kind == TFrameKind::AltBeacon ? 1 : 0;
  return TBeaconIdentity::OfUUID(AFrame.GetGUID(), AFrame.Major, AFrame.Minor, Tag);
}

// ---------------------------------------------------------------- of any sighting

std::optional<TBeaconIdentity> LookUpKeyOf(const IBeacon& ABeacon) {
  switch (ABeacon.GetKindofBeacon()) {
    case TKindofBeacon::iBeacon:
    case TKindofBeacon::iBeaconAltBeacon:
      if (!ABeacon.GetiBeaconView()) return std::nullopt;
      break;
    case TKindofBeacon::AltBeacon:
      if (!ABeacon.GetAltBeaconView()) return std::nullopt;
      break;
    case TKindofBeacon::Eddystone: {
      const IEddystoneBeacon* const View = ABeacon.GetEddystoneView();
      if (!View) return std::nullopt;
      const TEddystoneUID UID = View->GetEddystoneUID();
      return TBeaconIdentity::OfEddystone(UID.Namespace, UID.Instance);
    }
  }
  const int Major = ABeacon.GetMajor();
  const int Minor = ABeacon.GetMinor();
  if (!std::in_range<std::uint16_t>(Major) || !std::in_range<std::uint16_t>(Minor))
    return std::nullopt;
  return TBeaconIdentity::OfUUID(
      ABeacon.GetGUID(), static_cast<std::uint16_t>(Major), static_cast<std::uint16_t>(Minor));
}

bool IsSameBeacon(const IBeacon* A, const IBeacon* B) {
  if (!A || !B) return A == B;
  if (A == B) return true;
  if (A->GetKindofBeacon() != B->GetKindofBeacon()) return false;
  const std::optional<TBeaconIdentity> Key = LookUpKeyOf(*A);
  return Key && Key == LookUpKeyOf(*B);
}

}  // namespace System::Beacon
