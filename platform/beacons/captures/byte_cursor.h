// Walks over a few bytes without ever leaving them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "platform/beacons/advertisement.h"

namespace System::Beacon {

/// Takes fields off the front of a view. What is not there reads as zero and is remembered:
/// callers read all fields of a structure, then ask `IsShort` once.
class TByteCursor {
 public:
  explicit TByteCursor(std::span<const std::uint8_t> ABytes) : FBytes(ABytes) {}

  /// Whether more was asked for than there was.
  bool IsShort() const { return FShort; }
  std::size_t GetLeft() const { return FBytes.size(); }

  std::span<const std::uint8_t> Take(std::size_t ACount) {
    if (ACount > FBytes.size()) {
      FShort = true;
      FBytes = {};
      return {};
    }
    const auto Result = FBytes.first(ACount);
    FBytes = FBytes.subspan(ACount);
    return Result;
  }
  std::span<const std::uint8_t> TakeRest() { return Take(FBytes.size()); }
  std::uint8_t Byte() { return static_cast<std::uint8_t>(Little(1)); }
  std::int8_t SignedByte() { return static_cast<std::int8_t>(Byte()); }
  std::uint16_t Little16() { return static_cast<std::uint16_t>(Little(2)); }
  std::uint32_t Little24() { return static_cast<std::uint32_t>(Little(3)); }
  std::uint32_t Little32() { return static_cast<std::uint32_t>(Little(4)); }
  std::uint16_t Big16() { return static_cast<std::uint16_t>(Big(2)); }
  std::uint32_t Big32() { return static_cast<std::uint32_t>(Big(4)); }
  std::uint64_t Big64() { return Big(8); }
  /// A device address as it goes over the air, least significant byte first.
  TBluetoothAddress Address() {
    TBluetoothAddress Result;
    const auto Bytes = Take(Result.Bytes.size());
    for (std::size_t I = 0; I < Bytes.size(); ++I) Result.Bytes[5 - I] = Bytes[I];
    return Result;
  }

 private:
  std::uint64_t Big(std::size_t ACount) {
    std::uint64_t Result = 0;
    for (const std::uint8_t Byte : Take(ACount)) Result = Result << 8 | Byte;
    return Result;
  }
  std::uint64_t Little(std::size_t ACount) {
    std::uint64_t Result = 0;
    int Shift = 0;
    for (const std::uint8_t Byte : Take(ACount)) {
      Result |= std::uint64_t{Byte} << Shift;
      Shift += 8;
    }
    return Result;
  }

  std::span<const std::uint8_t> FBytes;
  bool FShort = false;
};

}  // namespace System::Beacon
