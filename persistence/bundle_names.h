// The names of a bundle's files: which are taken, and the table that holds them.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace System::Beacon::Fencing {

inline constexpr std::size_t MaxBundleId = 64;            ///< characters
inline constexpr std::size_t MaxBundlePath = 4096;        ///< bytes
inline constexpr std::size_t MaxBundleFiles = 65'000;     ///< an archive holds as many
inline constexpr std::size_t MaxIdTableSize = 16U << 20;  ///< bytes
inline constexpr std::string_view IdTableName = "MapId.txt";

struct TBundleName {
  std::string Path;
  std::string Id;
};

/// 1 to 64 letters, digits, '-' or '_': an id names a file in the bundle's folder and nothing else.
bool IsBundleId(std::string_view AnId) noexcept;
/// A path is only a name, so it may look like any; but it stands on one line and in XML, and does
/// not begin with a byte-order mark, which a table would lose.
bool IsBundlePath(std::string_view APath) noexcept;

// These raise `EFileError`, "PLACE: what is wrong", without "PLACE: " where that is empty.
void CheckBundleId(std::string_view AnId, const std::string& APlace = {});
void CheckBundlePath(std::string_view APath, const std::string& APlace = {});
void CheckBundleFileCount(std::size_t ACount, const std::string& APlace = {});

/// Reads a table of ids: lines in pairs, a path and its id. A byte-order mark, CR before the line
/// ends and blank lines at the end are passed over. Raises `EFileError`, "FILE:LINE: what is
/// wrong".
std::vector<TBundleName> ReadIdTable(std::string_view AText, const std::string& AFileName);

/// Adds the two lines of a pair to a table.
void AppendToIdTable(std::string& ATable, std::string_view APath, std::string_view AnId);

}  // namespace System::Beacon::Fencing
