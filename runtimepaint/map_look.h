// What is seen of a map.
#pragma once

#include "fencing/System.Beacon.Fencing.Types.h"
#include "scene/System.Beacon.Fencing.Scene.h"

namespace System::Beacon::Fencing {

void Show(Scene::INode& ANode, bool AIsShown);

/// Shows, of the beacons, zones and paths below a map, what the options tell, and hides the rest.
/// Scene thread.
void ApplyMapLook(Scene::INode& AMap, TFencingMapOptions AOptions);

}  // namespace System::Beacon::Fencing
