// The command lines of the commands that work on projects.
#pragma once

#include <functional>

namespace CLI {
class App;
}  // namespace CLI

namespace Wayfence {

/// Adds `inspect`, `check`, `route`, `render`, `bundle` and `project`. When one of them is asked
/// for, parsing sets `ACommand` to the call that runs it.
void AddProjectCommands(CLI::App& AProgram, std::function<int()>& ACommand);

}  // namespace Wayfence
