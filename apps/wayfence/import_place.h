// Brings floors to metres and to the corners of their maps.
#pragma once

#include <optional>

#include "apps/wayfence/import_floor.h"

namespace Wayfence {

enum class TCoordinates { Guess, Degrees, Metres };

struct TPlacing {
  TCoordinates Coordinates = TCoordinates::Guess;
  bool IsYUp = false;                ///< of metres
  std::optional<TPlace> Origin;      ///< what becomes the upper left corner of every map
  std::optional<TPlace> SizeOfMaps;  ///< metres
};

/// Whether these are longitudes and latitudes, if nobody says: all within their ranges, and less
/// than a tenth of a degree apart. As metres that would be a floor smaller than a hand.
bool AreDegrees(TImportedFloors& AFloors);

/// Makes the places of a floor metres from the upper left corner of its map, Y downwards, and sets
/// its size. Without an origin the map begins where the floor does; a floor in metres whose size is
/// given begins at (0, 0). Raises `EFileError` for a floor without an area or above 100 km.
void PlaceFloor(TImportedFloor& AFloor, bool AAreDegrees, const TPlacing& APlacing);

/// Takes a place of a plan in metres to a map that has been placed.
TPlace PlaceOnMap(const TImportedFloor& AFloor, TPlace APlace, const TPlacing& APlacing);

}  // namespace Wayfence
