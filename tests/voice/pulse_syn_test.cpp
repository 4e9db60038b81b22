#include <gtest/gtest.h>

#include <limits>

#include "voice/voice.h"

// The impulse source: what it writes at an instant.
namespace voice {
namespace {

using support::Constant;
using support::Noise;

// The signal with some samples replaced.
Samples With(Samples signal, const std::vector<std::pair<int, float>>& impulses) {
  for (const auto& [index, value] : impulses) signal.at(static_cast<std::size_t>(index)) = value;
  return signal;
}

Samples Through(const std::string& text, const Samples& signal) {
  return Voice(support::PulseSyn, text).Apply(signal);
}

TEST(PulseSyn, ReplacesTheSampleByTheNegatedAmplitude) {
  const Samples signal = Noise(3000);
  EXPECT_TRUE(support::SameBits(Through("100 1\n500 -0.25\n", signal),
                                With(signal, {{100, -1.0F}, {500, 0.25F}})));
}

TEST(PulseSyn, WritesAtTheFirstSamplesToo) {
  const Samples signal = Noise(3000);
  EXPECT_TRUE(
      support::SameBits(Through("0 1\n1 2\n", signal), With(signal, {{0, -1.0F}, {1, -2.0F}})));
}

TEST(PulseSyn, TakesTheLaterOfTwoLinesOfOneIndex) {
  const Samples signal = Noise(3000);
  EXPECT_TRUE(support::SameBits(Through("100 1\n100.5 3\n", signal), With(signal, {{100, -3.0F}})));
}

TEST(PulseSyn, GoesBackToEarlierInstantsOfTheBlock) {
  const Samples signal = Noise(3000);
  EXPECT_TRUE(support::SameBits(Through("100 1\n90 2\n110 3\n", signal),
                                With(signal, {{90, -2.0F}, {100, -1.0F}, {110, -3.0F}})));
}

TEST(PulseSyn, WritesMinusZeroForAnAmplitudeOfZero) {
  const Samples signal = Noise(3000);
  EXPECT_TRUE(support::SameBits(Through("100 0\n200 -0\n", signal),
                                With(signal, {{100, -0.0F}, {200, 0.0F}})));
}

TEST(PulseSyn, RoundsTheAmplitudeToSinglePrecision) {
  const float infinity = std::numeric_limits<float>::infinity();
  const Samples signal = Noise(3000);
  EXPECT_TRUE(support::SameBits(
      Through("100 0.1\n101 1e300\n102 16777217\n103 1e-60\n", signal),
      With(signal, {{100, -0.1F}, {101, -infinity}, {102, -16777216.0F}, {103, -0.0F}})));
}

TEST(PulseSyn, IgnoresTheRestOfALine) {
  const Samples signal = Noise(3000);
  EXPECT_TRUE(support::SameBits(Through("100 1 200 2\n300 3x\n400 4 x\n", signal),
                                With(signal, {{100, -1.0F}, {300, -3.0F}, {400, -4.0F}})));
}

}  // namespace
}  // namespace voice
