#include "platform/beacons/captures/output_file.h"

#include <fmt/format.h>

#include <cerrno>
#include <system_error>
#include <utility>

#include "platform/errors.h"

namespace System::Beacon {

TOutputFile::TOutputFile(std::string APath)
    : FPath(std::move(APath)), FFile(std::fopen(FPath.c_str(), "wbe")) {
  if (!FFile) Fail(errno);
}

TOutputFile::~TOutputFile() {
  if (FFile) std::fclose(FFile);
}

void TOutputFile::Write(std::span<const std::uint8_t> ABytes) {
  Put(ABytes.data(), ABytes.size());
}

void TOutputFile::Write(std::string_view AText) {
  Put(AText.data(), AText.size());
}

void TOutputFile::Put(const void* AData, std::size_t ASize) {
  if (FError != 0) Fail(FError);
  if (!FFile) Fail(EBADF);
  if (std::fwrite(AData, 1, ASize, FFile) != ASize) Fail(errno);
}

void TOutputFile::Close() {
  if (!FFile) return;
  const bool Written = std::fclose(std::exchange(FFile, nullptr)) == 0;
  if (FError != 0) Fail(FError);
  if (!Written) Fail(errno);
}

void TOutputFile::Fail(int AError) {
  FError = AError;
  throw EFileError(
      fmt::format("{}: cannot be written: {}", FPath, std::generic_category().message(AError)));
}

}  // namespace System::Beacon
