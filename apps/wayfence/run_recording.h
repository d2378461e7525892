// What a run of the map component leaves for its report.
#pragma once

#include <string>

#include "apps/wayfence/json_line.h"
#include "apps/wayfence/map_session.h"
#include "apps/wayfence/run_file.h"

namespace Wayfence {

/// Writes a run file beside a run. Main thread; goes before the session.
class TRunRecording {
 public:
  /// Writes the floors, and the true positions when a file of them is named.
  TRunRecording(TMapSession& ASession,
                const std::string& AFileName,
                const std::string& ASource,
                const std::string& ATruthFile);

  void Line(const TJsonLine& ALine) { FWriter.Line(ALine.ToText()); }
  /// The strengths of all beacons that are seen, at most once a second.
  void Signals(double ASeconds);
  void Close() { FWriter.Close(); }

 private:
  void WriteTruth(const std::string& ATruthFile);

  TMapSession& FSession;
  TRunWriter FWriter;
  double FNextSignals = 0.0;
};

}  // namespace Wayfence
