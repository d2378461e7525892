#include "platform/beacons/captures/byte_stream.h"

#include <algorithm>
#include <utility>

#include "platform/errors.h"

namespace System::Beacon {

namespace {

constexpr std::size_t SmallestBuffer = 4096;

}  // namespace

TByteStream::TByteStream(std::unique_ptr<TByteSource> ASource, std::string AName)
    : FSource(std::move(ASource)), FName(std::move(AName)) {}

std::span<const std::uint8_t> TByteStream::Peek(std::size_t ACount) {
  if (FLast - FFirst < ACount && !FAtEnd) Fill(std::min(ACount, Capacity));
  return {FBuffer.data() + FFirst, FLast - FFirst};
}

void TByteStream::Skip(std::size_t ACount) noexcept {
  ACount = std::min(ACount, FLast - FFirst);
  FFirst += ACount;
  FPosition += ACount;
}

double TByteStream::GetProgress() const noexcept {
  if (FAtEnd && FFirst == FLast) return 1.0;
  const std::uint64_t Size = FSource->GetSize();
  if (Size == 0) return 0.0;
  return std::min(1.0, static_cast<double>(FPosition) / static_cast<double>(Size));
}

void TByteStream::Fill(std::size_t ACount) {
  std::copy(FBuffer.begin() + static_cast<std::ptrdiff_t>(FFirst),
            FBuffer.begin() + static_cast<std::ptrdiff_t>(FLast),
            FBuffer.begin());
  FLast -= FFirst;
  FFirst = 0;
  if (FBuffer.size() < Capacity) {  // small at first: most captures in memory are
    FBuffer.resize(std::clamp(2 * FBuffer.size(), std::max(ACount, SmallestBuffer), Capacity));
  }
  try {
    while (FLast < ACount && !FAtEnd) {
      const std::size_t Count = FSource->Read(std::span(FBuffer).subspan(FLast));
      FAtEnd = Count == 0;
      FLast += Count;
    }
  } catch (const EFileError& Error) {
    FAtEnd = true;
    FFailure = Error.what();
  }
}

}  // namespace System::Beacon
