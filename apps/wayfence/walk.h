// Walk files: where a simulated receiver goes, and what its radio is like.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/beacons/simulated/radio_model.h"
#include "platform/beacons/simulated/simulated_radio.h"

namespace Wayfence {

/// Where a walk leads: to a path node, or in a straight line to a place in map units.
struct TWalkStop {
  int Line = 0;
  std::string Node;  ///< empty: a place
  int Map = 0;
  double X = 0.0;
  double Y = 0.0;
  double Wait = 0.0;  ///< seconds to stay there
};

/// A walk along the paths that turns at every node wherever chance leads.
struct TRandomWalk {
  int Line = 0;
  int Map = 0;  ///< where it begins
  double Seconds = 0.0;
};

/// A wall in map units.
struct TWalkWall {
  int Line = 0;
  int Map = 0;
  double FromX = 0.0;
  double FromY = 0.0;
  double ToX = 0.0;
  double ToY = 0.0;
  double Loss = System::Beacon::TRadioWall().Loss;  ///< dB
};

struct TWalk {
  std::string FileName;
  double Speed = 1.2;            ///< m/s
  double Interval = 0.1;         ///< seconds between two true positions
  double Stairs = 8.0;           ///< seconds from one map to another
  std::vector<TWalkStop> Stops;  ///< empty for a random walk
  std::optional<TRandomWalk> Random;
  System::Beacon::TRadioOptions Radio;  ///< without its walls
  std::vector<TWalkWall> Walls;
  int Power = System::Beacon::TTransmitter().Power;                 ///< of the beacons, dBm at 1 m
  double BeaconInterval = System::Beacon::TTransmitter().Interval;  ///< seconds
};

/// Reads a walk file. Raises `EFileError` "FILE:LINE: what is wrong".
TWalk ReadWalk(const std::string& AFileName);
/// The same from a text; the name is for messages.
TWalk ParseWalk(std::string_view AText, const std::string& AFileName);

}  // namespace Wayfence
