// wayfence map: the map component on a source.
#include <fmt/format.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>

#include "apps/wayfence/commands.h"
#include "apps/wayfence/map_events.h"
#include "apps/wayfence/map_route.h"
#include "apps/wayfence/map_session.h"
#include "apps/wayfence/map_window.h"
#include "apps/wayfence/output_files.h"
#include "apps/wayfence/run_recording.h"
#include "apps/wayfence/run_warnings.h"
#include "platform/controls/offscreen_control.h"

namespace Wayfence {

using namespace System;
using namespace System::Beacon;
using namespace System::Beacon::Fencing;

namespace {

/// Draws the live map into numbered pictures, once in an interval.
class TFrames {
 public:
  TFrames(TBeaconMapFencing& AComponent, const TMapArguments& AArguments)
      : FComponent(AComponent),
        FDirectory(AArguments.FrameDirectory),
        FInterval(AArguments.FrameInterval),
        FControl(static_cast<float>(AArguments.FrameSize.first),
                 static_cast<float>(AArguments.FrameSize.second)) {
    std::filesystem::create_directories(FDirectory);
    FComponent.SetPaintControl(&FControl);
    FComponent.SetRotation(0);  // fits the floor in
  }
  ~TFrames() { FComponent.SetPaintControl(nullptr); }
  TFrames(const TFrames&) = delete;
  TFrames& operator=(const TFrames&) = delete;

  void Draw(double ASeconds) {
    if (ASeconds < FNext) return;
    FNext = ASeconds + FInterval;
    FControl.SavePicture((FDirectory / fmt::format("frame-{:06.1f}.png", ASeconds)).string());
    ++FCount;
  }
  int GetCount() const noexcept { return FCount; }

 private:
  TBeaconMapFencing& FComponent;
  const std::filesystem::path FDirectory;
  const double FInterval;
  TOffscreenControl FControl;
  double FNext = 0.0;
  int FCount = 0;
};

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
  CheckOutputs({AArguments.RunFile},
               {AArguments.Project,
                FileOf(AArguments.From),
                AArguments.ComponentFile,
                AArguments.TruthFile});
  TMapSession Session(SourceOf(AArguments), AArguments.Project, AArguments.ComponentFile);
  TBeaconMapFencing& Component = Session.Component;
  TWatchedSource& Source = *Session.Run.Source;
  TMapRoute Route(Component, AArguments.Route);
  if (Source.IsLive()) Source.OpenAhead();  // a run that cannot begin writes nothing
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
  std::optional<TMapWindow> Window;
  if (AArguments.Window) {
    Window.emplace(Component.GetProjectInformation().ProjectName, Component);
    ShowUntilEnd(*Window, Source);
  } else {
    WaitForEnd(Session.Run);
  }
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
