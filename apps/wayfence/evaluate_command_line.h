// The command line of wayfence evaluate.
#pragma once

#include <functional>

namespace CLI {
class App;
}

namespace Wayfence {

/// Adds the command; when it is chosen, `AChosen` becomes what runs it.
void AddEvaluate(CLI::App& AProgram, std::function<int()>& AChosen);

}  // namespace Wayfence
