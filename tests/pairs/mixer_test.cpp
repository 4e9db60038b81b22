#include <gtest/gtest.h>

#include <cmath>

#include "pairs/twin.h"

namespace {

using pairs::Mixer;
using support::Samples;

// Half a unit in the last place of 1 vanishes in single precision unless it meets its like.
constexpr float Half = 0x1p-24F;

Samples Mixed(const std::vector<std::vector<double>>& lists, const Samples& one,
              const Samples& two) {
  Mixer twin;
  for (const std::vector<double>& list : lists) twin.Set_param_list(list);
  twin.Attach({&twin.NewSource(one), &twin.NewSource(two)});
  return twin.Pull(static_cast<int>(one.size()));
}

TEST(Mixer, AddsWithoutParameters) {
  EXPECT_EQ(Mixed({}, {1.0F, 2.0F, -3.0F}, {0.5F, -4.0F, 3.0F}), (Samples{1.5F, -2.0F, 0.0F}));
}

TEST(Mixer, SubtractsWithGainsOfOneAndMinusOne) {
  const Samples one = support::Noise(1000, 1);
  const Samples two = support::Noise(1000, 2);
  Samples expected;
  for (std::size_t i = 0; i < one.size(); ++i) expected.push_back(one[i] - two[i]);
  EXPECT_EQ(Mixed({{1.0, -1.0}}, one, two), expected);
}

TEST(Mixer, RoundsOnceAtTheEnd) {
  // 1 + Half is between two floats and goes to the even one, 1; a little more makes it the upper.
  EXPECT_EQ(Mixed({{1.0, 1.0 + 0x1p-20}}, {1.0F}, {Half}), Samples{1.0F + 2 * Half});
  EXPECT_EQ(Mixed({{1.0 + 0x1p-24, 1.0}}, {1.0F}, {Half}), Samples{1.0F + 2 * Half});
}

TEST(Mixer, KeepsTheGainsThatAListDoesNotReach) {
  const Samples one{1.0F};
  const Samples two{10.0F};
  EXPECT_EQ(Mixed({{2.0, 3.0}, {5.0}}, one, two), Samples{35.0F});
  EXPECT_EQ(Mixed({{2.0, 3.0}, {}}, one, two), Samples{32.0F});
  EXPECT_EQ(Mixed({{2.0, 3.0, 7.0, 8.0}}, one, two), Samples{32.0F});
  EXPECT_EQ(Mixed({{2.0}}, one, two), Samples{12.0F});
}

TEST(Mixer, TakesACountBelowOneAsNoList) {
  Mixer twin;
  twin.Set_param_list({2.0, 3.0});
  double values[] = {7.0, 7.0};
  twin.filter.Slots().Set_param_list(twin.filter.Object(), values, -1);
  twin.filter.Slots().Set_param_list(twin.filter.Object(), values, 0);
  twin.filter.Slots().Set_param_list(twin.filter.Object(), nullptr, 0);
  twin.Attach({&twin.NewSource({1.0F}), &twin.NewSource({1.0F})});
  EXPECT_EQ(twin.Pull(1), Samples{5.0F});
}

TEST(Mixer, TakesANewGainWithTheNextPull) {
  Mixer twin;
  twin.Attach({&twin.NewSource(support::Constant(10, 1.0F)),
               &twin.NewSource(support::Constant(10, 10.0F))});
  EXPECT_EQ(twin.Pull(2), support::Constant(2, 11.0F));
  twin.Set_param_list({3.0});
  EXPECT_EQ(twin.Pull(2), support::Constant(2, 13.0F));
}

TEST(Mixer, WeighsASingleSource) {
  Mixer twin;
  twin.Set_param_list({0.5, 9.0});
  twin.Attach({&twin.NewSource({2.0F, -4.0F})});
  EXPECT_EQ(twin.Pull(2), (Samples{1.0F, -2.0F}));
}

TEST(Mixer, DropsAThirdSource) {
  Mixer twin;
  support::TwinSource& third = twin.NewSource(support::Constant(5, 100.0F));
  twin.Attach({&twin.NewSource(support::Constant(5, 1.0F)),
               &twin.NewSource(support::Constant(5, 2.0F)), &third});
  EXPECT_EQ(third.mock.References(), 0);
  EXPECT_EQ(twin.Pull(5), support::Constant(5, 3.0F));
  EXPECT_EQ(third.mock.position, 0);
}

TEST(Mixer, LetsValuesThatAreNotFiniteThrough) {
  const float infinity = HUGE_VALF;
  const Samples out = Mixed({{1.0, 0.0}}, {1.0F, infinity, 3.0e38F}, {infinity, 0.0F, 0.0F});
  EXPECT_TRUE(std::isnan(out[0]));
  EXPECT_EQ(out[1], infinity);
  EXPECT_EQ(out[2], 3.0e38F);
  EXPECT_EQ(Mixed({{2.0, 0.0}}, {3.0e38F}, {0.0F}), Samples{infinity});
}

}  // namespace
