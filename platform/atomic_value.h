// A number that threads share.
#pragma once

#include <atomic>

namespace System {

/// A number that one thread writes while others read. A copy is a number of its own.
template <class T>
class TAtomicValue {
 public:
  TAtomicValue() = default;
  TAtomicValue(T AValue) noexcept : FValue(AValue) {}
  TAtomicValue(const TAtomicValue& AOther) noexcept : FValue(AOther.Get()) {}
  TAtomicValue& operator=(const TAtomicValue& AOther) noexcept { return *this = AOther.Get(); }
  TAtomicValue& operator=(T AValue) noexcept {
    FValue.store(AValue, std::memory_order_release);
    return *this;
  }

  T Get() const noexcept { return FValue.load(std::memory_order_acquire); }
  operator T() const noexcept { return Get(); }

 private:
  std::atomic<T> FValue{};
};

}  // namespace System
