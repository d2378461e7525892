#include <gtest/gtest.h>

#include <algorithm>

#include "support/pictures.h"
#include "support/raised.h"

namespace System {
namespace {

std::string Corpus(const std::string& AName) {
  return ReadWholeFile(SourceFile("fuzz/corpus/picture/" + AName), 1 << 20);
}

TEST(Picture, ReadsEveryKind) {
  const TRef<TPicture> Expected = DecodePicture(Corpus("rgb.png"), "rgb.png");
  ASSERT_EQ(Expected->GetSize(), (TPictureSize{24, 16}));
  EXPECT_EQ(Expected->GetPixels()[5 * 24 + 5], 0xFFD02020U);
  for (const auto& [Name, MeanDifference] : {std::pair<const char*, int>{"palette.png", 12},
                                             {"deep.png", 1},
                                             {"interlaced.png", 0},
                                             {"baseline.jpg", 6},
                                             {"progressive.jpg", 6},
                                             {"lossy.webp", 12},
                                             {"lossless.webp", 0}}) {
    const std::string Bytes = Corpus(Name);
    EXPECT_EQ(ReadPictureSize(Bytes, Name), Expected->GetSize()) << Name;
    const TRef<TPicture> Picture = DecodePicture(Bytes, Name);
    ASSERT_EQ(Picture->GetSize(), Expected->GetSize()) << Name;
    int Sum = 0;
    for (std::size_t I = 0; I < Expected->GetPixels().size(); ++I)
      Sum += Difference(Picture->GetPixels()[I], Expected->GetPixels()[I]);
    EXPECT_LE(Sum, MeanDifference * 24 * 16) << Name;
  }
}

TEST(Picture, MultipliesWithAlphaAndSpreadsGray) {
  for (const auto& [Name, Inside, Tolerance] :
       {std::tuple<const char*, std::uint32_t, int>{"alpha.png", 0x80681010, 1},
        {"alpha.webp", 0x80681010, 8},
        {"gray.png", 0xFF464646, 1},
        {"gray.jpg", 0xFF464646, 8}}) {
    const std::uint32_t Pixel = DecodePicture(Corpus(Name), Name)->GetPixels()[8 * 24 + 8];
    EXPECT_LE(Difference(Pixel, Inside), Tolerance) << Name << " " << std::hex << Pixel;
  }
}

TEST(Picture, RefusesWhatItCannotReadAndSaysWhy) {
  const auto Half = [](const char* AName) {
    const std::string Bytes = Corpus(AName);
    return Bytes.substr(0, Bytes.size() / 2);
  };
  std::string Huge = Corpus("rgb.png");
  Huge.replace(16, 8, std::string("\0\0\xFF\xFF\0\0\0\1", 8));
  std::string Flipped = Corpus("rgb.png");
  Flipped[Flipped.size() - 20] ^= 1;
  const std::pair<std::string, const char*> Cases[] = {
      {"", "f: this is no PNG, JPEG or WebP picture"},
      {"GIF89a", "f: this is no PNG, JPEG or WebP picture"},
      {Half("rgb.png"), "f: the PNG picture is damaged or cut short: "},
      {Half("interlaced.png"), "f: the PNG picture is damaged or cut short: "},
      {Flipped, "f: the PNG picture is damaged or cut short: "},
      {Huge, "f: the PNG picture is damaged or cut short: "},
      {Half("baseline.jpg"), "f: the JPEG picture is damaged or cut short: "},
      {Half("progressive.jpg"), "f: the JPEG picture is damaged or cut short: "},
      {Corpus("print.jpg"),
       "f: the picture has colours for print (CMYK); save it with RGB colours"},
      {Half("lossy.webp"), "f: the WebP picture is damaged or cut short: it ends too early"},
      {Half("lossless.webp"), "f: the WebP picture is damaged or cut short: it ends too early"},
      {Corpus("animation.webp"), "f: the picture is an animation; save a single picture"}};
  for (const auto& [Bytes, Wanted] : Cases) {
    const std::string Message =
        Raised<EFileError>([&, &Bytes = Bytes] { DecodePicture(Bytes, "f"); });
    EXPECT_EQ(Message.substr(0, std::string(Wanted).size()), Wanted) << Message;
  }
}

TEST(Picture, RefusesMorePixelsThanAskedForByTheHeaderAlone) {
  const std::string Bytes = Corpus("rgb.png");
  EXPECT_EQ(Raised<EFileError>([&] { DecodePicture(Bytes.substr(0, 60), "f", 383); }),
            "f: the picture has 24 x 16 pixels; at most 32767 on a side and 383 in all are read");
  EXPECT_EQ(DecodePicture(Bytes, "f", 384)->GetSize(), (TPictureSize{24, 16}));
}

TEST(Picture, IsWrittenAndReadBack) {
  const TRef<TPicture> Picture = DecodePicture(Corpus("alpha.png"), "alpha.png");
  const TRef<TPicture> Copy = DecodePicture(EncodePng(*Picture), "copy");
  EXPECT_TRUE(std::equal(Picture->GetPixels().begin(),
                         Picture->GetPixels().end(),
                         Copy->GetPixels().begin(),
                         [](std::uint32_t A, std::uint32_t B) { return Difference(A, B) <= 1; }));
}

// A checkerboard of single pixels turns grey when it is drawn smaller, at every size.
TEST(Picture, IsAveragedWhenItIsDrawnSmaller) {
  TDrawing Board(301, 203);
  Board.Clear({0xFFFFFFFF});
  TPath Squares;
  for (int Y = 0; Y < 203; ++Y)
    for (int X = Y % 2; X < 301; X += 2)
      Squares.AddRect({static_cast<float>(X),
                       static_cast<float>(Y),
                       static_cast<float>(X + 1),
                       static_cast<float>(Y + 1)});
  Board.SetFill({.Color{0xFF000000}});
  Board.Fill(Squares);
  const TRef<TPicture> Picture = Board.GetPicture();
  for (const float Scale : {0.5F, 0.3F, 0.1F, 0.01F}) {
    TDrawing Small(200, 200);
    Small.SetMatrix(TMatrix::Scaling(Scale, Scale));
    Small.SetFill({.Picture = Picture});
    TPath Rect;
    Rect.AddRect({0, 0, 301, 203});
    Small.Fill(Rect);
    EXPECT_LE(Difference(Small.GetPixels()[0], 0xFF808080), 8) << Scale;
  }
}

TEST(Drawing, RefusesSizesThatAreNoneOrTooLarge) {
  for (const int Side : {0, -1, MaxPictureSide + 1}) {
    EXPECT_THROW(TDrawing(Side, 10), EGeneralError) << Side;
    EXPECT_THROW(TDrawing(10, Side), EGeneralError) << Side;
  }
}

}  // namespace
}  // namespace System
