#include "fencing/nearness.h"

#include <cmath>
#include <limits>

namespace System::Beacon::Fencing {

TNearness TNearness::OfSighting(const IBeacon* ABeacon) {
  if (!ABeacon) return {};
  const double Distance = ABeacon->GetDistance();
  return Distance >= 0.0 ? TNearness{TRank::Known, Distance} : TNearness{TRank::Unknown, 0.0};
}

TNearness TNearness::OfPlace(const TFencingBeacon& AEntry, TPointF APoint) {
  if (!AEntry.BTBeacon) return {};
  constexpr double Nowhere = std::numeric_limits<double>::infinity();
  if (!AEntry.DesignBeacon) return {TRank::Known, Nowhere};
  const TPointF Place = ToCalculator(AEntry.DesignBeacon->GetCenterInGlobalSpace());
  const double Distance = TRouteCalculator::Distance(APoint, Place);
  return {TRank::Known, std::isnan(Distance) ? Nowhere : Distance};
}

int TFencingBeaconComparer::Compare(const TFencingBeacon& ALeft,
                                    const TFencingBeacon& ARight) const {
  return CompareValues(TNearness::OfSighting(ALeft.BTBeacon.Get()),
                       TNearness::OfSighting(ARight.BTBeacon.Get()));
}

int TFencingBeaconToPointComparer::Compare(const TFencingBeacon& ALeft,
                                           const TFencingBeacon& ARight) const {
  return CompareValues(TNearness::OfPlace(ALeft, FPoint), TNearness::OfPlace(ARight, FPoint));
}

}  // namespace System::Beacon::Fencing
