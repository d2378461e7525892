// A descriptor by which any thread wakes one that polls.
#pragma once

namespace System::Beacon {

/// Set by any thread, taken by the one that waits. Any thread may use any operation.
class TWakeUp {
 public:
  /// Raises `EBeaconSourceError` when the process has no descriptor left.
  TWakeUp();
  ~TWakeUp();
  TWakeUp(const TWakeUp&) = delete;
  TWakeUp& operator=(const TWakeUp&) = delete;

  /// Stays set until it is taken.
  void Set() noexcept;
  /// Whether it was set; it is not any more.
  bool Take() noexcept;
  /// Readable while it is set.
  int GetFd() const noexcept { return FFd; }

 private:
  int FFd;
};

}  // namespace System::Beacon
