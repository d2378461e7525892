// The queue of a route search.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace System::Beacon::Fencing {

/// Nodes by distance, then by number. Nodes that are not due yet lie unsorted in a ring of buckets
/// (Dial, 1969), each for a short range of distances; those of the nearest bucket are in a heap, so
/// that a queue with everything in one bucket still is as fast as a heap. A node may be in the
/// queue more than once. One thread at a time.
class TNodeQueue {
 public:
  struct TEntry {
    double Distance;
    std::int32_t Node;
  };

  /// Empties the queue for a search over links up to `ALongestLink` long.
  void Clear(double ALongestLink) {
    FBucketsPerUnit = ALongestLink > 0.0 ? static_cast<double>(Buckets) / 2.0 / ALongestLink : 0.0;
    FHeads.fill(None);
    FUsed.fill(0);
    FWaiting.clear();
    FHeap.clear();
    FCurrent = 0;
  }

  /// `ADistance` is not below that of the last entry taken, and above it by one link at most.
  void Push(double ADistance, std::int32_t ANode) {
    const auto Bucket = static_cast<std::uint64_t>(ADistance * FBucketsPerUnit);
    if (Bucket == FCurrent) {
      FHeap.push_back({ADistance, ANode});
      std::push_heap(FHeap.begin(), FHeap.end(), IsAfter);
      return;
    }
    const std::size_t At = Bucket % Buckets;
    FWaiting.push_back({{ADistance, ANode}, FHeads[At]});
    FHeads[At] = static_cast<std::int32_t>(FWaiting.size()) - 1;
    FUsed[At / WordLength] |= std::uint64_t{1} << At % WordLength;
  }

  /// Takes the first entry out; false when there is none.
  bool Pop(TEntry& AEntry) {
    if (FHeap.empty() && !Advance()) return false;
    std::pop_heap(FHeap.begin(), FHeap.end(), IsAfter);
    AEntry = FHeap.back();
    FHeap.pop_back();
    return true;
  }

 private:
  struct TWaiting {
    TEntry Entry;
    std::int32_t Next;
  };
  static constexpr std::size_t Buckets = 1024;
  static constexpr std::size_t WordLength = 64;
  static constexpr std::size_t Words = Buckets / WordLength;
  static constexpr std::int32_t None = -1;

  static bool IsAfter(const TEntry& A, const TEntry& B) noexcept {
    return A.Distance > B.Distance || (A.Distance == B.Distance && A.Node > B.Node);
  }

  /// Goes on to the next bucket that is used and puts it into the heap.
  bool Advance() {
    const std::size_t From = FCurrent % Buckets;
    for (std::size_t I = 0; I <= Words; ++I) {
      const std::size_t Word = (From / WordLength + I) % Words;
      std::uint64_t Used = FUsed[Word];
      if (I == 0) Used &= ~std::uint64_t{0} << From % WordLength;
      if (Used == 0) continue;
      const std::size_t At = Word * WordLength + static_cast<std::size_t>(std::countr_zero(Used));
      FCurrent += (At - From) % Buckets;
      Take(At);
      return true;
    }
    return false;
  }
  void Take(std::size_t ABucket) {
    for (std::int32_t I = FHeads[ABucket]; I != None; I = FWaiting[I].Next)
      FHeap.push_back(FWaiting[I].Entry);
    std::make_heap(FHeap.begin(), FHeap.end(), IsAfter);
    FHeads[ABucket] = None;
    FUsed[ABucket / WordLength] &= ~(std::uint64_t{1} << ABucket % WordLength);
  }

  double FBucketsPerUnit = 0.0;
  std::uint64_t FCurrent = 0;                  // the bucket whose entries are in the heap
  std::array<std::int32_t, Buckets> FHeads{};  // the last entry of each bucket
  std::array<std::uint64_t, Words> FUsed{};    // a bit for each bucket
  std::vector<TWaiting> FWaiting;              // every entry of this search that had to wait
  std::vector<TEntry> FHeap;
};

}  // namespace System::Beacon::Fencing
