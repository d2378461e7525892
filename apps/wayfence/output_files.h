// The files that a command is going to write, judged before any of them is opened.
#pragma once

#include <string>
#include <vector>

namespace Wayfence {

/// Refuses to write over what is read, and two things into one file: links, "./" and other names of
/// one file are seen through. Empty names stand for no file; of a folder that is read as a bundle
/// its files count. Raises `EFileError`.
void CheckOutputs(const std::vector<std::string>& AOutputs,
                  const std::vector<std::string>& AInputs);

/// Refuses files that are there already, unless they may be replaced. Devices and pipes are written
/// to and not replaced. Raises `EFileError`.
void CheckOverwrite(const std::vector<std::string>& AOutputs, bool AOverwrite);

}  // namespace Wayfence
