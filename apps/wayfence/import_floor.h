// Floors as they are read from files, before they become maps of a project.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "apps/wayfence/beacon_list.h"
#include "map/System.Beacon.Fencing.Scene.Beacons.h"

namespace Wayfence {

/// A point in the coordinates of its file at first, later in metres from the corner of its map,
/// Y downwards.
struct TPlace {
  double X = 0.0;
  double Y = 0.0;
};

/// What is told of a thing.
struct TImportedThing {
  std::string Source;  ///< "FILE:LINE", for messages
  std::string Name;    ///< may be empty
  System::Beacon::Fencing::Scene::Beacons::TDescriptionList Description;
};

struct TImportedZone {
  TImportedThing Thing;
  std::vector<TPlace> Corners;  ///< the first one is not repeated at the end
};

struct TImportedLine {
  TImportedThing Thing;
  std::vector<TPlace> Points;
};

/// A point that tells something of the path that it lies on.
struct TImportedPoint {
  TImportedThing Thing;
  TPlace Place;
  std::string Link;  ///< the name of another path node; may be empty
};

struct TImportedBeacon {
  TImportedThing Thing;
  TPlace Place;
  TListedBeacon::TRow Row;  ///< its place is not used
};

struct TImportedFloor {
  TImportedThing Thing;
  std::vector<TPlace> Outline;  ///< bounds the floor together with what is on it; may be empty
  std::vector<TImportedZone> Zones;
  std::vector<TImportedLine> Lines;
  std::vector<TImportedPoint> Points;
  std::vector<TImportedBeacon> Beacons;
  double Width = 0.0;  ///< metres
  double Height = 0.0;
  TPlace Corner;        ///< where in a plan in metres, Y downwards, the map begins
  std::string Picture;  ///< a PNG, JPEG or WebP file; empty: none
};

using TImportedFloors = std::vector<TImportedFloor>;
using TWarnings = std::vector<std::string>;

inline constexpr std::size_t MaxImportedFloors = 1000;

/// Calls `ADo` with every place of a floor.
template <class TFunction>
void ForEachPlace(TImportedFloor& AFloor, TFunction ADo) {
  for (TPlace& Place : AFloor.Outline) ADo(Place);
  for (TImportedZone& Zone : AFloor.Zones)
    for (TPlace& Place : Zone.Corners) ADo(Place);
  for (TImportedLine& Line : AFloor.Lines)
    for (TPlace& Place : Line.Points) ADo(Place);
  for (TImportedPoint& Point : AFloor.Points) ADo(Point.Place);
  for (TImportedBeacon& Beacon : AFloor.Beacons) ADo(Beacon.Place);
}

}  // namespace Wayfence
