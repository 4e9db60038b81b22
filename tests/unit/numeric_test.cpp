#include "frame/numeric.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace wavefilters {
namespace {

constexpr std::int32_t Lowest = -2147483647 - 1;
constexpr std::int32_t Highest = 2147483647;

TEST(ToInt32, TruncatesTowardZero) {
  EXPECT_EQ(ToInt32(2.9), 2);
  EXPECT_EQ(ToInt32(-2.9), -2);
  EXPECT_EQ(ToInt32(-0.0), 0);
  EXPECT_EQ(ToInt32(2147483646.9), Highest - 1);
  EXPECT_EQ(ToInt32(-2147483647.9), Lowest + 1);
}

TEST(ToInt32, TakesWhatLiesBeyondTheRangeToItsNearerEnd) {
  for (const double value : {2147483647.0, 2147483647.5, 2147483648.0, 1e300, HUGE_VAL}) {
    EXPECT_EQ(ToInt32(value), Highest);
    EXPECT_EQ(ToInt32(-value - 1.0), Lowest);
  }
}

TEST(ToInt32, TakesNotANumberAsZero) { EXPECT_EQ(ToInt32(std::nan("")), 0); }

TEST(LimitToInt32, KeepsTheRangeAndLimitsTheRest) {
  EXPECT_EQ(LimitToInt32(std::int64_t{Highest}), Highest);
  EXPECT_EQ(LimitToInt32(std::int64_t{Highest} + 1), Highest);
  EXPECT_EQ(LimitToInt32(std::int64_t{Lowest}), Lowest);
  EXPECT_EQ(LimitToInt32(std::int64_t{Lowest} - 1), Lowest);
  EXPECT_EQ(LimitToInt32(-7), -7);
}

TEST(Delivered, TakesEveryClaimAtTheBoundsOfTheRequest) {
  EXPECT_EQ(Delivered(5, 5), 5);
  EXPECT_EQ(Delivered(4, 5), 4);
  EXPECT_EQ(Delivered(6, 5), 5);
  EXPECT_EQ(Delivered(-1, 5), 0);
  EXPECT_EQ(Delivered(0, -3), 0);
  EXPECT_EQ(Delivered(3, -3), 0);
}

}  // namespace
}  // namespace wavefilters
