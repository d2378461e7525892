// The bookkeeping of the beacon service: which beacons are present, how far, since when.
// No thread and no clock of its own: time is what it is told.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <list>
#include <vector>

#include "platform/beacons/region_filter.h"
#include "platform/beacons/sighting.h"

namespace System::Beacon {

/// What the tracker reports; called by the thread that feeds it.
class ITrackerListener {
 public:
  virtual void BeaconEntered(const TRef<IBeacon>& ABeacon, const TBeaconList& AList) = 0;
  virtual void BeaconExited(const TRef<IBeacon>& ABeacon, const TBeaconList& AList) = 0;
  virtual void ProximityChanged(const TRef<IBeacon>& ABeacon, TBeaconProximity AProximity) = 0;
  virtual void EddystoneURLSeen(const TRef<IBeacon>& ABeacon, const TEddystoneURL& AURL) = 0;
  virtual void EddystoneTLMSeen(const TRef<IBeacon>& ABeacon, const TEddystoneTLM& ATLM) = 0;

  /// Which of the two frequent reports below are wanted.
  virtual bool WantsSightings() const = 0;
  virtual bool WantsDistances() const = 0;
  virtual void Sighted(const TRef<IBeacon>& ABeacon) = 0;
  virtual void CalcDistance(const TRef<IBeacon>& ABeacon,
                            int ATxPower,
                            int ARssi,
                            double& ADistance) = 0;

 protected:
  ~ITrackerListener() = default;
};

struct TTrackerSettings {
  TTicks DeathTime = 20 * TicksPerSecond;
  TTicks DistanceLifetime = 5 * TicksPerSecond;
  float SPC = 0.5F;
  TBeaconCalcMode CalcMode = TBeaconCalcMode::Stabilized;
};

/// Distances by strength: 10^((power - rssi)/10 · SPC) metres (the log-distance path loss model;
/// Rappaport, 1996), computed once for every half decibel.
class TDistanceTable {
 public:
  explicit TDistanceTable(float ASPC) { Assign(ASPC); }
  void Assign(float ASPC);
  /// `ATwiceLoss`: twice (power - rssi) in dB. -1 where the formula gives no finite number.
  double GetDistance(int ATwiceLoss) const noexcept;

 private:
  static constexpr int MaxTwiceLoss = 512;
  std::array<double, 2 * MaxTwiceLoss + 1> FDistances{};
};

/// The ordinal by distance: immediate up to 0.5 m, near up to 3 m, far beyond; away when unknown.
TBeaconProximity ProximityOf(double ADistanceInMetres) noexcept;

/// The record of an Eddystone telemetry frame's 12 bytes.
TEddystoneTLM ReadTLM(std::span<const std::uint8_t> AData);

/// One thread at a time, except for `GetStatistics`.
class TBeaconTracker {
 public:
  /// More beacons at once than this are not taken in: no place has as many, but a hostile radio or
  /// recording can make up any number.
  static constexpr std::size_t MaxPresent = 16384;

  explicit TBeaconTracker(ITrackerListener& AListener) : FListener(AListener) {}
  ~TBeaconTracker() { Clear(); }

  void Configure(const TTrackerSettings& ASettings);
  void SetRegions(std::span<const TBeaconsRegion> ARegions, TKindofBeacons AKinds) {
    FFilter.Assign(ARegions, AKinds);
  }

  /// Takes in one advertisement that arrived at `ANow`.
  void Process(const TAdvertisement& AAdvertisement, TTicks ANow);
  /// When the next beacon goes stale or is lost.
  TTicks GetNextDeadline() const noexcept;
  /// Reports what has gone stale or was lost until `ANow`.
  void Expire(TTicks ANow);
  /// Forgets all beacons; they are no longer alive. Nothing is reported.
  void Clear();

  std::size_t GetPresentCount() const noexcept { return FPresent.size(); }
  /// Any thread.
  TScanStatistics GetStatistics() const noexcept;

 private:
  void ProcessIdentity(const TBeaconFrame& AFrame,
                       const TAdvertisement& AAdvertisement,
                       TTicks ANow);
  void ProcessTelemetry(const TBeaconFrame& AFrame,
                        const TAdvertisement& AAdvertisement,
                        TTicks ANow);
  bool StillAccepts(TSighting& ASighting, const TBeaconFrame& AFrame) const;
  void Enter(const TBeaconFrame& AFrame,
             const TBeaconIdentity& AKey,
             const TAdvertisement& AAdvertisement,
             TTicks ANow);
  void Refresh(TSighting& ASighting, const TAdvertisement& AAdvertisement, TTicks ANow);
  void Measure(TSighting& ASighting, std::int8_t ARssi, TTicks ANow);
  double DistanceOf(TSighting& ASighting, std::int8_t ARssi, TTicks ANow);
  void SetProximity(TSighting& ASighting);
  void RememberAddress(TSighting& ASighting, const TBluetoothAddress& AAddress);
  void ForgetAddresses(const TSighting& ASighting);
  void GoStale(TSighting& ASighting);
  void Lose(TSighting& ASighting);
  TSighting* GetOldest() const noexcept;
  TBeaconList Snapshot() const;

  ITrackerListener& FListener;
  TTrackerSettings FSettings;
  TDistanceTable FDistances{TTrackerSettings{}.SPC};
  TRegionFilter FFilter;
  TIdentityTable<TSighting*> FByIdentity;
  TIdentityTable<TSighting*> FByAddress;  // Eddystone only
  std::vector<TRef<TSighting>> FPresent;  // in order of first sighting
  std::list<TRef<TSighting>> FFresh;      // least recently seen first
  std::list<TRef<TSighting>> FStale;      // the same, distance unknown by age

  struct TCounters {
    std::atomic<std::uint64_t> Advertisements{0}, Frames{0}, Sightings{0}, Malformed{0};
  };
  TCounters FCounters;
};

}  // namespace System::Beacon
