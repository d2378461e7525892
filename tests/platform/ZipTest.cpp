#include "platform/zip.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "platform/errors.h"
#include "platform/files.h"
#include "support/raised.h"

namespace System {
namespace {

/// An archive whose bytes were changed: each of these texts is put over the other, everywhere.
std::string Patched(std::string ABytes, std::string_view AFrom, std::string_view ATo) {
  for (std::size_t At = ABytes.find(AFrom); At != std::string::npos;
       At = ABytes.find(AFrom, At + ATo.size()))
    ABytes.replace(At, AFrom.size(), ATo);
  return ABytes;
}

/// The number of a field of the entry in the directory, and of every local header.
std::string WithField(std::string ABytes,
                      std::size_t AnInEntry,
                      std::size_t AnInHeader,
                      char AValue) {
  ABytes[ABytes.find("PK\1\2") + AnInEntry] = AValue;
  ABytes[AnInHeader] = AValue;
  return ABytes;
}

std::string Packed(std::initializer_list<TZipFile> AFiles) {
  return PackZip(std::vector<TZipFile>(AFiles));
}

TEST(Zip, WhatIsPackedIsListedAndReadInItsOrder) {
  const std::string Long(200'000, 'x');
  const std::vector<TZipFile> Files = {{"b/plän.png", Long}, {"a", ""}, {"C", "\n"}};
  const std::string Path = testing::TempDir() + "ZipTest.zip";
  WriteZip(Path, Files);
  EXPECT_EQ(ReadWholeFile(Path, MaxZipSize), PackZip(Files));
  const auto Zip = TZipReader::Open(Path);
  std::filesystem::remove(Path);
  ASSERT_EQ(Zip->GetEntries().size(), Files.size());
  for (std::size_t I = 0; I < Files.size(); ++I) {
    EXPECT_EQ(Zip->GetEntries()[I].Name, Files[I].Name);
    EXPECT_EQ(Zip->GetEntries()[I].Size, Files[I].Bytes.size());
    EXPECT_EQ(Zip->Read(Files[I].Name), Files[I].Bytes);
  }
  EXPECT_FALSE(Zip->Contains("c"));
  EXPECT_EQ(Raised<EFileError>([&] { Zip->Read("c"); }),
            Path + ": c: there is no such entry in the archive");
  EXPECT_TRUE(TZipReader(PackZip({}), "z").GetEntries().empty());
}

TEST(Zip, TheLastOfEntriesWithOneNameCounts) {
  const TZipReader Zip(
      Patched(Packed({{"same", "first"}, {"other", "o"}, {"sam2", "second"}}), "sam2", "same"),
      "z");
  EXPECT_EQ(Zip.GetEntries().size(), 2U);
  EXPECT_EQ(Zip.Read("same"), "second");
}

TEST(Zip, AHostileArchiveIsRefusedWithItsReason) {
  const std::string Good = Packed({{"entry", std::string(1000, 'x')}});
  std::string Flipped = Good;
  Flipped[36] ^= 1;
  std::string Zip64 = Good;
  Zip64.insert(Zip64.find("PK\5\6"), "PK\6\7" + std::string(16, '\1'));
  const char* const Name =
      "the entry's name is absolute, leads upwards or is no plain text; rename it";
  const std::pair<std::string, std::string> Cases[] = {
      {"", "z: the file is empty"},
      {"PK", "z: the archive cannot be read: "},
      {Good.substr(0, Good.size() - 5), "z: the archive cannot be read: "},
      {Zip64, "z: archives in the Zip64 format are not read"},
      {std::string(2001, ' '), "z: the archive is larger than 2000 bytes, packed or unpacked"},
      {Packed({{"a", ""}, {"bomb", std::string(2001, ' ')}}),
       "z: bomb: the archive is larger than"},
      {Packed({{"a", std::string(1000, ' ')}, {"b", std::string(1001, ' ')}}),
       "z: b: the archive is"},
      {Patched(Good, "entry", "/ntry"), std::string("z: /ntry: ") + Name},
      {Patched(Good, "entry", "C:try"), std::string("z: C:try: ") + Name},
      {Patched(Good, "entry", "a/../"), std::string("z: a/../: ") + Name},
      {Patched(Good, "entry", "..\\ry"), std::string("z: ..\\ry: ") + Name},
      {Patched(Good, "entry", "a\nb/c"), std::string("z: a?b/c: ") + Name},
      {Flipped, "z: entry: the archive cannot be read: "},
      {WithField(Good, 8, 6, 1), "z: entry: the archive cannot be read: "},     // encrypted
      {WithField(Good, 24, 22, 10), "z: entry: the entry does not have the "},  // longer than told
      {WithField(Good, 25, 23, 4), "z: entry: the entry does not have the "},   // shorter than told
      {WithField(Good, 10, 8, 42), "z: entry: the archive cannot be read: "},   // method
  };
  for (const auto& [Bytes, Wanted] : Cases) {
    const std::string Message =
        Raised<EFileError>([&, &Bytes = Bytes] { TZipReader(Bytes, "z", 2000).Read("entry"); });
    EXPECT_EQ(Message.substr(0, Wanted.size()), Wanted) << Message;
  }
  EXPECT_EQ(Raised<EFileError>([] { Packed({{"../up", ""}}); }), std::string("../up: ") + Name);
}

}  // namespace
}  // namespace System
