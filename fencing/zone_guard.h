// What lets the beacon service's thread look zones up while the main thread changes them.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>

#include "platform/ref.h"

namespace System::Beacon::Fencing {

/// One for a whole tree of zones, beacon lists and items. Zones are changed by one thread (the
/// main thread), which may read them freely; every change, and every read by another thread,
/// is made under `Lock`. No user code runs while it is held.
class TZoneGuard final : public TInterfacedObject {
 public:
  /// Runs a change and makes every look-up table of the tree stale.
  template <class TChange>
  void Change(TChange&& AChange) {
    const std::lock_guard Guard(Lock);
    ++Version;
    AChange();
  }

  std::mutex Lock;            // guards the tree and Version
  std::uint64_t Version = 1;  // another number after every change
};

/// A way to an item that may be deleted meanwhile: empty from then on. The pointer is followed
/// on the main thread or under the guard's lock; whether it is empty may be asked anywhere.
template <class T>
class TItemLink final : public TInterfacedObject {
 public:
  explicit TItemLink(T* AItem) noexcept : FItem(AItem) {}
  T* Get() const noexcept { return FItem.load(std::memory_order_acquire); }
  void Clear() noexcept { FItem.store(nullptr, std::memory_order_release); }

 private:
  std::atomic<T*> FItem;
};

}  // namespace System::Beacon::Fencing
