#include <fmt/format.h>

#include <filesystem>
#include <set>
#include <sstream>
#include <system_error>
#include <utility>

#include "persistence/System.Beacon.Fencing.Bundle.h"
#include "persistence/bundle_names.h"
#include "persistence/messages.h"
#include "platform/base64.h"
#include "platform/files.h"
#include "platform/random.h"

namespace System::Beacon::Fencing {
namespace {

std::string ValueOf(const std::map<std::string, std::string>& AMap, const std::string& AKey) {
  const auto Found = AMap.find(AKey);
  return Found == AMap.end() ? std::string() : Found->second;
}

/// The table of a directory, empty when there is none.
std::vector<TBundleName> ReadTableFile(const std::string& AFileName) {
  std::error_code Error;
  if (!std::filesystem::exists(std::filesystem::symlink_status(AFileName, Error))) return {};
  return ReadIdTable(ReadPlainFile(AFileName, MaxIdTableSize), AFileName);
}

/// The table of an archive, or what its entries stand for without one.
std::vector<TBundleName> NamesIn(const TZipReader& AZip, const std::string& AFileName) {
  if (AZip.Contains(IdTableName))
    return ReadIdTable(AZip.Read(IdTableName), fmt::format("{}: {}", AFileName, IdTableName));
  std::vector<TBundleName> Result;
  for (const TZipReader::TEntry& Entry : AZip.GetEntries()) {
    CheckBundlePath(Entry.Name, AFileName);
    Result.push_back({Entry.Name, Entry.Name});
  }
  return Result;
}

}  // namespace

TRef<IBundle> CreateBundleForCanvas(const TRef<ICanvas>& ACanvas) {
  return New<TBundle>(ACanvas);
}

std::string GenerateUUId() {
  std::string Result = GUIDToString(NewGUID());
  std::erase_if(Result, [](char C) { return C == '{' || C == '}' || C == '-'; });
  return Result;
}

// ---------------------------------------------------------------- where files are kept

void TBundle::SetWorkingDirectory(const std::string& APath) {
  std::error_code Error;
  if (!std::filesystem::is_directory(APath, Error)) return;
  const std::vector<TBundleName> Names = ReadTableFile(APath + std::string(IdTableName));
  Clear();
  FZipFile.reset();
  FIsDirectory = true;
  FIsReadOnly = false;
  FContainsMemoryFiles = false;
  FWorkingPath = APath;
  for (const TBundleName& Name : Names) Register(Name.Path, Name.Id);
}

void TBundle::SetWorkingFile(const std::string& AFile) {
  std::error_code Error;
  if (!std::filesystem::is_regular_file(AFile, Error)) return;
  std::unique_ptr<TZipReader> Zip = TZipReader::Open(AFile, FMaxSize);
  const std::vector<TBundleName> Names = NamesIn(*Zip, AFile);
  Clear();
  FZipFile = std::move(Zip);
  FIsDirectory = false;
  FIsReadOnly = true;
  FContainsMemoryFiles = true;
  FWorkingPath = AFile;
  for (const TBundleName& Name : Names) Register(Name.Path, Name.Id);
}

std::string TBundle::GetIdMapFilePath() const {
  return FWorkingPath + std::string(IdTableName);
}

void TBundle::GenerateTableWithNewPath(const std::string& APath, const std::string& AnId) {
  const std::string Table = GetTableWith(APath, AnId);
  if (FIsDirectory) ReplacePlainFile(GetIdMapFilePath(), Table);
}

std::string TBundle::GetTableWith(const std::string& APath, const std::string& AnId) const {
  CheckBundlePath(APath);
  CheckBundleId(AnId);
  CheckBundleFileCount(FPathToId.size() + 1);
  std::string Result;
  for (const auto& [Path, Id] : FPathToId) AppendToIdTable(Result, Path, Id);
  AppendToIdTable(Result, APath, AnId);
  return Result;
}

TBundle::TContents TBundle::GetContents(const std::string& APlace) {
  TContents Result;  // of the files, by id
  std::size_t Size = 0;
  std::string Table;
  for (const auto& [Path, KnownId] : FPathToId) {
    const std::string Id = IsBundleId(KnownId) ? KnownId : GenerateUUId();
    AppendToIdTable(Table, Path, Id);
    std::string Space;
    const auto [Added, IsNew] = Result.try_emplace(Id, GetContent(KnownId, Space));
    if (IsNew) Size += Added->second.size();
    if (Size > FMaxSize)
      throw EFileError(fmt::format(fmt::runtime(Messages::SBundleLarge), APlace, FMaxSize));
  }
  Result.emplace(IdTableName, Table);  // no id has a dot
  return Result;
}

void TBundle::SaveToArchive(const std::string& AFile) {
  const TContents Contents = GetContents(AFile);
  const std::string Table(IdTableName);
  std::vector<TZipFile> Files = {{Table, Contents.at(Table)}};
  for (const auto& [Name, Bytes] : Contents)
    if (Name != Table) Files.push_back({Name, Bytes});
  WriteZip(AFile, Files);
}

void TBundle::SaveToDirectory(const std::string& APath) {
  std::error_code Error;
  const TContents Contents = GetContents(APath);
  std::filesystem::create_directories(APath, Error);
  if (!Error && !std::filesystem::is_empty(APath, Error) && !Error)
    Error = std::make_error_code(std::errc::directory_not_empty);
  if (Error)
    throw EFileError(fmt::format(fmt::runtime(Messages::SBundleFolder), APath, Error.message()));
  for (const auto& [Name, Bytes] : Contents)
    ReplacePlainFile((std::filesystem::path(APath) / Name).string(), Bytes);
}

void TBundle::Clear() {
  FPathToId.clear();
  FIdToPath.clear();
  FLoadedImages.clear();
  FStreamFiles.clear();
  FStreamSize = 0;
}

// ---------------------------------------------------------------- adding

void TBundle::AddFile(const std::string& AFilePath, std::string& AnId, bool AReuse) {
  if (AReuse && ContainsFileWithPath(AFilePath)) {
    AnId = GetFileIdWithPath(AFilePath);
    return;
  }
  AnId.clear();
  std::error_code Error;
  if (!std::filesystem::is_regular_file(AFilePath, Error)) return;
  CheckBundlePath(AFilePath);
  TNewFile File{AFilePath, IdFor(AFilePath), ReadWholeFile(AFilePath, FMaxSize)};
  const std::string Id = File.Id;
  if (FContainsMemoryFiles)
    StoreInMemory(std::move(File));
  else
    StoreInDirectory(File);
  AnId = Id;
}

void TBundle::AddString(const std::string& APath,
                        const std::string& AText,
                        std::string& AnId,
                        bool AReuse) {
  if (AReuse && ContainsFileWithPath(APath)) {
    AnId = GetFileIdWithPath(APath);
    return;
  }
  AnId.clear();
  CheckBundlePath(APath);
  const std::string Id = IdFor(APath);
  StoreInMemory({APath, Id, AText});
  FContainsMemoryFiles = true;
  AnId = Id;
}

void TBundle::AddFileWithEncode64(const std::string& APath,
                                  const std::string& AnId,
                                  const std::string& ABase64) {
  CheckBundlePath(APath);
  CheckBundleId(AnId);
  StoreInMemory({APath, AnId, DecodeBase64(ABase64)});
}

void TBundle::StoreInMemory(TNewFile AFile) {
  std::vector<TNewFile> Files;
  Files.push_back(std::move(AFile));
  StoreInMemory(std::move(Files));
}

void TBundle::StoreInMemory(std::vector<TNewFile> AFiles) {
  CheckRoomFor(AFiles);
  for (TNewFile& File : AFiles) {
    DropContent(File.Id);
    Register(File.Path, File.Id);
    FStreamSize += File.Bytes.size();
    FStreamFiles[File.Id] = std::move(File.Bytes);
  }
}

void TBundle::StoreInDirectory(const TNewFile& AFile) {
  const std::string Table = GetTableWith(AFile.Path, AFile.Id);
  ReplacePlainFile(FWorkingPath + AFile.Id, AFile.Bytes);
  ReplacePlainFile(GetIdMapFilePath(), Table);
  DropContent(AFile.Id);
  Register(AFile.Path, AFile.Id);
}

/// Enters a pair in both tables. An id that the path had before is forgotten with its content.
void TBundle::Register(const std::string& APath, const std::string& AnId) {
  const std::string Before = ValueOf(FPathToId, APath);
  if (Before != AnId && ValueOf(FIdToPath, Before) == APath) {
    DropContent(Before);
    FIdToPath.erase(Before);
  }
  FPathToId[APath] = AnId;
  FIdToPath[AnId] = APath;
}

void TBundle::DropContent(const std::string& AnId) {
  FLoadedImages.erase(AnId);
  const auto Found = FStreamFiles.find(AnId);
  if (Found == FStreamFiles.end()) return;
  FStreamSize -= Found->second.size();
  FStreamFiles.erase(Found);
}

void TBundle::CheckRoomFor(const std::vector<TNewFile>& AFiles) const {
  std::size_t Size = FStreamSize;
  std::set<std::string_view> Replaced;
  for (const TNewFile& File : AFiles) {
    Size += File.Bytes.size();
    const auto Found = FStreamFiles.find(File.Id);
    if (Found != FStreamFiles.end() && Replaced.insert(File.Id).second)
      Size -= Found->second.size();
  }
  if (!AFiles.empty() && Size > FMaxSize)
    throw EFileError(
        fmt::format(fmt::runtime(Messages::SBundleLarge), AFiles.back().Path, FMaxSize));
}

// ---------------------------------------------------------------- looking up

std::string TBundle::IdFor(const std::string& APath) const {
  return ContainsFileWithPath(APath) ? GetFileIdWithPath(APath) : GenerateUUId();
}

bool TBundle::ContainsFileWithId(const std::string& AnId) const {
  return FIdToPath.count(AnId) != 0;
}

bool TBundle::ContainsFileWithPath(const std::string& APath) const {
  return FPathToId.count(APath) != 0;
}

std::string TBundle::GetFileIdWithPath(const std::string& APath) const {
  return ValueOf(FPathToId, APath);
}

std::string TBundle::GetFilePathWithId(const std::string& AnId) const {
  return ValueOf(FIdToPath, AnId);
}

std::vector<std::string> TBundle::GetPaths() const {
  std::vector<std::string> Result;
  for (const auto& [Path, Id] : FPathToId) Result.push_back(Path);
  return Result;
}

// ---------------------------------------------------------------- contents

std::string_view TBundle::GetContent(const std::string& AnId, std::string& ASpace) const {
  const auto InMemory = FStreamFiles.find(AnId);
  if (InMemory != FStreamFiles.end()) return InMemory->second;
  if (!ContainsFileWithId(AnId)) return {};
  if (FIsDirectory) ASpace = ReadPlainFile(FWorkingPath + AnId, FMaxSize);
  if (FIsReadOnly) ASpace = FZipFile->Read(AnId);
  return ASpace;
}

std::string TBundle::GetStringForKey(const std::string& APath) {
  std::string Space;
  return std::string(GetContent(GetFileIdWithPath(APath), Space));
}

std::string TBundle::GetBase64FromFileId(const std::string& AnId) {
  std::string Space;
  return EncodeBase64(GetContent(AnId, Space));
}

std::string TBundle::GetBase64FromFilePath(const std::string& APath) {
  return GetBase64FromFileId(GetFileIdWithPath(APath));
}

TRef<IBitmap> TBundle::GetImageForPath(const std::string& APath) {
  const std::string Id = GetFileIdWithPath(APath);
  const auto Found = FLoadedImages.find(Id);
  if (Found != FLoadedImages.end()) return Found->second;
  if (!FCanvas || !ContainsFileWithId(Id)) return nullptr;
  TRef<IBitmap>& Result = FLoadedImages[Id];  // also when there is none: not to be tried again
  try {
    Result = LoadImage(APath, Id);
  } catch (const EFileError&) {
    return nullptr;
  }
  return Result;
}

void TBundle::SetMaxPicturePixels(std::size_t ACount) {
  FMaxPicturePixels = ACount;
  std::erase_if(FLoadedImages, [](const auto& AImage) { return !AImage.second; });
}

TRef<IBitmap> TBundle::LoadImage(const std::string& APath, const std::string& AnId) const {
  std::string Space;
  const std::string_view Bytes = GetContent(AnId, Space);
  const TPictureSize Size = ReadPictureSize(Bytes, APath);
  const auto Width = static_cast<std::uint64_t>(Size.Width);
  if (Width * static_cast<std::uint64_t>(Size.Height) > FMaxPicturePixels) return nullptr;
  TRef<IBitmap> Result = FCanvas->CreateBitmap({}, APath);
  std::istringstream Stream{std::string(Bytes)};
  if (Result) Result->LoadFromStream(Stream, APath);
  return Result;
}

std::string TBundle::GetPathForImage(const IBitmap* ABitmap) const {
  for (const auto& [Id, Image] : FLoadedImages) {
    if (ABitmap && IsSame(Image.Get(), ABitmap)) return GetFilePathWithId(Id);
  }
  return {};
}

}  // namespace System::Beacon::Fencing
