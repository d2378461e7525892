// The commands of the program: what each is given, and the call that runs it. Each returns the
// exit code, and raises for refused input.
#pragma once

#include <cstdint>
#include <string>

namespace Wayfence {

inline constexpr int ExitDone = 0;
inline constexpr int ExitRefused = 1;
inline constexpr int ExitUsage = 2;

/// Where advertisements come from: "btsnoop:FILE", "pcap:FILE", "log:FILE", "FILE", "bluez",
/// "bluez:hci1".
struct TSourceArguments {
  std::string Source = "bluez";
  double Speed = 0.0;  ///< of a recording: 0 as fast as possible, 1 real time
};

struct TZonesArguments {
  std::string ComponentFile;
  TSourceArguments From;
  bool OnlyRegions = false;
};
int RunZones(const TZonesArguments& AArguments);

struct TScanArguments {
  TSourceArguments From;
  double Seconds = 0.0;  ///< 0: until interrupted
};
int RunScan(const TScanArguments& AArguments);

struct TRecordArguments {
  std::string File;
  std::string Format = "log";
  TSourceArguments From;
  double Seconds = 0.0;  ///< 0: until interrupted
};
int RunRecord(const TRecordArguments& AArguments);

}  // namespace Wayfence
