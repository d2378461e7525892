// wayfence project import: a project from floor plans and lists of beacons.
#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <set>

#include "apps/wayfence/commands.h"
#include "apps/wayfence/import_beacons.h"
#include "apps/wayfence/import_geojson.h"
#include "apps/wayfence/import_place.h"
#include "apps/wayfence/import_project.h"
#include "apps/wayfence/messages.h"
#include "apps/wayfence/output_files.h"
#include "persistence/json_tree.h"
#include "platform/errors.h"
#include "platform/files.h"

namespace Wayfence {

using namespace System;

namespace {

std::string StemOf(const std::string& AFile) {
  return std::filesystem::path(AFile).stem().string();
}

std::vector<std::string> InputsOf(const TProjectImportArguments& AArguments) {
  std::vector<std::string> Result = AArguments.GeoJsonFiles;
  Result.push_back(AArguments.BeaconFile);
  for (const std::string& Picture : AArguments.Pictures)
    if (Picture != "-") Result.push_back(Picture);
  return Result;
}

TPlacing PlacingOf(const TProjectImportArguments& AArguments) {
  TPlacing Result;
  Result.Coordinates = AArguments.Coordinates == "degrees"  ? TCoordinates::Degrees
                       : AArguments.Coordinates == "metres" ? TCoordinates::Metres
                                                            : TCoordinates::Guess;
  Result.IsYUp = AArguments.IsYUp;
  if (AArguments.Origin) Result.Origin = {AArguments.Origin->first, AArguments.Origin->second};
  if (AArguments.Size) Result.SizeOfMaps = {AArguments.Size->first, AArguments.Size->second};
  return Result;
}

void ReadFloors(const std::string& AFile, TImportedFloors& AFloors, TWarnings& AWarnings) {
  TImportedFloors Read =
      ReadGeoJson(ReadWholeFile(AFile, Beacon::Fencing::MaxJsonSize), AFile, AWarnings);
  for (TImportedFloor& Floor : Read)
    if (Floor.Thing.Name.empty()) Floor.Thing.Name = StemOf(AFile);
  std::move(Read.begin(), Read.end(), std::back_inserter(AFloors));
}

TImportedFloors ReadAll(const TProjectImportArguments& AArguments, TWarnings& AWarnings) {
  const TPlacing Placing = PlacingOf(AArguments);
  TImportedFloors Result;
  for (const std::string& File : AArguments.GeoJsonFiles) ReadFloors(File, Result, AWarnings);
  const bool AreInDegrees = Placing.Coordinates == TCoordinates::Guess
                                ? AreDegrees(Result)
                                : Placing.Coordinates == TCoordinates::Degrees;
  for (TImportedFloor& Floor : Result) PlaceFloor(Floor, AreInDegrees, Placing);
  if (!AArguments.BeaconFile.empty())
    AddBeacons(Result, TBeaconRows(TCsvReader(AArguments.BeaconFile)), Placing);
  return Result;
}

/// Those that are asked for; a name that is there already gets a number.
void NameMaps(TImportedFloors& AFloors, const std::vector<std::string>& ANames) {
  if (ANames.size() > AFloors.size())
    throw EGeneralError(fmt::format("--map names {}, and there is no more than {}",
                                    Counted(ANames.size(), "map"),
                                    Counted(AFloors.size(), "map")));
  for (std::size_t I = 0; I < ANames.size(); ++I) AFloors[I].Thing.Name = ANames[I];
  std::set<std::string> Taken;
  for (TImportedFloor& Floor : AFloors) {
    const std::string Name = Floor.Thing.Name;
    for (int Number = 2; !Taken.insert(Floor.Thing.Name).second; ++Number)
      Floor.Thing.Name = fmt::format("{} ({})", Name, Number);
  }
}

void GivePictures(TImportedFloors& AFloors, const std::vector<std::string>& APictures) {
  if (APictures.size() > AFloors.size())
    throw EGeneralError(fmt::format("--picture names {}, and there is no more than {}",
                                    Counted(APictures.size(), "picture"),
                                    Counted(AFloors.size(), "map")));
  for (std::size_t I = 0; I < APictures.size(); ++I)
    if (APictures[I] != "-") AFloors[I].Picture = APictures[I];
}

void PrintWarnings(const TWarnings& AWarnings) {
  constexpr std::size_t MaxPrinted = 20;
  const std::size_t Printed = std::min(AWarnings.size(), MaxPrinted);
  for (std::size_t I = 0; I < Printed; ++I) Say(AWarnings[I]);
  if (AWarnings.size() > Printed)
    Say(fmt::format("and {} more of the kind", AWarnings.size() - Printed));
}

void PrintSummary(const std::string& AFile, const TImportedFloors& AFloors) {
  for (const TImportedFloor& Floor : AFloors)
    fmt::print(stderr,
               "{}: {:.2f} x {:.2f} m, {}, {}, {}\n",
               Printable(Clipped(Floor.Thing.Name)),
               Floor.Width,
               Floor.Height,
               Counted(Floor.Zones.size(), "zone"),
               Counted(Floor.Lines.size(), "line"),
               Counted(Floor.Beacons.size(), "beacon"));
  fmt::print(stderr, "wrote {}\n", AFile);
}

}  // namespace

int RunProjectImport(const TProjectImportArguments& AArguments) {
  CheckOutputs({AArguments.File}, InputsOf(AArguments));
  CheckOverwrite({AArguments.File}, AArguments.Overwrite);
  TWarnings Warnings;
  TImportedFloors Floors = ReadAll(AArguments, Warnings);
  KeepFirstBeacons(Floors, Warnings);
  NameMaps(Floors, AArguments.MapNames);
  GivePictures(Floors, AArguments.Pictures);
  BuildProject(StemOf(AArguments.File), Floors, Warnings).Save(AArguments.File);
  PrintWarnings(Warnings);
  PrintSummary(AArguments.File, Floors);
  return ExitDone;
}

}  // namespace Wayfence
