// What a run of the map component leaves for its report.
#pragma once

#include <string>
#include <vector>

#include "apps/wayfence/json_line.h"
#include "apps/wayfence/map_session.h"
#include "apps/wayfence/run_file.h"
#include "apps/wayfence/truth.h"

namespace Wayfence {

/// Writes a run file beside a run. Main thread; goes before the session.
class TRunRecording {
 public:
  /// Writes the floors, and the true positions when a file of them is named. The run file is made
  /// when all that can be refused has been read.
  TRunRecording(TMapSession& ASession,
                const std::string& AFileName,
                const std::string& ASource,
                const std::string& ATruthFile);

  /// Nothing is kept of what goes beyond the bounds of a run file; that is said once.
  void Line(const TJsonLine& ALine) {
    if (!IsOver()) FWriter.Line(ALine.ToText());
  }
  /// The strengths of all beacons that are seen, at most once a second.
  void Signals(double ASeconds);
  void Close() { FWriter.Close(); }

 private:
  TRunRecording(TMapSession& ASession,
                const std::string& AFileName,
                const std::string& ASource,
                const std::vector<TTruth::TRow>& ATruth);
  void WriteTruth(const std::vector<TTruth::TRow>& ATruth);
  bool IsOver();

  TMapSession& FSession;
  TRunWriter FWriter;
  double FNextSignals = 0.0;
  bool FIsOver = false;
};

}  // namespace Wayfence
