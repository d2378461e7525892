// GUIDs, colours, handlers, shared arrays, files.
#include <fcntl.h>
#include <fmt/format.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "platform/array.h"
#include "platform/color.h"
#include "platform/enum_set.h"
#include "platform/errors.h"
#include "platform/files.h"
#include "platform/guid.h"
#include "platform/method.h"
#include "support/raised.h"

namespace System {
namespace {

TEST(TGUID, TheTextFormIsBracedAndInUpperCase) {
  const std::string Text = "{2F234454-CF6D-4A0F-ADF2-F4911BA9FFA6}";
  EXPECT_EQ(GUIDToString(StringToGUID("{2f234454-cf6d-4A0F-adf2-f4911ba9ffa6}")), Text);
  EXPECT_EQ(StringToGUID(Text).Bytes[1], 0x23);
  for (const char* Refused : {"",
                              "2F234454-CF6D-4A0F-ADF2-F4911BA9FFA6",
                              "{2F234454-CF6D-4A0F-ADF2-F4911BA9FFA6",
                              "{2F234454-CF6D-4A0F-ADF2-F4911BA9FFA6}}",
                              "{2F234454-CF6D-4A0F-ADF2-F4911BA9FFAG}",
                              "{2F23445-4CF6D-4A0F-ADF2-F4911BA9FFA6}",
                              "{2F234454+CF6D-4A0F-ADF2-F4911BA9FFA6}"})
    EXPECT_EQ(Raised<EConvertError>([&] { StringToGUID(Refused); }),
              fmt::format("'{}' is not a valid GUID value; it looks like "
                          "{{00112233-4455-6677-8899-AABBCCDDEEFF}}",
                          Refused));
}

TEST(TAlphaColor, TheTextFormHasEightDigits) {
  TAlphaColor Color;
  ASSERT_TRUE(TryStringToColor("#80ff0a1B", Color));
  EXPECT_EQ(Color.Value, 0x80FF0A1BU);
  EXPECT_EQ(ColorToString(Color), "#80FF0A1B");
  for (const char* Refused : {"", "#", "80FF0A1B", "#80FF0A1", "#80FF0A1B0", "#80FF0A1G"})
    EXPECT_FALSE(TryStringToColor(Refused, Color)) << Refused;
  EXPECT_EQ(Color.Value, 0x80FF0A1BU);
}

class TReceiver : public TObject {
 public:
  void Add(int AValue) { Sum += AValue; }
  void AddToo(int AValue) { Sum += AValue; }
  int Sum = 0;
};

TEST(TMethod, HandlersAreEqualWhenCodeAndReceiverAre) {
  TReceiver A, B;
  const TMethod<void(int)> First = Bind<&TReceiver::Add>(&A);
  EXPECT_EQ(First, Bind<&TReceiver::Add>(&A));
  EXPECT_NE(First, Bind<&TReceiver::Add>(&B));
  EXPECT_NE(First, Bind<&TReceiver::AddToo>(&A));
  TMethod<void(int)> Callable = [&B](int AValue) { B.Sum += AValue; };
  const TMethod<void(int)> Copy = Callable;
  EXPECT_EQ(Copy, Callable);
  Callable = {};
  for (const auto& Method : {First, Copy, Callable}) Method(5);
  EXPECT_EQ(A.Sum, 5);
  EXPECT_EQ(B.Sum, 5);
  EXPECT_FALSE(Callable);
}

TEST(TArray, AWriteIsSeenThroughAllCopiesUntilTheLengthIsSet) {
  TArray<int> First{1, 2, 3};
  TArray<int> Second = First;
  Second[0] = 10;
  EXPECT_EQ(First[0], 10);
  Second.SetLength(4);
  Second[0] = 20;
  EXPECT_EQ(First[0], 10);
  EXPECT_EQ(std::vector<int>(Second.begin(), Second.end()), (std::vector<int>{20, 2, 3, 0}));
  EXPECT_FALSE(First.Copy().IsSameAs(First));

  TArray<int> Third = Second;
  Third.Append(4);
  EXPECT_EQ(Second.GetLength(), 4U);
  EXPECT_EQ(Third.GetLength(), 5U);
  EXPECT_EQ(Third.WithLock([&] { return Third[0]; }), 20);
  EXPECT_TRUE(TArray<int>().WithLock([] { return true; }));
}

TEST(Files, AreReadAndReplacedWhole) {
  const std::filesystem::path Folder = std::filesystem::path(testing::TempDir()) / "wayfence-files";
  std::filesystem::create_directories(Folder);
  const std::string Path = Folder / "file";
  ReplaceFile(Path, "first");
  ReplaceFile(Path, std::string("two\0\n", 5));
  EXPECT_EQ(ReadWholeFile(Path, 5), std::string("two\0\n", 5));
  const auto Read = [](const std::string& A) {
    return Raised<EFileError>([&] { ReadWholeFile(A, 4); });
  };
  EXPECT_EQ(Read(Path), Path + ": longer than 4 bytes");
  EXPECT_EQ(Read(Folder), Folder.string() + ": the file cannot be read: Is a directory");
  EXPECT_EQ(Read(Path + "x"), Path + "x: the file cannot be opened: No such file or directory");
  EXPECT_EQ(Raised<EFileError>([&] { ReplaceFile(Path + "/x", ""); }),
            Path + "/x: the file cannot be written: Not a directory");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(Folder), {}), 1);
  std::filesystem::remove_all(Folder);
}

TEST(Files, ThatAreReplacedKeepLinksAndPipes) {
  const std::filesystem::path Folder = std::filesystem::path(testing::TempDir()) / "wayfence-links";
  std::filesystem::create_directories(Folder);
  const std::string Path = Folder / "file";
  const auto IsLink = [](const std::string& A) { return std::filesystem::is_symlink(A); };
  for (const auto& [Target, Link] : {std::pair{"file", "l"}, {"new", "m"}, {"l", "n"}, {"o", "o"}})
    std::filesystem::create_symlink(Target, Folder / Link);
  for (const char* Link : {"m", "n"}) ReplaceFile(Folder / Link, Link);
  EXPECT_EQ(ReadWholeFile(Path, 9) + ReadWholeFile(Folder / "new", 9), "nm");
  EXPECT_TRUE(IsLink(Folder / "l") && IsLink(Folder / "m") && IsLink(Folder / "n"));
  EXPECT_THROW(ReplaceFile(Folder / "o", ""), EFileError);
  ReplacePlainFile(Folder / "n", "plain");
  EXPECT_EQ(ReadWholeFile(Path, 9) + ReadPlainFile(Folder / "n", 9), "nplain");

  ASSERT_EQ(mkfifo((Folder / "pipe").c_str(), 0600), 0);
  const int Pipe = open((Folder / "pipe").c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  ReplaceFile(Folder / "pipe", "through");
  char Read[8] = {};
  EXPECT_EQ(read(Pipe, Read, sizeof Read), 7);
  close(Pipe);
  EXPECT_TRUE(std::filesystem::is_fifo(Folder / "pipe"));
  std::filesystem::remove_all(Folder);
}

}  // namespace
}  // namespace System
