// How the components scan, estimate and show; the unit System.Beacon.Fencing.Types includes it.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>
#include <utility>

#include "platform/beacons/System.Beacon.h"
#include "platform/color.h"
#include "platform/components.h"

namespace System::Beacon::Fencing {

/// Which estimated position zones are looked up with.
enum class TZoneHighlightMetod : std::uint8_t { RawPosition, PathPosition };

// ---------------------------------------------------------------- TOptionSet

/// What the option sets have in common: a notification after every change of a value. A setter that
/// is given the stored value does nothing; one that refuses a value raises `EComponentError` and
/// changes nothing. Main thread.
class TOptionSet : public TPersistent {
 public:
  const TNotifyEvent& GetOnChange() const noexcept { return FOnChange; }
  void SetOnChange(TNotifyEvent AValue) { FOnChange = std::move(AValue); }

 protected:
  /// Calls `OnChange` with this object as the sender.
  virtual void Changed() { FOnChange(this); }

  /// Stores a value that differs and notifies.
  template <class T>
  void Store(T& AField, T AValue) {
    if (AValue == AField) return;
    AField = AValue;
    Changed();
  }
  /// The same for a value that must be 1 or more.
  void StorePositive(std::int32_t& AField, std::int32_t AValue, std::string_view AMessage);

  TNotifyEvent FOnChange;
};

// ---------------------------------------------------------------- TBeaconManagerOptions

/// How the beacon service scans. Copied onto the beacon manager when scanning starts.
class TBeaconManagerOptions : public TOptionSet {
 public:
  FENCING_CLASS_INFO()

  /// Seconds without an advertisement after which a beacon is lost.
  std::int32_t GetBeaconDeathTime() const noexcept { return FBeaconDeathTime; }
  void SetBeaconDeathTime(std::int32_t AValue);
  /// Milliseconds of each scanning window.
  std::int32_t GetScanningTime() const noexcept { return FScanningTime; }
  void SetScanningTime(std::int32_t AValue);
  /// Milliseconds between two scanning windows.
  std::int32_t GetScanningSleepingTime() const noexcept { return FScanningSleepingTime; }
  void SetScanningSleepingTime(std::int32_t AValue);
  /// Signal propagation constant: 0.5 in free space.
  float GetSPC() const noexcept { return FSPC; }
  void SetSPC(float AValue) { Store(FSPC, AValue); }
  TBeaconCalcMode GetCalcMode() const noexcept { return FCalcMode; }
  void SetCalcMode(TBeaconCalcMode AValue) { Store(FCalcMode, AValue); }
  TBeaconScanMode GetMode() const noexcept { return FMode; }
  void SetMode(TBeaconScanMode AValue) { Store(FMode, AValue); }

 protected:
  /// Copies every value through the destination's setters, and the `OnChange` handler itself.
  void AssignTo(TPersistent* ADest) override;

 private:
  std::int32_t FBeaconDeathTime = 20;
  std::int32_t FScanningTime = 500;
  std::int32_t FScanningSleepingTime = 250;
  float FSPC = 0.5F;
  TBeaconCalcMode FCalcMode = TBeaconCalcMode::Stabilized;
  TBeaconScanMode FMode = TBeaconScanMode::Standard;
};

// ---------------------------------------------------------------- TParticleFilterOptions

/// How positions are estimated.
class TParticleFilterOptions : public TOptionSet {
 public:
  FENCING_CLASS_INFO()

  std::int32_t GetParticlesNumber() const noexcept { return FParticlesNumber; }
  void SetParticlesNumber(std::int32_t AValue);
  /// Milliseconds between two steps of the estimator.
  std::int32_t GetUpdateInterval() const noexcept { return FUpdateInterval; }
  void SetUpdateInterval(std::int32_t AValue);
  /// Standard deviation of a particle's movement in one step, calculator units.
  std::int32_t GetMovementStDeviation() const noexcept { return FMovementStDeviation; }
  void SetMovementStDeviation(std::int32_t AValue) { Store(FMovementStDeviation, AValue); }
  /// Standard deviation of a distance, relative to the distance; above 0, at most 100.
  float GetSignalRelativeStdDev() const noexcept { return FSignalRelativeStdDev; }
  void SetSignalRelativeStdDev(float AValue);
  /// How many of the nearest beacons the estimate uses.
  std::int32_t GetBeaconsToUse() const noexcept { return FBeaconsToUse; }
  void SetBeaconsToUse(std::int32_t AValue);
  /// Whether the map component computes distances in place of the beacon service.
  bool GetOwnsCalcDistance() const noexcept { return FOwnsCalcDistance; }
  void SetOwnsCalcDistance(bool AValue) { Store(FOwnsCalcDistance, AValue); }
  double GetMotionThreshold() const noexcept { return FMotionThreshold; }
  void SetMotionThreshold(double AValue) { Store(FMotionThreshold, AValue); }
  double GetCalibrationAverage() const noexcept { return FCalibrationAverage; }
  void SetCalibrationAverage(double AValue) { Store(FCalibrationAverage, AValue); }
  /// A plain field, set by the map component from its beacon manager options; never notifies.
  float GetSPC() const noexcept { return FSPC; }
  void SetSPC(float AValue) noexcept { FSPC = AValue; }
  bool GetAutomaticCalibration() const noexcept { return FAutomaticCalibration; }
  void SetAutomaticCalibration(bool AValue) { Store(FAutomaticCalibration, AValue); }

 protected:
  /// Copies `ParticlesNumber`, `UpdateInterval`, `MovementStDeviation`, `SignalRelativeStdDev` and
  /// `BeaconsToUse`; nothing else.
  void AssignTo(TPersistent* ADest) override;

 private:
  std::int32_t FParticlesNumber = 500;
  std::int32_t FUpdateInterval = 500;
  std::int32_t FMovementStDeviation = 15;
  float FSignalRelativeStdDev = 0.15F;
  std::int32_t FBeaconsToUse = 3;
  bool FOwnsCalcDistance = true;
  double FMotionThreshold = 4.0;
  double FCalibrationAverage = 0.33;
  float FSPC = 0.0F;
  bool FAutomaticCalibration = false;
};

// ---------------------------------------------------------------- TFencingOptions

/// Which position zones are looked up with, and how the two position markers are shown.
class TFencingOptions : public TOptionSet {
 public:
  FENCING_CLASS_INFO()

  TZoneHighlightMetod GetZoneHighlightMetod() const noexcept { return FZoneHighlightMetod; }
  void SetZoneHighlightMetod(TZoneHighlightMetod AValue) { Store(FZoneHighlightMetod, AValue); }
  TAlphaColor GetRawPositionColor() const noexcept { return FRawPositionColor; }
  void SetRawPositionColor(TAlphaColor AValue) { Store(FRawPositionColor, AValue); }
  TAlphaColor GetPathPositionColor() const noexcept { return FPathPositionColor; }
  void SetPathPositionColor(TAlphaColor AValue) { Store(FPathPositionColor, AValue); }
  /// Radii of the markers, map units.
  float GetRawPositionRadius() const noexcept { return FRawPositionRadius; }
  void SetRawPositionRadius(float AValue) { Store(FRawPositionRadius, AValue); }
  float GetPathPositionRadius() const noexcept { return FPathPositionRadius; }
  void SetPathPositionRadius(float AValue) { Store(FPathPositionRadius, AValue); }

 protected:
  /// Copies `ZoneHighlightMetod` only.
  void AssignTo(TPersistent* ADest) override;

 private:
  TZoneHighlightMetod FZoneHighlightMetod = TZoneHighlightMetod::RawPosition;
  TAlphaColor FRawPositionColor{0xFF000000};
  TAlphaColor FPathPositionColor{0xFF8A2BE2};
  float FRawPositionRadius = 2.0F;
  float FPathPositionRadius = 1.4F;
};

}  // namespace System::Beacon::Fencing

namespace System {

template <>
struct TEnumNames<Beacon::Fencing::TZoneHighlightMetod> {
  static constexpr std::string_view Type = "TZoneHighlightMetod";
  static constexpr std::array<std::string_view, 2> Names{"RawPosition", "PathPosition"};
};

}  // namespace System
