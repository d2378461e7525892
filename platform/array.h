// Dynamic arrays that are shared on assignment.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace System {

/// A dynamic array whose storage is counted: copies share the elements, so that a write through one
/// copy is seen through all, until `SetLength` or `Append` makes the array unique. The count is
/// atomic; elements that one thread writes while others read are touched inside `WithLock` only.
/// Indexes are not checked.
template <class T>
class TArray {
 public:
  TArray() = default;
  TArray(std::initializer_list<T> AItems) : TArray(std::vector<T>(AItems)) {}
  explicit TArray(std::vector<T> AItems) {
    if (!AItems.empty()) FStorage = std::make_shared<TStorage>(std::move(AItems));
  }

  std::size_t GetLength() const noexcept { return FStorage ? FStorage->Items.size() : 0; }
  bool IsEmpty() const noexcept { return GetLength() == 0; }
  /// Gives this array storage of its own with `ALength` elements: the old ones as far as they
  /// reach, then default ones. Other copies keep the old storage.
  void SetLength(std::size_t ALength) {
    if (ALength == 0)
      FStorage.reset();
    else
      Own().resize(ALength);
  }
  /// Makes the array unique and longer by one. A row of calls takes time in proportion to it.
  void Append(T AItem) { Own().push_back(std::move(AItem)); }
  /// A copy with storage of its own.
  TArray Copy() const { return FStorage ? TArray(std::vector<T>(FStorage->Items)) : TArray(); }

  T& operator[](std::size_t AIndex) { return FStorage->Items[AIndex]; }
  const T& operator[](std::size_t AIndex) const { return FStorage->Items[AIndex]; }

  T* begin() noexcept { return FStorage ? FStorage->Items.data() : nullptr; }
  T* end() noexcept { return begin() + GetLength(); }
  const T* begin() const noexcept { return FStorage ? FStorage->Items.data() : nullptr; }
  const T* end() const noexcept { return begin() + GetLength(); }

  /// Runs `ABody` under the lock that belongs to the storage and is thus common to all copies.
  /// `ABody` takes no other lock.
  template <class TBody>
  decltype(auto) WithLock(TBody&& ABody) const {
    const auto Guard = FStorage ? std::unique_lock(FStorage->Lock) : std::unique_lock<std::mutex>();
    return ABody();
  }

  /// Whether two arrays share their storage (two empty ones do).
  bool IsSameAs(const TArray& AOther) const noexcept { return FStorage == AOther.FStorage; }

 private:
  struct TStorage {
    explicit TStorage(std::vector<T> AItems) : Items(std::move(AItems)) {}
    std::vector<T> Items;
    std::mutex Lock;  // guards the elements of arrays that threads share
  };

  std::vector<T>& Own() {
    if (!FStorage || FStorage.use_count() > 1)
      FStorage = std::make_shared<TStorage>(FStorage ? FStorage->Items : std::vector<T>());
    return FStorage->Items;
  }

  std::shared_ptr<TStorage> FStorage;
};

}  // namespace System
