#include "apps/wayfence/map_route.h"

#include <cstdio>

#include "apps/wayfence/map_session.h"

namespace Wayfence {

TMapRoute::TMapRoute(System::Beacon::Fencing::TBeaconMapFencing& AComponent,
                     const std::string& AName)
    : FComponent(AComponent), FName(AName) {
  if (!AName.empty()) FPoi = IndexOfPoi(AComponent.GetProjectInformation(), AName);
}

void TMapRoute::Begin() {
  if (!FPoi) return;
  if (!FComponent.ShowPathToNodeIndex(*FPoi))
    std::fprintf(stderr, "wayfence: no path leads to '%s'\n", FName.c_str());
  FPoi.reset();
}

}  // namespace Wayfence
