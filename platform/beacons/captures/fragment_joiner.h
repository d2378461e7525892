// Puts the fragments of extended advertisements together again.
#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "platform/beacons/captures/advertisement_queue.h"

namespace System::Beacon {

/// What the fragments of one advertisement have in common.
struct TFragmentKey {
  std::uint64_t Advertiser = 0;
  std::uint32_t Set = 0;

  auto operator<=>(const TFragmentKey&) const = default;
};

/// Collects fragments by key and pushes each advertisement when its last fragment is there, with
/// the time of that fragment and the last strength that was known. Memory is bounded: of more
/// than `MaxChains` unfinished advertisements the oldest is given up, and so is one that grows
/// above `MaxPayloadSize`. One thread at a time.
class TFragmentJoiner {
 public:
  static constexpr std::size_t MaxChains = 16;

  explicit TFragmentJoiner(TAdvertisementQueue& AOut) : FOut(AOut) {}

  /// Adds one fragment; returns what is wrong, empty when nothing is.
  std::string_view Add(const TFragmentKey& AKey, const TAdvertisement& AFragment, bool AMoreToCome);
  /// Gives up what was collected under a key; returns what is wrong with that.
  std::string_view Drop(const TFragmentKey& AKey);
  /// Gives up everything unfinished.
  std::string_view DropAll();
  /// The advertiser of an unfinished advertisement; empty when none has the key.
  const TBluetoothAddress* FindAddress(const TFragmentKey& AKey) const;

 private:
  struct TChain {
    TFragmentKey Key;
    TAdvertisement Last;
    std::vector<std::uint8_t> Payload;
    bool TooLong = false;

    void Append(const TAdvertisement& AFragment);
  };

  std::size_t IndexOf(const TFragmentKey& AKey) const;
  std::string_view Erase(std::size_t AIndex);

  TAdvertisementQueue& FOut;
  std::vector<TChain> FChains;  // oldest first
};

}  // namespace System::Beacon
