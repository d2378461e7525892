#include "apps/wayfence/project_comparison.h"

#include <fmt/format.h>

#include <cmath>

#include "apps/wayfence/map_units.h"

namespace Wayfence {

using namespace System;
using namespace System::Beacon::Fencing;

namespace {

constexpr double LateFloor = 10.0;  // seconds

using TArrivals = std::vector<std::pair<double, std::string>>;

void AddPositions(TProjectComparison& AResult,
                  const TFencingProject& AProject,
                  const std::vector<TMapEstimate>& AEstimates,
                  const TTruth& ATruth,
                  double ASkip) {
  for (const TMapEstimate& Estimate : AEstimates) {
    const auto Map = ATruth.GetMap(Estimate.Seconds);
    if (!Map) continue;
    ++AResult.Estimates;
    if (*Map != Estimate.Map) continue;
    ++AResult.OnRightMap;
    const auto Place = ATruth.GetPlace(Estimate.Seconds, *Map, ASkip);
    if (!Place) continue;
    const auto Metres =
        static_cast<float>(MetresPerUnit(AProject.Maps[static_cast<std::size_t>(*Map)].Map.Get()));
    AResult.Raw.Add(Estimate.Raw * Metres, *Place);
    AResult.Path.Add(Estimate.Path * Metres, *Place);
  }
}

void AddZones(TProjectComparison& AResult,
              const TFencingProject& AProject,
              const TEstimatedWalk& AWalk,
              const TTruth& ATruth,
              double ATolerance) {
  for (std::size_t I = 0; I < AProject.Maps.GetLength(); ++I) {
    const double UnitsPerMetre = 1.0 / MetresPerUnit(AProject.Maps[I].Map.Get());
    for (const TRef<IDesignZone>& Zone : AProject.Maps[I].Zones)
      JudgeZone(Zone->GetName(),
                FindStays(ATruth, *Zone, static_cast<int>(I), UnitsPerMetre),
                AWalk.GetStays(Zone),
                ATolerance,
                AResult.Zones);
  }
}

struct TFloorCounts {
  int Late = 0;
  int Never = 0;
};

TFloorCounts CountFloors(const std::vector<TFloorChange>& AChanges) {
  TFloorCounts Result;
  for (const TFloorChange& Change : AChanges) {
    if (!Change.Delay) ++Result.Never;
    if (Change.Delay && *Change.Delay > LateFloor) ++Result.Late;
  }
  return Result;
}

template <class TItems, class TToText>
std::string JsonArray(const TItems& AItems, const TToText& AToText) {
  std::string Result;
  for (const auto& Item : AItems) Result += (Result.empty() ? "" : ", ") + AToText(Item);
  return "[" + Result + "]";
}

std::string ToJson(const std::vector<TFloorChange>& AChanges) {
  const auto [Late, Never] = CountFloors(AChanges);
  TJsonLine Line;
  Line.Number("changes", static_cast<std::int64_t>(AChanges.size()));
  Line.Number("late", Late).Number("never", Never);
  Line.Json("delays", JsonArray(AChanges, [](const TFloorChange& AChange) {
              return AChange.Delay ? fmt::format("{:.3f}", *AChange.Delay) : std::string("null");
            }));
  return Line.ToText();
}

std::string DelaysToJson(const std::vector<double>& ADelays) {
  TJsonLine Result;
  AddFigure(Result, "median", PercentileOf(ADelays, 0.5));
  AddFigure(Result, "p90", PercentileOf(ADelays, 0.9));
  return Result.ToText();
}

std::string ToJson(const TZoneFigures& AZones) {
  TJsonLine Line;
  Line.Number("stays", AZones.Stays)
      .Number("missed", static_cast<std::int64_t>(AZones.Missed.size()))
      .Number("late", AZones.Late)
      .Number("entries", AZones.Entries)
      .Number("false", AZones.False)
      .Json("entryDelay", DelaysToJson(AZones.EntryDelays))
      .Json("exitDelay", DelaysToJson(AZones.ExitDelays));
  Line.Json("missedStays", JsonArray(AZones.Missed, [](const TZoneFigures::TMissed& AMissed) {
              TJsonLine Stay;
              Stay.Text("zone", AMissed.Zone);
              Stay.Decimal("begin", AMissed.Stay.Begin).Decimal("end", AMissed.Stay.End);
              return Stay.ToText();
            }));
  return Line.ToText();
}

std::string DelayText(const std::vector<double>& ADelays) {
  if (ADelays.empty()) return "-";
  return fmt::format(
      "{:.1f} s, 90 % within {:.1f} s", PercentileOf(ADelays, 0.5), PercentileOf(ADelays, 0.9));
}

std::string FloorText(const std::vector<TFloorChange>& AChanges) {
  const auto [Late, Never] = CountFloors(AChanges);
  std::string Result = fmt::format("changes of floor: {}; {} shown later than {:.0f} s, {} never\n",
                                   AChanges.size(),
                                   Late,
                                   LateFloor,
                                   Never);
  for (const TFloorChange& Change : AChanges)
    Result += fmt::format("  {:.1f} s: from map {} to map {}, {}\n",
                          Change.Seconds,
                          Change.From,
                          Change.To,
                          Change.Delay ? fmt::format("shown after {:.1f} s", *Change.Delay)
                                       : std::string("never shown"));
  return Result;
}

std::string ZoneText(const TZoneFigures& AZones) {
  std::string Result = fmt::format(
      "stays of more than 5 s in zones: {}; {} missed, {} late; {} entries told, {} false\n"
      "  entries told after {}\n"
      "  exits told after {}\n",
      AZones.Stays,
      AZones.Missed.size(),
      AZones.Late,
      AZones.Entries,
      AZones.False,
      DelayText(AZones.EntryDelays),
      DelayText(AZones.ExitDelays));
  for (const TZoneFigures::TMissed& Missed : AZones.Missed)
    Result += fmt::format(
        "  missed: {}, {:.1f} s to {:.1f} s\n", Missed.Zone, Missed.Stay.Begin, Missed.Stay.End);
  return Result;
}

std::string ArrivalText(const TArrivals& AArrivals) {
  std::string Result = fmt::format("arrivals: {}\n", AArrivals.size());
  for (const auto& [Seconds, Poi] : AArrivals)
    Result += fmt::format("  {:.1f} s: {}\n", Seconds, Poi);
  return Result;
}

}  // namespace

TProjectComparison CompareWithTruth(const TFencingProject& AProject,
                                    const TEstimatedWalk& AWalk,
                                    const TTruth& ATruth,
                                    const TComparisonOptions& AOptions) {
  TProjectComparison Result;
  AddPositions(Result, AProject, AWalk.GetEstimates(), ATruth, AOptions.Skip);
  Result.Floors = FindFloorChanges(ATruth, AWalk.GetShownMaps());
  AddZones(Result, AProject, AWalk, ATruth, AOptions.Tolerance);
  Result.Arrivals = AWalk.GetArrivals();
  return Result;
}

std::string ToTable(const TProjectComparison& AComparison, bool AHasRoute) {
  std::string Result = fmt::format("{} estimates, {} on the right map; {} errors in metres\n\n",
                                   AComparison.Estimates,
                                   AComparison.OnRightMap,
                                   AComparison.Raw.GetErrors().size());
  Result += ErrorTable({{"raw", &AComparison.Raw}, {"path", &AComparison.Path}}) + "\n";
  Result += FloorText(AComparison.Floors) + ZoneText(AComparison.Zones);
  if (AHasRoute) Result += ArrivalText(AComparison.Arrivals);
  return Result;
}

std::string ToJson(const TProjectComparison& AComparison, bool AHasRoute) {
  TJsonLine Line;
  Line.Number("estimates", AComparison.Estimates);
  AddFigure(Line,
            "onRightMap",
            AComparison.Estimates > 0
                ? static_cast<double>(AComparison.OnRightMap) / AComparison.Estimates
                : std::nan(""));
  Line.Json("raw", AComparison.Raw.ToJson().ToText());
  Line.Json("path", AComparison.Path.ToJson().ToText());
  Line.Json("floors", ToJson(AComparison.Floors)).Json("zones", ToJson(AComparison.Zones));
  if (AHasRoute)
    Line.Json("arrivals", JsonArray(AComparison.Arrivals, [](const auto& AArrival) {
                TJsonLine Arrival;
                Arrival.Decimal("time", AArrival.first).Text("poi", AArrival.second);
                return Arrival.ToText();
              }));
  return Line.ToText();
}

}  // namespace Wayfence
