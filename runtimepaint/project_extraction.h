// What the map component works on, taken out of a scene.
#pragma once

#include "fencing/System.Beacon.Fencing.Types.h"
#include "scene/System.Beacon.Fencing.Scene.Classes.h"

namespace System::Beacon::Fencing {

/// The project record of a scene: its maps in depth-first order with their beacons and zones, the
/// regions to look for, the graph of all walkable paths, and the points of interest: the nodes of
/// the graph first, then the beacons and the zones of each map. `MapIndex` counts the maps of the
/// record; -1 is none of them. The first map is shown, every other one hidden. The record keeps the
/// scene.
///
/// Takes time in proportion to the scene. Main thread; what it returns may be read on others.
/// Raises `EConvertError` for a description list that cannot be read.
TFencingProject ExtractProject(Scene::TScene& AScene);

/// Raises what `ExtractProject` would raise, also for nodes that the record leaves out. Changes
/// nothing. Main thread.
void RequireReadableInformation(Scene::TScene& AScene);

}  // namespace System::Beacon::Fencing
