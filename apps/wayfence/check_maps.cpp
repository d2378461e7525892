// What may be wrong with maps, pictures and the files of the bundle.
#include <fmt/format.h>

#include <exception>
#include <map>
#include <set>

#include "apps/wayfence/project_faults.h"
#include "apps/wayfence/scene_walk.h"
#include "platform/drawing.h"

namespace Wayfence {

using namespace System;
using namespace System::Beacon::Fencing;
using namespace System::Beacon::Fencing::Scene::Beacons;

namespace {

void CheckSize(TMap& AMap, TFaults& AFaults) {
  const TRectF Rect = AMap.GetRect();
  const std::string Place = TFaults::PlaceOf(AMap);
  if (Rect.IsEmpty())
    AFaults.AddError(Place, "the map has no area; give its Rect a width and a height");
  if (AMap.GetMeasureUnits() != TMeasureUnits::Meters)
    AFaults.AddWarning(
        Place,
        fmt::format(
            "the map is in {}; distances of arrival and of routes count in "
            "map units as if they were metres: use Meters",
            TEnumNames<TMeasureUnits>::Names[static_cast<std::size_t>(AMap.GetMeasureUnits())]));
}

/// Of every node that shows one.
void CheckPictures(const TProjectFile& AProject, TFaults& AFaults) {
  std::map<std::string, std::string> FaultByPath;  // each is decoded once
  for (auto* Shape : NodesOf<Scene::TShapeBase>(AProject.Scene.Get())) {
    const std::string Path = Shape->GetBitmapPath();
    if (Path.empty()) {
      if (dynamic_cast<TMap*>(Shape))
        AFaults.AddWarning(
            TFaults::PlaceOf(*Shape),
            "the map has no picture; set its BitmapPath, or import it with 'wayfence "
            "project import --picture'");
      continue;
    }
    const auto [Fault, IsNew] = FaultByPath.try_emplace(Path);
    if (IsNew) Fault->second = FaultOfPicture(*AProject.Bundle, Path);
    if (!Fault->second.empty()) AFaults.AddError(TFaults::PlaceOf(*Shape), Fault->second);
  }
}

/// Files of one id are one file.
void CheckIds(TBundle& ABundle, TFaults& AFaults) {
  std::map<std::string, std::string> PathById;
  for (const std::string& Path : ABundle.GetPaths()) {
    const auto [Known, IsNew] = PathById.emplace(ABundle.GetFileIdWithPath(Path), Path);
    if (!IsNew)
      AFaults.AddError(
          Path,
          fmt::format("the file has the id {} of '{}', so that both have the content of one of "
                      "them; give it an id of its own",
                      Known->first,
                      Known->second));
  }
}

void CheckUnusedFiles(const TProjectFile& AProject, TFaults& AFaults) {
  std::set<std::string> Used{"project", "MapId.txt"};
  for (auto* Shape : NodesOf<Scene::TShapeBase>(AProject.Scene.Get()))
    Used.insert(Shape->GetBitmapPath());
  for (const std::string& Path : AProject.Bundle->GetPaths())
    if (!Used.contains(Path)) AFaults.AddWarning(Path, "nothing in the project uses this file");
}

}  // namespace

std::string FaultOfPicture(TBundle& ABundle, const std::string& APath) {
  if (!ABundle.ContainsFileWithPath(APath))
    return fmt::format("its picture '{}' is not in the bundle; add the file", APath);
  try {
    DecodePicture(ABundle.GetStringForKey(APath), APath);
  } catch (const std::exception& Error) {
    return Error.what();
  }
  return {};
}

void CheckMaps(const TProjectFile& AProject, TFaults& AFaults) {
  const auto Maps = NodesOf<TMap>(AProject.Scene.Get());
  if (Maps.empty()) AFaults.AddError(AProject.Scene->GetName(), "the project has no map; add one");
  for (TMap* Map : Maps) CheckSize(*Map, AFaults);
  CheckPictures(AProject, AFaults);
  CheckIds(*AProject.Bundle, AFaults);
  CheckUnusedFiles(AProject, AFaults);
}

}  // namespace Wayfence
