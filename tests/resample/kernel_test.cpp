#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "resample/settings.h"
#include "support/guarded_buffer.h"

namespace {

using support::Dice;
using support::Samples;

// The kernel as slot 15 designs it: into room for `room` coefficients and no more.
Samples DesignedBy(support::Filter& filter, std::size_t room) {
  support::GuardedBuffer buffer(static_cast<int>(room));
  int count = -1;
  filter.Call<ResampleCalcCoef>(15, buffer.data(), &count);
  EXPECT_EQ(count, static_cast<int>(room));
  buffer.CheckAfter(count);
  return buffer.First(count);
}

// For one list after another on the same filter, none of which needs a source.
void CompareDesigns(Dice& dice, std::vector<double> (*parameters)(Dice&), int rounds) {
  support::Filter filter = support::MakeFilter(support::Resample);
  reference::ResamplerSettings settings;
  for (int round = 0; round < rounds && !testing::Test::HasFailure(); ++round) {
    const std::vector<double> p = parameters(dice);
    filter.Set_param_list(p);
    settings.Set(p);
    const Samples expected = reference::BlackmanKernel(settings);
    EXPECT_TRUE(support::SameBitsOrNaN(DesignedBy(filter, expected.size()), expected))
        << "round " << round << ": L " << settings.upFactor << ", M " << settings.downFactor
        << ", margin " << settings.histLen << ", cutoff " << settings.cutoff << ", shift "
        << settings.shift << ", widen " << settings.widen;
  }
}

TEST(ResamplerKernel, EqualsTheDesignForAnyParameters) {
  Dice dice(1);
  CompareDesigns(dice, resample::NearParameters, 500);
}

TEST(ResamplerKernel, EqualsTheDesignForOddParameters) {
  Dice dice(2);
  CompareDesigns(dice, resample::FarParameters, 500);
}

TEST(ResamplerKernel, IsASingleOneBeforeAnyParameters) {
  support::Filter filter = support::MakeFilter(support::Resample);
  EXPECT_EQ(DesignedBy(filter, 1), Samples{1.0F});
}

TEST(ResamplerKernel, HasAHundredAndTwentyOneTapsForEqualFactors) {
  support::Filter filter = support::MakeFilter(support::Resample);
  filter.Set_param_list({1.0, 1.0});
  const Samples taps = DesignedBy(filter, 121);
  for (int i = 0; i < 121; ++i) {
    const double t = std::acos(-1.0) * (i - 60);
    const double fc = 1.0 + 0.52 / 60.0;
    const double sinc = i == 60 ? fc : std::sin(fc * t) / t;
    const double angle = std::acos(-1.0) * i / 60.0;
    const double blackman = 0.42 - 0.5 * std::cos(angle) + 0.08 * std::cos(2.0 * angle);
    EXPECT_NEAR(taps[static_cast<std::size_t>(i)], sinc * blackman, 1e-7) << "tap " << i;
  }
}

TEST(ResamplerKernel, IsSymmetricWithoutASingularity) {
  support::Filter filter = support::MakeFilter(support::Resample);
  filter.Set_param_list({3.0, 4.0, 0.0, 0.0, 0.25, 200.0});
  const Samples taps = DesignedBy(filter, 401);
  for (std::size_t i = 0; i < taps.size(); ++i) {
    EXPECT_NEAR(taps[i], taps[taps.size() - 1 - i], 1e-6F) << "tap " << i;
    EXPECT_TRUE(std::isfinite(taps[i]));
  }
}

TEST(ResamplerKernel, HasAtMost4097Coefficients) {
  support::Filter filter = support::MakeFilter(support::Resample);
  for (const double half : {2048.0, 2049.0, 1e300, HUGE_VAL}) {
    filter.Set_param_list({1.0, 1.0, 0.0, 0.0, 0.0, half});
    DesignedBy(filter, 4097);
    filter.Set_param_list({1.0, 3.0, 0.0, 0.0, 0.0, half});
    DesignedBy(filter, 2 * (2048 / 3) * 3 + 1);
  }
}

TEST(ResamplerKernel, HasOneCoefficientWhereTheHalfLengthIsBelowL) {
  support::Filter filter = support::MakeFilter(support::Resample);
  for (const double half : {0.0, -0.5, -1.0, -2.9, -1e300, std::nan(""), 6.9}) {
    filter.Set_param_list({1.0, 7.0, 0.0, 0.0, 0.0, half});
    EXPECT_EQ(DesignedBy(filter, 1), Samples{1.0F}) << half;
  }
  filter.Set_param_list({1.0, 7.0, 0.0, 0.0, 0.0, 7.0});
  DesignedBy(filter, 15);
}

// No list at all, and counts that lead nowhere, still go through the whole of it.
TEST(ResamplerKernel, AnEmptyListSetsMarginsAndCutoff) {
  for (const int count : {0, -1, std::numeric_limits<int>::min()}) {
    support::Filter filter = support::MakeFilter(support::Resample);
    filter.Slots().Set_param_list(filter.Object(), nullptr, count);
    reference::ResamplerSettings settings;
    settings.Set({});
    EXPECT_TRUE(support::SameBits(DesignedBy(filter, 121), reference::BlackmanKernel(settings)));
  }
}

TEST(ResamplerKernel, ALaterListTakesTheCutoffAndTheHalfLengthBack) {
  support::Filter filter = support::MakeFilter(support::Resample);
  filter.Set_param_list({2.0, 3.0, 0.0, 0.0, 0.125, 300.0, 0.1, 0.7});
  DesignedBy(filter, 601);
  filter.Set_param_list({});
  reference::ResamplerSettings settings;
  settings.upFactor = 3;
  settings.downFactor = 2;
  settings.histLen = settings.aheadLen = 20;
  settings.cutoff = 1.0 / 3.0;
  settings.shift = 0.125;
  settings.widen = 0.7;
  EXPECT_TRUE(support::SameBits(DesignedBy(filter, 121), reference::BlackmanKernel(settings)));
}

TEST(ResamplerKernel, ValuesBeyondTheEighthAreIgnored) {
  support::Filter filter = support::MakeFilter(support::Resample);
  filter.Set_param_list({1.0, 1.0, 0.0, 0.0, 0.0, 1.0, 1.0, 0.5, 9.0, 9.0, 9.0});
  DesignedBy(filter, 3);
}

TEST(ResamplerKernel, TakesTheCutoffFromTheLargerFactor) {
  support::Filter filter = support::MakeFilter(support::Resample);
  struct Case {
    double down, up, cutoff;
  };
  for (const Case& c : {Case{5, 2, 0.2}, Case{2, 5, 0.2}, Case{3, 3, 1.0 / 3.0}, Case{1, 1, 1.0}}) {
    filter.Set_param_list({c.down, c.up, 0.0, 0.0, 0.0, 60.0});
    const auto margin = 60 / static_cast<int>(c.up);
    const auto room = static_cast<std::size_t>(2 * margin * static_cast<int>(c.up) + 1);
    const Samples taps = DesignedBy(filter, room);
    const double half = margin * c.up;
    EXPECT_NEAR(taps[room / 2], (0.52 / half + c.cutoff) * c.up, 1e-6);
  }
}

}  // namespace
