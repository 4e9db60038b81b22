#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "resample/settings.h"
#include "support/guarded_buffer.h"

namespace {

using support::CallLog;
using support::Description;
using support::Filter;
using support::Samples;
using support::SourceMock;
using support::operator+;

constexpr int Highest = std::numeric_limits<int>::max();
constexpr int Lowest = std::numeric_limits<int>::min();

Samples Resampled(const std::vector<double>& p, const Samples& signal,
                  const std::vector<int>& pulls = {1000}) {
  CallLog log;
  SourceMock source("source", log, signal);
  Filter filter = support::MakeFilter(support::Resample);
  filter.Set_param_list(p);
  filter.Set_src_list(source);
  return filter.PullAll(pulls);
}

Samples Sine(int count, double period, double start = 0.0) {
  Samples samples;
  for (int i = 0; i < count; ++i) {
    samples.push_back(static_cast<float>(std::sin(2.0 * std::acos(-1.0) * (i + start) / period)));
  }
  return samples;
}

TEST(ResamplerStream, IsAnIdentityWithoutParameters) {
  CallLog log;
  const Samples signal = support::Noise(20000);
  SourceMock source("source", log, signal);
  Filter filter = support::MakeFilter(support::Resample);
  EXPECT_TRUE(filter.EndOfSrc());
  filter.Set_src_list(source);
  EXPECT_FALSE(filter.EndOfSrc());
  EXPECT_TRUE(support::SameBits(filter.PullAll({9000, 1, 30000}), signal));
}

TEST(ResamplerStream, IsNearlyAnIdentityWithoutDelayForEqualFactors) {
  const Samples signal = Sine(400, 9.0);
  const Samples out = Resampled({1.0, 1.0}, signal);
  ASSERT_EQ(out.size(), signal.size());
  for (std::size_t i = 60; i < 340; ++i) EXPECT_NEAR(out[i], signal[i], 1e-3) << i;
}

TEST(ResamplerStream, DoublesLengthAndHalvesIntervalForLOfTwo) {
  const Description output = resample::Described({1.0, 2.0}, 401, 0.1);
  EXPECT_EQ(output.length, 802);
  EXPECT_EQ(output.interval_ms, 1.0 * 0.1 / 2.0);
  const Samples out = Resampled({1.0, 2.0}, Sine(401, 9.0));
  ASSERT_EQ(out.size(), 802U);
  const Samples between = Sine(802, 18.0);
  for (std::size_t i = 60; i < 740; ++i) EXPECT_NEAR(out[i], between[i], 1e-3) << i;
}

TEST(ResamplerStream, HalvesLengthAndDoublesIntervalForMOfTwo) {
  const Description output = resample::Described({2.0, 1.0}, 401, 0.1);
  EXPECT_EQ(output.length, 200);
  EXPECT_EQ(output.interval_ms, 2.0 * 0.1 / 1.0);
  const Samples out = Resampled({2.0, 1.0}, Sine(401, 18.0));
  ASSERT_EQ(out.size(), 201U);  // one more than announced: 401 is odd
  const Samples everySecond = Sine(201, 9.0);
  for (std::size_t i = 30; i < 170; ++i) EXPECT_NEAR(out[i], everySecond[i], 1e-3) << i;
}

TEST(ResamplerStream, FillsZerosInWhereLIsAboveTheHalfLength) {
  const Samples signal = support::Noise(300);
  const Samples out = Resampled({1.0, 61.0}, signal);
  ASSERT_EQ(out.size(), 300U * 61U);
  for (std::size_t i = 0; i < out.size(); ++i) {
    ASSERT_EQ(out[i], i % 61 == 0 ? signal[i / 61] : 0.0F) << i;
    ASSERT_FALSE(i % 61 != 0 && std::signbit(out[i])) << i;
  }
}

TEST(ResamplerStream, DeliversAtMostOneSampleMoreThanAnnounced) {
  for (int up = 1; up <= 9; ++up) {
    for (int down = 1; down <= 9; ++down) {
      for (int length = 0; length <= 25; ++length) {
        const std::vector<double> p{static_cast<double>(down), static_cast<double>(up)};
        const int announced = resample::Described(p, length, 1.0).length;
        const auto delivered = Resampled(p, support::Constant(length, 1.0F), {7, 100}).size();
        ASSERT_EQ(announced, length * up / down);
        ASSERT_EQ(delivered, static_cast<std::size_t>((length * up + down - 1) / down))
            << length << " samples, L " << up << ", M " << down;
      }
    }
  }
}

TEST(ResamplerStream, PhaseStartSkipsHighRateSteps) {
  const Samples signal = support::Noise(200);
  const Samples all = Resampled({1.0, 4.0}, signal);
  for (int skip = 0; skip < 4; ++skip) {
    const Samples out = Resampled({1.0, 4.0, 0.0, static_cast<double>(skip)}, signal);
    EXPECT_TRUE(support::SameBits(out, support::Slice(all, skip, 800 - skip)));
  }
  // Beyond L the first step has no coefficient, and is the only one of its sample.
  const Samples out = Resampled({1.0, 4.0, 0.0, 1e9}, signal);
  EXPECT_TRUE(support::SameBits(out, Samples{0.0F} + support::Slice(all, 4, 796)));
}

TEST(ResamplerStream, NegativePhaseStartReducesTheFirstCoefficientIndexByL) {
  // L = 3 and a kernel of 7 coefficients over two samples of the past, the current, two to come.
  const Samples signal = support::Noise(50);
  const std::vector<double> p{1.0, 3.0, 0.0, -2.0, 0.0, 3.0};
  reference::ResamplerSettings settings;
  settings.Set(p);
  const Samples c = reference::BlackmanKernel(settings);
  ASSERT_EQ(c.size(), 7U);
  const Samples out = Resampled(p, signal);
  const Samples plain = Resampled({1.0, 3.0, 0.0, 0.0, 0.0, 3.0}, signal);
  // Phases -2 and -1: indices 6 + 2 - 3 and 6 + 1 - 3, newest sample 1.
  const auto sum = [](float a, float b) {
    return static_cast<float>(static_cast<double>(a) + static_cast<double>(b));
  };
  EXPECT_EQ(out[0], sum(signal[1] * c[5], signal[0] * c[2]));
  EXPECT_EQ(out[1], sum(signal[1] * c[4], signal[0] * c[1]));
  EXPECT_TRUE(support::SameBits(support::Slice(out, 2, 150), plain));
  EXPECT_EQ(out.size(), 152U);
}

TEST(ResamplerStream, DownStartMovesTheOutputs) {
  const Samples signal = support::Ramp(100, 0.0F);
  const auto first = [&](double downStart) {
    return Resampled({5.0, 1.0, downStart, 0.0, 0.0, 0.0}, signal).at(0);
  };
  EXPECT_EQ(first(0.0), 0.0F);
  EXPECT_EQ(first(1.0), 4.0F);
  EXPECT_EQ(first(4.0), 1.0F);
  EXPECT_EQ(first(5.0), 1.0F);  // at M and beyond the count goes back to 0 at once
  EXPECT_EQ(first(1e300), 1.0F);
  EXPECT_EQ(first(-1.0), 1.0F);
  EXPECT_EQ(first(-37.9), 37.0F);
  EXPECT_EQ(first(std::nan("")), 0.0F);
  EXPECT_EQ(Resampled({5.0, 1.0, -1e300, 0.0, 0.0, 0.0}, signal).size(), 0U);
}

TEST(ResamplerStream, CostsWhatItReadsAndWritesWhateverTheFactors) {
  const Samples signal = support::Noise(5000);
  const double largest = Highest;
  for (const double up : {1.0, 2.0, 1000003.0, largest - 1.0, largest, 1e300}) {
    for (const double down : {1.0, 3.0, 1000003.0, largest - 1.0, largest, HUGE_VAL}) {
      CallLog log;
      SourceMock source("source", log, signal);
      Filter filter = support::MakeFilter(support::Resample);
      filter.Set_param_list({down, up, 0.0, 0.0, 0.0, 0.0});
      filter.Set_src_list(source);
      // Output n stands at step M n: at phase M n mod L of sample M n / L.
      const auto step = static_cast<std::int64_t>(std::min(down, largest));
      const auto period = static_cast<std::int64_t>(std::min(up, largest));
      Samples out;
      while (out.size() < 3000 && !filter.EndOfSrc()) out = out + filter.Pull(1000);
      std::int64_t n = 0;
      for (const float sample : out) {
        const auto at = static_cast<std::size_t>(step * n / period);
        ASSERT_EQ(sample, step * n++ % period == 0 ? signal[at] : 0.0F);
      }
      if (filter.EndOfSrc()) {
        ASSERT_EQ(n, (5000 * period + step - 1) / step);
      }
    }
  }
}

TEST(ResamplerStream, AnswersPullsOfAnySizeWithoutWritingMoreThanItMakes) {
  for (const int n : {Highest, Highest - 1, 1 << 30}) {
    CallLog log;
    SourceMock source("source", log, support::Noise(10000));
    Filter filter = support::MakeFilter(support::Resample);
    filter.Set_param_list({3.0, 1.0, 0.0, 0.0, 0.0, 10.0});
    filter.Set_src_list(source);
    support::GuardedBuffer buffer(8192);
    int produced = -1;
    filter.Slots().TransmitNow(filter.Object(), buffer.data(), n, &produced);
    EXPECT_EQ(produced, (8192 - 20 + 2) / 3);
    buffer.CheckAfter(produced);
  }
  resample::Pair pair;
  pair.Set_param_list({3.0, 2.0});
  pair.Attach(support::Noise(100));
  for (const int n : {0, -1, -2, Lowest, Lowest + 1, 5}) pair.Pull(n);
}

}  // namespace
