// How long tests may run, as the caller of the tests sets it.
#pragma once

#include <cstdlib>

namespace System {

inline int FromEnvironment(const char* AName, int ADefault) {
  const char* const Text = std::getenv(AName);
  return Text ? std::atoi(Text) : ADefault;
}

}  // namespace System
