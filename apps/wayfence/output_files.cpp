#include "apps/wayfence/output_files.h"

#include <fmt/format.h>
#include <sys/stat.h>

#include <filesystem>
#include <set>
#include <system_error>

#include "persistence/System.Beacon.Fencing.Bundle.h"
#include "platform/errors.h"
#include "platform/files.h"

namespace Wayfence {

using namespace System;
namespace fs = std::filesystem;

namespace {

/// Whether writing changes what is there: a device or a pipe only passes on what is written.
bool IsKept(const fs::path& APath) {
  std::error_code Ignored;
  return !fs::is_other(APath, Ignored);
}

/// The same for every name of a file, whether it is there or not yet; empty where nothing is kept.
std::string IdentityOf(const std::string& APath) {
  struct stat Status {};
  if (APath.empty() || !IsKept(APath)) return {};
  if (stat(APath.c_str(), &Status) == 0) return fmt::format("{}:{}", Status.st_dev, Status.st_ino);
  std::error_code Error;
  const fs::path Absolute = fs::absolute(FollowLinks(APath), Error);
  const fs::path Result = fs::weakly_canonical(Absolute, Error);
  return (Error ? Absolute.lexically_normal() : Result).string();
}

/// The table of a bundle in a folder, and the files that it names.
std::vector<std::string> FilesOf(const std::string& AFolder) {
  const auto Bundle = New<Beacon::Fencing::TBundle>(nullptr);
  const fs::path Folder = fs::path(AFolder) / "";
  Bundle->SetWorkingDirectory(Folder.string());
  std::vector<std::string> Result{Bundle->GetIdMapFilePath()};
  for (const std::string& Path : Bundle->GetPaths())
    Result.push_back((Folder / Bundle->GetFileIdWithPath(Path)).string());
  return Result;
}

std::vector<std::string> WithFilesOfFolders(const std::vector<std::string>& AInputs) {
  std::vector<std::string> Result;
  std::error_code Ignored;
  for (const std::string& Input : AInputs) {
    Result.push_back(Input);
    if (!fs::is_directory(Input, Ignored)) continue;
    const std::vector<std::string> Files = FilesOf(Input);
    Result.insert(Result.end(), Files.begin(), Files.end());
  }
  return Result;
}

}  // namespace

void CheckOutputs(const std::vector<std::string>& AOutputs,
                  const std::vector<std::string>& AInputs) {
  std::set<std::string> Read, Written;
  for (const std::string& Input : WithFilesOfFolders(AInputs)) Read.insert(IdentityOf(Input));
  for (const std::string& Output : AOutputs) {
    const std::string Identity = IdentityOf(Output);
    if (Identity.empty()) continue;
    if (Read.contains(Identity))
      throw EFileError(fmt::format("{}: this file is read; choose another one to write", Output));
    if (!Written.insert(Identity).second)
      throw EFileError(fmt::format(
          "{}: two things are to be written to this file; choose another one for one of them",
          Output));
  }
}

void CheckOverwrite(const std::vector<std::string>& AOutputs, bool AOverwrite) {
  std::error_code Ignored;
  for (const std::string& Output : AOutputs)
    if (!AOverwrite && fs::exists(Output, Ignored) && IsKept(Output))
      throw EFileError(
          fmt::format("{}: the file is there already; --overwrite replaces it", Output));
}

}  // namespace Wayfence
