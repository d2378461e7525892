#include "platform/files.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <istream>
#include <memory>

#include "platform/errors.h"

namespace System {
namespace {

using TFile = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

[[noreturn]] void RaiseFileError(const std::string& APath, const char* AWhat) {
  throw EFileError(fmt::format("{}: {}: {}", APath, AWhat, std::strerror(errno)));
}

}  // namespace

std::string ReadWholeFile(const std::string& APath, std::size_t AMaxSize) {
  const TFile File(std::fopen(APath.c_str(), "rb"), &std::fclose);
  if (!File) RaiseFileError(APath, "the file cannot be opened");
  std::string Result;
  char Part[1 << 16];
  while (const std::size_t Read = std::fread(Part, 1, sizeof Part, File.get())) {
    Result.append(Part, Read);
    if (Result.size() > AMaxSize)
      throw EFileError(fmt::format("{}: longer than {} bytes", APath, AMaxSize));
  }
  if (std::ferror(File.get())) RaiseFileError(APath, "the file cannot be read");
  return Result;
}

std::string ReadWholeStream(std::istream& AStream, const std::string& AName, std::size_t AMaxSize) {
  std::string Result;
  char Part[1 << 16];
  while (AStream) {
    AStream.read(Part, sizeof Part);
    Result.append(Part, static_cast<std::size_t>(AStream.gcount()));
    if (Result.size() > AMaxSize)
      throw EFileError(fmt::format("{}: longer than {} bytes", AName, AMaxSize));
  }
  if (!AStream.eof()) throw EFileError(fmt::format("{}: the stream cannot be read", AName));
  return Result;
}

void ReplaceFile(const std::string& APath, std::string_view AContents) {
  const std::string Scratch = APath + ".new";
  TFile File(std::fopen(Scratch.c_str(), "wb"), &std::fclose);
  if (!File) RaiseFileError(APath, "the file cannot be written");
  const bool IsWritten =
      std::fwrite(AContents.data(), 1, AContents.size(), File.get()) == AContents.size();
  if (std::fclose(File.release()) == 0 && IsWritten &&
      std::rename(Scratch.c_str(), APath.c_str()) == 0)
    return;
  const int Error = errno;
  std::remove(Scratch.c_str());
  errno = Error;
  RaiseFileError(APath, "the file cannot be written");
}

}  // namespace System
