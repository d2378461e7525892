// What the program says to people.
#include "apps/wayfence/messages.h"

#include <gtest/gtest.h>

namespace Wayfence {
namespace {

TEST(Messages, NamesInThemAreShortAndHarmless) {
  const std::string Long(100, 'n'), Clip = std::string(80, 'n') + "…";
  for (const auto& [Text, Expected] :
       {std::pair<std::string, std::string>{"Zürich: 'a' is no 'b'", "Zürich: 'a' is no 'b'"},
        {"the scene's '\x1B[31m\n'\x7F", "the scene's '\\x1B[31m\\x0A'\\x7F"},
        {"\xC2\x9B"
         "1m \xFF\xC3",
         "\\xC2\\x9B1m \\xFF\\xC3"},
        {"no '" + Long + "'; its name is '" + Long + "'",
         "no '" + Clip + "'; its name is '" + Clip + "'"},
        {"'it's " + Long + "' and so on", "'it's " + std::string(75, 'n') + "…' and so on"},
        {"an open '" + Long, "an open '" + Long}})
    EXPECT_EQ(Printable(Text), Expected);
  const std::string Large = "a: " + std::string(1'000'000, 'x') + ": do this";
  EXPECT_LT(Printable(Large).size(), 1600U);
  EXPECT_TRUE(Printable(Large).ends_with("x: do this"));
  EXPECT_EQ(Clipped("ü" + Long), "ü" + std::string(79, 'n') + "…");
}

}  // namespace
}  // namespace Wayfence
