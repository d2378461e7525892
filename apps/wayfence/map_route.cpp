#include "apps/wayfence/map_route.h"

#include <fmt/format.h>

#include "apps/wayfence/map_session.h"
#include "apps/wayfence/messages.h"

namespace Wayfence {

TMapRoute::TMapRoute(System::Beacon::Fencing::TBeaconMapFencing& AComponent,
                     const std::string& AName)
    : FComponent(AComponent), FName(AName) {
  if (!AName.empty()) FPoi = IndexOfPoi(AComponent.GetProjectInformation(), AName);
}

void TMapRoute::Begin() {
  if (!FPoi) return;
  if (!FComponent.ShowPathToNodeIndex(*FPoi)) Say(fmt::format("no path leads to '{}'", FName));
  FPoi.reset();
}

}  // namespace Wayfence
