// The commands of the program: what each is given, and the call that runs it. Each returns the
// exit code, and raises for refused input.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Wayfence {

inline constexpr int ExitDone = 0;
inline constexpr int ExitRefused = 1;
inline constexpr int ExitUsage = 2;

/// Where advertisements come from: "btsnoop:FILE", "pcap:FILE", "log:FILE", "FILE", "bluez",
/// "bluez:hci1", "simulate:WALK.json".
struct TSourceArguments {
  std::string Source = "bluez";
  double Speed = 0.0;      ///< of a recording: 0 as fast as possible, 1 real time
  std::uint64_t Seed = 1;  ///< of the simulated runtime, and of a simulated walk
  std::string Project;     ///< in which simulated walks are taken; empty: there are none
};

struct TZonesArguments {
  std::string ComponentFile;
  TSourceArguments From;
  bool OnlyRegions = false;
};
int RunZones(const TZonesArguments& AArguments);

struct TMapArguments {
  std::string Project;
  TSourceArguments From;
  std::string ComponentFile;   ///< empty: none
  std::string Route;           ///< a point of interest; empty: none
  std::string FrameDirectory;  ///< empty: no pictures
  double FrameInterval = 1.0;  ///< seconds between two pictures
  std::pair<int, int> FrameSize{1280, 800};
  bool Overwrite = false;  ///< of pictures
  std::string RunFile;     ///< empty: none
  std::string TruthFile;   ///< for the run file
  bool Window = false;
};
int RunMap(const TMapArguments& AArguments);

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

struct TSimulateArguments {
  std::string Project;
  std::string Walk;
  std::string File;
  std::string TruthFile;  ///< empty: beside `File`
  std::string Format = "log";
  std::uint64_t Seed = 1;
  bool Overwrite = false;
};
int RunSimulate(const TSimulateArguments& AArguments);

struct TEvaluateArguments {
  std::string BeaconFile;  ///< empty: a project is evaluated
  std::string Project;
  TSourceArguments From;
  std::string TruthFile;
  double Width = 0.0;  ///< metres
  double Height = 0.0;
  float SPC = 0.5F;
  int DeathTime = 5;        ///< seconds
  int Interval = 0;         ///< milliseconds between two steps; 0: what the options say
  double Skip = 3.0;        ///< seconds
  std::string OptionsFile;  ///< empty: the defaults
  bool Json = false;
  // of a project
  std::string ComponentFile;  ///< empty: none
  std::string Route;          ///< a point of interest; empty: none
  std::string PictureFile;    ///< empty: none
  double Tolerance = 5.0;     ///< seconds
};
int RunEvaluate(const TEvaluateArguments& AArguments);

struct TInspectArguments {
  std::string Project;
};
int RunInspect(const TInspectArguments& AArguments);

struct TCheckArguments {
  std::string Project;
};
int RunCheck(const TCheckArguments& AArguments);

struct TRouteArguments {
  std::string Project;
  float X = 0.0F;  ///< map units
  float Y = 0.0F;
  int Map = 0;
  std::string To;  ///< a point of interest
};
int RunRoute(const TRouteArguments& AArguments);

struct TRenderArguments {
  std::string Project;
  std::string File;
  int Map = 0;
  int Width = 1024;  ///< pixels
  std::vector<std::string> Options{"ShowBeacons", "ShowZones", "ShowPaths"};
  int Rotation = 0;                ///< degrees
  std::vector<std::string> Route;  ///< the names of two points of interest, or none
};
int RunRender(const TRenderArguments& AArguments);

struct TBundleArguments {
  std::string Bundle;
  std::string SceneFile;           ///< of `create`
  std::vector<std::string> Files;  ///< of `create`: pictures
  std::string Directory = ".";     ///< of `extract`
  bool Overwrite = false;
};
int RunBundleCreate(const TBundleArguments& AArguments);
int RunBundleList(const TBundleArguments& AArguments);
int RunBundleExtract(const TBundleArguments& AArguments);

struct TProjectNewArguments {
  std::string File;
  bool Overwrite = false;
};
int RunProjectNew(const TProjectNewArguments& AArguments);

struct TProjectImportArguments {
  using TPair = std::optional<std::pair<double, double>>;

  std::string File;
  std::vector<std::string> GeoJsonFiles;
  std::string BeaconFile;  ///< empty: none
  std::vector<std::string> MapNames;
  std::vector<std::string> Pictures;  ///< one for each map; "-" for none
  std::string Coordinates = "guess";  ///< or "degrees", "metres"
  TPair Origin;                       ///< longitude and latitude, or metres
  TPair Size;                         ///< metres
  bool IsYUp = false;
  bool Overwrite = false;
};
int RunProjectImport(const TProjectImportArguments& AArguments);

struct TReportArguments {
  std::vector<std::string> RunFiles;
  std::string File;
  bool Overwrite = false;
};
int RunReport(const TReportArguments& AArguments);

}  // namespace Wayfence
