#include "reference/fric_syn.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numbers>

#include "tracks/twin.h"
#include "voice/random_numbers.h"
#include "voice/voice.h"

// The frication source: extent and shape of a burst, and which random numbers it takes.
namespace voice {
namespace {

using support::Constant;
using support::Noise;
using support::Slice;

// How many numbers of the C library's generator it takes to render a text.
std::size_t Draws(const std::string& text, int count, double interval_ms) {
  RandomNumbers numbers(11);
  Rendered(support::FricSyn, text, count, interval_ms);
  const int next = std::rand();
  std::size_t used = 0;
  while (numbers.Next() != next) ++used;
  return used;
}

Samples Burst(const std::string& text, int count, double interval_ms) {
  std::srand(11);
  return Rendered(support::FricSyn, text, count, interval_ms);
}

// 10 kHz: a half window of 50 samples, bursts of 250.
constexpr double Interval = 0.1;

TEST(FricSyn, DrawsOneNumberForEachSampleOfTheWindow) {
  EXPECT_EQ(Draws("100 1\n", 4000, Interval), 101U);
  EXPECT_EQ(Draws("100 0\n", 4000, Interval), 101U);
  EXPECT_EQ(Draws("100 1\n120 1\n120 1", 4000, Interval), 303U);
  EXPECT_EQ(Draws("100 1\n", 4000, 5.0), 3U);  // a half window of 1
}

TEST(FricSyn, DrawsNothingForBurstsThatAreNotPlaced) {
  EXPECT_EQ(Draws("", 4000, Interval), 0U);
  EXPECT_EQ(Draws("100\n", 4000, Interval), 0U);
  EXPECT_EQ(Draws("-1 1\n", 4000, Interval), 0U) << "before the block";
  EXPECT_EQ(Draws("4.9 1\n", 4000, Interval), 0U) << "too close to the block's start";
  EXPECT_EQ(Draws("297.6 1\n", 4000, Interval), 0U) << "not yet";
  EXPECT_EQ(Draws("100 1\n", 4000, 5.001), 0U) << "no half window";
  EXPECT_EQ(Draws("-1 1\n100 1\n4.9 1\n", 4000, Interval), 101U);
}

TEST(FricSyn, NeedsItsHalfWindowAfterTheBlocksStart) {
  EXPECT_EQ(Sounding(Burst("4.9 1\n", 4000, Interval)), Extent{});
  const Samples first = Burst("5.0 1\n", 4000, Interval);
  EXPECT_EQ(Sounding(first), (Extent{1, 250}));
  EXPECT_TRUE(
      support::SameBits(Slice(Burst("50 1\n", 4000, Interval), 450, 250), Slice(first, 0, 250)));
  // The distance to the block's start counts, not that to the signal's.
  std::srand(11);
  Voice source(support::FricSyn, "14.9 1\n15 1\n", Interval);
  EXPECT_TRUE(
      support::SameBits(Slice(source.Apply(Constant(4000), 100), 0, 250), Slice(first, 0, 250)));
}

TEST(FricSyn, LastsTwentyMillisecondsButNoMoreThan1024SamplesAfterItsStart) {
  struct Case {
    double interval_ms;
    int half, length;
  };
  for (const Case& each :
       {Case{5.0, 1, 5}, Case{2.6, 1, 8}, Case{2.5, 2, 10}, Case{1.0, 5, 25}, Case{0.1, 50, 250},
        Case{0.0625, 80, 400}, Case{0.02, 250, 1250}, Case{0.019, 263, 1287}, Case{0.01, 500, 1524},
        Case{0.005, 1000, 2024}, Case{0.004, 1250, 2274}, Case{0.001, 5000, 6024}}) {
    const double time_ms = 7000.5 * each.interval_ms;
    const Samples block = Burst(Line({time_ms, 1}), 9000, each.interval_ms);
    EXPECT_EQ(Sounding(block), (Extent{7000 - each.half + 1, 7000 - each.half + each.length}))
        << each.interval_ms;
    const auto window = static_cast<std::size_t>(std::min(2 * each.half + 1, each.length));
    EXPECT_EQ(Draws(Line({time_ms, 1}), 9000, each.interval_ms), window) << each.interval_ms;
  }
}

TEST(FricSyn, SkipsBurstsWithoutAHalfWindow) {
  for (const double interval_ms : {5.0000001, 10.0, 1e300}) {
    EXPECT_EQ(Sounding(Burst(Line({1000 * interval_ms, 1}), 4000, interval_ms)), Extent{});
    EXPECT_EQ(Draws("0 1\n", 4000, interval_ms), 0U);
  }
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(Sounding(Burst("0 1\n", 4000, infinity)), Extent{});
}

TEST(FricSyn, DropsBurstsWhoseHalfWindowIsBeyond7168HoweverLongTheBlock) {
  const auto event = [](double interval_ms) { return Line({9000.5 * interval_ms, 1}); };
  const double longest = 5.0 / 7168.5;
  EXPECT_EQ(Sounding(Burst(event(longest), 20000, longest)), (Extent{9000 - 7167, 9000 + 1024}));
  for (const double interval_ms : {5.0 / 7169.5, 5.0 / 8000.5, 1e-6, 1e-300}) {
    EXPECT_EQ(Sounding(Burst(event(interval_ms), 20000, interval_ms)), Extent{}) << interval_ms;
    EXPECT_EQ(Draws(event(interval_ms), 20000, interval_ms), 0U) << interval_ms;
  }
}

// Undoes the fixed filter: the noise before it, from a burst without a tract.
std::vector<double> Unshaped(const Samples& burst, double interval_ms) {
  const double r = std::exp(-0.1 * std::numbers::pi * interval_ms);
  const double a1 = -2.0 * r * std::cos(0.1 * std::numbers::pi * interval_ms);
  std::vector<double> noise;
  double sum = 0.0;
  for (std::size_t i = 0; i < burst.size(); ++i) {
    double difference = burst[i];
    if (i >= 1) difference += a1 * static_cast<double>(burst[i - 1]);
    if (i >= 2) difference += r * r * static_cast<double>(burst[i - 2]);
    noise.push_back(sum += difference);
  }
  return noise;
}

TEST(FricSyn, ShapesCentredNumbersUnderAHalfSine) {
  RandomNumbers numbers(11);
  const double amplitude = 0.25;
  const Samples block = Rendered(support::FricSyn, "100 0.25\n", 4000, Interval);
  const std::vector<double> noise = Unshaped(Slice(block, 950, 250), Interval);
  for (std::size_t i = 0; i < 250; ++i) {
    double expected = 0.0;
    if (i <= 100) {
      const double uniform = (numbers.Next() - 1073741823.5) / 2147483647.0;  // -1/2 to 1/2
      expected = amplitude * std::sqrt(12.0) * uniform *
                 std::sin(std::numbers::pi * static_cast<double>(i) / 100.0);
    }
    EXPECT_NEAR(noise[i], expected, 1e-5) << i;
  }
}

TEST(FricSyn, HasItsAmplitudeAsRootMeanSquareBeforeTheWindow) {
  const double amplitude = 3.0;
  const double interval_ms = 0.005;  // a window of 2001 samples
  std::string text;
  for (int burst = 0; burst < 10; ++burst) text += Line({20, amplitude});
  std::srand(11);
  Voice source(support::FricSyn, text, interval_ms);
  double squares = 0.0;
  double windows = 0.0;
  const Samples sum = source.Apply(Constant(6000));
  const std::vector<double> noise = Unshaped(Slice(sum, 3000, 2000), interval_ms);
  for (std::size_t i = 0; i < 2000; ++i) {
    const double window = std::sin(std::numbers::pi * static_cast<double>(i) / 2000.0);
    squares += noise[i] * noise[i];
    windows += 10.0 * window * window;  // ten bursts on top of each other
  }
  EXPECT_NEAR(std::sqrt(squares / windows) / amplitude, 1.0, 0.05);
}

TEST(FricSyn, ContinuesTheSequenceFromBurstToBurst) {
  RandomNumbers numbers(11);
  const Samples block = Rendered(support::FricSyn, "100 1\n200 1\n", 4000, Interval);
  for (const int start : {950, 1950}) {
    const std::vector<double> noise = Unshaped(Slice(block, start, 250), Interval);
    for (std::size_t i = 0; i <= 100; ++i) {
      const double uniform = (numbers.Next() - 1073741823.5) / 2147483647.0;
      const double window = std::sin(std::numbers::pi * static_cast<double>(i) / 100.0);
      EXPECT_NEAR(noise[i], std::sqrt(12.0) * uniform * window, 1e-4) << start << " + " << i;
    }
  }
}

TEST(FricSyn, FiltersTheWholeBurstByTheTractWithUnitGainAtZeroFrequency) {
  const Samples bare = Burst("100 1\n", 4000, Interval);
  const float pole = static_cast<float>(std::log2(0.1 / 1.9));  // at +0.9
  const Samples block = Burst(Line({100, 1}, {pole}), 4000, Interval);
  double state = 0.0;
  for (std::size_t i = 950; i < 1200; ++i) {
    state = static_cast<double>(bare[i]) + 0.9 * state;
    EXPECT_NEAR(block[i], 0.1 * state, 1e-5) << i;
  }
  EXPECT_EQ(Sounding(block), (Extent{951, 1200}));
}

TEST(FricSyn, AddsToTheSignal) {
  const Samples burst = Burst("100 1 0.5\n", 4000, Interval);
  const Samples signal = Noise(4000);
  std::srand(11);
  const Samples block = Voice(support::FricSyn, "100 1 0.5\n", Interval).Apply(signal);
  for (std::size_t i = 0; i < block.size(); ++i) EXPECT_EQ(block[i], signal[i] + burst[i]) << i;
}

TEST(FricSyn, PlacesTheLastLineLikeAnyOther) {
  const Samples alone = Burst("100 1 0.5\n", 4000, Interval);
  EXPECT_TRUE(support::SameBits(Burst("100 1 0.5\n390 1\n", 4000, Interval), alone));
  EXPECT_TRUE(support::SameBits(Burst("100 1 0.5\nx\n150 1", 4000, Interval), alone));
  EXPECT_TRUE(support::SameBits(Burst("100 1 0.5\n110\n150 1", 4000, Interval), alone));
  EXPECT_TRUE(support::SameBits(Burst("100 1 0.5\n\n150 1", 4000, Interval), alone));
}

TEST(FricSyn, GoesBackToEarlierInstantsOfTheBlock) {
  EXPECT_EQ(Draws("200 1\n100 1\n100 1\n150 1\n", 4000, Interval), 404U);
  EXPECT_EQ(Sounding(Burst("200 1\n100 1\n", 4000, Interval)), (Extent{951, 2200}));
}

TEST(FricSyn, KeepsToTheModelForSenselessNumbers) {
  for (const char* line :
       {"100 1e300 1", "100 1e-300 1", "100 -0 1", "100 1 2000", "100 1 -2000", "100 1 3e38 -3e38",
        "100 1 50 50 -50 50", "100 1e40", "100 1 -50 -50 -50 -50 -50 -50"}) {
    for (const double interval_ms : {4.9, 1.0, 0.1, 0.003}) {
      tracks::Twin<reference::FricSyn> twin(support::FricSyn);
      RandomNumbers numbers(3);
      twin.Reference().DrawFrom([&numbers] { return numbers.Next(); });
      twin.Supply({{".fla", line}});
      twin.Init(interval_ms);
      twin.Apply(Noise(40000), 40000, 0);
      EXPECT_EQ(std::rand(), numbers.Next()) << line << " at " << interval_ms;
    }
  }
}

// Numbers at which another order of the same operations, or a constant next to the right one, gives
// other bits.
TEST(FricSyn, MultipliesFromLeftToRight) {
  struct Case {
    unsigned seed;
    double interval_ms;
    double amplitude;
  };
  for (const Case& each :
       {Case{1, 1.0, 6.6434982236181055}, Case{814585, 5.0 / 250.5, 1.0}, Case{1, 5.0, 1.0},
        Case{2, 5.0 / 13, 1.0}, Case{3, 5.0 / 29, 1.0}, Case{4, 5.0 / 49, 1.0},
        Case{5, 3.1639081841156811, 1.0}, Case{6, 2.8694499465597381, 1.0},
        Case{7, 4.2583781578199265, 1.0}, Case{8, 1.7190999288061626, 1.0}}) {
    tracks::Twin<reference::FricSyn> twin(support::FricSyn);
    RandomNumbers numbers(each.seed);
    twin.Reference().DrawFrom([&numbers] { return numbers.Next(); });
    twin.Supply({{".fla", Line({1000.5 * each.interval_ms, each.amplitude})}});
    twin.Init(each.interval_ms);
    twin.Apply(Constant(4000), 4000, 0);
    EXPECT_EQ(std::rand(), numbers.Next());
  }
}

}  // namespace
}  // namespace voice
