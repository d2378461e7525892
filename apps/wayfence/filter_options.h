// How positions are estimated, from a file.
#pragma once

#include <string>

#include "fencing/System.Beacon.Fencing.Types.h"

namespace Wayfence {

/// Takes over the properties that a JSON file names, `{ "BeaconsToUse": 4 }`, in the form of
/// component files. Raises `EFileError` "FILE:LINE: ParticleFilterOptions.PROPERTY: what is wrong"
/// and leaves the options as they were.
void LoadFilterOptions(System::Beacon::Fencing::TParticleFilterOptions& AOptions,
                       const std::string& AFileName);

}  // namespace Wayfence
