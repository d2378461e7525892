// What the command lines say about the source of a command.
#pragma once

#include "apps/wayfence/commands.h"

namespace CLI {
class App;
}

namespace Wayfence {

/// What a command takes beside recordings.
struct TSourceKinds {
  bool Radio = true;  ///< which it then listens to by default
  bool Walks = false;
  bool Speed = true;  ///< recordings run at
};

/// Adds `--source` and, where it may be chosen, `--speed`.
void AddSource(CLI::App& ACommand, TSourceArguments& AFrom, const TSourceKinds& AKinds = {});

}  // namespace Wayfence
