// From a walk to the way that the receiver takes.
#pragma once

#include <cstdint>

#include "apps/wayfence/walk.h"
#include "apps/wayfence/walk_floors.h"
#include "platform/beacons/simulated/receiver_path.h"

namespace Wayfence {

/// The way of a walk through the building. The first stop is where it begins; places are reached in
/// a straight line, nodes over the nearest node and the shortest route from there. A way between
/// two maps takes the walk's `Stairs`, half of it on either map. Raises `EFileError`
/// "FILE:LINE: what is wrong" for what the project does not have, and `EBeaconSourceError` for a
/// walk that is too long. Main thread.
System::Beacon::TReceiverPath MakeWalkPath(const TWalk& AWalk,
                                           const System::Beacon::Fencing::TFencingProject& AProject,
                                           const TWalkFloors& AFloors,
                                           std::uint64_t ASeed);

}  // namespace Wayfence
