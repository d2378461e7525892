// A bounded window that moves over the bytes of a capture.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "platform/beacons/captures/byte_source.h"

namespace System::Beacon {

/// Shows the next bytes of a source without taking them. Memory stays at `Capacity`, whatever the
/// source holds. A source that fails ends there; `GetFailure` says why.
class TByteStream {
 public:
  static constexpr std::size_t Capacity = std::size_t{128} * 1024;

  /// `AName` is what messages call the stream.
  TByteStream(std::unique_ptr<TByteSource> ASource, std::string AName);

  /// At least the next `ACount` bytes (at most `Capacity`); fewer only at the end. The view is
  /// valid until the next call.
  std::span<const std::uint8_t> Peek(std::size_t ACount);
  /// Moves on by a number of bytes that the last `Peek` showed.
  void Skip(std::size_t ACount) noexcept;

  const std::string& GetName() const { return FName; }
  std::uint64_t GetPosition() const { return FPosition; }
  /// From 0 to 1; 0 until the end when the size is not known.
  double GetProgress() const noexcept;
  /// Why the source failed; empty when it did not.
  const std::string& GetFailure() const { return FFailure; }

 private:
  void Fill(std::size_t ACount);

  std::unique_ptr<TByteSource> FSource;
  std::string FName;
  std::vector<std::uint8_t> FBuffer;
  std::size_t FFirst = 0;  // the window within FBuffer
  std::size_t FLast = 0;
  std::uint64_t FPosition = 0;
  bool FAtEnd = false;
  std::string FFailure;
};

}  // namespace System::Beacon
