// Floors from GeoJSON.
#pragma once

#include <string>
#include <string_view>

#include "apps/wayfence/import_floor.h"

namespace Wayfence {

/// Reads a FeatureCollection, a Feature or a geometry; the file's name is for messages. Polygons
/// become zones, lines paths, points beacons when they have a `uuid` or a `namespace`; what is of
/// several parts is taken apart. A floor for each value of `level` (or `floor`), the lowest first;
/// a feature without one is on the first of them. Names, beacon fields and levels are taken out of
/// the properties, all others are described. What is left out is told in `AWarnings`. Raises
/// `EFileError` for what is no GeoJSON, and for one beyond the bounds below and those of
/// `ParseJson`.
TImportedFloors ReadGeoJson(std::string_view AText,
                            const std::string& AFileName,
                            TWarnings& AWarnings);

inline constexpr std::size_t MaxDescriptionSize = 64 << 20;  // bytes of names and properties
inline constexpr std::size_t MaxImportedPoints = 500'000;    // of lines and polygons

}  // namespace Wayfence
