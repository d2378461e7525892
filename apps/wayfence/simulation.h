// A walk through a project, as a recording.
#pragma once

#include <cstdint>
#include <string>

#include "apps/wayfence/walk.h"
#include "apps/wayfence/walk_floors.h"
#include "platform/beacons/advertisement.h"
#include "platform/beacons/simulated/receiver_path.h"

namespace Wayfence {

struct TSimulatedWalk {
  TWalk Walk;
  TWalkFloors Floors;
  System::Beacon::TReceiverPath Path;
  System::TRef<System::Beacon::IAdvertisementReader> Reader;
};

/// What a walk file says, in the project of a file. The same files and seed give the same
/// recording. Raises what is wrong with either file. Main thread.
TSimulatedWalk OpenSimulatedWalk(const std::string& AProjectFile,
                                 const std::string& AWalkFile,
                                 std::uint64_t ASeed);

}  // namespace Wayfence
