// A building full of transmitters, as a recording.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/beacons/advertisement.h"
#include "platform/beacons/simulated/radio_model.h"

namespace System::Beacon {

/// What sends the same payload again and again.
struct TTransmitter {
  std::vector<std::uint8_t> Payload;  ///< as `beacon_payload.h` makes it
  TBluetoothAddress Address;
  TRadioPlace Place;
  int Power = -59;        ///< dBm at 1 m, from -127 to 20
  double Interval = 0.1;  ///< seconds, from 0.02 to 10.24

  static constexpr int LeastPower = -127, MostPower = 20;
  static constexpr double ShortestInterval = 0.02, LongestInterval = 10.24;
};

/// All that decides what a receiver hears.
struct TSimulatedRadio {
  TRadioOptions Options;
  std::vector<TTransmitter> Transmitters;
  std::uint64_t Seed = 1;

  static constexpr std::size_t MaxTransmitters = 10'000;
};

/// What a receiver hears on its way, from time 0 to the end of the way, made while it is read. The
/// same input gives the same advertisements on every processor; each address has random numbers of
/// its own, whatever other transmitters there are. A transmitter begins at a random moment within
/// its first interval and adds up to 10 ms at random to each (Bluetooth Core Specification,
/// advDelay). Raises `EBeaconSourceError` for what is outside the bounds.
TRef<IAdvertisementReader> OpenSimulatedRadio(TSimulatedRadio ARadio, TReceiverPath APath);

}  // namespace System::Beacon
