#include <gtest/gtest.h>

#include <cmath>

#include "pairs/twin.h"

namespace {

using pairs::EchoCanceller;
using support::Samples;

Samples Cancelled(const std::vector<double>& p, const Samples& one, const Samples& two, int pull) {
  EchoCanceller twin;
  twin.Set_param_list(p);
  twin.Attach({&twin.NewSource(one), &twin.NewSource(two)});
  Samples all;
  while (all.size() < one.size()) {
    const Samples block = twin.Pull(pull);
    all.insert(all.end(), block.begin(), block.end());
  }
  all.resize(one.size());
  return all;
}

TEST(EchoCanceller, LeavesNothingOfIdenticalSources) {
  const Samples signal = support::Noise(9000);
  for (const double span : {0.0, 1.0, 700.0, 2048.0}) {
    EXPECT_TRUE(
        support::SameBits(Cancelled({span}, signal, signal, 1000), support::Constant(9000)));
  }
}

// The margin moves nothing, whatever it is and whatever its list says.
TEST(EchoCanceller, SubtractsSampleForSampleWhateverTheMargin) {
  const Samples one = support::Noise(9000, 1);
  const Samples two = support::Noise(9000, 2);
  Samples expected;
  for (std::size_t i = 0; i < one.size(); ++i) expected.push_back(one[i] - two[i]);
  for (const double span : {0.0, 1.0, 3.9, 2047.0, 2048.0, 2049.0, 1e300, HUGE_VAL, -0.5, -1.0,
                            -2.9, -2048.0, -1e300, -HUGE_VAL, std::nan("")}) {
    EXPECT_TRUE(support::SameBits(Cancelled({span}, one, two, 5000), expected)) << span;
  }
  EXPECT_TRUE(support::SameBits(Cancelled({}, one, two, 5000), expected));
}

TEST(EchoCanceller, TruncatesAndLimitsTheMargin) {
  const auto asked = [](double span) {
    EchoCanceller twin;
    twin.Set_param_list({span});
    twin.Attach({&twin.NewSource(support::Noise(1)), &twin.NewSource(support::Noise(20000))});
    twin.log.Take();
    twin.filter.Pull(20000);
    const int read = twin.sources.back().mock.position;
    twin.log.Take();
    return read;  // a full buffer but for the zeros of its history
  };
  EXPECT_EQ(asked(0.0), 8192);
  EXPECT_EQ(asked(3.9), 8192 - 3);
  EXPECT_EQ(asked(2048.0), 8192 - 2048);
  EXPECT_EQ(asked(2049.0), 8192 - 2048);
  EXPECT_EQ(asked(1e300), 8192 - 2048);
  EXPECT_EQ(asked(-2.9), 8192);
  EXPECT_EQ(asked(-1e300), 8192);
  EXPECT_EQ(asked(std::nan("")), 8192);
}

TEST(EchoCanceller, LeavesASingleSourceAsItIs) {
  for (const double span : {0.0, 5.0, 2048.0}) {
    EchoCanceller twin;
    twin.Set_param_list({span});
    const Samples signal = support::Noise(600);
    twin.Attach({&twin.NewSource(signal)});
    EXPECT_TRUE(support::SameBits(twin.Pull(600), signal));
    EXPECT_TRUE(twin.filter.EndOfSrc());
  }
}

TEST(EchoCanceller, SubtractsInSinglePrecision) {
  EXPECT_EQ(Cancelled({}, {1.0F, 3.0e38F}, {0x1p-26F, -3.0e38F}, 10), (Samples{1.0F, HUGE_VALF}));
}

// The buffer keeps the history laid down for the old margin, so the second source lags or leads by
// the difference until the sources are attached again.
TEST(EchoCanceller, ANewMarginInMidStreamMisalignsTheSecondSource) {
  for (const int before : {0, 7, 50}) {
    for (const int after : {0, 20, 50}) {
      EchoCanceller twin;
      twin.Set_param_list({static_cast<double>(before)});
      twin.Attach({&twin.NewSource(support::Constant(1000)), &twin.NewSource(support::Ramp(1000))});
      Samples out = twin.Pull(100);
      EXPECT_EQ(out[99], -100.0F);
      twin.Set_param_list({static_cast<double>(after)});
      out = twin.Pull(100);
      ASSERT_EQ(out.size(), 100U);
      EXPECT_EQ(out[0], -101.0F - static_cast<float>(after - before));

      twin.Attach({&twin.NewSource(support::Constant(1000)), &twin.NewSource(support::Ramp(1000))});
      EXPECT_EQ(twin.Pull(100)[99], -100.0F);
    }
  }
}

TEST(EchoCanceller, KeepsItsMarginWhereTheListIsEmpty) {
  EchoCanceller twin;
  twin.Set_param_list({2048.0});
  twin.Set_param_list({});
  double values[] = {0.0};
  twin.filter.Slots().Set_param_list(twin.filter.Object(), values, -1);
  twin.Attach({&twin.NewSource(support::Noise(20000)), &twin.NewSource(support::Noise(20000))});
  EXPECT_EQ(twin.Pull(20000).size(), 4096U);
}

}  // namespace
