#include "apps/wayfence/run_recording.h"

#include "apps/wayfence/map_units.h"
#include "apps/wayfence/truth.h"

namespace Wayfence {

using namespace System;
using namespace System::Beacon;
using namespace System::Beacon::Fencing;

TRunRecording::TRunRecording(TMapSession& ASession,
                             const std::string& AFileName,
                             const std::string& ASource,
                             const std::string& ATruthFile)
    : FSession(ASession),
      FWriter(
          AFileName, *ASession.Project.Scene, ASession.Component.GetProjectInformation(), ASource) {
  if (!ATruthFile.empty()) WriteTruth(ATruthFile);
}

void TRunRecording::WriteTruth(const std::string& ATruthFile) {
  const TTruth Truth = TTruth::Read(ATruthFile);
  const TFencingProject Project = FSession.Component.GetProjectInformation();
  for (const TTruth::TRow& Row : Truth.GetRows()) {
    const double Seconds = Row.Seconds - FSession.Run.Start;
    if (Seconds < 0.0 || static_cast<std::size_t>(Row.Map) >= Project.Maps.GetLength()) continue;
    const TFencingMap& Map = Project.Maps[static_cast<std::size_t>(Row.Map)];
    const auto UnitsPerMetre = static_cast<float>(1.0 / MetresPerUnit(Map.Map.Get()));
    FWriter.Truth(Seconds, Row.Map, Row.Place * UnitsPerMetre);
  }
}

void TRunRecording::Signals(double ASeconds) {
  if (ASeconds < FNextSignals) return;
  FNextSignals = ASeconds + 1.0;
  const TFencingProject Project = FSession.Component.GetProjectInformation();
  for (const TFencingMap& Map : Project.Maps) {
    const TFencingBeacons Beacons = Map.OrderedBeaconList();
    for (const TFencingBeacon& Entry : Beacons) {
      if (!Entry.BTBeacon || !Entry.BTBeacon->IsAlive()) continue;
      const int Rssi = Entry.BTBeacon->GetRssi();
      if (Rssi != UnknownRssi)
        FWriter.Signal(ASeconds, *Entry.DesignBeacon, Rssi, Entry.BTBeacon->GetDistance());
    }
  }
}

}  // namespace Wayfence
