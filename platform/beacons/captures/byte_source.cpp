#include "platform/beacons/captures/byte_source.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

#include "platform/beacons/advertisement.h"

namespace System::Beacon {

namespace {

std::string SystemErrorText(int AError) {
  return std::generic_category().message(AError);
}

class TFileSource : public TByteSource {
 public:
  explicit TFileSource(const std::string& APath)
      : FHandle(::open(APath.c_str(), O_RDONLY | O_CLOEXEC)) {
    if (FHandle < 0) {
      throw EBeaconSourceError(
          fmt::format("{}: cannot be opened: {}; check the name and the rights",
                      APath,
                      SystemErrorText(errno)));
    }
    struct stat Status {};
    if (::fstat(FHandle, &Status) != 0) return;
    if (S_ISREG(Status.st_mode)) FSize = static_cast<std::uint64_t>(Status.st_size);
    FIsFolder = S_ISDIR(Status.st_mode);
  }
  TFileSource(const TFileSource&) = delete;
  TFileSource& operator=(const TFileSource&) = delete;
  ~TFileSource() override { ::close(FHandle); }

  bool IsFolder() const { return FIsFolder; }
  std::uint64_t GetSize() const override { return FSize; }
  std::size_t Read(std::span<std::uint8_t> ABuffer) override;

 private:
  int FHandle;
  std::uint64_t FSize = 0;
  bool FIsFolder = false;
};

std::size_t TFileSource::Read(std::span<std::uint8_t> ABuffer) {
  ssize_t Count = 0;
  do {
    Count = ::read(FHandle, ABuffer.data(), ABuffer.size());
  } while (Count < 0 && errno == EINTR);
  if (Count < 0) throw EFileError(SystemErrorText(errno));
  return static_cast<std::size_t>(Count);
}

class TMemorySource : public TByteSource {
 public:
  explicit TMemorySource(std::vector<std::uint8_t> ABytes) : FBytes(std::move(ABytes)) {}
  std::uint64_t GetSize() const override { return FBytes.size(); }
  std::size_t Read(std::span<std::uint8_t> ABuffer) override {
    const std::size_t Count = std::min(ABuffer.size(), FBytes.size() - FPosition);
    std::copy_n(FBytes.data() + FPosition, Count, ABuffer.data());
    FPosition += Count;
    return Count;
  }

 private:
  std::vector<std::uint8_t> FBytes;
  std::size_t FPosition = 0;
};

}  // namespace

std::unique_ptr<TByteSource> OpenFileSource(const std::string& APath) {
  auto Source = std::make_unique<TFileSource>(APath);
  if (Source->IsFolder()) {
    throw EBeaconSourceError(fmt::format("{}: is a folder; name a capture file in it", APath));
  }
  return Source;
}

std::unique_ptr<TByteSource> MakeMemorySource(std::vector<std::uint8_t> ABytes) {
  return std::make_unique<TMemorySource>(std::move(ABytes));
}

}  // namespace System::Beacon
