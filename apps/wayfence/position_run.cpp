#include "apps/wayfence/position_run.h"

#include <algorithm>

#include "apps/wayfence/power_source.h"
#include "platform/beacons/frame.h"

namespace Wayfence {

using namespace System;
using namespace System::Beacon;
using namespace System::Beacon::Fencing;

namespace {

constexpr TTicks ShortestQuiet = 60 * TicksPerSecond;

std::vector<TPointF> PlacesOf(const std::vector<TRef<TListedBeacon>>& ABeacons) {
  std::vector<TPointF> Result;
  Result.reserve(ABeacons.size());
  for (const TRef<TListedBeacon>& Beacon : ABeacons) Result.push_back(Beacon->GetDisplacement());
  return Result;
}

TFencingBeacons RecordsOf(const std::vector<TRef<TListedBeacon>>& ABeacons) {
  std::vector<TFencingBeacon> Result;
  Result.reserve(ABeacons.size());
  for (const TRef<TListedBeacon>& Beacon : ABeacons) Result.push_back({nullptr, Beacon, 0.0});
  return TFencingBeacons(std::move(Result));
}

/// The nearest beacon of an ordered list whose distance was ever computed, else the nearest.
const TFencingBeacon& ReferenceOf(const TFencingBeacons& AOrdered) {
  for (const TFencingBeacon& Beacon : AOrdered)
    if (Beacon.TimeStasmp != 0.0) return Beacon;
  return AOrdered[0];
}

}  // namespace

TPositionRun::TPositionRun(TRun& ARun,
                           const std::vector<TRef<TListedBeacon>>& ABeacons,
                           const TParticleFilterOptions& AOptions,
                           const TRectF& AArea,
                           int ADeathTime)
    : FRun(ARun),
      FOptions(AOptions),
      FStrengths(PlacesOf(ABeacons), AOptions.GetSPC()),
      FLastHeard(Ticks()),
      FQuietAfter(std::max(ShortestQuiet, ADeathTime * TicksPerSecond)),
      FCalculator(TPositionCalculator::FPositionCalculatorClass.Create(AOptions, AArea, {})),
      FManager(TBeaconManager::GetBeaconManager(TBeaconScanMode::Standard)) {
  FMap.BeaconList = RecordsOf(ABeacons);
  FCalculator->SetOnEstimatingPosition([this](const TPointF& ARaw, const TPointF& AReported) {
    FEstimates.push_back({GetSeconds(), ToMap(ARaw), ToMap(AReported)});
  });
  SetApplicationExceptionHandler(
      [this](TObject*, const std::exception& AError) { FFailure = AError.what(); });
  ConfigureManager(ABeacons, ADeathTime);
  ConnectManager();
}

TPositionRun::~TPositionRun() {
  FManager.reset();
  FCalculator.reset();
  SetApplicationExceptionHandler({});
}

void TPositionRun::Perform() {
  FManager->StartScan();
  StepUntilEnd();
  FManager->StopScan();
  FCalculator.reset();
  FRun.Source->ReportProblems();
  FRun.Source->RaiseError();
  if (!FFailure.empty()) throw EGeneralError("the estimator has failed: " + FFailure);
}

// ---------------------------------------------------------------- the beacon service

void TPositionRun::ConfigureManager(const std::vector<TRef<TListedBeacon>>& ABeacons,
                                    int ADeathTime) {
  FManager->SetSource(New<TPowerSource>(FRun.Source, ABeacons));
  FManager->SetBeaconDeathTime(ADeathTime);
  FManager->SetDistanceLifetime(1000 * ADeathTime);
  FManager->SetSPC(FOptions.GetSPC());
  FManager->SetKindofBeacons({TKindofBeacon::iBeaconAltBeacon, TKindofBeacon::Eddystone});
  for (const TRef<TListedBeacon>& Beacon : ABeacons) FManager->RegisterBeacons(Beacon->GetRegion());
}

void TPositionRun::ConnectManager() {
  if (FOptions.GetOwnsCalcDistance())
    FManager->SetOnCalcDistance(
        [this](TObject*, const TRef<IBeacon>& ABeacon, int ATxPower, int ARssi, double& ADistance) {
          CalcDistance(ABeacon, ATxPower, ARssi, ADistance);
        });
  FManager->SetOnSighting([this](TObject*, const TRef<IBeacon>& ABeacon) {
    TFencingBeacon Found;
    if (!FMap.GetFencingBeaconFor(ABeacon, Found, false)) return;
    FLastHeard.store(Ticks());
    FHeard.SetEvent();
    NoteStrength(*ABeacon, *Supports<TListedBeacon>(Found.DesignBeacon));
  });
  FManager->SetOnBeaconProximity(
      [this](TObject*, const TRef<IBeacon>& ABeacon, TBeaconProximity AProximity) {
        TFencingBeacon Found;
        if (FMap.GetFencingBeaconFor(ABeacon, Found, false))
          FCalculator->DoBeaconProximityEvent(Found, AProximity);
      });
}

void TPositionRun::CalcDistance(const TRef<IBeacon>& ABeacon,
                                int ATxPower,
                                int ARssi,
                                double& ANewDistance) {
  TFencingBeacon Found;
  double Distance = 0.0;
  if (FMap.GetFencingBeaconFor(ABeacon, Found, true) &&
      FCalculator->DoCalcutateBeaconDistance(ATxPower, ARssi, Found, Distance))
    ANewDistance = Distance;
}

void TPositionRun::NoteStrength(const IBeacon& ABeacon, const TListedBeacon& AListed) {
  const int Power = ABeacon.GetTxPower();
  if (Power == NoPower)
    ++FFramesWithoutPower;
  else if (ABeacon.GetRssi() != UnknownRssi)
    FStrengths.Add(GetSeconds(), AListed.GetIndex(), Power - ABeacon.GetRssi());
}

// ---------------------------------------------------------------- the estimator

void TPositionRun::StepUntilEnd() {
  const TTicks Interval = FOptions.GetUpdateInterval() * TicksPerMillisecond;
  TTicks Due = After(Ticks(), Interval);
  while (!FRun.Source->GetEnded().WaitUntil(Due)) {
    Step();
    if (IsQuiet()) WaitUntilHeard();
    Due += ((Ticks() - Due) / Interval + 1) * Interval;
  }
}

void TPositionRun::Step() {
  const TFencingBeacons Ordered = FMap.OrderedBeaconList();
  const TPointF Reference = ToCalculator(ReferenceOf(Ordered).DesignBeacon->GetDisplacement());
  FCalculator->DoCalculateStep(Ordered, FMap.OrderedBeaconListTo(Reference));
}

/// Distances have been forgotten by then: no step would give an estimate.
bool TPositionRun::IsQuiet() const noexcept {
  return Ticks() - FLastHeard.load() > FQuietAfter;
}

/// Passes over the gaps of a recording, however long they are.
void TPositionRun::WaitUntilHeard() {
  constexpr std::int64_t YearInMs = 365LL * 86'400 * 1000;
  FHeard.ResetEvent();
  while (!FRun.Source->GetEnded().IsSet() && !FHeard.WaitFor(YearInMs)) {
  }
}

}  // namespace Wayfence
