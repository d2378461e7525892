#include "platform/files.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <istream>
#include <memory>
#include <system_error>

#include "platform/errors.h"
#include "platform/messages.h"

namespace System {
namespace {

using TFile = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

[[noreturn]] void RaiseFileError(const std::string& APath, const char* AWhat) {
  throw EFileError(fmt::format("{}: {}: {}", APath, AWhat, std::strerror(errno)));
}

std::string ReadAll(std::FILE* AFile, const std::string& APath, std::size_t AMaxSize) {
  std::string Result;
  char Part[1 << 16];
  while (const std::size_t Read = std::fread(Part, 1, sizeof Part, AFile)) {
    Result.append(Part, Read);
    if (Result.size() > AMaxSize)
      throw EFileError(fmt::format("{}: longer than {} bytes", APath, AMaxSize));
  }
  if (std::ferror(AFile)) RaiseFileError(APath, "the file cannot be read");
  return Result;
}

bool IsPlainFile(int ADescriptor) {
  struct stat Status {};
  return fstat(ADescriptor, &Status) == 0 && S_ISREG(Status.st_mode);
}

/// A new file beside another one: whatever stands there stays.
TFile MakeScratchFile(const std::string& APath, std::string& AScratch) {
  constexpr int MaxTries = 100;
  TFile Result(nullptr, &std::fclose);
  for (int Try = 1; !Result && Try <= MaxTries; ++Try) {
    AScratch = Try == 1 ? APath + ".new" : fmt::format("{}.new{}", APath, Try);
    Result.reset(std::fopen(AScratch.c_str(), "wbx"));
    if (!Result && errno != EEXIST) break;
  }
  return Result;
}

/// Writes to what is there, whatever it is.
void WriteInto(const std::string& APath, std::string_view AContents) {
  TFile File(std::fopen(APath.c_str(), "wbe"), &std::fclose);
  if (!File) RaiseFileError(APath, "the file cannot be written");
  const bool IsWritten =
      std::fwrite(AContents.data(), 1, AContents.size(), File.get()) == AContents.size();
  if (std::fclose(File.release()) != 0 || !IsWritten)
    RaiseFileError(APath, "the file cannot be written");
}

}  // namespace

std::string ReadWholeFile(const std::string& APath, std::size_t AMaxSize) {
  const TFile File(std::fopen(APath.c_str(), "rb"), &std::fclose);
  if (!File) RaiseFileError(APath, "the file cannot be opened");
  return ReadAll(File.get(), APath, AMaxSize);
}

std::string ReadPlainFile(const std::string& APath, std::size_t AMaxSize) {
  // Without O_NONBLOCK the opening of a pipe would wait for its other end.
  const int Descriptor = open(APath.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
  if (Descriptor < 0 && errno != ELOOP) RaiseFileError(APath, "the file cannot be opened");
  const TFile File(Descriptor < 0 ? nullptr : fdopen(Descriptor, "rb"), &std::fclose);
  if (!File || !IsPlainFile(Descriptor))
    throw EFileError(fmt::format("{}: {}", APath, Messages::SNoPlainFile));
  return ReadAll(File.get(), APath, AMaxSize);
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

std::string FollowLinks(const std::string& APath) {
  namespace fs = std::filesystem;
  constexpr int MaxLinks = 40;
  fs::path Result(APath);
  std::error_code Error;
  for (int I = 0; I < MaxLinks; ++I) {
    if (!fs::is_symlink(Result, Error)) return Result.string();
    const fs::path Target = fs::read_symlink(Result, Error);
    if (Error) break;
    Result = Result.parent_path() / Target;
  }
  errno = ELOOP;
  RaiseFileError(APath, "the file cannot be opened");
}

void ReplaceFile(const std::string& APath, std::string_view AContents) {
  struct stat Status {};
  const bool IsThere = stat(APath.c_str(), &Status) == 0;
  if (IsThere && !S_ISREG(Status.st_mode) && !S_ISDIR(Status.st_mode))
    return WriteInto(APath, AContents);
  ReplacePlainFile(FollowLinks(APath), AContents);
}

void ReplacePlainFile(const std::string& APath, std::string_view AContents) {
  std::string Scratch;
  TFile File = MakeScratchFile(APath, Scratch);
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
