// Powers of ten beside those of a longer format.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "platform/power_of_ten.h"

namespace System {
namespace {

TEST(PowerOfTen, AgreesWithALongerFormat) {
  for (double X = -307.0; X < 308.0; X += 0.00137) {
    const long double Wanted = std::pow(10.0L, static_cast<long double>(X));
    ASSERT_LE(std::abs(static_cast<double>((PowerOfTen(X) - Wanted) / Wanted)), 4E-16) << X;
  }
  for (int I = 0; I < 16; ++I) EXPECT_DOUBLE_EQ(PowerOfTen(I), std::stod("1e" + std::to_string(I)));
  EXPECT_EQ(PowerOfTen(1E9), std::numeric_limits<double>::infinity());
  EXPECT_EQ(PowerOfTen(-1E9), 0.0);
  EXPECT_TRUE(std::isnan(PowerOfTen(std::nan(""))));
}

}  // namespace
}  // namespace System
