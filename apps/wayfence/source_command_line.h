// What the command lines say about the source of a command.
#pragma once

#include "apps/wayfence/commands.h"

namespace CLI {
class App;
}

namespace Wayfence {

/// Adds `--source` and, for commands that run a recording, `--speed`.
void AddSource(CLI::App& ACommand, TSourceArguments& AFrom, bool AHasSpeed = true);

}  // namespace Wayfence
