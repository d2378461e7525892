// wayfence simulate: a recording of a walk that nobody took.
#include <fmt/format.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <string>

#include "apps/wayfence/commands.h"
#include "apps/wayfence/messages.h"
#include "apps/wayfence/output_files.h"
#include "apps/wayfence/progress.h"
#include "apps/wayfence/recording_file.h"
#include "apps/wayfence/simulation.h"
#include "platform/beacons/captures/output_file.h"

namespace Wayfence {

using namespace System;
using namespace System::Beacon;

namespace {

std::string TruthFileOf(const TSimulateArguments& AArguments) {
  if (!AArguments.TruthFile.empty()) return AArguments.TruthFile;
  return std::filesystem::path(AArguments.File).replace_extension(".truth.csv").string();
}

void WriteRow(TOutputFile& AFile, const TSimulatedWalk& AWalk, TTicks ATime) {
  const TRadioPlace Place = AWalk.Floors.ToMap(AWalk.Path.GetPlace(ATime));
  AFile.Write(fmt::format("{:.3f},{:.4f},{:.4f},{}\n",
                          static_cast<double>(ATime) / TicksPerSecond,
                          Place.X,
                          Place.Y,
                          Place.Level));
}

/// A row for each interval and one for the end, at whole milliseconds.
void WriteTruth(const TSimulatedWalk& AWalk, const std::string& AFileName) {
  const auto Step =
      static_cast<TTicks>(std::round(AWalk.Walk.Interval * 1000.0)) * TicksPerMillisecond;
  const TTicks End =
      (AWalk.Path.GetEnd() + TicksPerMillisecond - 1) / TicksPerMillisecond * TicksPerMillisecond;
  TOutputFile File(AFileName);
  File.Write(std::string_view("t,x,y,map\n"));
  for (TTicks Time = 0; Time < End; Time += Step) WriteRow(File, AWalk, Time);
  WriteRow(File, AWalk, End);
  File.Close();
}

std::uint64_t WriteRecording(IAdvertisementReader& AReader, IAdvertisementWriter& AWriter) {
  std::uint64_t Result = 0;
  TProgress Progress;
  TAdvertisement Advertisement;
  for (; AReader.Read(Advertisement); ++Result) {
    AWriter.Write(Advertisement);
    Progress.Show(AReader.GetProgress(), false);
  }
  Progress.Show(1.0, true);
  AWriter.Close();
  return Result;
}

}  // namespace

int RunSimulate(const TSimulateArguments& AArguments) {
  const std::string TruthFile = TruthFileOf(AArguments);
  CheckOutputs({AArguments.File, TruthFile}, {AArguments.Project, AArguments.Walk});
  CheckOverwrite({AArguments.File, TruthFile}, AArguments.Overwrite);
  const TSimulatedWalk Walk =
      OpenSimulatedWalk(AArguments.Project, AArguments.Walk, AArguments.Seed);
  WriteTruth(Walk, TruthFile);
  const std::uint64_t Count = WriteRecording(
      *Walk.Reader, *CreateRecording(AArguments.File, AArguments.Format, TCaptureClock::Recording));
  fmt::print(stderr,
             "wrote {} of {:.1f} s to {} and the true positions to {}\n",
             Counted(Count, "advertisement"),
             static_cast<double>(Walk.Path.GetEnd()) / TicksPerSecond,
             AArguments.File,
             TruthFile);
  return ExitDone;
}

}  // namespace Wayfence
