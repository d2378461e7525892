// Reads the scene out of a bundle.
#pragma once

#include <string>

#include "scene/System.Beacon.Fencing.Scene.Classes.h"

namespace System::Beacon::Fencing {

/// The scene whose text the bundle keeps as "project"; its pictures come from the bundle. Raises
/// `EXMLError` for a text that is refused and `EGeneralError` when there is none or it is no scene;
/// `AFileName` is only used in messages. Main thread.
TRef<Scene::TScene> ReadSceneOf(const TRef<Canvas::IBundle>& ABundle, const std::string& AFileName);

}  // namespace System::Beacon::Fencing
