// The beacon service: turns the advertisements of a source into sightings of beacons (enter, exit,
// proximity, distance) for the regions that are registered.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/array.h"
#include "platform/beacons/advertisement.h"
#include "platform/beacons/identity.h"
#include "platform/enum_set.h"
#include "platform/guid.h"
#include "platform/method.h"
#include "platform/reflection.h"
#include "platform/threads.h"

namespace System::Beacon {

// ---------------------------------------------------------------- values

enum class TKindofBeacon : std::uint8_t { iBeacon, AltBeacon, Eddystone, iBeaconAltBeacon };
using TKindofBeacons = TSet<TKindofBeacon>;

/// A smaller ordinal from 1 on means nearer; `Away` means that no distance is known.
enum class TBeaconProximity : std::uint8_t { Unknown, Immediate, Near, Far, Away };

/// The strength that a distance is computed from: the last one, or the median of the last second.
enum class TBeaconCalcMode : std::uint8_t { Raw, Stabilized };
enum class TBeaconScanMode : std::uint8_t { Standard, Alternative };

/// An Eddystone-UID: 10 bytes of namespace and 6 of instance.
struct TEddystoneUID {
  std::array<std::uint8_t, 10> Namespace{};
  std::array<std::uint8_t, 6> Instance{};

  /// Take exactly 20 and 12 hexadecimal digits, either case; false leaves the record alone.
  bool SetNamespace(std::string_view AText) noexcept;
  bool SetInstance(std::string_view AText) noexcept;
  /// Upper-case digits.
  std::string GetNamespace() const;
  std::string GetInstance() const;

  bool operator==(const TEddystoneUID&) const = default;
};

/// An Eddystone URL frame.
struct TEddystoneURL {
  std::string URL;
  std::int8_t TxPower = 127;  ///< dBm at 1 m, 127 when not given
};

/// An Eddystone telemetry frame.
struct TEddystoneTLM {
  std::uint16_t BatteryVoltage = 0;      ///< millivolts, 0 when not supported
  std::optional<double> Temperature;     ///< degrees Celsius, nothing when not supported
  std::uint32_t AdvertisementCount = 0;  ///< since the beacon was switched on
  std::uint32_t TimeSinceBoot = 0;       ///< tenths of a second
};

// ---------------------------------------------------------------- regions

/// Eddystone beacons of one namespace, or one of them.
struct TEddysUIDRegion {
  void Initialize(const std::array<std::uint8_t, 10>& ANamespace);
  void Initialize(const std::array<std::uint8_t, 10>& ANamespace,
                  const std::array<std::uint8_t, 6>& AInstance);
  const std::array<std::uint8_t, 10>& GetNamespace() const noexcept { return UID.Namespace; }
  std::string GetNamespaceST() const { return UID.GetNamespace(); }
  /// Empty when the region has no instance.
  std::string GetInstanceST() const { return HasInstance ? UID.GetInstance() : std::string(); }

  TEddystoneUID UID;
  bool HasInstance = false;

  bool operator==(const TEddysUIDRegion&) const = default;
};

/// iBeacons or AltBeacons of one UUID, perhaps of one major, perhaps of one minor.
struct TiBAltBeaconRegion {
  void Initialize(const TGUID& AGUID, TKindofBeacon AKind, int AManufacturerID);
  void Initialize(const TGUID& AGUID,
                  std::uint16_t AMajor,
                  TKindofBeacon AKind,
                  int AManufacturerID);
  void Initialize(const TGUID& AGUID,
                  std::uint16_t AMajor,
                  std::uint16_t AMinor,
                  TKindofBeacon AKind,
                  int AManufacturerID);

  TGUID GUID;
  std::optional<std::uint16_t> Major;
  std::optional<std::uint16_t> Minor;  ///< only with a major
  TKindofBeacon KindofBeacon = TKindofBeacon::iBeaconAltBeacon;
  int ManufacturerID = -1;  ///< company identifier that AltBeacons must have; -1: any

  bool operator==(const TiBAltBeaconRegion&) const = default;
};

/// What the service is asked to look for.
struct TBeaconsRegion {
  TKindofBeacon KindofBeacon = TKindofBeacon::iBeaconAltBeacon;
  TEddysUIDRegion EddysUIDRegion;        ///< when the kind is Eddystone
  TiBAltBeaconRegion iBAltBeaconRegion;  ///< when it is not

  bool operator==(const TBeaconsRegion&) const = default;
};

// ---------------------------------------------------------------- sightings

class IiBeacon;
class IAltBeacon;
class IEddystoneBeacon;

/// A beacon that was seen: one live object for each identity, updated in place. Reading is safe on
/// any thread; single values are never torn.
class IBeacon : public virtual IInterface {
 public:
  virtual TKindofBeacon GetKindofBeacon() const = 0;
  /// All zero for an Eddystone beacon.
  virtual TGUID GetGUID() const = 0;
  virtual int GetMajor() const = 0;
  virtual int GetMinor() const = 0;
  /// Metres; -1 when unknown: no strength or power known, nothing heard for a while, or lost.
  virtual double GetDistance() const = 0;
  virtual TBeaconProximity GetProximity() const = 0;
  /// False once the beacon was reported as lost or scanning has stopped.
  virtual bool IsAlive() const = 0;
  /// The last strength in dBm; 127 when unknown.
  virtual int GetRssi() const = 0;
  /// Calibrated power at 1 m in dBm; 127 when none was sent.
  virtual int GetTxPower() const = 0;
  /// The address that the beacon last used.
  virtual TBluetoothAddress GetAddress() const = 0;

  /// The views of the kinds; nothing where the beacon does not offer one.
  virtual const IiBeacon* GetiBeaconView() const = 0;
  virtual const IAltBeacon* GetAltBeaconView() const = 0;
  virtual const IEddystoneBeacon* GetEddystoneView() const = 0;

 protected:
  ~IBeacon() = default;
};

/// A sighting of an iBeacon.
class IiBeacon : public virtual IBeacon {
 protected:
  ~IiBeacon() = default;
};

/// A sighting of an AltBeacon.
class IAltBeacon : public virtual IBeacon {
 public:
  /// The company identifier that the beacon sends.
  virtual int GetManufacturerID() const = 0;

 protected:
  ~IAltBeacon() = default;
};

/// A sighting of an Eddystone beacon.
class IEddystoneBeacon : public virtual IBeacon {
 public:
  virtual TEddystoneUID GetEddystoneUID() const = 0;

 protected:
  ~IEddystoneBeacon() = default;
};

/// A snapshot of the beacons that are present, in order of first sighting.
using TBeaconList = TArray<TRef<IBeacon>>;

/// Whether two sightings are of one beacon: kind and identity are equal. One without an identity is
/// only the same as itself.
bool IsSameBeacon(const IBeacon* A, const IBeacon* B);

/// The key under which zones look a sighting up: kinds 0, 1 and 3 by UUID, major and minor (kind 3
/// through the iBeacon view), kind 2 by namespace and instance. Nothing when the sighting does not
/// offer the view that its kind names, or has a major or minor of more than 16 bits.
std::optional<TBeaconIdentity> LookUpKeyOf(const IBeacon& ABeacon);

// ---------------------------------------------------------------- the manager

using TBeaconEnterExitEvent =
    TMethod<void(TObject* ASender, const TRef<IBeacon>& ABeacon, const TBeaconList& AList)>;
using TBeaconProximityEvent =
    TMethod<void(TObject* ASender, const TRef<IBeacon>& ABeacon, TBeaconProximity AProximity)>;
using TEddystoneURLEvent =
    TMethod<void(TObject* ASender, const TRef<IBeacon>& ABeacon, const TEddystoneURL& AURL)>;
using TEddystoneTLMEvent =
    TMethod<void(TObject* ASender, const TRef<IBeacon>& ABeacon, const TEddystoneTLM& ATLM)>;
/// Power at 1 m and strength in dBm; `ANewDistance` in metres comes in with the service's own
/// value.
using TCalcDistanceEvent = TMethod<void(
    TObject* ASender, const TRef<IBeacon>& ABeacon, int ATxPower, int ARssi, double& ANewDistance)>;
using TSightingEvent = TMethod<void(TObject* ASender, const TRef<IBeacon>& ABeacon)>;
using TScanErrorEvent = TMethod<void(TObject* ASender, const std::string& AMessage)>;

/// What the service has done since scanning started.
struct TScanStatistics {
  std::uint64_t Advertisements = 0;  ///< delivered by the source
  std::uint64_t Frames = 0;          ///< beacon frames in them
  std::uint64_t Sightings = 0;       ///< frames that a region accepted
  std::uint64_t Malformed = 0;       ///< frames and payloads that were dropped
};

/// Makes the source of a new manager.
using TAdvertisementSourceFactory = TRef<IAdvertisementSource> (*)();

class TBeaconTracker;

/// Scans a source on a thread of its own and reports what it sees. Operations and settings: on the
/// thread of its owner; handlers are called on the reporting thread, one at a time. Settings
/// take effect with the next advertisement.
class TBeaconManager : public TObject {
 public:
  /// A new manager for a scan mode; its source comes from `FSourceFactory`.
  static std::unique_ptr<TBeaconManager> GetBeaconManager(TBeaconScanMode AScanMode);
  /// Where a new manager takes its source from; by default the Bluetooth daemon. Empty: a manager
  /// without a source refuses to start.
  static TAdvertisementSourceFactory FSourceFactory;

  explicit TBeaconManager(TBeaconScanMode AScanMode);
  /// Stops scanning.
  ~TBeaconManager() override;

  TBeaconScanMode GetScanMode() const noexcept { return FScanMode; }
  /// Replaces the source; scanning stops first.
  void SetSource(TRef<IAdvertisementSource> ASource);

  /// Seconds without an advertisement after which a beacon is lost.
  int GetBeaconDeathTime() const;
  void SetBeaconDeathTime(int AValue);
  /// Milliseconds of scanning and of sleeping, alternately; they gate a live radio. What a radio
  /// hears in its sleep is dropped.
  int GetScanningTime() const;
  void SetScanningTime(int AValue);
  int GetScanningSleepingTime() const;
  void SetScanningSleepingTime(int AValue);
  /// Whether the windows gate recordings too; false by default.
  bool GetGatesRecordings() const;
  void SetGatesRecordings(bool AValue);
  /// Signal propagation constant: 0.5 in free space.
  float GetSPC() const;
  void SetSPC(float AValue);
  TBeaconCalcMode GetCalcMode() const;
  void SetCalcMode(TBeaconCalcMode AValue);
  /// Milliseconds without an advertisement after which a distance counts as unknown; 5000 by
  /// default.
  int GetDistanceLifetime() const;
  void SetDistanceLifetime(int AValue);

  TKindofBeacons GetKindofBeacons() const;
  void SetKindofBeacons(TKindofBeacons AValue);
  /// A region that is registered twice is unregistered twice. Unknown ones are ignored.
  void RegisterBeacons(const TBeaconsRegion& ARegion);
  void UnRegisterBeacons(const TBeaconsRegion& ARegion);

  /// Opens the source and starts the reporting thread. Raises what the source raises; the manager
  /// is then stopped. Starting a started manager does nothing.
  void StartScan();
  /// Ends scanning: when it returns, no handler is running or will be called. Called on the
  /// reporting thread itself it only asks for the end. Beacons that were present are no longer
  /// alive; no exit is reported for them.
  void StopScan();
  /// Asks for the end without waiting. On the owner's or the reporting thread.
  void StopScanLater() noexcept;
  bool IsScanning() const noexcept;
  TScanStatistics GetStatistics() const;

  // Handlers. Set or cleared on any thread; a handler that is running when it is cleared finishes.
  void SetOnBeaconEnter(TBeaconEnterExitEvent AValue);
  void SetOnBeaconExit(TBeaconEnterExitEvent AValue);
  void SetOnBeaconProximity(TBeaconProximityEvent AValue);
  void SetOnEddystoneURL(TEddystoneURLEvent AValue);
  void SetOnEddystoneTLM(TEddystoneTLMEvent AValue);
  /// Called for every frame that a region accepts, after the sighting was updated.
  void SetOnSighting(TSightingEvent AValue);
  /// Called when the source has failed for good; without a handler the process's exception handler
  /// is told. Scanning has ended; beacons that are present are lost after their time.
  void SetOnScanError(TScanErrorEvent AValue);
  /// Called for every strength of a beacon whose power is known.
  void SetOnCalcDistance(TCalcDistanceEvent AValue);

 private:
  class TReportingThread;
  struct TSettings;
  struct THandlers;
  class TReporter;

  void Report(TThread& AThread);
  void ReportSource(TThread& AThread);
  void TellFailure(TThread& AThread);
  void LoseBeacons(TThread& AThread);
  void UpdateSettings(std::uint64_t& ASeenVersion, TSettings& ASettings);
  bool IsOpenWindow(TTicks ATicks, const TSettings& ASettings) const;
  template <class T>
  T ReadSetting(T TSettings::*AField) const;
  template <class T>
  void WriteSetting(T TSettings::*AField, T AValue);
  template <class T>
  void WriteHandler(T THandlers::*AField, T AValue);

  const TBeaconScanMode FScanMode;
  TRef<IAdvertisementSource> FSource;
  std::shared_ptr<TReportingThread> FThread;  // kept by whoever waits for it, too
  std::atomic<bool> FHasFailed{false};
  TEvent FStopped{"the end of a scan whose source has failed"};
  TTicks FScanStart = 0;

  TScanStatistics FStatisticsAtStart;

  mutable std::mutex FLock;  // guards FSettings, FHandlers
  std::unique_ptr<TSettings> FSettings;
  std::unique_ptr<THandlers> FHandlers;
  std::atomic<std::uint64_t> FSettingsVersion{0};
  std::unique_ptr<TReporter> FReporter;
  std::unique_ptr<TBeaconTracker> FTracker;  // reporting thread while it runs
};

/// The platform's Bluetooth LE manager.
class TBluetoothLEManager : public TObject {
 public:
  static TBluetoothLEManager& GetCurrentManager();
  /// Whether the library was built with access to a live radio.
  bool GetIsSupported() const noexcept;
};

}  // namespace System::Beacon

namespace System {

template <>
struct TEnumNames<Beacon::TKindofBeacon> {
  static constexpr std::string_view Type = "TKindofBeacon";
  static constexpr std::array<std::string_view, 4> Names{
      "iBeacon", "AltBeacon", "Eddystone", "iBeaconAltBeacon"};
};
template <>
struct TEnumNames<Beacon::TBeaconProximity> {
  static constexpr std::string_view Type = "TBeaconProximity";
  static constexpr std::array<std::string_view, 5> Names{
      "Unknown", "Immediate", "Near", "Far", "Away"};
};
template <>
struct TEnumNames<Beacon::TBeaconCalcMode> {
  static constexpr std::string_view Type = "TBeaconCalcMode";
  static constexpr std::array<std::string_view, 2> Names{"Raw", "Stabilized"};
};
template <>
struct TEnumNames<Beacon::TBeaconScanMode> {
  static constexpr std::string_view Type = "TBeaconScanMode";
  static constexpr std::array<std::string_view, 2> Names{"Standard", "Alternative"};
};

}  // namespace System
