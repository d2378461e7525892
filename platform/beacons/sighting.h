// The sightings that the service hands out. Written by the reporting thread, read by any.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <list>
#include <vector>

#include "platform/beacons/System.Beacon.h"
#include "platform/beacons/frame.h"

namespace System::Beacon {

/// The median of the strengths of the last second, at most the 32 newest of them. Small, so that
/// the strengths of thousands of beacons stay in the processor's cache.
class TStrengthMedian {
 public:
  static constexpr TTicks Window = TicksPerSecond;

  /// Times do not run backwards.
  void Add(TTicks ATime, std::int8_t ARssi) noexcept;
  /// Twice the median in dBm (two middle values are averaged), as of the last `Add`, which must
  /// have been made.
  int GetTwiceMedian() const noexcept;

 private:
  static constexpr std::size_t Capacity = 32;
  void DropOld(TTicks ATime) noexcept;
  void DropOldest() noexcept;

  TTicks FNewest = 0;
  std::array<std::uint32_t, Capacity> FTimes{};  // low bits; all are within a window of FNewest
  std::array<std::int8_t, Capacity> FValues{};   // parallel to FTimes, a ring
  std::array<std::int8_t, Capacity> FSorted{};
  std::uint8_t FFirst = 0;
  std::uint8_t FCount = 0;
};

/// One beacon that is or was present.
class TSighting : public TInterfacedObject, public virtual IBeacon {
 public:
  TGUID GetGUID() const override { return FGUID; }
  int GetMajor() const override { return FMajor; }
  int GetMinor() const override { return FMinor; }
  double GetDistance() const override { return FDistance.load(std::memory_order_relaxed); }
  TBeaconProximity GetProximity() const override {
    return FProximity.load(std::memory_order_relaxed);
  }
  bool IsAlive() const override { return FIsAlive.load(std::memory_order_acquire); }
  int GetRssi() const override { return FRssi.load(std::memory_order_relaxed); }
  int GetTxPower() const override { return FTxPower.load(std::memory_order_relaxed); }
  TBluetoothAddress GetAddress() const override;
  const IiBeacon* GetiBeaconView() const override { return nullptr; }
  const IAltBeacon* GetAltBeaconView() const override { return nullptr; }
  const IEddystoneBeacon* GetEddystoneView() const override { return nullptr; }

  void SetAddress(const TBluetoothAddress& AValue) noexcept;
  void SetRssi(std::int8_t AValue) noexcept { FRssi.store(AValue, std::memory_order_relaxed); }
  void SetTxPower(std::int8_t AValue) noexcept {
    FTxPower.store(AValue, std::memory_order_relaxed);
  }
  void SetDistance(double AValue) noexcept { FDistance.store(AValue, std::memory_order_relaxed); }
  void SetProximity(TBeaconProximity AValue) noexcept {
    FProximity.store(AValue, std::memory_order_relaxed);
  }
  /// Not alive, no distance, proximity `Away`.
  void MarkLost() noexcept;

  /// What the tracker keeps with the sighting; reporting thread only.
  struct TTracking {
    TBeaconIdentity Key;
    TTicks LastSeen = 0;
    bool IsStale = false;
    std::uint64_t AcceptedBy = 0;  ///< generation of the filter that accepted it
    int ManufacturerID = -1;       ///< company that was accepted
    std::list<TRef<TSighting>>::iterator Place;
    std::vector<TBluetoothAddress> Addresses;  ///< Eddystone: addresses that lead here
    TStrengthMedian Strengths;
  };
  TTracking Tracking;

 protected:
  TSighting() = default;
  TSighting(const TGUID& AGUID, std::uint16_t AMajor, std::uint16_t AMinor)
      : FGUID(AGUID), FMajor(AMajor), FMinor(AMinor) {}

 private:
  const TGUID FGUID{};
  const std::uint16_t FMajor = 0;
  const std::uint16_t FMinor = 0;
  std::atomic<std::uint64_t> FAddress{0};
  std::atomic<double> FDistance{-1.0};
  std::atomic<int> FRssi{UnknownRssi};
  std::atomic<int> FTxPower{NoPower};
  std::atomic<TBeaconProximity> FProximity{TBeaconProximity::Away};
  std::atomic<bool> FIsAlive{true};
};

/// The sighting object for a frame that carries an identity.
TRef<TSighting> NewSighting(const TBeaconFrame& AFrame);

/// The key of a frame that carries an identity; kinds are told apart.
TBeaconIdentity KeyOf(const TBeaconFrame& AFrame) noexcept;

}  // namespace System::Beacon
