// What may be wrong with beacons.
#include <fmt/format.h>

#include <map>

#include "apps/wayfence/messages.h"
#include "apps/wayfence/project_faults.h"
#include "apps/wayfence/scene_walk.h"

namespace Wayfence {

using namespace System;
using namespace System::Beacon;
using namespace System::Beacon::Fencing;
using TMapBeacon = System::Beacon::Fencing::Scene::Beacons::TBeacon;
using System::Beacon::Fencing::Scene::Beacons::TMap;

namespace {

bool IsEddystone(const TMapBeacon& ABeacon) {
  return ABeacon.GetKindofBeacon() == TKindofBeacon::Eddystone;
}

std::string IdentityOf(const TMapBeacon& ABeacon) {
  return IsEddystone(ABeacon)
             ? fmt::format("{}/{}", ABeacon.GetEddyNamespace(), ABeacon.GetEddyInstance())
             : fmt::format("{}/{}/{}",
                           GUIDToString(ABeacon.GetGUID()),
                           ABeacon.GetMajor(),
                           ABeacon.GetMinor());
}

void CheckNumber(TMapBeacon& ABeacon, const char* AName, std::int32_t AValue, TFaults& AFaults) {
  constexpr std::int32_t Max = 65'535;
  if (!IsEddystone(ABeacon) && (AValue < 0 || AValue > Max))
    AFaults.AddError(
        TFaults::PlaceOf(ABeacon),
        fmt::format("{} {} is outside 0 to {}; no beacon will ever match", AName, AValue, Max));
}

void CheckIdentity(TMapBeacon& ABeacon, TFaults& AFaults) {
  CheckNumber(ABeacon, "Major", ABeacon.GetMajor(), AFaults);
  CheckNumber(ABeacon, "Minor", ABeacon.GetMinor(), AFaults);
  if (!IsEddystone(ABeacon) && ABeacon.GetGUID() == TGUID())
    AFaults.AddError(TFaults::PlaceOf(ABeacon), "the beacon has no UUID; set its GUID");
  constexpr std::string_view Zeros = "00000000000000000000";
  if (IsEddystone(ABeacon) && Zeros.starts_with(ABeacon.GetEddyNamespace()))
    AFaults.AddError(TFaults::PlaceOf(ABeacon),
                     "the beacon has no Eddystone namespace; set its EddyNamespace");
}

void CheckPlace(TMapBeacon& ABeacon, TFaults& AFaults) {
  TMap* const Map = MapOf(ABeacon);
  if (!Map)
    return AFaults.AddError(TFaults::PlaceOf(ABeacon), "the beacon is on no map; move it to one");
  TRectF Area = Map->GetGlobalRect();
  Area.Inflate(0.01F, 0.01F);
  if (const TPointF At = ABeacon.GetCenterInGlobalSpace(); !Area.Contains(At))
    AFaults.AddWarning(TFaults::PlaceOf(ABeacon),
                       fmt::format("the beacon is at {}, {}, off its map", At.X, At.Y));
}

/// A position needs three circles.
void CheckCount(TMap& AMap, TFaults& AFaults) {
  constexpr int Needed = 3;
  int Count = 0;
  for (const TMapBeacon* Beacon : NodesOf<TMapBeacon>(&AMap))
    Count += Beacon->GetUseToPositioning();
  if (Count < Needed)
    AFaults.AddWarning(TFaults::PlaceOf(AMap),
                       fmt::format("{} {} used for positions; fewer than {} give none",
                                   Counted(static_cast<std::uint64_t>(Count), "beacon"),
                                   Count == 1 ? "is" : "are",
                                   Needed));
}

}  // namespace

void CheckBeacons(const TProjectFile& AProject, TFaults& AFaults) {
  std::map<std::string, std::string> Places;  // by identity
  for (TMapBeacon* Beacon : NodesOf<TMapBeacon>(AProject.Scene.Get())) {
    CheckIdentity(*Beacon, AFaults);
    CheckPlace(*Beacon, AFaults);
    const auto [Known, IsNew] = Places.emplace(IdentityOf(*Beacon), TFaults::PlaceOf(*Beacon));
    if (!IsNew)
      AFaults.AddError(
          TFaults::PlaceOf(*Beacon),
          fmt::format("the beacon has the identity of '{}'; the first one counts", Known->second));
  }
  for (TMap* Map : NodesOf<TMap>(AProject.Scene.Get())) CheckCount(*Map, AFaults);
}

}  // namespace Wayfence
