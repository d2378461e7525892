// From the distances of beacons to a position on a map.
//
// Coordinates are in calculator units, hundredths of the map's unit, unless said otherwise;
// distances that come from and go to the beacon service are in metres, strengths in dBm.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "fencing/System.Beacon.Fencing.Types.h"
#include "platform/beacons/identity.h"
#include "platform/threads.h"

namespace System::Beacon::Fencing {

class TPositionCalculator;

/// Makes position calculators of one class. Empty is a state that callers ask about.
class TPositionCalculatorClass {
 public:
  using TFactory = std::unique_ptr<TPositionCalculator> (*)(const TParticleFilterOptions& AOptions,
                                                            const TRectF& AMapLimit,
                                                            const TPathSegments& APaths);

  constexpr TPositionCalculatorClass() = default;
  constexpr explicit TPositionCalculatorClass(TFactory AFactory) : FFactory(AFactory) {}

  constexpr explicit operator bool() const { return FFactory != nullptr; }
  /// A new calculator; the class must not be empty.
  std::unique_ptr<TPositionCalculator> Create(const TParticleFilterOptions& AOptions,
                                              const TRectF& AMapLimit,
                                              const TPathSegments& APaths) const {
    return FFactory(AOptions, AMapLimit, APaths);
  }

 private:
  TFactory FFactory = nullptr;
};

/// The class reference of a calculator with the usual constructor.
template <class T>
constexpr TPositionCalculatorClass ClassOf() {
  return TPositionCalculatorClass(
      [](const TParticleFilterOptions& AOptions,
         const TRectF& AMapLimit,
         const TPathSegments& APaths) -> std::unique_ptr<TPositionCalculator> {
        return std::make_unique<T>(AOptions, AMapLimit, APaths);
      });
}

// ---------------------------------------------------------------- TPositionCalculator

/// Estimates the position of the device on one map. A class of one's own is put into
/// `FPositionCalculatorClass`; its constructor takes the options, the map's rectangle and its
/// walkable pieces, both in map units. All operations may be called on any thread while a
/// calculation runs. Destruction stops the calculator's threads before it returns; it is not
/// done inside the calculator's own handler.
class TPositionCalculator : public TObject {
 public:
  /// What the map component makes its calculators of, one for each map. Set before they are made.
  static TPositionCalculatorClass FPositionCalculatorClass;

  virtual TEstimatedPositionEvent GetOnEstimatingPosition() const = 0;
  /// Takes over the current values of the options.
  virtual void ApplyOptions(const TParticleFilterOptions& AOptions) = 0;
  /// The handler of finished estimates: the filtered position before it is fitted to the paths, and
  /// the final one. Called on the calculator's thread with no lock held. When another handler, or
  /// none, has been set, the former one is not running and is not entered again; set from inside
  /// the handler itself (also from a hand-off that it waits for), it is not entered again.
  virtual void SetOnEstimatingPosition(TEstimatedPositionEvent AValue) = 0;
  /// Corrects the distances of all beacons by the true position of the device.
  virtual void ManualCalibration(const TPointF& ACPoint) = 0;
  /// Hands over the beacons of the map, nearest first, and the same beacons by their distance to a
  /// reference point (may be empty). The arrays are shared, and not changed afterwards. False when
  /// the step is dropped because a calculation is running. Returns at once.
  virtual bool DoCalculateStep(const TFencingBeacons& ABeaconsList,
                               const TFencingBeacons& ANearestBeacons) = 0;
  /// Told of every change of a beacon's proximity.
  virtual void DoBeaconProximityEvent(const TFencingBeacon& AFencingBeacon,
                                      TBeaconProximity AProximity) = 0;
  /// How much the strengths vary, dB: small while the device stands still.
  virtual double GetMotionAverage() const = 0;
  /// The distance in metres for a calibrated power at 1 m and a strength; true when it was set.
  virtual bool DoCalcutateBeaconDistance(std::int32_t ATxPower,
                                         std::int32_t ARssi,
                                         const TFencingBeacon& AFencingBeacon,
                                         double& ANewDistance) = 0;
};

// ---------------------------------------------------------------- TTrilateration

struct TMeasurement;
class TParticleCloud;
class TPositionFitter;

/// A particle filter (Gordon, Salmond and Smith, 1993): candidate positions are moved at random,
/// weighted by how well their distances to the beacons match the measured ones, and the most
/// likely one is taken. The estimate is damped (a step is limited to 2 m, positions snap to a near
/// beacon or are held) and fitted onto the walkable pieces. A step that sees fewer usable beacons
/// than `BeaconsToUse` gives no estimate.
///
/// Steps are calculated on a thread of its own, one at a time, or with `Calculate` on the caller's.
class TTrilateration : public TPositionCalculator {
 public:
  static constexpr std::int32_t MaxParticles = 10'000'000;

  /// Uniform numbers in [0, 1).
  using TRandomSequence = std::function<double()>;

  /// A beacon as it is used in a calculation.
  struct TTrilaterationBeaconInfo {
    TRef<IBeacon> BTBeacon;
    TPointF Position;
    double MeasuredDistance = 0.0;  ///< calculator units
    double LastDistance = 0.0;
  };
  /// What is known of the signal of a beacon that has entered a calculation.
  class TTrilaterationBeaconCalibration : public TObject {
   public:
    TTrilaterationBeaconCalibration(TRef<IBeacon> ABTBeacon, TPointF APosition)
        : BTBeacon(std::move(ABTBeacon)), FPosition(APosition) {}

    /// Whether the record is that of a beacon.
    bool IsEqualTo(const TRef<IBeacon>& ABTBeacon) const {
      return IsSameBeacon(BTBeacon.Get(), ABTBeacon.Get());
    }
    TPointF GetPosition() const noexcept { return FPosition; }
    void SetPosition(TPointF AValue) noexcept { FPosition = AValue; }
    /// The last power at 1 m, dBm; 0: none yet.
    std::int32_t GetTX() const noexcept { return FTX; }
    void SetTX(std::int32_t AValue) noexcept { FTX = AValue; }
    /// The smoothed strength, dBm; 0: none yet.
    double GetKRssi() const noexcept { return FKRssi; }
    void SetKRssi(double AValue) noexcept { FKRssi = AValue; }
    double GetLastDistance() const noexcept { return FLastDistance; }
    void SetLastDistance(double AValue) noexcept { FLastDistance = AValue; }
    /// What is added to strength minus power, dB.
    double GetCalibrationFactor() const noexcept { return FCalibrationFactor; }
    void SetCalibrationFactor(double AValue) noexcept { FCalibrationFactor = AValue; }

    TRef<IBeacon> BTBeacon;  ///< the latest sighting

   private:
    friend class TTrilateration;

    TPointF FPosition;
    std::int32_t FTX = 0;
    double FKRssi = 0.0;
    double FLastDistance = 0.0;
    TBeaconProximity FLastProximity = TBeaconProximity::Unknown;  // that started a round
    double FCalibrationFactor = 0.0;
    bool FIsInRound = false;
  };

  /// The thread that calculates steps. It waits for the event of its calculator, takes the
  /// arrays and calculates, until it is terminated or a calculation fails.
  class TThreadPositionCalculator : public TThread {
   public:
    TThreadPositionCalculator(TTrilateration& ACalculator, TEvent& AAwakeningEvent);
    ~TThreadPositionCalculator() override { TerminateAndWait(); }

    /// From the moment a step is accepted until it has been calculated; for ever after a failure.
    bool GetisExecuting() const noexcept { return FisExecuting.load(std::memory_order_acquire); }

   protected:
    void Execute() override;

   private:
    friend class TTrilateration;

    bool CalculateStep();

    TTrilateration& FThTTrilateration;
    TEvent& FThAwakeningEvent;
    std::atomic<bool> FisExecuting{false};  // who sets it owns the arrays until it is cleared
    TFencingBeacons FBeaconsList;
    TFencingBeacons FNearestBeacons;
  };

  /// Orders particles by weight, smallest first.
  class TParticleComparer : public TComparer<TParticle> {
   public:
    int Compare(const TParticle& ALeft, const TParticle& ARight) const override {
      return CompareValues(ALeft.P, ARight.P);
    }
  };

  /// Particles are spread over `AMapLimit`. Random numbers come from `ARandom`, which is called
  /// here and on the calculating thread; by default from a stream of the calculator's own.
  TTrilateration(const TParticleFilterOptions& AOptions,
                 const TRectF& AMapLimit,
                 const TPathSegments& APaths,
                 TRandomSequence ARandom = {});
  ~TTrilateration() override;

  TEstimatedPositionEvent GetOnEstimatingPosition() const override;
  /// Particles that are added stand at the origin with weight 0: they are never chosen. Raises
  /// `EGeneralError` for more than `MaxParticles`, and changes nothing.
  void ApplyOptions(const TParticleFilterOptions& AOptions) override;
  void SetOnEstimatingPosition(TEstimatedPositionEvent AValue) override;
  /// Beacons nearer than 0.1 m to the point count as 0.1 m away. Nothing happens while the
  /// propagation constant is 0.
  void ManualCalibration(const TPointF& ACPoint) override;
  /// Starts the thread at the first call. False for ever after a calculation has failed: what went
  /// wrong goes to the process's exception handler (`SetApplicationExceptionHandler`).
  bool DoCalculateStep(const TFencingBeacons& ABeaconsList,
                       const TFencingBeacons& ANearestBeacons) override;
  /// While `AutomaticCalibration` is on, a beacon that comes near starts a round of at most 40
  /// attempts, 250 ms apart, to calibrate all beacons by its place, once the device stands still
  /// beside it. One round a beacon at a time; none goes on when the option is switched off. Raises
  /// `std::system_error` when the system gives no thread.
  void DoBeaconProximityEvent(const TFencingBeacon& AFencingBeacon,
                              TBeaconProximity AProximity) override;
  double GetMotionAverage() const override;
  /// 10^((strength - power + correction) / -10 · `SPC`), with a strength that is smoothed while
  /// the device stands still. Always true.
  bool DoCalcutateBeaconDistance(std::int32_t ATxPower,
                                 std::int32_t ARssi,
                                 const TFencingBeacon& AFencingBeacon,
                                 double& ANewDistance) override;

  /// One step on the caller's thread; the handler is called there, too. False when a calculation is
  /// running already, or one on the thread has failed. Raises what goes wrong (a variance that is
  /// not positive), without harm to further steps.
  bool Calculate(const TFencingBeacons& ABeaconsList, const TFencingBeacons& ANearestBeacons);

  /// The last reported position; the origin before the first.
  TPointF GetEstimatedPosition() const;
  void SetEstimatedPosition(TPointF AValue);
  std::vector<TParticle> GetParticles() const;
  /// Whether positions are fitted onto the walkable pieces.
  bool GetRouting() const;
  void SetRouting(bool AValue);
  /// Positions on a piece stand in the middle of steps of so many units; 0: anywhere.
  std::int32_t GetStepping() const;
  void SetStepping(std::int32_t AValue);
  /// The beacons of the last calculation, in the order given.
  std::vector<TTrilaterationBeaconInfo> GetInfBeacons() const;

 private:
  class TRound;

  using TCalibration = TTrilaterationBeaconCalibration;

  void SwitchAutomaticCalibration(bool AValue);
  void RunStep(const TFencingBeacons& ABeaconsList, const TFencingBeacons& ANearestBeacons);
  bool BeginWith(const TFencingBeacons& ABeaconsList);
  bool FilterPosition(const TFencingBeacons& ABeacons, TPointF& ARaw);
  void TakeBeacons(const TFencingBeacons& ABeacons);
  void Report(TPointF ARaw);
  void CallHandler(TPointF ARaw, TPointF AFitted);
  void LeaveHandler();

  TCalibration* FindCalibration(const TRef<IBeacon>& ABeacon);
  TCalibration& KeepCalibration(const TFencingBeacon& ABeacon);
  double Smooth(TCalibration& ARecord, double ARssi);
  void CalibrateAt(TPointF APoint, double AExponent, const TPointF* AExcept);
  std::vector<std::unique_ptr<TRound>> TakeRounds(bool AOnlyFinished);

  mutable TMonitor FMonitorObj{"the lock of a position calculator"};
  // Guarded by FMonitorObj.
  double FMovementStdDev = 0.0;
  TPointF FEstimatedPosition;
  std::vector<TTrilaterationBeaconInfo> FBeacons;
  std::vector<std::unique_ptr<TCalibration>> FBeaconsCalibration;  // only ever appended to
  TIdentityTable<TCalibration*> FCalibrationIndex;
  std::vector<TMeasurement> FMeasurements;  // kept for its memory
  std::unique_ptr<TParticleCloud> FParticles;
  bool FRouting = false;
  std::int32_t FStepping = 0;
  double FSignalRelativeStdDev = 0.0;
  std::int32_t FBeaconsToUse = 0;
  bool FAutomaticCalibration = false;
  double FCalibrationAverage = 0.0;
  double FMotionThreshold = 0.0;
  double FMotionAverage = 0.0;
  double FSPC = 0.0;
  std::vector<std::unique_ptr<TRound>> FRounds;

  // Owned by whoever calculates.
  bool FirstStep = false;
  TTime StartingTimestamp = 0.0;
  std::unique_ptr<TPositionFitter> FFitter;

  mutable std::mutex FHandlerLock;  // guards the three below
  TEstimatedPositionEvent FOnEstimatingPosition;
  TThreadId FHandlerThread = nullptr;  // that is inside the handler
  std::vector<std::shared_ptr<TEvent>> FWaitingForHandler;

  TEvent FRoundsEnd{"the end of a calibration"};
  TEvent FAwakeningEvent{"a step to calculate"};
  std::unique_ptr<TThreadPositionCalculator> FThreadPositionCalculator;
};

}  // namespace System::Beacon::Fencing
