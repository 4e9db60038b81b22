// The convolution through its slot, bit for bit against a plain loop.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "reference/fir.h"
#include "support/filter.h"
#include "support/guarded_buffer.h"

namespace {

using namespace support;

Samples design;  // what the exchanged CalcCoef hands the filter

// A filter of a given odd number of taps.
Filter WithTaps(const Samples& taps) {
  design = taps;
  Filter filter = MakeFilter(FIRFilter);
  filter.Exchange(
      16, +[](void*, float* coef, int, double) { std::copy(design.begin(), design.end(), coef); });
  filter.Set_param_list({static_cast<double>(taps.size() / 2)});
  filter.Init(0.1);
  return filter;
}

// Applies the filter to `in`, which holds the margins, too; nothing beyond the outputs may be
// written.
Samples Apply(Filter& filter, Samples in, int count) {
  GuardedBuffer out(count);
  filter.Call<BlockApply>(15, in.data(), out.data(), count);
  out.CheckAfter(count);
  return out.First(count);
}

// Values of very different sizes: every other order of additions shows in the bits.
Samples Rough(int count, std::uint32_t seed) {
  Samples samples = Noise(count, seed);
  const Samples exponents = Noise(count, seed + 1000);
  for (std::size_t i = 0; i < samples.size(); ++i) {
    samples[i] = std::ldexp(samples[i], static_cast<int>(exponents[i] * 12.0F));
  }
  return samples;
}

TEST(FirApply, AddsUpFoursInTheGivenOrderForAnyTapsAndCount) {
  for (int half = 0; half < 12; ++half) {
    const int taps = 2 * half + 1;
    Filter filter = WithTaps(Rough(taps, static_cast<std::uint32_t>(taps)));
    for (int count = 0; count < 40; ++count) {
      const Samples in = Rough(count + taps - 1, static_cast<std::uint32_t>(7 * count + 1));
      EXPECT_TRUE(SameBits(Apply(filter, in, count), reference::Convolve(in.data(), design, count)))
          << taps << " taps, " << count << " outputs";
    }
  }
}

TEST(FirApply, AddsUpFoursInTheGivenOrderForLongFilters) {
  for (const int taps : {31, 65, 129, 511, 1001, 4095, 4097}) {
    Filter filter = WithTaps(Rough(taps, static_cast<std::uint32_t>(taps)));
    for (const int count : {1, 3, 16, 100}) {
      const Samples in = Rough(count + taps - 1, static_cast<std::uint32_t>(count));
      EXPECT_TRUE(SameBits(Apply(filter, in, count), reference::Convolve(in.data(), design, count)))
          << taps << " taps, " << count << " outputs";
    }
  }
}

TEST(FirApply, GroupsOfFourAreNotAPlainSum) {
  // Floats around 1e8 are 8 apart: a 3 is lost where it meets the large product on its own, three
  // of them are not where they meet each other first.
  Filter filter = WithTaps({1.0F, 1.0F, 1.0F, 1.0F, 1.0F, 1.0F, 1.0F, 1.0F, 1.0F});
  const float big = 1e8F;
  EXPECT_TRUE(SameBits(Apply(filter, {big, 1, 1, 1, 0, 0, 0, 0, 0}, 1), {big}));
  EXPECT_TRUE(SameBits(Apply(filter, {big, 0, 0, 0, 3, 3, 3, 0, 0}, 1), {100000008.0F}));
  EXPECT_TRUE(SameBits(Apply(filter, {0, 0, 0, 0, big, 3, 3, 3, 3}, 1), {big}));
}

TEST(FirApply, StartsItsSumAtPlusZero) {
  Filter filter = WithTaps({1.0F, 1.0F, 1.0F});
  EXPECT_TRUE(SameBits(Apply(filter, Constant(12, -0.0F), 10), Constant(10, 0.0F)));
  Filter longer = WithTaps(Constant(9, -1.0F));
  EXPECT_TRUE(SameBits(Apply(longer, Constant(18, 0.0F), 10), Constant(10, 0.0F)));
}

TEST(FirApply, TakesInputsThatAreNotFiniteOrTiny) {
  const float inf = std::numeric_limits<float>::infinity();
  const float nan = std::numeric_limits<float>::quiet_NaN();
  Samples in = Rough(200, 5);
  for (std::size_t i = 0; i < in.size(); i += 13) {
    const float odd[] = {inf, -inf, nan, 1e-45F, -1e-40F, 3.4e38F, -3.4e38F, -0.0F};
    in[i] = odd[i / 13 % 8];
  }
  for (const int taps : {1, 3, 5, 9, 11}) {
    Filter filter = WithTaps(Rough(taps, 3));
    EXPECT_TRUE(SameBitsOrNaN(Apply(filter, in, 201 - taps),
                              reference::Convolve(in.data(), design, 201 - taps)));
  }
}

TEST(FirApply, WritesNothingForNoOutputs) {
  Filter filter = WithTaps(Constant(5, 1.0F));
  for (const int count : {0, -1, -4096, -2147483647 - 1}) {
    Apply(filter, Constant(5), count);
  }
}

TEST(FirApply, IsTheSameForTheNotch) {
  CallLog log;
  SourceMock source("source", log, Noise(1));
  Filter filter = MakeFilter(FIRNotch);
  filter.Set_param_list({10.0, 1800.0, 0.3});
  filter.Set_src_list(source);
  const Samples in = Rough(120, 9);
  const Samples coef = reference::Notch(21, 1800.0, 0.3, 0.1 * 0.001);
  EXPECT_TRUE(SameBits(Apply(filter, in, 100), reference::Convolve(in.data(), coef, 100)));
}

}  // namespace
