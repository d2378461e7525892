// What may be wrong with maps and their pictures.
#include <fmt/format.h>

#include <exception>
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

void CheckPicture(TMap& AMap, TBundle& ABundle, TFaults& AFaults) {
  const std::string Path = AMap.GetBitmapPath();
  const std::string Place = TFaults::PlaceOf(AMap);
  if (Path.empty()) return AFaults.AddWarning(Place, "the map has no picture; set its BitmapPath");
  if (!ABundle.ContainsFileWithPath(Path))
    return AFaults.AddError(
        Place, fmt::format("its picture '{}' is not in the bundle; add the file", Path));
  try {
    DecodePicture(ABundle.GetStringForKey(Path), Path);
  } catch (const std::exception& Error) {
    AFaults.AddError(Place, Error.what());
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

void CheckMaps(const TProjectFile& AProject, TFaults& AFaults) {
  const auto Maps = NodesOf<TMap>(AProject.Scene.Get());
  if (Maps.empty()) AFaults.AddError(AProject.Scene->GetName(), "the project has no map; add one");
  for (TMap* Map : Maps) {
    CheckSize(*Map, AFaults);
    CheckPicture(*Map, *AProject.Bundle, AFaults);
  }
  CheckUnusedFiles(AProject, AFaults);
}

}  // namespace Wayfence
