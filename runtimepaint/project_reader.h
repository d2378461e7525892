// Reads the scene out of a bundle.
#pragma once

#include <functional>
#include <string>

#include "scene/System.Beacon.Fencing.Scene.Classes.h"

namespace System::Beacon::Fencing {

/// Called with a scene that is about to be read, as long as it is empty.
using TPrepareScene = std::function<void(Scene::IScene& AScene)>;

/// The scene whose text the bundle keeps as "project"; its pictures come from the bundle. Raises
/// `EXMLError` for a text that is refused and `EGeneralError` when there is none or it is no scene;
/// `AFileName` is only used in messages. Main thread.
TRef<Scene::TScene> ReadSceneOf(const TRef<Canvas::IBundle>& ABundle,
                                const std::string& AFileName,
                                const TPrepareScene& APrepare = {});

}  // namespace System::Beacon::Fencing
