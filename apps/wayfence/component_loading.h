// Component files that are given on the command line.
#pragma once

#include <string>

#include "persistence/component_file.h"

namespace Wayfence {

/// Reads a component without starting it.
template <class TComponent>
void LoadStopped(TComponent& AComponent, const std::string& AFileName) {
  AComponent.SetDesigning(true);
  System::Beacon::Fencing::LoadComponentFile(AComponent, AFileName);
  AComponent.SetEnabled(false);
  AComponent.SetDesigning(false);
}

}  // namespace Wayfence
