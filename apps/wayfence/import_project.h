// A project from floors that were read.
#pragma once

#include "apps/wayfence/import_floor.h"
#include "map/project_builder.h"

namespace Wayfence {

/// Makes a map of every floor, which has been placed. What is left out is told in `AWarnings`.
/// Raises `EFileError` for a name that cannot be kept.
System::Beacon::Fencing::Scene::Beacons::TProjectBuilder BuildProject(
    const std::string& AName, const TImportedFloors& AFloors, TWarnings& AWarnings);

}  // namespace Wayfence
