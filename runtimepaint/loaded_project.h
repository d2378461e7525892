// A project that was read to be shown.
#pragma once

#include <memory>
#include <string>

#include "fencing/System.Beacon.Fencing.Types.h"
#include "persistence/System.Beacon.Fencing.Bundle.h"
#include "runtimepaint/position_marker.h"
#include "runtimepaint/zone_highlight.h"
#include "scene/System.Beacon.Fencing.Scene.Classes.h"
#include "scene/canvas/System.Beacon.Fencing.Canvas.Wyx.h"

namespace System::Beacon::Fencing {

/// A scene with what it is painted with, and the two markers on top of it; or nothing at all. Main
/// thread.
struct TLoadedProject {
  TRef<Scene::TScene> Scene;
  TRef<Scene::TCamera> Camera;
  TRef<IBundle> Bundle;
  TRef<ICanvas> Canvas;
  TRef<Canvas::TWyxLayer> Layer;
  TRef<TPositionMarker> Position;
  TRef<TPositionMarker> PathPosition;
  std::shared_ptr<TZoneHighlight> ZoneHighlight;

  /// Colours and sizes of the markers.
  void ApplyFencingOptions(const TFencingOptions& AOptions) const;
  void ApplyMapOptions(TFencingMapOptions AOptions) const;
  /// Makes the scene fill a screen of that size.
  void FitInto(const TRectF& AScreen) const;
  /// Gives a scene its region; none takes it off.
  void SetControl(TControl* AControl) const;
};

/// Reads the text of a bundle; the scene has no control yet. Raises `EGeneralError`, and what
/// reading raises, for a text that is no project.
TLoadedProject LoadProject(const std::string& AText, const TFencingOptions& AOptions);

}  // namespace System::Beacon::Fencing
