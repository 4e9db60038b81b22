#include "dsp/resample_steps.h"

#include <gtest/gtest.h>

#include <random>

namespace wavefilters {
namespace {

// The steps one by one, as they are told in words.
struct Walk {
  std::int64_t phase;
  std::int64_t count;
  std::int64_t consumed = 0;
  std::int64_t produced = 0;

  void Step(std::int64_t up, std::int64_t down) {
    if (count == 0) {
      ++produced;
    }
    if (++phase >= up) {
      phase = 0;
      ++consumed;
    }
    if (++count >= down) {
      count = 0;
    }
  }
};

TEST(ResampleSteps, AgreeWithWalkingThemOneByOne) {
  std::mt19937 random(20);
  const auto draw = [&random](int low, int high) {
    return std::uniform_int_distribution<int>(low, high)(random);
  };
  for (int round = 0; round < 2000; ++round) {
    const int up = draw(1, 9);
    const int down = draw(1, 9);
    const int phase = draw(-12, 14);
    const int count = draw(-12, 14);
    const ResampleSteps steps(up, down, phase, count);
    Walk walk{phase, count};
    for (std::int64_t step = 0; step < 60; ++step) {
      ASSERT_EQ(steps.Phase(step), walk.phase);
      ASSERT_EQ(steps.Count(step), walk.count);
      ASSERT_EQ(steps.Consumed(step), walk.consumed);
      ASSERT_EQ(steps.Produced(step), walk.produced);
      const Walk before = walk;
      walk.Step(up, down);
      if (walk.produced > before.produced) {
        ASSERT_EQ(steps.OutputStep(before.produced), step);
        ASSERT_EQ(steps.UntilProduced(walk.produced), step + 1);
      }
      if (walk.consumed > before.consumed) {
        ASSERT_EQ(steps.UntilConsumed(walk.consumed), step + 1);
      }
    }
  }
}

TEST(ResampleSteps, StayInRangeAtTheEndsOfAllCounts) {
  constexpr std::int64_t Highest = 2147483647;
  constexpr std::int64_t Lowest = -Highest - 1;
  const ResampleSteps steps(Highest, Highest, Lowest, Lowest);
  EXPECT_EQ(steps.UntilConsumed(1), Highest - Lowest);
  EXPECT_EQ(steps.UntilConsumed(Highest), Highest - Lowest + (Highest - 1) * Highest);
  EXPECT_EQ(steps.OutputStep(0), -Lowest);
  EXPECT_EQ(steps.UntilProduced(Highest), -Lowest + (Highest - 1) * Highest + 1);
  EXPECT_EQ(steps.Phase(5), Lowest + 5);
  EXPECT_EQ(steps.Count(5), Lowest + 5);
}

}  // namespace
}  // namespace wavefilters
