// Zip archives: read within bounds, whatever they claim, and written as a whole.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace System {

/// The default bound of an archive's own bytes, and of all that its entries unpack to.
inline constexpr std::size_t MaxZipSize = 256U << 20;

/// What an archive is written from; the bytes are the caller's.
struct TZipFile {
  std::string Name;
  std::string_view Bytes;
};

/// An archive in memory. It is refused as a whole when it is damaged or cut short, in the Zip64
/// format, when entries lie about themselves or claim to be more than the bound, and when a name
/// leads outside of the folder that it would be unpacked to. Of entries with one name the last
/// counts; entries that stand for folders are left out. Every failure is an `EFileError`,
/// "FILE: ENTRY: what is wrong". One thread at a time.
class TZipReader {
 public:
  struct TEntry {
    std::string Name;        ///< UTF-8
    std::uint64_t Size = 0;  ///< bytes, as the archive says
  };

  /// Takes the bytes over; the name is for messages.
  TZipReader(std::string ABytes, std::string AFileName, std::size_t AMaxSize = MaxZipSize);
  ~TZipReader();

  /// Reads an archive file. Raises `EFileError` also when it cannot be read.
  static std::unique_ptr<TZipReader> Open(const std::string& AFileName,
                                          std::size_t AMaxSize = MaxZipSize);

  /// In the archive's order.
  const std::vector<TEntry>& GetEntries() const noexcept;
  bool Contains(std::string_view AName) const;
  /// Unpacks an entry; takes no more memory than its size. Raises `EFileError` when there is none,
  /// when it is damaged, encrypted, or not as long as the archive says.
  std::string Read(std::string_view AName) const;

 private:
  class TArchive;
  std::unique_ptr<TArchive> FArchive;
};

/// The bytes of an archive of these files, the same for the same files. Raises `EFileError`.
std::string PackZip(std::span<const TZipFile> AFiles);

/// Writes an archive; a file of that name is replaced as a whole, or left as it was when
/// `EFileError` is raised.
void WriteZip(const std::string& AFileName, std::span<const TZipFile> AFiles);

}  // namespace System
