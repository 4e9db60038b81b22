#include "reference/glot_syn.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "tracks/twin.h"
#include "voice/voice.h"

// The glottal source: the growing resonance, the ringing after the instant, the periods.
namespace voice {
namespace {

using support::Constant;
using support::Noise;
using support::Slice;

Samples Glottal(const std::string& text, int count) {
  return Rendered(support::GlotSyn, text, count);
}

// AR(1) with its pole at +0.9: rings with 0.9^n and has a gain of 0.1.
const float Decay = static_cast<float>(std::log2(0.1 / 1.9));

TEST(GlotSyn, GrowsTowardTheInstantAsADampedSineRunBackwards) {
  const double amplitude = 0.7;
  const double frequency = 0.02;  // of the sampling rate
  const double bandwidth = 0.004;
  const Samples block = Glottal(Line({1000, amplitude, frequency, bandwidth}), 4000);
  const double r = std::exp(-std::numbers::pi * bandwidth);
  const double a1 = -2.0 * std::cos(2.0 * std::numbers::pi * frequency) * r;
  const double r2 = r * r;
  std::vector<double> back{-amplitude / a1, amplitude, amplitude * (1.0 / a1 - a1 + r2 / a1)};
  while (back.size() <= 512) {
    back.push_back(-a1 * back[back.size() - 1] - r2 * back[back.size() - 2]);
  }
  for (std::size_t n = 0; n <= 512; ++n) {
    EXPECT_NEAR(block[1000 - n], back[n], 2e-4) << n << " before the instant";
  }
  EXPECT_EQ(Sounding(block), (Extent{488, 1001}));
}

// The starting value is not what the recursion alone would give, and rests on all three terms.
TEST(GlotSyn, StartsFromThreeValuesOfItsOwn) {
  // A quarter more than half the sampling rate a third of a turn: a1 = r, exactly 1 without
  // bandwidth.
  const double frequency = 1.0 / 3.0;
  const Samples block = Glottal(Line({1000, 1, frequency, 0}), 4000);
  EXPECT_NEAR(block[1000], -1.0, 1e-6);
  EXPECT_NEAR(block[999], 1.0, 1e-6);
  EXPECT_NEAR(block[998], 1.0, 1e-6);  // 1 - 1 + 1
  EXPECT_NEAR(block[997], -2.0, 1e-6);
  EXPECT_NEAR(block[996], 1.0, 1e-6);
  EXPECT_NEAR(block[995], 1.0, 1e-6);
}

TEST(GlotSyn, EndsAtTheInstantWithoutATract) {
  const Samples signal = Noise(4000);
  const Samples block = Voice(support::GlotSyn, "1000 1 0.1 0.01\n").Apply(signal);
  EXPECT_TRUE(support::SameBits(Slice(block, 1001, 2999), Slice(signal, 1001, 2999)));
  EXPECT_TRUE(support::SameBits(Slice(block, 0, 488), Slice(signal, 0, 488)));
  EXPECT_NE(block[1000], signal[1000]);
}

TEST(GlotSyn, AddsToTheSignal) {
  const Samples pulse = Glottal("1000 1 0.1 0.01 0.5\n", 4000);
  const Samples signal = Noise(4000);
  const Samples block = Voice(support::GlotSyn, "1000 1 0.1 0.01 0.5\n").Apply(signal);
  for (std::size_t i = 0; i < block.size(); ++i) EXPECT_EQ(block[i], signal[i] + pulse[i]) << i;
}

// Without bandwidth a resonance does not fade, so the first sample of the rising part is seen.
TEST(GlotSyn, RisesForTwoPeriodsFromTheBlocksStartOnAndFor512SamplesAtMost) {
  struct Case {
    int position, period, rise;
  };
  for (const Case& each :
       {Case{2000, 1000, 512}, Case{512, 1000, 512}, Case{511, 1000, 511}, Case{100, 1000, 100},
        Case{2, 1000, 2}, Case{1, 1000, 1}, Case{0, 1000, 0}, Case{2000, 256, 512},
        Case{2000, 255, 510}, Case{2000, 3, 6}, Case{2000, 1, 2}, Case{30, 16, 30},
        Case{30, 15, 30}, Case{30, 14, 28}, Case{1, 1, 1}, Case{0, 1, 0}}) {
    const Samples block = Glottal(Line({static_cast<double>(each.position), 1, 0.0371, 0}) +
                                      Line({static_cast<double>(each.position + each.period)}),
                                  5000);
    EXPECT_EQ(Sounding(block), (Extent{each.position - each.rise, each.position + 1}))
        << each.position << " for " << each.period;
  }
}

TEST(GlotSyn, LeavesOutTheStartingValuesBeforeTheBlock) {
  const Samples far = Glottal("600 1 0.0371 0 \n", 3000);
  const Samples first = Glottal("0 1 0.0371 0 \n", 3000);
  const Samples second = Glottal("1 1 0.0371 0 \n", 3000);
  const Samples third = Glottal("2 1 0.0371 0 \n", 3000);
  EXPECT_EQ(first[0], far[600]);
  EXPECT_EQ(second[1], far[600]);
  EXPECT_EQ(second[0], far[599]);
  EXPECT_EQ(third[2], far[600]);
  EXPECT_EQ(third[1], far[599]);
  EXPECT_EQ(third[0], far[598]);
}

TEST(GlotSyn, RingsFromTheVeryFirstSample) {
  const Samples block = Glottal(Line({0, -2, 0.5, 0}, {Decay}), 3000);
  EXPECT_EQ(Sounding(block).first, 0);
  for (std::size_t n = 1; n < 50; ++n) EXPECT_NEAR(block[n] / block[n - 1], 0.9, 1e-5) << n;
}

// The tract filters what rises as well: from rest, at the rising part's first sample.
TEST(GlotSyn, FiltersTheRisingPartFromRest) {
  const Samples bare = Glottal("700 1 0.0371 0.002\n", 4000);
  const Samples block = Glottal(Line({700, 1, 0.0371, 0.002}, {Decay}), 4000);
  double state = 0.0;
  for (std::size_t i = 188; i <= 700; ++i) {
    state = static_cast<double>(bare[i]) + 0.9 * state;
    EXPECT_NEAR(block[i], 0.1 * state, 2e-5) << i;
  }
}

TEST(GlotSyn, RingsForOneAndAHalfPeriods) {
  struct Case {
    int period, ringing;
  };
  // Up to 1023 samples after the instant; the first of them counts as 0.
  for (const Case& each : {Case{100, 150}, Case{101, 152}, Case{1, 2}, Case{2, 3}, Case{3, 5},
                           Case{681, 1022}, Case{682, 1023}, Case{683, 1023}, Case{3000, 1023}}) {
    // Loud enough to be heard to the end, although the bandwidth gets wider and wider on the way.
    const Samples block = Glottal(
        Line({1000, 1e30, 0.0371, 0}, {-14.0F}) + Line({static_cast<double>(1000 + each.period)}),
        6000);
    EXPECT_EQ(Sounding(block).end, 1001 + each.ringing) << each.period;
  }
}

// What the ringing of a pulse at sample 0 loses from sample to sample, as the coefficient in use.
std::vector<double> Coefficients(const Samples& block, std::size_t count) {
  std::vector<double> coefficients{0.0};
  for (std::size_t k = 1; k < count; ++k) {
    coefficients.push_back(static_cast<double>(block[k]) / static_cast<double>(block[k - 1]));
  }
  return coefficients;
}

TEST(GlotSyn, WidensTheBandwidthsBetweenSixAndEightTenthsOfThePeriod) {
  for (const int period : {100, 103, 205, 7, 5}) {
    const Samples block =
        Glottal(Line({0, -2, 0.5, 0}, {Decay}) + Line({static_cast<double>(period)}), 3000);
    const auto ringing = static_cast<std::size_t>(std::ceil(1.5 * period));
    const std::vector<double> seen = Coefficients(block, ringing + 1);
    double expected = 0.9;
    for (std::size_t k = 1; k <= ringing; ++k) {
      const auto e = static_cast<double>(k - 1);
      if (e > 0.6 * period && e <= 0.8 * period) expected *= 0.9985;
      EXPECT_NEAR(seen[k], expected, 2e-5) << k << " of " << period;
    }
  }
}

// Each step widens the coefficients by 0.9985, 0.9985^2, 0.9985^3..., and the steps compound.
TEST(GlotSyn, WidensEachCoefficientByItsPower) {
  // One coefficient at lag 3: an echo every three samples.
  const float echo = static_cast<float>(std::log2(1.9 / 0.1));  // k = 0.9
  const Samples block = Glottal(Line({0, -2, 0.5, 0}, {0.0F, 0.0F, echo}) + Line({300}), 3000);
  double expected = block[0];
  double coefficient = 0.9;
  for (int k = 1; k <= 450; ++k) {
    const double e = k - 1;
    if (e > 0.6 * 300 && e <= 0.8 * 300) coefficient *= std::pow(0.9985, 3);
    if (k % 3 == 0) expected *= -coefficient;
    const double here = block[static_cast<std::size_t>(k)];
    if (k % 3 != 0) {
      EXPECT_EQ(here, 0.0) << k;
    } else {
      EXPECT_NEAR(here / expected, 1.0, 1e-4) << k;
    }
  }
}

TEST(GlotSyn, KeepsTheStoredCoefficientsForTheGain) {
  // The same first samples, whether or not the window widens them later.
  const Samples narrow = Glottal(Line({0, -2, 0.5, 0}, {Decay}) + Line({20}), 3000);
  const Samples wide = Glottal(Line({0, -2, 0.5, 0}, {Decay}), 3000);
  EXPECT_TRUE(support::SameBits(Slice(narrow, 0, 14), Slice(wide, 0, 14)));
}

TEST(GlotSyn, GivesTheLastPulseThePeriodToTheBlocksEnd) {
  const std::string last = Line({100, -2, 0.5, 0}, {Decay});
  for (const int count : {1125, 1200, 1500, 1800, 3000}) {
    const Samples expected = Glottal(last + Line({static_cast<double>(count)}), 5000);
    EXPECT_TRUE(support::SameBits(Glottal(last, count), Slice(expected, 0, count))) << count;
  }
  EXPECT_NE(Slice(Glottal(last, 1200), 0, 1125), Slice(Glottal(last, 3000), 0, 1125));
  // The block's end counts, wherever it lies in the signal.
  const std::string there = Line({200, -2, 0.5, 0}, {Decay});
  EXPECT_TRUE(support::SameBits(Voice(support::GlotSyn, last).Apply(Constant(1300), -100),
                                Slice(Glottal(there + Line({1300}), 5000), 0, 1300)));
}

TEST(GlotSyn, SkipsPulsesWhosePeriodIsNotPositive) {
  const auto pulse = [](double time_ms) { return Line({time_ms, 1, 0.0371, 0}); };
  // 900 comes after 1500, and 1500 twice: only the second 1500 and 900 have a period.
  const Samples block =
      Glottal(pulse(1500) + pulse(900) + pulse(1500) + pulse(1500) + Line({1600}), 5000);
  Samples expected = Glottal(pulse(900) + Line({1500}), 5000);
  const Samples other = Glottal(pulse(1500) + Line({1600}), 5000);
  for (std::size_t i = 0; i < expected.size(); ++i) expected[i] += other[i];
  EXPECT_TRUE(support::SameBits(block, expected));
}

TEST(GlotSyn, TakesAPeriodBeyond32BitsAsItIs) {
  const std::string pulse = Line({1500, 1, 0.0371, 0}, {Decay});
  const Samples expected = Glottal(pulse + Line({4000}), 5000);
  EXPECT_TRUE(support::SameBits(Glottal(pulse + Line({1e300}), 5000), expected));
  EXPECT_TRUE(support::SameBits(Glottal(pulse + Line({1500.0 + 1073741824.0}), 5000), expected));
  EXPECT_EQ(Sounding(Glottal(pulse + Line({-1e300}), 5000)), Extent{});
}

TEST(GlotSyn, AddsOverlappingPulsesOneByOne) {
  const auto pulse = [](double time_ms) { return Line({time_ms, 1, 0.0371, 0.001}, {Decay}); };
  const Samples block = Glottal(pulse(1500) + pulse(1600) + Line({1700}), 5000);
  Samples expected = Glottal(pulse(1500) + Line({1600}), 5000);
  const Samples other = Glottal(pulse(1600) + Line({1700}), 5000);
  for (std::size_t i = 0; i < expected.size(); ++i) expected[i] += other[i];
  EXPECT_TRUE(support::SameBits(block, expected));
}

TEST(GlotSyn, EndsWithoutThePulseWhoseResonanceIsMissing) {
  const std::string pulse = Line({600, 1, 0.0371, 0});
  const Samples expected = Glottal(pulse + "700", 4000);
  for (const char* line : {"700 1\n", "700 1 0.1\n", "700 1 x 0.1\n", "700 1 0.1 x\n"}) {
    EXPECT_TRUE(support::SameBits(Glottal(pulse + line + pulse, 4000), expected)) << line;
  }
}

}  // namespace
}  // namespace voice
