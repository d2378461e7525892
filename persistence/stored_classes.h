// The classes that are known by name without anybody's doing.
#pragma once

#include "persistence/System.Beacon.Fencing.RttiUtils.h"

namespace System::Beacon::Fencing {

/// Adds every class of stored scenes that can be made without arguments. Defined where those
/// classes are, and called once, when the shared context is first asked for: whoever looks a class
/// up links them in, also from a static library.
void RegisterStoredClasses(TRttiContext& AContext);

}  // namespace System::Beacon::Fencing
