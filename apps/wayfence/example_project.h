// The project that `wayfence project new` begins with.
#pragma once

#include <string>
#include <string_view>

#include "map/project_builder.h"

namespace Wayfence {

/// An office on two floors of 20 by 12 metres, with pictures, beacons, zones of all three kinds,
/// paths, stairs between the floors, and descriptions.
System::Beacon::Fencing::Scene::Beacons::TProjectBuilder MakeExampleProject();

/// A walk from the entrance to the library on the upper floor, for the simulated radio.
std::string_view GetExampleWalk();

}  // namespace Wayfence
