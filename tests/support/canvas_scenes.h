// Scenes that every canvas draws alike, 200 x 150 pixels each.
#pragma once

#include "scene/canvas/System.Beacon.Fencing.Canvas.h"

namespace System::Beacon::Fencing::Canvas {

struct TCanvasScene {
  const char* Name;
  void (*Draw)(ICanvas& ACanvas);
};

extern const TCanvasScene CanvasScenes[6];

/// What leaves no trace, and does no harm to what is drawn after it.
extern const TCanvasScene EmptyCanvasScenes[5];

}  // namespace System::Beacon::Fencing::Canvas
