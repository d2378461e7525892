// wayfence project new: an example to start from.
#include <fmt/format.h>

#include <cstdio>
#include <filesystem>

#include "apps/wayfence/commands.h"
#include "apps/wayfence/example_project.h"
#include "apps/wayfence/output_files.h"
#include "platform/files.h"

namespace Wayfence {

using namespace System;

int RunProjectNew(const TProjectNewArguments& AArguments) {
  namespace fs = std::filesystem;
  const std::string Walk = fs::path(AArguments.File).replace_extension(".walk.json").string();
  CheckOverwrite({AArguments.File, Walk}, AArguments.Overwrite);
  MakeExampleProject().Save(AArguments.File);
  ReplaceFile(Walk, GetExampleWalk());
  fmt::print(stderr, "wrote {} and {}\n", AArguments.File, Walk);
  return ExitDone;
}

}  // namespace Wayfence
