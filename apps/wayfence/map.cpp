// wayfence map: the map component on a source.
#include <fmt/format.h>

#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "apps/wayfence/commands.h"
#include "apps/wayfence/map_events.h"
#include "apps/wayfence/map_frames.h"
#include "apps/wayfence/map_route.h"
#include "apps/wayfence/map_session.h"
#include "apps/wayfence/map_window.h"
#include "apps/wayfence/output_files.h"
#include "apps/wayfence/run_recording.h"
#include "apps/wayfence/run_warnings.h"
#include "platform/errors.h"

namespace Wayfence {

using namespace System;
using namespace System::Beacon;
using namespace System::Beacon::Fencing;

namespace {

/// No file that is read is written or removed, and none of an earlier run without being asked.
void CheckFiles(const TMapArguments& AArguments) {
  std::vector<std::string> Outputs;
  if (!AArguments.FrameDirectory.empty()) Outputs = FramesIn(AArguments.FrameDirectory);
  if (!Outputs.empty() && !AArguments.Overwrite)
    throw EFileError(
        fmt::format("{}: the folder holds pictures of an earlier run; --overwrite removes them",
                    AArguments.FrameDirectory));
  Outputs.push_back(AArguments.RunFile);
  CheckOutputs(Outputs,
               {AArguments.Project,
                FileOf(AArguments.From),
                AArguments.ComponentFile,
                AArguments.TruthFile});
}

/// A window cannot be in simulated time: a recording then runs as fast as it was made.
TSourceArguments SourceOf(const TMapArguments& AArguments) {
  TSourceArguments Result = AArguments.From;
  if (AArguments.Window && Result.Speed == 0.0) Result.Speed = 1.0;
  return Result;
}

constexpr std::int64_t WindowTurnInMs = 50;

/// Shows the live map until the source has ended, the window is closed or the program interrupted.
void ShowUntilEnd(TMapWindow& AWindow, TWatchedSource& ASource) {
  CatchInterrupts();
  while (TWindow::ProcessEvents(WindowTurnInMs) && !ASource.GetEnded().IsSet() && !IsInterrupted())
    AWindow.GetView().SetTime(ASource.GetSeconds());
}

/// What a recording has come to stays to be looked at until the window is closed.
void ShowUntilClosed(TMapWindow& AWindow) {
  std::fflush(stdout);
  AWindow.GetView().SetEnded();
  while (TWindow::ProcessEvents(WindowTurnInMs) && !IsInterrupted()) continue;
}

TJsonLine StartedLine(const TMapArguments& AArguments, const TFencingProject& AProject) {
  TJsonLine Result(0.0, "Started");
  Result.Text("project", AProject.ProjectName);
  Result.Text("source", AArguments.From.Source);
  return Result;
}

TJsonLine FinishedLine(const TBeaconMapFencing& AComponent, double ASeconds) {
  const TScanStatistics Counts = AComponent.GetScanStatistics();
  TJsonLine Result(ASeconds, "Finished");
  Result.Number("advertisements", static_cast<std::int64_t>(Counts.Advertisements))
      .Number("sightings", static_cast<std::int64_t>(Counts.Sightings))
      .Number("malformed", static_cast<std::int64_t>(Counts.Malformed));
  return Result;
}

}  // namespace

int RunMap(const TMapArguments& AArguments) {
  CheckFiles(AArguments);
  TMapSession Session(SourceOf(AArguments), AArguments.Project, AArguments.ComponentFile);
  TBeaconMapFencing& Component = Session.Component;
  TWatchedSource& Source = *Session.Run.Source;
  TMapRoute Route(Component, AArguments.Route);
  // A run that cannot begin writes nothing.
  if (Source.IsLive()) Source.OpenAhead();
  std::optional<TMapWindow> Window;
  if (AArguments.Window) Window.emplace(Component.GetProjectInformation().ProjectName, Component);
  std::optional<TFrames> Frames;
  if (!AArguments.FrameDirectory.empty()) Frames.emplace(Component, AArguments);
  std::optional<TRunRecording> Recording;
  if (!AArguments.RunFile.empty())
    Recording.emplace(Session, AArguments.RunFile, AArguments.From.Source, AArguments.TruthFile);
  const auto Print = [&Recording](const TJsonLine& ALine) {
    ALine.Print();
    if (Recording) Recording->Line(ALine);
  };
  TMapEvents Events(
      Component, [&Source] { return Source.GetSeconds(); }, Print);
  bool HasEstimate = false;
  Events.OnPosition = [&] {
    HasEstimate = true;
    Route.Begin();
    if (Recording) Recording->Signals(Source.GetSeconds());
    if (Frames) Frames->Draw(Source.GetSeconds());
  };

  WarnOfProject(Session);
  if (Source.IsLive()) std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
  Print(StartedLine(AArguments, Component.GetProjectInformation()));
  Component.SetEnabled(true);
  if (Window)
    ShowUntilEnd(*Window, Source);
  else
    WaitForEnd(Session.Run);
  const double Seconds = Source.GetSeconds();
  Component.SetEnabled(false);
  Events.TellMapChange();
  Print(FinishedLine(Component, Seconds));
  if (Recording) Recording->Close();
  if (Window && Source.GetEnded().IsSet()) ShowUntilClosed(*Window);
  Source.ReportProblems();
  Source.RaiseError();
  if (!HasEstimate) WarnOfNoEstimate(Session);
  return ExitDone;
}

}  // namespace Wayfence
