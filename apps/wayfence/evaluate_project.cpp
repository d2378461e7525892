#include "apps/wayfence/evaluate_project.h"

#include <fmt/format.h>

#include <cstdio>

#include "apps/wayfence/estimated_walk.h"
#include "apps/wayfence/evaluation_picture.h"
#include "apps/wayfence/map_route.h"
#include "apps/wayfence/map_session.h"
#include "apps/wayfence/messages.h"
#include "apps/wayfence/output_files.h"
#include "apps/wayfence/project_comparison.h"
#include "apps/wayfence/run_warnings.h"
#include "platform/errors.h"
#include "platform/files.h"

namespace Wayfence {

using namespace System;
using namespace System::Beacon::Fencing;

namespace {

TTruth ReadTruth(const std::string& AFileName, std::size_t AMaps) {
  TTruth Result = TTruth::Read(AFileName);
  for (const TTruth::TRow& Row : Result.GetRows())
    if (static_cast<std::size_t>(Row.Map) >= AMaps)
      throw EFileError(fmt::format(
          "{}: map {} at {:.3f} s is not in the project, whose maps are counted from 0 to {}",
          AFileName,
          Row.Map,
          Row.Seconds,
          AMaps - 1));
  return Result;
}

/// Runs the component to the end of the recording.
void Perform(TMapSession& ASession, TEstimatedWalk& AWalk, const std::string& ARoute) {
  TMapRoute Route(ASession.Component, ARoute);
  AWalk.OnPosition = [&Route] { Route.Begin(); };
  ASession.Component.SetEnabled(true);
  WaitForEnd(ASession.Run);
  ASession.Component.SetEnabled(false);
  AWalk.OnPosition = nullptr;
  ASession.Run.Source->ReportProblems();
  ASession.Run.Source->RaiseError();
}

void WarnOfRun(const TMapSession& ASession,
               const TProjectComparison& AComparison,
               const TEstimatedWalk& AWalk) {
  if (AWalk.GetEstimates().empty())
    WarnOfNoEstimate(ASession);
  else if (AComparison.Estimates == 0)
    Say(
        fmt::format("none of {} estimates lies at a known position; see that the times of the "
                    "truth belong to the recording",
                    AWalk.GetEstimates().size()));
}

}  // namespace

int EvaluateProject(const TEvaluateArguments& AArguments) {
  CheckOutputs({AArguments.PictureFile},
               {AArguments.Project,
                FileOf(AArguments.From),
                AArguments.ComponentFile,
                AArguments.TruthFile});
  TMapSession Session(AArguments.From, AArguments.Project, AArguments.ComponentFile);
  RefuseRadio(Session.Run, AArguments.From);
  const TTruth Truth =
      ReadTruth(AArguments.TruthFile, Session.Component.GetProjectInformation().Maps.GetLength());
  TEstimatedWalk Walk(Session.Component,
                      [&Run = Session.Run] { return Run.Start + Run.Source->GetSeconds(); });
  WarnOfProject(Session);
  Perform(Session, Walk, AArguments.Route);
  const TFencingProject Project = Session.Component.GetProjectInformation();
  const TProjectComparison Comparison = CompareWithTruth(
      Project, Walk, Truth, {.Skip = AArguments.Skip, .Tolerance = AArguments.Tolerance});
  WarnOfRun(Session, Comparison, Walk);
  if (!AArguments.PictureFile.empty())
    ReplaceFile(AArguments.PictureFile,
                EncodePng(*DrawEvaluation(
                    *Session.Project.Scene, Project, Truth, Walk.GetEstimates(), Comparison)));
  const bool HasRoute = !AArguments.Route.empty();
  fmt::print("{}",
             AArguments.Json ? ToJson(Comparison, HasRoute) + "\n" : ToTable(Comparison, HasRoute));
  return ExitDone;
}

}  // namespace Wayfence
