// Whole files.
#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>
#include <string_view>

namespace System {

/// The bytes of a file. Raises `EFileError` naming the file when it cannot be read or is longer
/// than `AMaxSize` bytes.
std::string ReadWholeFile(const std::string& APath, std::size_t AMaxSize);

/// The same for files in a folder that others may have filled: refuses a symbolic link, and
/// whatever else is no plain file.
std::string ReadPlainFile(const std::string& APath, std::size_t AMaxSize);

/// The bytes of a stream up to its end; raises in the same way, naming it `AName`.
std::string ReadWholeStream(std::istream& AStream, const std::string& AName, std::size_t AMaxSize);

/// Replaces a file as a whole, or leaves it as it was and raises `EFileError`. A symbolic link
/// stays, and what it leads to is replaced. What is no plain file, a device or a pipe, is written
/// to as it is; a failure may then come after a part was written.
void ReplaceFile(const std::string& APath, std::string_view AContents);

/// The same for files in a folder that others may have filled: a symbolic link is replaced itself,
/// and none is followed to write elsewhere.
void ReplacePlainFile(const std::string& APath, std::string_view AContents);

/// Where a path leads when it is a symbolic link, there or not yet; the path itself when it is
/// none. Raises `EFileError` for links that lead to each other.
std::string FollowLinks(const std::string& APath);

}  // namespace System
