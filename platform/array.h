// Dynamic arrays that are shared on assignment.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <memory>
#include <utility>
#include <vector>

namespace System {

/// A dynamic array whose storage is counted: copies share the elements, so that a write through one
/// copy is seen through all, until `SetLength` makes the array unique. The count is atomic; the
/// elements are guarded by whoever shares them. Indexes are not checked.
template <class T>
class TArray {
 public:
  TArray() = default;
  TArray(std::initializer_list<T> AItems) : TArray(std::vector<T>(AItems)) {}
  explicit TArray(std::vector<T> AItems) {
    if (!AItems.empty()) FItems = std::make_shared<std::vector<T>>(std::move(AItems));
  }

  std::size_t GetLength() const noexcept { return FItems ? FItems->size() : 0; }
  bool IsEmpty() const noexcept { return GetLength() == 0; }
  /// Gives this array storage of its own with `ALength` elements: the old ones as far as they
  /// reach, then default ones. Other copies keep the old storage.
  void SetLength(std::size_t ALength) {
    if (ALength == 0) {
      FItems.reset();
      return;
    }
    auto Items =
        FItems ? std::make_shared<std::vector<T>>(*FItems) : std::make_shared<std::vector<T>>();
    Items->resize(ALength);
    FItems = std::move(Items);
  }
  /// A copy with storage of its own.
  TArray Copy() const { return FItems ? TArray(std::vector<T>(*FItems)) : TArray(); }

  T& operator[](std::size_t AIndex) { return (*FItems)[AIndex]; }
  const T& operator[](std::size_t AIndex) const { return (*FItems)[AIndex]; }

  T* begin() noexcept { return FItems ? FItems->data() : nullptr; }
  T* end() noexcept { return begin() + GetLength(); }
  const T* begin() const noexcept { return FItems ? FItems->data() : nullptr; }
  const T* end() const noexcept { return begin() + GetLength(); }

  /// Whether two arrays share their storage (two empty ones do).
  bool IsSameAs(const TArray& AOther) const noexcept { return FItems == AOther.FItems; }

 private:
  std::shared_ptr<std::vector<T>> FItems;
};

}  // namespace System
