// wayfence evaluate: how far estimated positions are off.
#include <fmt/format.h>

#include <cmath>
#include <cstdio>

#include "apps/wayfence/baselines.h"
#include "apps/wayfence/beacon_list.h"
#include "apps/wayfence/commands.h"
#include "apps/wayfence/evaluate_project.h"
#include "apps/wayfence/filter_options.h"
#include "apps/wayfence/messages.h"
#include "apps/wayfence/position_errors.h"
#include "apps/wayfence/position_run.h"
#include "apps/wayfence/source.h"
#include "apps/wayfence/truth.h"

namespace Wayfence {

using namespace System;
using namespace System::Beacon;
using namespace System::Beacon::Fencing;

namespace {

/// The errors of each way to a position, at the same instants.
struct TComparison {
  std::size_t Estimates = 0;
  TPositionErrors Raw, Reported, Nearest, Centroid, LeastSquares;

  TNamedErrors GetEntries() const {
    return {{"raw", &Raw},
            {"reported", &Reported},
            {"nearest", &Nearest},
            {"centroid", &Centroid},
            {"leastSquares", &LeastSquares}};
  }
};

void WarnOfBeacons(const TBeaconFile& ABeacons, const std::string& AFileName) {
  if (ABeacons.Repeated > 0)
    Say(fmt::format("{}:{}: {} with the identity of one above; the first one counts",
                    AFileName,
                    ABeacons.FirstRepeatedLine,
                    Counted(ABeacons.Repeated, "beacon")));
  if (ABeacons.OtherMaps > 0)
    Say(fmt::format("{}: {} left out, not on map {} as the first one is",
                    AFileName,
                    Counted(ABeacons.OtherMaps, "beacon"),
                    ABeacons.Map));
}

void LoadOptions(TParticleFilterOptions& AOptions, const TEvaluateArguments& AArguments) {
  if (!AArguments.OptionsFile.empty()) LoadFilterOptions(AOptions, AArguments.OptionsFile);
  if (AArguments.Interval > 0) AOptions.SetUpdateInterval(AArguments.Interval);
  AOptions.SetSPC(AArguments.SPC);
}

TComparison Compare(
    const TPositionRun& ARun, const TTruth& ATruth, int AMap, double ASkip, const TRectF& AArea) {
  TComparison Result;
  for (const TEstimate& Estimate : ARun.GetEstimates()) {
    const auto Place = ATruth.GetPlace(Estimate.Seconds, AMap, ASkip);
    if (!Place) continue;
    ++Result.Estimates;
    Result.Raw.Add(Estimate.Raw, *Place);
    Result.Reported.Add(Estimate.Reported, *Place);
    const THeardBeacons Heard = ARun.GetStrengths().GetHeard(Estimate.Seconds);
    if (Heard.empty()) continue;
    Result.Nearest.Add(NearestPlace(Heard), *Place);
    Result.Centroid.Add(WeightedCentroid(Heard), *Place);
    Result.LeastSquares.Add(LeastSquaresPlace(Heard, AArea), *Place);
  }
  return Result;
}

void WarnOfRun(const TPositionRun& ARun,
               const TComparison& AComparison,
               std::uint64_t ABeaconsToUse) {
  if (ARun.GetFramesWithoutPower() > 0)
    Say(fmt::format("{} without a power left out; the beacon file can give it",
                    Counted(ARun.GetFramesWithoutPower(), "frame")));
  if (ARun.GetEstimates().empty())
    Say(fmt::format("no estimate: never were {} with a known distance heard at once",
                    Counted(ABeaconsToUse, "listed beacon")));
  else if (AComparison.Estimates == 0)
    Say(
        fmt::format("none of {} estimates lies at a known position; see that the beacons, the size "
                    "and the times belong to the recording",
                    ARun.GetEstimates().size()));
}

void PrintJson(const TComparison& AComparison) {
  TJsonLine Line;
  Line.Number("estimates", static_cast<std::int64_t>(AComparison.Estimates));
  for (const auto& [Name, Errors] : AComparison.GetEntries())
    Line.Json(Name, Errors->ToJson().ToText());
  Line.Print();
}

void PrintTable(const TComparison& AComparison) {
  fmt::print("{} estimates, errors in metres\n\n{}",
             AComparison.Estimates,
             ErrorTable(AComparison.GetEntries()));
}

}  // namespace

int RunEvaluate(const TEvaluateArguments& AArguments) {
  if (!AArguments.Project.empty()) return EvaluateProject(AArguments);
  const TBeaconFile Beacons = ReadBeaconFile(AArguments.BeaconFile);
  WarnOfBeacons(Beacons, AArguments.BeaconFile);
  const TTruth Truth = TTruth::Read(AArguments.TruthFile);
  TParticleFilterOptions Options;
  LoadOptions(Options, AArguments);
  const TRectF Area{
      0.0F, 0.0F, static_cast<float>(AArguments.Width), static_cast<float>(AArguments.Height)};
  TRun Run = OpenRun(AArguments.From);
  RefuseRadio(Run, AArguments.From);
  TPositionRun Positions(Run, Beacons.Beacons, Options, Area, AArguments.DeathTime);
  Positions.Perform();
  const TComparison Comparison = Compare(Positions, Truth, Beacons.Map, AArguments.Skip, Area);
  WarnOfRun(Positions, Comparison, static_cast<std::uint64_t>(Options.GetBeaconsToUse()));
  AArguments.Json ? PrintJson(Comparison) : PrintTable(Comparison);
  return ExitDone;
}

}  // namespace Wayfence
