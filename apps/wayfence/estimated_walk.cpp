#include "apps/wayfence/estimated_walk.h"

#include <limits>

namespace Wayfence {

using namespace System;
using namespace System::Beacon::Fencing;

TEstimatedWalk::TEstimatedWalk(TCustomBeaconMapFencing& AComponent, TClock AClock)
    : FClock(std::move(AClock)) {
  FShownMaps.push_back({-std::numeric_limits<double>::infinity(), AComponent.GetMapIndex()});
  AComponent.SetOnPositionEstimated([&](const TPointF& ARaw, const TPointF& APath) {
    FEstimates.push_back({FClock(), AComponent.GetMapIndex(), ARaw, APath});
    if (OnPosition) OnPosition();
  });
  AComponent.SetOnBeforeMapChange([this](TObject*, int, int AMap, bool&) {
    FShownMaps.push_back({FClock(), AMap});
  });
  AComponent.SetOnZoneEnter([this](TObject*, const TZoneRef& AZone) {
    FStays[AZone->GetObject()].push_back({FClock()});
  });
  AComponent.SetOnZoneExit([this](TObject*, const TZoneRef& AZone) {
    if (auto& Stays = FStays[AZone->GetObject()]; !Stays.empty()) Stays.back().End = FClock();
  });
  AComponent.SetOnArrivedToPOI([this](TObject*, const TBeaconFencingPOI& APoi) {
    FArrivals.emplace_back(FClock(), APoi.Name);
  });
}

std::vector<TStay> TEstimatedWalk::GetStays(const TZoneRef& AZone) const {
  const auto Found = FStays.find(AZone->GetObject());
  return Found == FStays.end() ? std::vector<TStay>() : Found->second;
}

}  // namespace Wayfence
