// A file that is written from front to back.
#pragma once

#include <cstdint>
#include <cstdio>
#include <span>
#include <string>
#include <string_view>

namespace System::Beacon {

/// Buffers and writes. Every function raises `EFileError`, naming the file, as soon as it is known
/// that something did not reach it, and again afterwards. Destruction closes quietly.
class TOutputFile {
 public:
  /// Makes the file or empties it.
  explicit TOutputFile(std::string APath);
  TOutputFile(const TOutputFile&) = delete;
  TOutputFile& operator=(const TOutputFile&) = delete;
  ~TOutputFile();

  void Write(std::span<const std::uint8_t> ABytes);
  void Write(std::string_view AText);
  /// Writes what is buffered and closes; nothing when it is closed already.
  void Close();

  const std::string& GetPath() const { return FPath; }

 private:
  void Put(const void* AData, std::size_t ASize);
  [[noreturn]] void Fail(int AError);

  std::string FPath;
  std::FILE* FFile;
  int FError = 0;
};

}  // namespace System::Beacon
