// Fixed-size keys for beacon identities, and a table that finds one among many.
#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <span>
#include <utility>
#include <vector>

#include "platform/guid.h"

namespace System::Beacon {

/// What tells one beacon from another, as three words: a UUID, major and minor, or an Eddystone
/// namespace and instance, and a tag that keeps identities of different nature apart.
struct TBeaconIdentity {
  std::array<std::uint64_t, 3> Words{};

  static constexpr std::uint8_t EddystoneTag = 0xED;

  /// `ATag` below 0xED is the caller's: the kind where kinds are told apart, else 0.
  static TBeaconIdentity OfUUID(const TGUID& AGUID,
                                std::uint16_t AMajor,
                                std::uint16_t AMinor,
                                std::uint8_t ATag = 0) noexcept {
    TBeaconIdentity Result;
    std::memcpy(Result.Words.data(), AGUID.Bytes.data(), 16);
    Result.Words[2] = std::uint64_t{ATag} << 32 | std::uint64_t{AMajor} << 16 | AMinor;
    return Result;
  }
  static TBeaconIdentity OfEddystone(std::span<const std::uint8_t, 10> ANamespace,
                                     std::span<const std::uint8_t, 6> AInstance) noexcept {
    TBeaconIdentity Result;
    std::memcpy(Result.Words.data(), ANamespace.data(), 10);
    std::memcpy(reinterpret_cast<unsigned char*>(Result.Words.data()) + 10, AInstance.data(), 6);
    Result.Words[2] = std::uint64_t{EddystoneTag} << 32;
    return Result;
  }

  /// A hash that mixes every bit of the identity into every bit of the result; identities that
  /// differ in a counter only spread as well as random ones.
  std::uint64_t Hash() const noexcept {
    constexpr std::uint64_t Odd = 0x9E3779B97F4A7C15ULL;
    std::uint64_t H = (Words[0] ^ Odd) * 0xFF51AFD7ED558CCDULL;
    H = (std::rotl(H, 29) ^ Words[1]) * 0xC4CEB9FE1A85EC53ULL;
    H = (std::rotl(H, 31) ^ Words[2]) * Odd;
    return H ^ (H >> 32);
  }

  bool operator==(const TBeaconIdentity&) const = default;
};

/// An open-addressing hash table from identities to small values: linear probing, at most half
/// full, erasing by backward shift. Pointers to values stay valid until the next insertion or
/// erasure. One thread at a time.
template <class TStored>
class TIdentityTable {
 public:
  TStored* Find(const TBeaconIdentity& AKey) noexcept {
    return const_cast<TStored*>(std::as_const(*this).Find(AKey));
  }
  const TStored* Find(const TBeaconIdentity& AKey) const noexcept {
    if (FCount == 0) return nullptr;
    const std::size_t At = FindSlot(AKey);
    return FSlots[At].IsUsed ? &FSlots[At].Value : nullptr;
  }

  /// Adds the value unless the key is there already; true when it was added.
  bool Insert(const TBeaconIdentity& AKey, TStored AValue) {
    if (2 * (FCount + 1) > FSlots.size()) Grow();
    TSlot& Slot = FSlots[FindSlot(AKey)];
    if (Slot.IsUsed) return false;
    Slot = {AKey, std::move(AValue), true};
    ++FCount;
    return true;
  }

  bool Erase(const TBeaconIdentity& AKey) {
    if (FCount == 0) return false;
    std::size_t Hole = FindSlot(AKey);
    if (!FSlots[Hole].IsUsed) return false;
    for (std::size_t At = Next(Hole); FSlots[At].IsUsed; At = Next(At)) {
      const std::size_t Home = HomeOf(FSlots[At].Key);
      if (((At - Home) & Mask()) < ((At - Hole) & Mask())) continue;  // would move before its home
      FSlots[Hole] = std::move(FSlots[At]);
      Hole = At;
    }
    FSlots[Hole] = {};
    --FCount;
    return true;
  }

  void Clear() {
    FSlots.clear();
    FCount = 0;
  }
  void Reserve(std::size_t ACount) {
    while (2 * ACount > FSlots.size()) Grow();
  }
  std::size_t GetCount() const noexcept { return FCount; }

 private:
  struct TSlot {
    TBeaconIdentity Key;
    TStored Value{};
    bool IsUsed = false;
  };

  std::size_t Mask() const noexcept { return FSlots.size() - 1; }
  std::size_t Next(std::size_t AAt) const noexcept { return (AAt + 1) & Mask(); }
  std::size_t HomeOf(const TBeaconIdentity& AKey) const noexcept { return AKey.Hash() & Mask(); }
  /// The slot of the key, or the free one where it belongs.
  std::size_t FindSlot(const TBeaconIdentity& AKey) const noexcept {
    std::size_t At = HomeOf(AKey);
    while (FSlots[At].IsUsed && FSlots[At].Key != AKey) At = Next(At);
    return At;
  }
  void Grow() {
    std::vector<TSlot> Old(FSlots.empty() ? 16 : 2 * FSlots.size());
    Old.swap(FSlots);
    for (TSlot& Slot : Old)
      if (Slot.IsUsed) FSlots[FindSlot(Slot.Key)] = std::move(Slot);
  }

  std::vector<TSlot> FSlots;  // a power of two long
  std::size_t FCount = 0;
};

}  // namespace System::Beacon
