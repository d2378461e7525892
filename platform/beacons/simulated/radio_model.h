// How strong a transmitter is heard in a building.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "platform/beacons/simulated/receiver_path.h"
#include "platform/beacons/simulated/shadow_field.h"

namespace System::Beacon {

/// A wall, seen from above: metres, and what it takes from a signal that crosses it, dB.
struct TRadioWall {
  TRadioPlace From;  ///< its level is that of the wall
  TRadioPlace To;
  double Loss = 3.0;

  static constexpr double MaxLoss = 100.0;
};

/// The building and the receiver. The defaults are those of an office.
struct TRadioOptions {
  double Exponent = 2.2;       ///< of the path loss
  double Shadowing = 3.0;      ///< dB, standard deviation
  double Correlation = 2.0;    ///< metres over which shadowing falls to 1/e of its correlation
  double Fading = 6.0;         ///< dB by which the direct path is stronger than all reflections
  double FloorLoss = 15.0;     ///< dB for each floor between
  double FloorHeight = 3.0;    ///< metres from one level to the next
  double Offset = 0.0;         ///< dB that the receiver shows too much
  double Loss = 0.1;           ///< part of all frames that the receiver misses
  double Sensitivity = -95.0;  ///< dBm below which it hears nothing
  std::vector<TRadioWall> Walls;

  static constexpr std::size_t MaxWalls = 10'000;
};

/// The numbers of the options: what they are called, and their bounds.
struct TRadioNumber {
  std::string_view Name;
  double TRadioOptions::*Member;
  double From;
  double To;
};
inline constexpr std::array RadioNumbers{
    TRadioNumber{"exponent", &TRadioOptions::Exponent, 0.0, 10.0},
    TRadioNumber{"shadowing", &TRadioOptions::Shadowing, 0.0, 30.0},
    TRadioNumber{"correlation", &TRadioOptions::Correlation, 0.01, 1000.0},
    TRadioNumber{"fading", &TRadioOptions::Fading, -60.0, 60.0},
    TRadioNumber{"floorLoss", &TRadioOptions::FloorLoss, 0.0, 100.0},
    TRadioNumber{"floorHeight", &TRadioOptions::FloorHeight, 0.0, 100.0},
    TRadioNumber{"offset", &TRadioOptions::Offset, -50.0, 50.0},
    TRadioNumber{"loss", &TRadioOptions::Loss, 0.0, 1.0},
    TRadioNumber{"sensitivity", &TRadioOptions::Sensitivity, -127.0, 20.0},
};

/// Raises `EBeaconSourceError` for what lies outside the bounds.
void CheckRadioOptions(const TRadioOptions& AOptions);

/// The way from one transmitter to the receiver. Does not change; the options outlive it.
class TRadioLink {
 public:
  /// `APower` in dBm at 1 m. The stream decides the shadowing.
  TRadioLink(const TRadioOptions& AOptions,
             const TRadioPlace& ATransmitter,
             int APower,
             TRandomStream AStream);

  /// The strength without fading, dBm as the receiver shows it: power − 10 n log10(d), with d of
  /// 0.3 metres at least (log-distance path loss; Rappaport, Wireless Communications), less walls
  /// and floors, and shadowing. Walls count between places of their own level.
  double GetMeanStrength(const TRadioPlace& AReceiver) const;

 private:
  double GetPathLoss(const TRadioPlace& AReceiver) const;
  double GetLossInWalls(const TRadioPlace& AReceiver) const;

  const TRadioOptions& FOptions;
  TRadioPlace FPlace;
  int FPower;
  TShadowField FShadowing;
};

/// What fading adds to the strength of one frame, dB: Rician, its mean power that of no fading.
/// `ADirect` in dB as `TRadioOptions::Fading`.
double DrawFading(double ADirect, TRandomStream& AStream);

}  // namespace System::Beacon
