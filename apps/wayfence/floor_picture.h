// Pictures of the floors of a project.
#pragma once

#include "fencing/System.Beacon.Fencing.Types.h"
#include "platform/color.h"
#include "platform/drawing.h"
#include "scene/System.Beacon.Fencing.Scene.Classes.h"

namespace Wayfence {

/// What of a floor is drawn beside its own picture.
struct TFloorOptions {
  System::Beacon::Fencing::TFencingMapOptions Shown{
      System::Beacon::Fencing::TFencingMapOption::ShowBeacons,
      System::Beacon::Fencing::TFencingMapOption::ShowZones,
      System::Beacon::Fencing::TFencingMapOption::ShowPaths};
  int Rotation = 0;     ///< degrees that the view is turned by
  float Margin = 0.0F;  ///< around the map, map units
  System::TAlphaColor Background{0xFFFFFFFF};
};

struct TFloorPicture {
  System::TRef<System::TPicture> Picture;
  System::TRectF Rect;  ///< what it shows, global space, if it is not turned
};

/// Draws one floor of a scene by the scene's own painting, as the live map looks: the map of that
/// number, in depth-first order, and no other map. The height follows from the map. What the scene
/// shows is the same afterwards, its camera and viewport too. Main thread. Raises `EGeneralError`
/// when there is no such map, for one without an area, and for a picture that would be too large.
TFloorPicture DrawFloor(System::Beacon::Fencing::Scene::TScene& AScene,
                        int AMapIndex,
                        int AWidth,
                        const TFloorOptions& AOptions = {});

/// The width in pixels at which the longer side of an upright floor has `ALongSide`.
int FloorWidth(System::Beacon::Fencing::Scene::TScene& AScene,
               int AMapIndex,
               int ALongSide,
               const TFloorOptions& AOptions = {});

}  // namespace Wayfence
