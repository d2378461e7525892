// wayfence bundle: packs and unpacks projects.
#include <fmt/format.h>

#include <filesystem>
#include <set>
#include <vector>

#include "apps/wayfence/commands.h"
#include "apps/wayfence/json_line.h"
#include "apps/wayfence/output_files.h"
#include "apps/wayfence/project_file.h"
#include "platform/errors.h"
#include "platform/files.h"
#include "platform/reflection.h"
#include "platform/xml.h"
#include "runtimepaint/project_reader.h"
#include "scene/canvas/System.Beacon.Fencing.Canvas.Wyx.h"

namespace Wayfence {

using namespace System;
using namespace System::Beacon::Fencing;
namespace fs = std::filesystem;

namespace {

/// A path that ends with '/' names a directory, and so does one that is there.
bool IsDirectory(const std::string& APath) {
  std::error_code Ignored;
  return APath.ends_with('/') || fs::is_directory(APath, Ignored);
}

void Save(TBundle& ABundle, const std::string& AFile) {
  if (IsDirectory(AFile))
    ABundle.SaveToDirectory(AFile);
  else if (fs::path(AFile).extension() == ".zip")
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

/// A scene that no command would read makes no bundle.
void RequireScene(const TRef<TBundle>& ABundle, const std::string& AFile) {
  const TRef<IXMLDocument> Document = ParseXML(ABundle->GetStringForKey("project"), AFile);
  if (SameName(std::string(Document->GetDocumentElement()->GetNodeName()), "bundle"))
    throw EFileError(
        fmt::format("{}: this is a bundle already, and the text of a scene is expected: 'wayfence "
                    "bundle extract' unpacks it, its scene is then the file 'project'",
                    AFile));
  ReadSceneOf(ABundle, AFile);
}

/// Where a path of a bundle goes below a directory; raises when it leads elsewhere.
fs::path PlaceOf(const fs::path& ADirectory, const std::string& APath) {
  const fs::path Relative = fs::path(APath).lexically_normal();
  if (Relative.empty() || Relative.is_absolute() || *Relative.begin() == ".." || Relative == ".")
    throw EFileError(
        fmt::format("'{}' leads outside of the directory; nothing is unpacked", APath));
  return ADirectory / Relative;
}

struct TUnpacked {
  fs::path Place;
  std::string Bytes;
};

void RequireRoom(const fs::path& APlace, bool AOverwrite) {
  if (fs::is_directory(APlace))
    throw EFileError(fmt::format("{}: a folder stands there already", APlace.string()));
  CheckOverwrite({APlace.string()}, AOverwrite);
}

/// Every folder on the way to a file is one, or can be made.
void RequireFolders(const fs::path& ADirectory,
                    const fs::path& APlace,
                    const std::set<fs::path>& AFiles) {
  for (fs::path Folder = APlace.parent_path(); Folder != ADirectory && Folder.has_relative_path();
       Folder = Folder.parent_path())
    if (AFiles.contains(Folder) || (fs::exists(Folder) && !fs::is_directory(Folder)))
      throw EFileError(fmt::format(
          "{}: a file is in the way of the folder of '{}'", Folder.string(), APlace.string()));
}

/// All files and where they go. Raises when any of them cannot be read or has no room.
std::vector<TUnpacked> Unpack(TBundle& ABundle, const TBundleArguments& AArguments) {
  const fs::path Directory(AArguments.Directory);
  std::vector<TUnpacked> Result;
  std::set<fs::path> Places;
  for (const std::string& Path : ABundle.GetPaths()) {
    Result.push_back({PlaceOf(Directory, Path), ABundle.GetStringForKey(Path)});
    RequireRoom(Result.back().Place, AArguments.Overwrite);
    if (!Places.insert(Result.back().Place).second)
      throw EFileError(fmt::format("'{}' and another path name the same file", Path));
  }
  for (const TUnpacked& File : Result) RequireFolders(Directory, File.Place, Places);
  CheckOutputs({Places.begin(), Places.end()}, {AArguments.Bundle});
  return Result;
}

}  // namespace

int RunBundleCreate(const TBundleArguments& AArguments) {
  std::vector<std::string> Inputs = AArguments.Files;
  Inputs.push_back(AArguments.SceneFile);
  CheckOutputs({AArguments.Bundle}, Inputs);
  if (!IsDirectory(AArguments.Bundle)) CheckOverwrite({AArguments.Bundle}, AArguments.Overwrite);
  const TRef<TBundle> Bundle = New<TBundle>(Canvas::CreateWyxCanvas());
  AddFiles(*Bundle, AArguments);
  RequireScene(Bundle, AArguments.SceneFile);
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
  for (const TUnpacked& File : Unpack(*Bundle, AArguments)) {
    fs::create_directories(File.Place.parent_path());
    ReplacePlainFile(File.Place.string(), File.Bytes);
  }
  return ExitDone;
}

}  // namespace Wayfence
