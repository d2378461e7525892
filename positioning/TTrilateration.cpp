#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/errors.h"
#include "positioning/System.Beacon.Fencing.PositionCalculator.h"
#include "positioning/calibration_round.h"
#include "positioning/particle_cloud.h"
#include "positioning/position_fitter.h"

namespace System::Beacon::Fencing {
namespace {

TRectF ToCalculator(const TRectF& ARect) {
  const TPointF First = Fencing::ToCalculator(TPointF{ARect.Left, ARect.Top});
  const TPointF Last = Fencing::ToCalculator(TPointF{ARect.Right, ARect.Bottom});
  return {First.X, First.Y, Last.X, Last.Y};
}

std::vector<TSegment> ToCalculator(const TPathSegments& APaths) {
  std::vector<TSegment> Result;
  for (const TSegment& Path : APaths)
    Result.push_back({Fencing::ToCalculator(Path.P1), Fencing::ToCalculator(Path.P2)});
  return Result;
}

/// The milliseconds of the day that a duration in days leaves over whole days.
std::int64_t MillisecondsOfDay(TTime ADays) {
  constexpr double MillisecondsPerDay = 86'400'000.0;
  return std::llround((ADays - std::floor(ADays)) * MillisecondsPerDay);
}

bool IsSighted(const TFencingBeacons& ABeacons) {
  return !ABeacons.IsEmpty() && ABeacons[0].BTBeacon && ABeacons[0].DesignBeacon;
}

/// The distance of a beacon that the estimate may use, metres; nothing for every other beacon.
std::optional<double> UsableDistance(const TFencingBeacon& ABeacon) {
  if (!ABeacon.BTBeacon || !ABeacon.DesignBeacon || !ABeacon.DesignBeacon->GetUseToPositioning())
    return std::nullopt;
  const double Distance = ABeacon.BTBeacon->GetDistance();
  if (!(Distance >= 0.0) || !std::isfinite(Distance)) return std::nullopt;
  return Distance;
}

}  // namespace

// ---------------------------------------------------------------- life

TTrilateration::TTrilateration(const TParticleFilterOptions& AOptions,
                               const TRectF& AMapLimit,
                               const TPathSegments& APaths,
                               TRandomSequence ARandom)
    : FParticles(std::make_unique<TParticleCloud>(std::move(ARandom))),
      FRouting(!APaths.IsEmpty()),
      FThreadPositionCalculator(
          std::make_unique<TThreadPositionCalculator>(*this, FAwakeningEvent)) {
  const TRectF Limit = ToCalculator(AMapLimit);
  FFitter = std::make_unique<TPositionFitter>(Limit, ToCalculator(APaths));
  TTrilateration::ApplyOptions(AOptions);
  FParticles->Spread(Limit);
}

TTrilateration::~TTrilateration() {
  {
    const std::lock_guard Guard(FHandlerLock);
    if (FHandlerThread && IsActingFor(FHandlerThread))
      FatalError(
          "a position calculator was destroyed inside its own handler; destroy it after the "
          "handler "
          "has returned");
  }
  // Hand-offs that are served while threads are waited for may still call the calculator.
  FRoundsEnd.SetEvent();
  FThreadPositionCalculator->Terminate();
  FAwakeningEvent.SetEvent();
  FThreadPositionCalculator->WaitFor();
  while (!TakeRounds(false).empty()) continue;
}

// ---------------------------------------------------------------- options and what is shown

void TTrilateration::ApplyOptions(const TParticleFilterOptions& AOptions) {
  const TMonitorLock Lock(FMonitorObj);
  FParticles->SetLength(AOptions.GetParticlesNumber());
  SwitchAutomaticCalibration(AOptions.GetAutomaticCalibration());
  FBeaconsToUse = AOptions.GetBeaconsToUse();
  FMotionThreshold = AOptions.GetMotionThreshold();
  FCalibrationAverage = AOptions.GetCalibrationAverage();
  FSPC = AOptions.GetSPC();
  FMovementStdDev = AOptions.GetMovementStDeviation();
  FSignalRelativeStdDev = AOptions.GetSignalRelativeStdDev();
}

TPointF TTrilateration::GetEstimatedPosition() const {
  const TMonitorLock Lock(FMonitorObj);
  return FEstimatedPosition;
}
void TTrilateration::SetEstimatedPosition(TPointF AValue) {
  const TMonitorLock Lock(FMonitorObj);
  FEstimatedPosition = AValue;
}
std::vector<TParticle> TTrilateration::GetParticles() const {
  const TMonitorLock Lock(FMonitorObj);
  return FParticles->GetParticles();
}
bool TTrilateration::GetRouting() const {
  const TMonitorLock Lock(FMonitorObj);
  return FRouting;
}
void TTrilateration::SetRouting(bool AValue) {
  const TMonitorLock Lock(FMonitorObj);
  FRouting = AValue;
}
std::int32_t TTrilateration::GetStepping() const {
  const TMonitorLock Lock(FMonitorObj);
  return FStepping;
}
void TTrilateration::SetStepping(std::int32_t AValue) {
  const TMonitorLock Lock(FMonitorObj);
  FStepping = AValue;
}
std::vector<TTrilateration::TTrilaterationBeaconInfo> TTrilateration::GetInfBeacons() const {
  const TMonitorLock Lock(FMonitorObj);
  return FBeacons;
}

// ---------------------------------------------------------------- the handler

TEstimatedPositionEvent TTrilateration::GetOnEstimatingPosition() const {
  const std::lock_guard Guard(FHandlerLock);
  return FOnEstimatingPosition;
}

void TTrilateration::SetOnEstimatingPosition(TEstimatedPositionEvent AValue) {
  std::shared_ptr<TEvent> Left;
  {
    const std::lock_guard Guard(FHandlerLock);
    if (AValue && AValue == FOnEstimatingPosition) return;
    std::swap(FOnEstimatingPosition, AValue);
    if (FHandlerThread && !IsActingFor(FHandlerThread)) {
      Left = std::make_shared<TEvent>("an estimate handler to return");
      FWaitingForHandler.push_back(Left);
    }
  }
  if (Left) Left->WaitUntil(NoDeadline);
}

void TTrilateration::CallHandler(TPointF ARaw, TPointF AFitted) {
  TEstimatedPositionEvent Handler;
  {
    const std::lock_guard Guard(FHandlerLock);
    Handler = FOnEstimatingPosition;
    if (!Handler) return;
    FHandlerThread = CurrentThreadId();
  }
  struct TLeave {
    TTrilateration& Calculator;
    TEstimatedPositionEvent& Handler;
    ~TLeave() {
      Handler = {};  // what the callable holds goes before a thread that waits goes on
      Calculator.LeaveHandler();
    }
  } const Leave{*this, Handler};
  Handler(ARaw, AFitted);
}

void TTrilateration::LeaveHandler() {
  const std::lock_guard Guard(FHandlerLock);
  FHandlerThread = nullptr;
  for (const auto& Left : FWaitingForHandler) Left->SetEvent();
  FWaitingForHandler.clear();
}

// ---------------------------------------------------------------- a calculation

void TTrilateration::RunStep(const TFencingBeacons& ABeaconsList,
                             const TFencingBeacons& ANearestBeacons) {
  if (!BeginWith(ABeaconsList)) return;
  TPointF Raw;
  if (FilterPosition(IsSighted(ANearestBeacons) ? ANearestBeacons : ABeaconsList, Raw)) Report(Raw);
}

/// Places the particles at the nearest beacon once enough beacons are sighted, or after a while.
bool TTrilateration::BeginWith(const TFencingBeacons& ABeaconsList) {
  constexpr std::int64_t LongestWaitInMs = 3000;
  if (FirstStep) return true;
  if (StartingTimestamp == 0.0) StartingTimestamp = Now();
  const auto Sighted =
      std::count_if(ABeaconsList.begin(), ABeaconsList.end(), [](const TFencingBeacon& ABeacon) {
        return static_cast<bool>(ABeacon.BTBeacon);
      });
  const bool IsEnough = 2 * static_cast<std::size_t>(Sighted) >= ABeaconsList.GetLength();
  if (!IsEnough && MillisecondsOfDay(Now() - StartingTimestamp) <= LongestWaitInMs) return false;
  if (IsSighted(ABeaconsList)) {
    const TMonitorLock Lock(FMonitorObj);
    FParticles->PlaceAt(Fencing::ToCalculator(ABeaconsList[0].DesignBeacon->GetDisplacement()));
  }
  FirstStep = true;
  return true;
}

/// Two steps of the filter, when enough beacons can be used.
bool TTrilateration::FilterPosition(const TFencingBeacons& ABeacons, TPointF& ARaw) {
  constexpr int Steps = 2;
  const TMonitorLock Lock(FMonitorObj);
  TakeBeacons(ABeacons);
  const auto Needed = static_cast<std::size_t>(FBeaconsToUse);
  if (FBeacons.size() < Needed) return false;
  FMeasurements.clear();
  for (std::size_t I = 0; I < Needed; ++I)
    FMeasurements.push_back({FBeacons[I].Position, FBeacons[I].MeasuredDistance});
  for (int I = 0; I < Steps; ++I)
    ARaw = FParticles->Step(FMeasurements, FMovementStdDev, FSignalRelativeStdDev);
  return true;
}

void TTrilateration::TakeBeacons(const TFencingBeacons& ABeacons) {
  FBeacons.clear();
  for (const TFencingBeacon& Beacon : ABeacons) {
    const std::optional<double> Distance = UsableDistance(Beacon);
    if (!Distance) continue;
    const TCalibration& Calibration = KeepCalibration(Beacon);
    FBeacons.push_back({Beacon.BTBeacon,
                        Fencing::ToCalculator(Beacon.DesignBeacon->GetCenterInGlobalSpace()),
                        *Distance * CalculatorUnitsPerMapUnit,
                        Calibration.GetLastDistance()});
  }
}

void TTrilateration::Report(TPointF ARaw) {
  const TPointF Raw = FFitter->Clamp(ARaw);
  TPointF Fitted;
  {
    const TMonitorLock Lock(FMonitorObj);
    Fitted =
        FFitter->Fit(Raw, FEstimatedPosition, FBeacons.front().Position, {FRouting, FStepping});
    FEstimatedPosition = Fitted;
  }
  CallHandler(Raw, Fitted);
}

}  // namespace System::Beacon::Fencing
