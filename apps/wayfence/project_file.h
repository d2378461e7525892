// Projects that are given on the command line.
#pragma once

#include <string>

#include "fencing/System.Beacon.Fencing.Types.h"
#include "persistence/System.Beacon.Fencing.Bundle.h"
#include "scene/System.Beacon.Fencing.Scene.Classes.h"

namespace Wayfence {

struct TProjectFile {
  System::TRef<System::Beacon::Fencing::TBundle> Bundle;
  System::TRef<System::Beacon::Fencing::Scene::TScene> Scene;
  std::string Name;  ///< as it was given, for messages
};

/// What a path names: a bundle as XML, as an archive (told by its first bytes) or as a directory,
/// or the text of a scene by itself. Raises for what cannot be read.
System::TRef<System::Beacon::Fencing::TBundle> OpenBundle(const std::string& APath);
/// The same with its scene.
TProjectFile OpenProject(const std::string& APath);
/// The record of the project; what is raised names the file and the node.
System::Beacon::Fencing::TFencingProject ExtractFrom(const TProjectFile& AFile);

}  // namespace Wayfence
