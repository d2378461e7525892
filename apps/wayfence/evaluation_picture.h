// A picture of estimated positions beside the true way.
#pragma once

#include <vector>

#include "apps/wayfence/estimated_walk.h"
#include "apps/wayfence/project_comparison.h"
#include "apps/wayfence/truth.h"
#include "platform/drawing.h"
#include "scene/System.Beacon.Fencing.Scene.Classes.h"

namespace Wayfence {

/// Every floor that the device or an estimate was on, with the true way and the estimates over it,
/// and below them how often which errors were. `AScene` is the one of the project, its maps in the
/// order of `AProject`. Main thread. Raises `EGeneralError` for a map that cannot be drawn.
System::TRef<System::TPicture> DrawEvaluation(
    System::Beacon::Fencing::Scene::TScene& AScene,
    const System::Beacon::Fencing::TFencingProject& AProject,
    const TTruth& ATruth,
    const std::vector<TMapEstimate>& AEstimates,
    const TProjectComparison& AComparison);

}  // namespace Wayfence
