// wayfence evaluate with a project.
#pragma once

#include "apps/wayfence/commands.h"

namespace Wayfence {

/// Runs the map component on a recording, compares it with the truth and prints the comparison.
/// Main thread; returns the exit code, and raises for refused input.
int EvaluateProject(const TEvaluateArguments& AArguments);

}  // namespace Wayfence
