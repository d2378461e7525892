// How strengths become distances, and how these are corrected.
#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

#include "platform/power_of_ten.h"
#include "positioning/System.Beacon.Fencing.PositionCalculator.h"
#include "positioning/calibration_round.h"

namespace System::Beacon::Fencing {
namespace {

/// Kinds are told apart; nothing for a sighting without an identity.
std::optional<TBeaconIdentity> KeyOf(const IBeacon& ABeacon) {
  std::optional<TBeaconIdentity> Result = LookUpKeyOf(ABeacon);
  if (Result) Result->Words[2] |= static_cast<std::uint64_t>(ABeacon.GetKindofBeacon()) << 40;
  return Result;
}

/// To two decimal places, halves to the even neighbour.
double RoundToHundredths(double AValue) {
  return std::nearbyint(AValue * 100.0) / 100.0;
}

}  // namespace

// ---------------------------------------------------------------- records

TTrilateration::TCalibration* TTrilateration::FindCalibration(const TRef<IBeacon>& ABeacon) {
  if (const auto Key = KeyOf(*ABeacon)) {
    TCalibration* const* const Found = FCalibrationIndex.Find(*Key);
    return Found ? *Found : nullptr;
  }
  const auto Found = std::find_if(FBeaconsCalibration.begin(),
                                  FBeaconsCalibration.end(),
                                  [&](const auto& ARecord) { return ARecord->IsEqualTo(ABeacon); });
  return Found == FBeaconsCalibration.end() ? nullptr : Found->get();
}

TTrilateration::TCalibration& TTrilateration::KeepCalibration(const TFencingBeacon& ABeacon) {
  if (TCalibration* const Known = FindCalibration(ABeacon.BTBeacon)) {
    Known->BTBeacon = ABeacon.BTBeacon;
    return *Known;
  }
  FBeaconsCalibration.push_back(std::make_unique<TCalibration>(
      ABeacon.BTBeacon, ToCalculator(ABeacon.DesignBeacon->GetDisplacement())));
  TCalibration& Result = *FBeaconsCalibration.back();
  if (const auto Key = KeyOf(*ABeacon.BTBeacon)) FCalibrationIndex.Insert(*Key, &Result);
  return Result;
}

// ---------------------------------------------------------------- distances

double TTrilateration::GetMotionAverage() const {
  const TMonitorLock Lock(FMonitorObj);
  return FMotionAverage;
}

bool TTrilateration::DoCalcutateBeaconDistance(std::int32_t ATxPower,
                                               std::int32_t ARssi,
                                               const TFencingBeacon& AFencingBeacon,
                                               double& ANewDistance) {
  const TMonitorLock Lock(FMonitorObj);
  double Strength = ARssi;
  double Correction = 0.0;
  TCalibration* const Record =
      AFencingBeacon.BTBeacon ? FindCalibration(AFencingBeacon.BTBeacon) : nullptr;
  if (Record) {
    Strength = Smooth(*Record, Strength);
    Record->SetTX(ATxPower);
    Correction = Record->GetCalibrationFactor();
  }
  ANewDistance = PowerOfTen(((Strength - ATxPower) + Correction) / -10.0 * FSPC);
  return true;
}

/// The strength to use: the raw one while the device moves, else one that follows it slowly.
double TTrilateration::Smooth(TCalibration& ARecord, double ARssi) {
  constexpr double Quick = 0.2, Slow = 0.1;
  if (ARecord.FKRssi == 0.0) ARecord.FKRssi = ARssi;
  if (const auto Count = static_cast<double>(FBeacons.size()); Count > 0.0)
    FMotionAverage =
        FMotionAverage / Count * (Count - 1.0) + std::abs(ARecord.FKRssi - ARssi) / Count;
  if (FMotionAverage > FMotionThreshold) return ARecord.FKRssi = ARssi;
  const double Rate = FMotionAverage > 0.5 * FMotionThreshold ? Quick : Slow;
  return ARecord.FKRssi = RoundToHundredths(ARecord.FKRssi + (ARssi - ARecord.FKRssi) * Rate);
}

// ---------------------------------------------------------------- corrections

void TTrilateration::ManualCalibration(const TPointF& ACPoint) {
  const TMonitorLock Lock(FMonitorObj);
  if (FSPC != 0.0) CalibrateAt(ACPoint, 1.0 / FSPC, nullptr);
}

/// Corrects every beacon that was heard by the strength that it should have at a point, but for
/// those at `AExcept`. Under the lock.
void TTrilateration::CalibrateAt(TPointF APoint, double AExponent, const TPointF* AExcept) {
  constexpr double NearestInMetres = 0.1;
  for (const auto& Record : FBeaconsCalibration) {
    Record->FCalibrationFactor = 0.0;
    if (Record->FTX == 0 || !Record->BTBeacon) continue;
    if (AExcept && Record->FPosition == *AExcept) continue;
    const double Metres =
        std::max(TRouteCalculator::Distance(Record->FPosition, APoint) / CalculatorUnitsPerMapUnit,
                 NearestInMetres);
    const double Expected = -10.0 * std::log10(Metres) * AExponent;
    Record->FCalibrationFactor =
        RoundToHundredths((Expected - (Record->FKRssi - Record->FTX)) * FCalibrationAverage);
  }
}

void TTrilateration::SwitchAutomaticCalibration(bool AValue) {
  const TMonitorLock Lock(FMonitorObj);
  if (FAutomaticCalibration && !AValue)
    for (const auto& Record : FBeaconsCalibration) Record->FCalibrationFactor = 0.0;
  FAutomaticCalibration = AValue;
}

/// Hands the rounds over, for their threads to be waited for without the lock.
std::vector<std::unique_ptr<TTrilateration::TRound>> TTrilateration::TakeRounds(
    bool AOnlyFinished) {
  const TMonitorLock Lock(FMonitorObj);
  std::vector<std::unique_ptr<TRound>> Result;
  const auto First =
      std::stable_partition(FRounds.begin(), FRounds.end(), [AOnlyFinished](const auto& ARound) {
        return AOnlyFinished && !ARound->GetFinished();
      });
  std::move(First, FRounds.end(), std::back_inserter(Result));
  FRounds.erase(First, FRounds.end());
  return Result;
}

void TTrilateration::DoBeaconProximityEvent(const TFencingBeacon& AFencingBeacon,
                                            TBeaconProximity AProximity) {
  if (AProximity != TBeaconProximity::Immediate && AProximity != TBeaconProximity::Near) return;
  if (!AFencingBeacon.DesignBeacon) return;
  const TPointF Place = ToCalculator(AFencingBeacon.DesignBeacon->GetDisplacement());
  const auto Finished = TakeRounds(true);  // waited for after the lock has been left
  const TMonitorLock Lock(FMonitorObj);
  if (!FAutomaticCalibration || FSPC == 0.0) return;
  const auto Found = std::find_if(FBeaconsCalibration.begin(),
                                  FBeaconsCalibration.end(),
                                  [&](const auto& ARecord) { return ARecord->FPosition == Place; });
  if (Found == FBeaconsCalibration.end()) return;
  TCalibration& Record = **Found;
  if (Record.FIsInRound || Record.FLastProximity == AProximity) return;
  FRounds.push_back(std::make_unique<TRound>(*this, Record, AFencingBeacon.BTBeacon));
  FRounds.back()->Start();
  Record.FIsInRound = true;
  Record.FLastProximity = AProximity;
}

}  // namespace System::Beacon::Fencing
