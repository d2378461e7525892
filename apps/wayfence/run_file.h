// Run files: what happened in a run of the map component, with the floors that it happened on.
//
// JSON lines. The first is the header: maps with their pictures, beacons, zones and points of
// interest. Every other line is an event; docs/report.md tells the members.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "fencing/System.Beacon.Fencing.Types.h"
#include "platform/beacons/captures/output_file.h"
#include "platform/geometry.h"
#include "scene/System.Beacon.Fencing.Scene.Classes.h"

namespace Wayfence {

// What is beyond these is neither written nor read.
inline constexpr std::size_t MaxRunSize = 256U << 20;       // bytes
inline constexpr std::size_t MaxRunHeaderSize = 64U << 20;  // bytes
inline constexpr std::size_t MaxRunLineSize = 64U << 10;    // bytes, of an event
inline constexpr std::size_t MaxRunNameSize = 4096;         // bytes; an event has two at most
inline constexpr std::size_t MaxRunItems = 50'000;          // of each kind, in the header
inline constexpr int MaxRunPictureSide = 8192;              // pixels
inline constexpr double MaxRunSeconds = 1e7;
inline constexpr double MaxRunCoordinate = 1e7;  // map units
inline constexpr int MinRunRssi = -127;          // dBm
inline constexpr int MaxRunRssi = 20;            // dBm

// ---------------------------------------------------------------- writing

/// Writes a run file, and replaces one that is there. Main thread. Raises `EFileError` for a file
/// that cannot be written, at the latest in `Close`, and before the file is made `EGeneralError`
/// for a project that is beyond the bounds of a run file.
class TRunWriter {
 public:
  /// Draws the floors of the scene and writes the header. `AProject` is the record of the scene;
  /// `ASource` tells people where the advertisements came from.
  TRunWriter(std::string AFileName,
             System::Beacon::Fencing::Scene::TScene& AScene,
             const System::Beacon::Fencing::TFencingProject& AProject,
             const std::string& ASource);

  /// An event as it is printed, without the line's end.
  void Line(std::string_view AText);
  /// What was heard of a beacon of the project: dBm, and metres or, when unknown, less than 0.
  void Signal(double ASeconds,
              const System::Beacon::Fencing::IDesignBeacon& ABeacon,
              int ARssi,
              double ADistance);
  /// Where the device really was, map units.
  void Truth(double ASeconds, int AMap, System::TPointF APlace);
  void Close();
  /// Whether the next line might be one too many for a run file.
  bool IsFull() const noexcept { return FSize + MaxRunLineSize > MaxRunSize; }

 private:
  std::string MakeHeader(System::Beacon::Fencing::Scene::TScene& AScene,
                         const System::Beacon::Fencing::TFencingProject& AProject,
                         const std::string& ASource);

  struct TBeaconPlace {
    std::size_t Index = 0;
    std::size_t Map = 0;
  };

  std::unordered_map<const System::TObject*, TBeaconPlace> FBeacons;
  std::optional<System::Beacon::TOutputFile> FFile;
  std::size_t FSize = 0;  // of the file, bytes
};

// ---------------------------------------------------------------- reading

/// A run as it was read. Places are in map units, times in seconds; maps, beacons and zones are
/// referred to by their index. Each list of what happened is in the order of time.
struct TRunRecord {
  struct TMap {
    std::string Name;
    System::TRectF Rect;
    std::string Units;    ///< "Centimeters", "Meters" or "Inches"
    std::string Picture;  ///< the address of a PNG picture with its data; empty: none
    System::TRectF PictureRect;
  };
  struct TBeacon {
    std::string Name;
    int Map = 0;
    System::TPointF Place;
    std::string Identity;  ///< for people
  };
  struct TZone {
    std::string Name;
    int Map = 0;
    std::vector<System::TPointF> Outline;
  };
  struct TPoi {
    std::string Name;
    int Map = 0;
    System::TPointF Place;
    bool IsPathNode = false;
  };
  struct TEdge {
    int Map = 0;
    System::TPointF From;
    System::TPointF To;
  };
  struct TPosition {
    double Seconds = 0.0;
    int Map = 0;
    System::TPointF Place;
    System::TPointF OnPath;
  };
  struct TTruth {
    double Seconds = 0.0;
    int Map = 0;
    System::TPointF Place;
  };
  struct TSignal {
    double Seconds = 0.0;
    int Beacon = 0;
    int Rssi = 0;  ///< dBm
  };
  struct TEvent {
    double Seconds = 0.0;
    std::string Kind;  ///< "ZoneEnter", "ZoneExit", "ArrivedToPOI" or "MapChange"
    std::string Name;  ///< of the zone or the point of interest
    int Map = -1;      ///< where it was; of a map change: the new one; -1: not known
    int From = -1;     ///< of a map change; -1: not known
    int Zone = -1;     ///< -1: the header has none of that name
  };

  std::string Project;
  std::string Source;
  std::vector<TMap> Maps;
  std::vector<TBeacon> Beacons;
  std::vector<TZone> Zones;
  std::vector<TPoi> Pois;
  std::vector<TEdge> Edges;  ///< of the walkable paths
  std::vector<TPosition> Positions;
  std::vector<TTruth> Truth;
  std::vector<TSignal> Signals;
  std::vector<TEvent> Events;
  double End = 0.0;  ///< of the last line
  int TornLine = 0;  ///< the number of a last line that is cut short and passed over; 0: none
};

/// Reads a run file. Events and members that it does not know are passed over. Raises `EFileError`
/// "FILE:LINE: what is wrong and what to do", also for what is beyond the bounds above.
TRunRecord ReadRun(const std::string& AFileName);
/// The same from a text; the name is for messages.
TRunRecord ParseRun(std::string_view AText, const std::string& AFileName);

}  // namespace Wayfence
