#include "platform/errors.h"

#include <cstdio>
#include <cstdlib>

namespace System {

void FatalError(const std::string& AMessage) noexcept {
  std::fprintf(stderr, "wayfence: %s\n", AMessage.c_str());
  std::fflush(stderr);
  std::abort();
}

}  // namespace System
