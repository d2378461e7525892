#include "platform/zip.h"

#include <fmt/format.h>
#include <zip.h>

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "platform/errors.h"
#include "platform/files.h"
#include "platform/messages.h"
#include "platform/xml_characters.h"

namespace System {
namespace {

constexpr std::string_view EndRecord("PK\5\6", 4);
constexpr std::string_view Zip64Locator("PK\6\7", 4);
constexpr std::size_t EndRecordSize = 22;
constexpr std::size_t LocatorSize = 20;
constexpr std::size_t MaxCommentSize = 0xFFFF;

template <class... TArguments>
[[noreturn]] void Refuse(const std::string& APlace,
                         std::string_view AMessage,
                         const TArguments&... AArguments) {
  throw EFileError(
      fmt::format("{}: {}", APlace, fmt::format(fmt::runtime(AMessage), AArguments...)));
}

class TZipError {
 public:
  TZipError() { zip_error_init(&FError); }
  TZipError(const TZipError&) = delete;
  TZipError& operator=(const TZipError&) = delete;
  ~TZipError() { zip_error_fini(&FError); }
  zip_error_t* Get() noexcept { return &FError; }
  std::string GetText() { return zip_error_strerror(&FError); }

 private:
  zip_error_t FError{};
};

struct TCloser {
  void operator()(zip_t* AZip) const noexcept { zip_discard(AZip); }
  void operator()(zip_file_t* AFile) const noexcept { zip_fclose(AFile); }
  void operator()(zip_source_t* ASource) const noexcept { zip_source_free(ASource); }
};
using TZip = std::unique_ptr<zip_t, TCloser>;
using TEntryFile = std::unique_ptr<zip_file_t, TCloser>;
using TSource = std::unique_ptr<zip_source_t, TCloser>;

/// Only Zip64 has room for a count of entries that takes more memory than the archive is worth:
/// one that is announced in front of any end record is refused before the entries are read.
bool IsZip64(std::string_view ABytes) {
  const std::size_t Tail = std::min(ABytes.size(), EndRecordSize + MaxCommentSize);
  for (std::size_t At = ABytes.find(EndRecord, ABytes.size() - Tail); At != std::string_view::npos;
       At = ABytes.find(EndRecord, At + 1)) {
    if (At >= LocatorSize && ABytes.substr(At - LocatorSize).starts_with(Zip64Locator)) return true;
  }
  return false;
}

/// Opens an archive that lies in memory. Where a name occurs twice, the checks that know no such
/// archive are left out.
TZip OpenBytes(std::string_view ABytes, const std::string& AFileName) {
  for (const int Flags : {ZIP_RDONLY | ZIP_CHECKCONS, ZIP_RDONLY}) {
    TZipError Error;
    TSource Source(zip_source_buffer_create(ABytes.data(), ABytes.size(), 0, Error.Get()));
    if (!Source) Refuse(AFileName, Messages::SZipUnreadable, Error.GetText());
    if (zip_t* const Zip = zip_open_from_source(Source.get(), Flags, Error.Get())) {
      static_cast<void>(Source.release());  // the archive's from now on
      return TZip(Zip);
    }
    if (zip_error_code_zip(Error.Get()) != ZIP_ER_EXISTS)
      Refuse(AFileName, Messages::SZipUnreadable, Error.GetText());
  }
  Refuse(AFileName, Messages::SZipUnreadable, "");
}

bool IsControl(char AChar) noexcept {
  return static_cast<unsigned char>(AChar) < 0x20 || AChar == 0x7F;
}

/// Whether a name stays below the folder that it is put to, with either kind of slash.
bool IsNameInside(std::string_view AName) {
  if (AName.empty() || FindNoXMLCharacter(AName) != std::string_view::npos) return false;
  if (std::any_of(AName.begin(), AName.end(), &IsControl)) return false;
  if (AName.front() == '/' || AName.front() == '\\' || AName.substr(1, 1) == ":") return false;
  for (std::size_t At = 0; At <= AName.size();) {
    const std::size_t End = std::min(AName.find_first_of("/\\", At), AName.size());
    if (AName.substr(At, End - At) == "..") return false;
    At = End + 1;
  }
  return true;
}

/// A name that can stand in a message, whatever it holds.
std::string Shown(std::string_view AName) {
  std::string Result(AName.substr(0, 80));
  std::replace_if(Result.begin(), Result.end(), &IsControl, '?');
  return Result;
}

}  // namespace

// ---------------------------------------------------------------- TZipReader

class TZipReader::TArchive {
 public:
  TArchive(std::string ABytes, std::string AFileName, std::size_t AMaxSize)
      : FBytes(std::move(ABytes)), FFileName(std::move(AFileName)) {
    if (FBytes.size() > AMaxSize) Refuse(FFileName, Messages::SZipLarge, AMaxSize);
    if (FBytes.empty()) Refuse(FFileName, Messages::SZipEmpty);
    if (IsZip64(FBytes)) Refuse(FFileName, Messages::SZip64);
    FZip = OpenBytes(FBytes, FFileName);
    ListEntries(AMaxSize);
  }

  const std::vector<TEntry>& GetEntries() const noexcept { return FEntries; }
  bool Contains(std::string_view AName) const { return FPlaces.count(std::string(AName)) != 0; }
  std::string Read(std::string_view AName) const;

 private:
  struct TPlace {
    zip_uint64_t Index;  // in the archive
    std::size_t Entry;   // in FEntries
  };

  void ListEntries(std::size_t AMaxSize);
  void Add(const zip_stat_t& AStat);
  std::string PlaceOf(std::string_view AName) const {
    return fmt::format("{}: {}", FFileName, Shown(AName));
  }

  const std::string FBytes;
  const std::string FFileName;
  TZip FZip;
  std::vector<TEntry> FEntries;
  std::unordered_map<std::string, TPlace> FPlaces;  // by name
};

void TZipReader::TArchive::ListEntries(std::size_t AMaxSize) {
  const zip_int64_t Count = zip_get_num_entries(FZip.get(), 0);
  std::uint64_t Total = 0;
  for (zip_int64_t I = 0; I < Count; ++I) {
    zip_stat_t Stat;
    if (zip_stat_index(FZip.get(), static_cast<zip_uint64_t>(I), 0, &Stat) != 0)
      Refuse(FFileName, Messages::SZipUnreadable, zip_strerror(FZip.get()));
    const std::string_view Name = Stat.name;
    if (!IsNameInside(Name)) Refuse(PlaceOf(Name), Messages::SZipName);
    if (Stat.size > AMaxSize - Total) Refuse(PlaceOf(Name), Messages::SZipLarge, AMaxSize);
    Total += Stat.size;
    if (!Name.ends_with('/')) Add(Stat);
  }
}

void TZipReader::TArchive::Add(const zip_stat_t& AStat) {
  const auto [Found, IsNew] = FPlaces.try_emplace(AStat.name, TPlace{AStat.index, FEntries.size()});
  if (IsNew) FEntries.push_back({AStat.name, 0});
  Found->second.Index = AStat.index;
  FEntries[Found->second.Entry].Size = AStat.size;
}

std::string TZipReader::TArchive::Read(std::string_view AName) const {
  const auto Found = FPlaces.find(std::string(AName));
  if (Found == FPlaces.end()) Refuse(PlaceOf(AName), Messages::SZipNoEntry);
  const std::size_t Size = FEntries[Found->second.Entry].Size;
  const TEntryFile File(zip_fopen_index(FZip.get(), Found->second.Index, 0));
  if (!File) Refuse(PlaceOf(AName), Messages::SZipUnreadable, zip_strerror(FZip.get()));

  std::string Result;
  Result.reserve(Size);
  char Part[1 << 16];
  zip_int64_t Read = 0;
  while ((Read = zip_fread(File.get(), Part, sizeof Part)) > 0) {
    if (static_cast<std::size_t>(Read) > Size - Result.size())
      Refuse(PlaceOf(AName), Messages::SZipSize, Size);
    Result.append(Part, static_cast<std::size_t>(Read));
  }
  if (Read < 0) Refuse(PlaceOf(AName), Messages::SZipUnreadable, zip_file_strerror(File.get()));
  if (Result.size() != Size) Refuse(PlaceOf(AName), Messages::SZipSize, Size);
  return Result;
}

TZipReader::TZipReader(std::string ABytes, std::string AFileName, std::size_t AMaxSize)
    : FArchive(std::make_unique<TArchive>(std::move(ABytes), std::move(AFileName), AMaxSize)) {}

TZipReader::~TZipReader() = default;

std::unique_ptr<TZipReader> TZipReader::Open(const std::string& AFileName, std::size_t AMaxSize) {
  return std::make_unique<TZipReader>(ReadWholeFile(AFileName, AMaxSize), AFileName, AMaxSize);
}

const std::vector<TZipReader::TEntry>& TZipReader::GetEntries() const noexcept {
  return FArchive->GetEntries();
}

bool TZipReader::Contains(std::string_view AName) const {
  return FArchive->Contains(AName);
}

std::string TZipReader::Read(std::string_view AName) const {
  return FArchive->Read(AName);
}

// ---------------------------------------------------------------- writing

namespace {

constexpr zip_uint16_t FirstOfJanuary1980 = 0x21;  // the first day that an archive can hold

void AddFile(zip_t* AZip, const TZipFile& AFile) {
  if (!IsNameInside(AFile.Name)) Refuse(Shown(AFile.Name), Messages::SZipName);
  TSource Source(zip_source_buffer(AZip, AFile.Bytes.data(), AFile.Bytes.size(), 0));
  const zip_int64_t Index =
      Source ? zip_file_add(AZip, AFile.Name.c_str(), Source.get(), ZIP_FL_ENC_UTF_8) : -1;
  if (Index < 0) Refuse(AFile.Name, Messages::SZipUnwritable, zip_strerror(AZip));
  static_cast<void>(Source.release());  // the archive's from now on
  if (zip_file_set_dostime(AZip, static_cast<zip_uint64_t>(Index), 0, FirstOfJanuary1980, 0) != 0)
    Refuse(AFile.Name, Messages::SZipUnwritable, zip_strerror(AZip));
}

std::string BytesOf(zip_source_t* ASource) {
  zip_stat_t Stat;
  std::string Result;
  bool IsRead = zip_source_stat(ASource, &Stat) == 0 && zip_source_open(ASource) == 0;
  if (IsRead) {
    Result.resize(Stat.size);
    IsRead =
        zip_source_read(ASource, Result.data(), Stat.size) == static_cast<zip_int64_t>(Stat.size);
    zip_source_close(ASource);
  }
  if (!IsRead)
    Refuse("zip", Messages::SZipUnwritable, zip_error_strerror(zip_source_error(ASource)));
  return Result;
}

}  // namespace

std::string PackZip(std::span<const TZipFile> AFiles) {
  if (AFiles.empty()) return std::string(EndRecord) + std::string(EndRecordSize - 4, '\0');
  TZipError Error;
  TSource Target(zip_source_buffer_create(nullptr, 0, 0, Error.Get()));
  if (!Target) Refuse("zip", Messages::SZipUnwritable, Error.GetText());
  zip_source_keep(Target.get());  // one share for the archive, one to read from
  TZip Zip(zip_open_from_source(Target.get(), ZIP_TRUNCATE, Error.Get()));
  if (!Zip) {
    zip_source_free(Target.get());
    Refuse("zip", Messages::SZipUnwritable, Error.GetText());
  }
  for (const TZipFile& File : AFiles) AddFile(Zip.get(), File);
  if (zip_close(Zip.get()) != 0) Refuse("zip", Messages::SZipUnwritable, zip_strerror(Zip.get()));
  static_cast<void>(Zip.release());
  return BytesOf(Target.get());
}

void WriteZip(const std::string& AFileName, std::span<const TZipFile> AFiles) {
  ReplaceFile(AFileName, PackZip(AFiles));
}

}  // namespace System
