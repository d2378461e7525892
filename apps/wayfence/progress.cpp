#include "apps/wayfence/progress.h"

#include <unistd.h>

#include <cstdio>

namespace Wayfence {

TProgress::TProgress()
    : FIsWanted(isatty(STDERR_FILENO) != 0 && isatty(STDOUT_FILENO) == 0),
      FNext(TClock::now() + std::chrono::seconds(1)) {}

void TProgress::Show(double APart, bool AIsLast) {
  constexpr unsigned CallsBetweenLooksAtTheClock = 256;
  if (!FIsWanted) return;
  if (AIsLast) {
    if (FIsShown) std::fprintf(stderr, "\r\033[K");
    return;
  }
  if (++FCalls % CallsBetweenLooksAtTheClock != 0) return;
  const TClock::time_point Now = TClock::now();
  if (Now < FNext) return;
  FNext = Now + std::chrono::milliseconds(200);
  FIsShown = true;
  std::fprintf(stderr, "\r%3.0f %%", 100.0 * APart);
}

}  // namespace Wayfence
