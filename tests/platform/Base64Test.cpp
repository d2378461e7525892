#include "platform/base64.h"

#include <gtest/gtest.h>

#include "platform/errors.h"
#include "support/raised.h"

namespace System {
namespace {

TEST(Base64, BytesOfEveryLengthComeBackFromLinesOf76Digits) {
  std::string Bytes;
  for (int I = 0; I < 300; ++I) {
    const std::string Text = EncodeBase64(Bytes);
    for (std::size_t At = 76; At < Text.size(); At += 78) {
      ASSERT_EQ(Text.substr(At, 2), "\r\n") << I;
    }
    ASSERT_TRUE(Text.empty() || Text.back() != '\n') << I;
    ASSERT_EQ(DecodeBase64(Text), Bytes) << I;
    Bytes += static_cast<char>(I * 7);
  }
  EXPECT_EQ(EncodeBase64("\xFB\xEF\xFF?"), "++//Pw==");
}

TEST(Base64, ATextThatStandsForNoBytesIsRefused) {
  const char* const Short =
      "the Base64 text is cut short: digits and padding come in groups of four";
  for (const auto& [Text, Result] : {
           std::pair<const char*, const char*>{" Zm\t9v\r\nYg ==\n", "foob"},
           {"Zm9vY", Short},
           {"Zg=", Short},
           {"Zg", Short},
           {"Zm9-", "the Base64 text has '-' at character 4, where it cannot stand"},
           {"Zm\xC3\xA9", "the Base64 text has '0xC3' at character 3, where it cannot stand"},
           {"=", "the Base64 text has '=' at character 1, where it cannot stand"},
           {"Zg=a", "the Base64 text has 'a' at character 4, where it cannot stand"},
           {"Zg===", "the Base64 text has '=' at character 5, where it cannot stand"},
           {"Zg==Zg==", "the Base64 text has 'Z' at character 5, where it cannot stand"},
           {"Zh==", "the Base64 text has '=' at character 4, where it cannot stand"},
       }) {
    std::string Bytes;
    const std::string Message =
        Raised<EConvertError>([&, &Text = Text] { Bytes = DecodeBase64(Text); });
    EXPECT_EQ(Bytes.empty() ? Message : Bytes, Result) << Text;
  }
}

}  // namespace
}  // namespace System
