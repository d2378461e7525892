// Where the bytes of a capture come from.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace System::Beacon {

/// Bytes in order, each read once. One thread at a time.
class TByteSource {
 public:
  virtual ~TByteSource() = default;
  /// Fills the front of `ABuffer` and returns how much; 0 at the end. Raises `EFileError`.
  virtual std::size_t Read(std::span<std::uint8_t> ABuffer) = 0;
  /// Bytes in all, 0 when that is not known.
  virtual std::uint64_t GetSize() const { return 0; }
};

/// The bytes of a file. Raises `EBeaconSourceError` when it is missing, forbidden or a folder.
std::unique_ptr<TByteSource> OpenFileSource(const std::string& APath);

/// Bytes in memory, which the source keeps.
std::unique_ptr<TByteSource> MakeMemorySource(std::vector<std::uint8_t> ABytes);

}  // namespace System::Beacon
