// The children of a node in their order.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace System::Beacon::Fencing::Scene {

/// A list that grows at both ends in amortised constant time. Every item has a number, by which its
/// place is found again; the numbers of the others stay when one comes or goes at an end. Numbers
/// count on from 2^32 - 1 to 0. Items without a value must be cheap to make.
template <class T>
class TChildList {
 public:
  std::size_t size() const noexcept { return FItems.size() - FSpare; }
  bool empty() const noexcept { return size() == 0; }
  auto begin() noexcept { return FItems.begin() + FSpare; }
  auto end() noexcept { return FItems.end(); }
  auto begin() const noexcept { return FItems.begin() + FSpare; }
  auto end() const noexcept { return FItems.end(); }
  auto rbegin() const noexcept { return FItems.rbegin(); }
  auto rend() const noexcept { return FItems.rend() - FSpare; }
  T& operator[](std::size_t AIndex) noexcept { return FItems[FSpare + AIndex]; }
  const T& operator[](std::size_t AIndex) const noexcept { return FItems[FSpare + AIndex]; }
  const T& back() const noexcept { return FItems.back(); }

  /// Both raise nothing but for want of memory, and then change nothing.
  void PushBack(T AItem) { FItems.push_back(std::move(AItem)); }
  void PushFront(T AItem) {
    if (FSpare == 0) MakeRoom();
    FItems[--FSpare] = std::move(AItem);
    --FFirstNumber;
  }
  /// The index from which on items have other numbers than before.
  std::size_t Erase(std::size_t AIndex) noexcept {
    if (AIndex > 0) {
      FItems.erase(begin() + static_cast<std::ptrdiff_t>(AIndex));
      return AIndex;
    }
    FItems[FSpare++] = T();
    ++FFirstNumber;
    if (FSpare > 2 * size() + LeastRoom) {
      FItems.erase(FItems.begin(), begin());
      FSpare = 0;
    }
    return size();
  }
  /// Items keep no number.
  void Assign(std::vector<T> AItems) noexcept {
    FItems = std::move(AItems);
    FSpare = 0;
  }

  std::uint32_t GetNumber(std::size_t AIndex) const noexcept {
    return FFirstNumber + static_cast<std::uint32_t>(AIndex);
  }
  std::int32_t GetIndex(std::uint32_t ANumber) const noexcept {
    return static_cast<std::int32_t>(ANumber - FFirstNumber);
  }

 private:
  static constexpr std::size_t LeastRoom = 4;

  void MakeRoom() {
    const std::size_t Room = std::max(LeastRoom, FItems.size());
    FItems.insert(FItems.begin(), Room, T());
    FSpare = static_cast<std::uint32_t>(Room);
  }

  std::vector<T> FItems;           // the first ones are spare
  std::uint32_t FSpare = 0;        // so many
  std::uint32_t FFirstNumber = 0;  // of the first one that is not
};

}  // namespace System::Beacon::Fencing::Scene
