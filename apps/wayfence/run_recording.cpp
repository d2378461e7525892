#include "apps/wayfence/run_recording.h"

#include <fmt/format.h>

#include <cstdio>

#include "apps/wayfence/map_units.h"
#include "apps/wayfence/messages.h"

namespace Wayfence {

using namespace System;
using namespace System::Beacon;
using namespace System::Beacon::Fencing;

TRunRecording::TRunRecording(TMapSession& ASession,
                             const std::string& AFileName,
                             const std::string& ASource,
                             const std::string& ATruthFile)
    : TRunRecording(
          ASession,
          AFileName,
          ASource,
          ATruthFile.empty() ? std::vector<TTruth::TRow>() : TTruth::Read(ATruthFile).GetRows()) {}

TRunRecording::TRunRecording(TMapSession& ASession,
                             const std::string& AFileName,
                             const std::string& ASource,
                             const std::vector<TTruth::TRow>& ATruth)
    : FSession(ASession),
      FWriter(
          AFileName, *ASession.Project.Scene, ASession.Component.GetProjectInformation(), ASource) {
  WriteTruth(ATruth);
}

bool TRunRecording::IsOver() {
  if (FIsOver) return true;
  FIsOver = FWriter.IsFull() || FSession.Run.Source->GetSeconds() > MaxRunSeconds;
  if (FIsOver)
    Say(
        fmt::format("the run file is full: it holds {} MiB and {:.0f} s; what follows is not "
                    "kept",
                    MaxRunSize >> 20,
                    MaxRunSeconds));
  return FIsOver;
}

void TRunRecording::WriteTruth(const std::vector<TTruth::TRow>& ATruth) {
  const TFencingProject Project = FSession.Component.GetProjectInformation();
  for (const TTruth::TRow& Row : ATruth) {
    const double Seconds = Row.Seconds - FSession.Run.Start;
    if (Seconds < 0.0 || Seconds > MaxRunSeconds) continue;
    if (IsOver() || static_cast<std::size_t>(Row.Map) >= Project.Maps.GetLength()) continue;
    const TFencingMap& Map = Project.Maps[static_cast<std::size_t>(Row.Map)];
    const auto UnitsPerMetre = static_cast<float>(1.0 / MetresPerUnit(Map.Map.Get()));
    FWriter.Truth(Seconds, Row.Map, Row.Place * UnitsPerMetre);
  }
}

void TRunRecording::Signals(double ASeconds) {
  if (ASeconds < FNextSignals || IsOver()) return;
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
