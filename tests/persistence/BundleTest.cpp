// Bundles in memory, in directories and in archives.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "persistence/System.Beacon.Fencing.Bundle.h"
#include "persistence/System.Beacon.Fencing.XML.h"
#include "platform/base64.h"
#include "platform/files.h"
#include "platform/zip.h"
#include "scene/canvas/System.Beacon.Fencing.Canvas.Wyx.h"
#include "support/pictures.h"
#include "support/raised.h"

namespace System::Beacon::Fencing {
namespace {

namespace fs = std::filesystem;

class Bundle : public testing::Test {
 protected:
  const std::string FFolder =
      testing::TempDir() + "wayfence-bundle-" + std::to_string(getpid()) + "/";
  const std::string FPicture = ReadWholeFile(SourceFile("fuzz/corpus/picture/rgb.png"), 1 << 20);

  void SetUp() override {
    fs::remove_all(FFolder);
    fs::create_directories(FFolder + "kept");
  }
  void TearDown() override { fs::remove_all(FFolder); }

  static TRef<TBundle> NewBundle() { return New<TBundle>(New<Canvas::TWyxCanvas>()); }
  TRef<TBundle> OpenDirectory() const {
    TRef<TBundle> Result = NewBundle();
    Result->SetWorkingDirectory(FFolder + "kept/");
    return Result;
  }
  TRef<TBundle> OpenArchive(const std::string& ABytes) const {
    ReplaceFile(FFolder + "a.zip", ABytes);
    TRef<TBundle> Result = NewBundle();
    Result->SetWorkingFile(FFolder + "a.zip");
    return Result;
  }
  /// Puts a file beside the bundle and adds it; its id.
  std::string Add(TBundle& ABundle, const std::string& AName, const std::string& ABytes) const {
    ReplaceFile(FFolder + AName, ABytes);
    std::string Id;
    ABundle.AddFile(FFolder + AName, Id, false);
    return Id;
  }
};

/// All that a bundle holds, a line for each path.
std::string Listed(TBundle& ABundle) {
  std::string Result;
  for (const std::string& Path : ABundle.GetPaths()) {
    const std::string Id = ABundle.GetFileIdWithPath(Path);
    EXPECT_EQ(ABundle.GetFilePathWithId(Id), Path);
    EXPECT_EQ(DecodeBase64(ABundle.GetBase64FromFileId(Id)), ABundle.GetStringForKey(Path));
    Result += Path + '|' + Id + '|' + ABundle.GetStringForKey(Path) + '\n';
  }
  return Result;
}

TEST_F(Bundle, AllThatIsHeldComesBackFromTextDirectoryAndArchive) {
  const TRef<TBundle> Memory = NewBundle(), Text = NewBundle(), TextFile = NewBundle();
  const TRef<TBundle> Directory = OpenDirectory();
  std::string Id;
  Memory->AddString("project", "<a/>\r\n", Id, false);
  EXPECT_EQ(Id.size(), 32U);
  EXPECT_EQ(Id.find_first_not_of("0123456789ABCDEF"), std::string::npos);
  for (const TRef<TBundle>& Target : {Memory, Directory}) {
    Add(*Target, "a \"b\" & <c>'é\\.png", FPicture);
    Add(*Target, "empty", "");
  }
  const std::string XML = Memory->SerializeToXML();
  ReplaceFile(FFolder + "b.xml", "\xEF\xBB\xBF<?xml version='1.0'?><!-- b --><?p?>\n" + XML);
  EXPECT_TRUE(Text->UnserializeFromXML(XML));
  EXPECT_TRUE(TextFile->UnserializeFromXMLFile(FFolder + "b.xml"));
  Memory->SaveToArchive(FFolder + "b.zip");
  const TRef<TBundle> Archive = NewBundle();
  Archive->SetWorkingFile(FFolder + "b.zip");
  for (const TRef<TBundle>& Copy : {Text, TextFile, Archive}) {
    EXPECT_EQ(Listed(*Copy), Listed(*Memory));
    EXPECT_EQ(Copy->SerializeToXML(), XML);
  }
  EXPECT_EQ(Listed(*OpenDirectory()), Listed(*Directory));
  EXPECT_EQ(Directory->GetPaths().size(), 2U);
}

TEST_F(Bundle, AFileThatIsAddedAgainKeepsItsIdAndGetsNewContent) {
  for (const TRef<TBundle>& Target : {NewBundle(), OpenDirectory()}) {
    const std::string Id = Add(*Target, "f", FPicture);
    const TRef<IBitmap> Before = Target->GetImageForPath(FFolder + "f");
    ASSERT_TRUE(Before);
    EXPECT_EQ(Target->GetImageForPath(FFolder + "f"), Before);
    EXPECT_EQ(Target->GetPathForImage(Before.Get()), FFolder + "f");
    std::string Reused;
    ReplaceFile(FFolder + "f", "new");
    Target->AddFile(FFolder + "f", Reused, true);
    EXPECT_EQ(Reused, Id);
    EXPECT_EQ(Target->GetStringForKey(FFolder + "f"), FPicture);
    EXPECT_EQ(Add(*Target, "f", "new"), Id);
    EXPECT_EQ(Target->GetStringForKey(FFolder + "f"), "new");
    EXPECT_EQ(Target->GetImageForPath(FFolder + "f"), nullptr);
    EXPECT_EQ(Target->GetPathForImage(Before.Get()), "");
    Target->AddFile(FFolder + "missing", Reused, false);
    EXPECT_EQ(Reused, "");
  }
}

TEST_F(Bundle, WhatIsAddedToADirectoryInMemoryIsFoundBeforeItsFiles) {
  const TRef<TBundle> Target = OpenDirectory();
  const std::string Id = Add(*Target, "f", "on disk");
  const std::string Other = Add(*Target, "g", "untouched");
  std::string Same;
  Target->AddString(FFolder + "f", "in memory", Same, false);
  EXPECT_EQ(Same, Id);
  EXPECT_EQ(Target->GetStringForKey(FFolder + "f"), "in memory");
  EXPECT_EQ(Target->GetStringForKey(FFolder + "g"), "untouched");
  EXPECT_EQ(OpenDirectory()->GetStringForKey(FFolder + "f"), "on disk");
}

TEST_F(Bundle, TheLastOfSeveralFilesWithOneNameCounts) {
  const TRef<TBundle> Target = NewBundle();
  Target->UnserializeFromXML(
      "<b><FILE path='p' id='1'>MQ==</FILE><other path='q' id='9'/><file path='p' "
      "id='2'>Mg==</file>"
      "<file path='r' id='3'>Mw==</file><file path='r' id='3'>NA==</file></b>");
  EXPECT_EQ(Listed(*Target), "p|2|2\nr|3|4\n");
  EXPECT_FALSE(Target->ContainsFileWithId("1"));
  EXPECT_EQ(Target->GetBase64FromFileId("1"), "");
}

TEST_F(Bundle, AnArchiveWithoutATableNamesItsFilesByItsEntries) {
  const TRef<TBundle> Target = OpenArchive(
      PackZip(std::vector<TZipFile>{{"maps/", ""}, {"maps/1.png", FPicture}, {"project", "<a/>"}}));
  EXPECT_EQ(Listed(*Target), "maps/1.png|maps/1.png|" + FPicture + "\nproject|project|<a/>\n");
  ASSERT_TRUE(Target->GetImageForPath("maps/1.png"));
  EXPECT_EQ(Target->GetImageForPath("project"), nullptr);
  const TRef<TBundle> Copy = NewBundle();
  Copy->UnserializeFromXML(Target->SerializeToXML());
  EXPECT_EQ(Copy->GetPaths(), Target->GetPaths());
  EXPECT_EQ(Copy->GetStringForKey("maps/1.png"), FPicture);
}

TEST_F(Bundle, ARefusedTextLeavesWhatWasLoaded) {
  const std::string LongId(65, 'x');
  const TRef<TBundle> Target = NewBundle();
  std::string Id;
  Target->AddString("kept", "content", Id, false);
  const std::string Before = Listed(*Target);
  const std::string First = "<b><file path='kept' id='1'>MQ==</file>\n";
  std::string Many = "<b>";
  for (int I = 0; I <= 65'000; ++I) Many += "<file path='p' id='1'/>";
  const struct TCase {
    std::string Text;
    std::string Message;
  } Cases[] = {
      {Many + "</b>", "there are more than 65000 files"},
      {"<b>", "1:1: <b> is not closed"},
      {First + "<file id='2'/></b>", "2:1: <file> has no attribute path"},
      {First + "<file path='p'/></b>", "2:1: <file> has no attribute id"},
      {First + "<file path='p' id='../2'/></b>",
       "2:1: '../2' is no id; ids are 1 to 64 letters, digits, '-' or '_'"},
      {First + "<file path='p' id='" + LongId + "'/></b>", "2:1: '" + LongId + "' is no id; "},
      {First + "<file path='p' id=''/></b>", "2:1: '' is no id; "},
      {First + "<file path='a&#10;b' id='2'/></b>", "2:1: 'a?b' is no path; "},
      {First + "<file path='' id='2'/></b>", "2:1: '' is no path; "},
      {First + "<file path='p' id='2'>Mg=</file></b>", "2:23: the Base64 text is cut short"},
      {First + "<file path='p' id='2'>" + EncodeBase64(std::string(1000, ' ')) + "</file></b>",
       "p: the bundle would hold more than 1000 bytes"},
  };
  Target->SetMaxSize(1000);
  for (const TCase& Case : Cases) {
    const std::string Message =
        Raised<EGeneralError>([&] { Target->UnserializeFromXML(Case.Text); });
    EXPECT_TRUE(Message.starts_with(Case.Message)) << Message;
    EXPECT_EQ(Listed(*Target), Before) << Case.Text;
  }
}

TEST_F(Bundle, ARefusedTableOrArchiveLeavesWhatWasLoaded) {
  const TRef<TBundle> Target = NewBundle();
  std::string Id;
  Target->AddString("kept", "content", Id, false);
  const std::string Before = Listed(*Target);
  const struct TCase {
    const char* Table;
    const char* Message;
  } Cases[] = {{"p\n../../etc/passwd\n", ":2: '../../etc/passwd' is no id; "},
               {"p\n1\nq", ":3: the last path has no line with its id"},
               {"p\n1\n\n2\n", ":3: '' is no path; "},
               {"p\n1\n\xFF\n2\n", ":3: '\xFF' is no path; "}};
  for (const TCase& Case : Cases) {
    const std::string Table = FFolder + "kept/MapId.txt";
    ReplaceFile(Table, Case.Table);
    ReplaceFile(FFolder + "t.zip", PackZip(std::vector<TZipFile>{{"MapId.txt", Case.Table}}));
    const std::string OfFolder =
        Raised<EFileError>([&] { Target->SetWorkingDirectory(FFolder + "kept/"); });
    const std::string OfFile =
        Raised<EFileError>([&] { Target->SetWorkingFile(FFolder + "t.zip"); });
    EXPECT_TRUE(OfFolder.starts_with(Table + Case.Message)) << OfFolder;
    EXPECT_TRUE(OfFile.starts_with(FFolder + "t.zip: MapId.txt" + Case.Message)) << OfFile;
    EXPECT_EQ(Listed(*Target), Before) << Case.Table;
  }
  Target->SetMaxSize(100);
  for (const std::string& Bytes : {std::string("no archive"), std::string(101, ' ')}) {
    ReplaceFile(FFolder + "t.zip", Bytes);
    EXPECT_THROW(Target->SetWorkingFile(FFolder + "t.zip"), EFileError);
  }
  Target->SetWorkingFile(FFolder + "missing.zip");
  Target->SetWorkingDirectory(FFolder + "missing/");
  EXPECT_EQ(Listed(*Target), Before);
}

TEST_F(Bundle, NothingLeadsOutOfTheDirectory) {
  const std::string Kept = FFolder + "kept/";
  ReplaceFile(FFolder + "secret", "secret");
  ReplaceFile(Kept + "MapId.txt",
              "\xEF\xBB\xBFl\r\nlink\r\np\r\npipe\r\nd\r\nfolder\r\ng\r\ngone\r\n");
  fs::create_symlink(FFolder + "secret", Kept + "link");
  fs::create_symlink(FFolder + "secret", Kept + "link.new");
  fs::create_directory(Kept + "folder");
  ASSERT_EQ(mkfifo((Kept + "pipe").c_str(), 0600), 0);
  const TRef<TBundle> Target = OpenDirectory();
  ASSERT_EQ(Target->GetPaths().size(), 4U);
  for (const char* Path : {"l", "p", "d"}) {
    EXPECT_EQ(Raised<EFileError>([&] { Target->GetStringForKey(Path); }),
              Kept + Target->GetFileIdWithPath(Path) +
                  ": a file of its own should stand here, no link or device");
    EXPECT_EQ(Target->GetImageForPath(Path), nullptr);
  }
  EXPECT_THROW(Target->GetBase64FromFilePath("g"), EFileError);
  Target->GenerateTableWithNewPath(FFolder + "mine", "link");
  const TRef<TBundle> Again = OpenDirectory();
  EXPECT_EQ(Add(*Again, "mine", "mine"), "link");
  EXPECT_EQ(Again->GetStringForKey(FFolder + "mine"), "mine");
  EXPECT_EQ(ReadWholeFile(FFolder + "secret", 100), "secret");
  EXPECT_EQ(Target->GetBase64FromFileId("../secret"), "");
  EXPECT_THROW(Target->AddFileWithEncode64("p", "../secret", ""), EFileError);
  EXPECT_THROW(Target->GenerateTableWithNewPath("a\nb", "1"), EFileError);
}

TEST_F(Bundle, APictureOfTooManyPixelsIsNone) {
  const TRef<TBundle> Target = NewBundle();
  Add(*Target, "f", FPicture);
  Target->SetMaxPicturePixels(std::size_t{24} * 16 - 1);
  EXPECT_EQ(Target->GetImageForPath(FFolder + "f"), nullptr);
  Target->SetMaxPicturePixels(std::size_t{24} * 16);
  EXPECT_TRUE(Target->GetImageForPath(FFolder + "f"));
}

}  // namespace
}  // namespace System::Beacon::Fencing
