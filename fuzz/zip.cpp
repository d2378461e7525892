// Zip archives: what is opened holds what it tells, within the bound, and is packed and read again.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "platform/errors.h"
#include "platform/zip.h"

namespace {

using namespace System;

constexpr std::size_t MaxSize = 1 << 20;

void Require(bool AHolds) {
  if (!AHolds) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* AData, std::size_t ASize) {
  std::vector<std::string> Contents;
  std::vector<TZipFile> Files;
  try {
    const TZipReader Zip({reinterpret_cast<const char*>(AData), ASize}, "fuzz", MaxSize);
    Contents.reserve(Zip.GetEntries().size());
    for (const TZipReader::TEntry& Entry : Zip.GetEntries()) {
      Require(Entry.Size <= MaxSize && Zip.Contains(Entry.Name));
      Contents.push_back(Zip.Read(Entry.Name));
      Require(Contents.back().size() == Entry.Size);
      Files.push_back({Entry.Name, Contents.back()});
    }
  } catch (const EFileError&) {
    return 0;
  }
  const TZipReader Copy(PackZip(Files), "copy");
  Require(Copy.GetEntries().size() == Files.size());
  for (const TZipFile& File : Files) Require(Copy.Read(File.Name) == File.Bytes);
  return 0;
}
