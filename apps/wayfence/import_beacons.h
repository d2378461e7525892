// Beacons from comma-separated values, put on floors.
#pragma once

#include "apps/wayfence/import_floor.h"
#include "apps/wayfence/import_place.h"

namespace Wayfence {

/// Adds the rows of a file to the floors that their column `map` counts, from 0; where there are no
/// floors yet, makes them: from (0, 0), or from where the beacons begin when that is less. Columns
/// that are no fields of a beacon are described. Raises `EFileError`.
void AddBeacons(TImportedFloors& AFloors, TBeaconRows ARows, const TPlacing& APlacing);

/// Leaves out the beacons that have the identity of an earlier one, and tells of them.
void KeepFirstBeacons(TImportedFloors& AFloors, TWarnings& AWarnings);

inline constexpr std::size_t MaxImportedBeacons = 100'000;  // of one file

}  // namespace Wayfence
