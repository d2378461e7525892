// wayfence bundle: packs and unpacks projects.
#include <fmt/format.h>

#include <filesystem>

#include "apps/wayfence/commands.h"
#include "apps/wayfence/json_line.h"
#include "apps/wayfence/project_file.h"
#include "platform/errors.h"
#include "platform/files.h"

namespace Wayfence {

using namespace System;
using namespace System::Beacon::Fencing;
namespace fs = std::filesystem;

namespace {

void Save(TBundle& ABundle, const std::string& AFile) {
  if (fs::path(AFile).extension() == ".zip")
    ABundle.SaveToArchive(AFile);
  else
    ReplaceFile(AFile, ABundle.SerializeToXML());
}

/// The scene's text becomes the entry "project", every other file one of its own name.
void AddFiles(TBundle& ABundle, const TBundleArguments& AArguments) {
  constexpr std::size_t MaxSize = 256U << 20;
  std::string Id;
  ABundle.AddString("project", ReadWholeFile(AArguments.SceneFile, MaxSize), Id, false);
  for (const std::string& File : AArguments.Files) {
    const std::string Name = fs::path(File).filename().string();
    if (ABundle.ContainsFileWithPath(Name))
      throw EFileError(fmt::format("{}: there is a file '{}' in the bundle already", File, Name));
    ABundle.AddString(Name, ReadWholeFile(File, MaxSize), Id, false);
  }
}

/// Where a path of a bundle goes below a directory; raises when it leads elsewhere.
fs::path PlaceOf(const fs::path& ADirectory, const std::string& APath) {
  const fs::path Relative = fs::path(APath).lexically_normal();
  if (Relative.empty() || Relative.is_absolute() || *Relative.begin() == ".." || Relative == ".")
    throw EFileError(
        fmt::format("'{}' leads outside of the directory; nothing more is unpacked", APath));
  return ADirectory / Relative;
}

}  // namespace

int RunBundleCreate(const TBundleArguments& AArguments) {
  if (fs::exists(AArguments.Bundle) && !AArguments.Overwrite)
    throw EFileError(
        fmt::format("{}: the file is there already; --overwrite replaces it", AArguments.Bundle));
  const TRef<TBundle> Bundle = New<TBundle>(nullptr);
  AddFiles(*Bundle, AArguments);
  Save(*Bundle, AArguments.Bundle);
  return ExitDone;
}

int RunBundleList(const TBundleArguments& AArguments) {
  const TRef<TBundle> Bundle = OpenBundle(AArguments.Bundle);
  for (const std::string& Path : Bundle->GetPaths())
    TJsonLine()
        .Text("path", Path)
        .Text("id", Bundle->GetFileIdWithPath(Path))
        .Number("size", static_cast<std::int64_t>(Bundle->GetStringForKey(Path).size()))
        .Print();
  return ExitDone;
}

int RunBundleExtract(const TBundleArguments& AArguments) {
  const TRef<TBundle> Bundle = OpenBundle(AArguments.Bundle);
  const fs::path Directory(AArguments.Directory);
  for (const std::string& Path : Bundle->GetPaths()) PlaceOf(Directory, Path);
  for (const std::string& Path : Bundle->GetPaths()) {
    const fs::path Place = PlaceOf(Directory, Path);
    fs::create_directories(Place.parent_path());
    if (fs::exists(Place) && !AArguments.Overwrite)
      throw EFileError(
          fmt::format("{}: the file is there already; --overwrite replaces it", Place.string()));
    ReplaceFile(Place.string(), Bundle->GetStringForKey(Path));
  }
  return ExitDone;
}

}  // namespace Wayfence
