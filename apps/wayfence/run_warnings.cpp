#include "apps/wayfence/run_warnings.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>

#include "apps/wayfence/messages.h"
#include "apps/wayfence/project_faults.h"
#include "apps/wayfence/scene_walk.h"

namespace Wayfence {

using namespace System;
using namespace System::Beacon;
using namespace System::Beacon::Fencing;

namespace {

std::ptrdiff_t CountUsable(const TFencingBeacons& ABeacons) {
  return std::count_if(ABeacons.begin(), ABeacons.end(), [](const TFencingBeacon& ABeacon) {
    return ABeacon.DesignBeacon->GetUseToPositioning();
  });
}

void WarnOfCounts(const TBeaconMapFencing& AComponent) {
  const int Needed = AComponent.GetParticleFilterOptions()->GetBeaconsToUse();
  const TFencingProject Project = AComponent.GetProjectInformation();
  std::string Floors;
  for (const TFencingMap& Map : Project.Maps)
    if (const auto Count = CountUsable(Map.BeaconList); Count < Needed)
      Floors += fmt::format("{}'{}' has {}", Floors.empty() ? "" : ", ", Map.Map->GetName(), Count);
  if (!Floors.empty())
    Say(
        fmt::format("a position takes {} beacons (BeaconsToUse), and fewer are used for "
                    "positions here: {}",
                    Needed,
                    Floors));
}

void WarnOfPictures(const TProjectFile& AProject) {
  for (auto* Map : NodesOf<Scene::Beacons::TMap>(AProject.Scene.Get()))
    if (!Map->GetBitmap() && !Map->GetBitmapPath().empty())
      Say(fmt::format("{}: {}",
                      TFaults::PlaceOf(*Map),
                      FaultOfPicture(*AProject.Bundle, Map->GetBitmapPath())));
}

}  // namespace

void WarnOfProject(const TMapSession& ASession) {
  WarnOfCounts(ASession.Component);
  WarnOfPictures(ASession.Project);
}

void WarnOfNoEstimate(const TMapSession& ASession) {
  const TScanStatistics Counts = ASession.Component.GetScanStatistics();
  if (Counts.Advertisements == 0)
    Say("nothing was heard: the source held no advertisement");
  else if (Counts.Sightings == 0)
    Say(
        fmt::format("none of the {} advertisements came from a beacon of the project; compare "
                    "its beacons ('wayfence inspect') with those that are heard ('wayfence scan')",
                    Counts.Advertisements));
  else
    Say("no estimate: never were enough beacons of the project heard at once; see "
        "BeaconsToUse of the ParticleFilterOptions");
}

}  // namespace Wayfence
