// Sets of small enumerations.
#pragma once

#include <cstdint>
#include <initializer_list>

namespace System {

/// A set of the values of `TEnum`, in one byte: bit n stands for ordinal n, so ordinals 0 to 7.
template <class TEnum>
class TSet {
 public:
  constexpr TSet() = default;
  constexpr TSet(std::initializer_list<TEnum> AValues) {
    for (const TEnum Value : AValues) Include(Value);
  }
  static constexpr TSet FromBits(std::uint8_t ABits) {
    TSet Result;
    Result.FBits = ABits;
    return Result;
  }

  constexpr bool Contains(TEnum AValue) const { return (FBits & BitOf(AValue)) != 0; }
  constexpr void Include(TEnum AValue) { FBits = static_cast<std::uint8_t>(FBits | BitOf(AValue)); }
  constexpr void Exclude(TEnum AValue) {
    FBits = static_cast<std::uint8_t>(FBits & ~BitOf(AValue));
  }
  constexpr bool IsEmpty() const { return FBits == 0; }
  constexpr std::uint8_t GetBits() const { return FBits; }
  constexpr bool operator==(const TSet&) const = default;

 private:
  static constexpr std::uint8_t BitOf(TEnum AValue) {
    return static_cast<std::uint8_t>(1U << static_cast<unsigned>(AValue));
  }
  std::uint8_t FBits = 0;
};

}  // namespace System
