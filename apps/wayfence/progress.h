// How far a long run has come, on a terminal.
#pragma once

#include <chrono>

namespace Wayfence {

/// Shows a percentage on standard error when that is a terminal and standard output is not, at most
/// five times a second and not in the first second. One thread at a time.
class TProgress {
 public:
  TProgress();
  /// `APart` from 0 to 1; the last call wipes the line.
  void Show(double APart, bool AIsLast);

 private:
  using TClock = std::chrono::steady_clock;
  bool FIsWanted;
  bool FIsShown = false;
  unsigned FCalls = 0;
  TClock::time_point FNext;
};

}  // namespace Wayfence
