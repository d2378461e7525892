// The map component on the source of a command.
#pragma once

#include <cstdint>
#include <string>

#include "apps/wayfence/commands.h"
#include "apps/wayfence/project_file.h"
#include "apps/wayfence/source.h"
#include "fencing/System.Beacon.Fencing.h"

namespace Wayfence {

/// A component with a project and, when one is named, the properties of a component file; stopped.
/// Made and used on the main thread; the members go in the reverse order.
struct TMapSession {
  /// Raises what is wrong with the project, the file or the source. What nobody chose to show is
  /// shown: an empty `MapOptions` becomes all of it but signal circles.
  TMapSession(const TSourceArguments& AFrom,
              const std::string& AProject,
              const std::string& AComponentFile);

  TRun Run;
  const TProjectFile Project;  ///< a scene of its own: the one that the component shows is another
  System::Beacon::Fencing::TBeaconMapFencing Component;
};

/// The index of the point of interest of a name. Raises `EGeneralError` when there is none.
std::int32_t IndexOfPoi(const System::Beacon::Fencing::TFencingProject& AProject,
                        const std::string& AName);

}  // namespace Wayfence
