// Names without regard to letter case, for tables.
#pragma once

#include <string>

namespace System::Beacon::Fencing::Scene {

/// A text that is the same for all names that `SameName` takes for equal.
inline std::string WithoutCase(std::string AName) {
  for (char& Char : AName)
    if (Char >= 'A' && Char <= 'Z') Char = static_cast<char>(Char - 'A' + 'a');
  return AName;
}

}  // namespace System::Beacon::Fencing::Scene
