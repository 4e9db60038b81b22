#include <gtest/gtest.h>

#include "pairs/twin.h"

namespace {

using pairs::EchoCanceller;
using pairs::Mixer;
using support::Samples;

// The longer source, whichever it is, with zeros for the other where that has ended.
template <class Twin>
void RunsAsLongAsTheLonger(int length1, int length2, const std::vector<double>& p, float sign) {
  SCOPED_TRACE(std::to_string(length1) + " and " + std::to_string(length2) + " samples");
  Twin twin;
  twin.Set_param_list(p);
  twin.Attach(
      {&twin.NewSource(support::Noise(length1, 1)), &twin.NewSource(support::Noise(length2, 2))});
  const int longer = std::max(length1, length2);
  Samples all;
  for (int pull = 0; !twin.filter.EndOfSrc() && pull < 10000; ++pull) {
    const Samples block = twin.Pull(100);
    all.insert(all.end(), block.begin(), block.end());
  }
  ASSERT_TRUE(twin.filter.EndOfSrc());
  ASSERT_GE(static_cast<int>(all.size()), longer);
  Samples expected = support::Slice(support::Noise(length1, 1), 0, static_cast<int>(all.size()));
  const Samples second =
      support::Slice(support::Noise(length2, 2), 0, static_cast<int>(all.size()));
  for (std::size_t i = 0; i < expected.size(); ++i) {
    expected[i] = sign > 0.0F ? expected[i] + second[i] : expected[i] - second[i];
  }
  EXPECT_EQ(all, expected);
}

TEST(PairEnd, ComesWithTheEndOfTheLongerSource) {
  for (const auto& [one, two] : std::vector<std::pair<int, int>>{
           {500, 300}, {300, 500}, {400, 400}, {0, 350}, {350, 0}, {0, 0}, {9000, 20000}}) {
    RunsAsLongAsTheLonger<Mixer>(one, two, {1.0, 1.0}, 1.0F);
    RunsAsLongAsTheLonger<EchoCanceller>(one, two, {0.0}, -1.0F);
    RunsAsLongAsTheLonger<EchoCanceller>(one, two, {250.0}, -1.0F);
    RunsAsLongAsTheLonger<EchoCanceller>(one, two, {2048.0}, -1.0F);
  }
}

TEST(PairEnd, MayBeReportedWhileSamplesOfTheLongerSourceWait) {
  for (const bool longerFirst : {true, false}) {
    Mixer twin;
    const Samples longer = support::Noise(5000, 1);
    const Samples shorter = support::Noise(3000, 2);
    twin.Attach({&twin.NewSource(longerFirst ? longer : shorter),
                 &twin.NewSource(longerFirst ? shorter : longer)});
    const Samples first = twin.Pull(5000);
    EXPECT_EQ(first.size(), 3000U);
    EXPECT_TRUE(twin.filter.EndOfSrc());
    const Samples rest = twin.Pull(2000);
    EXPECT_TRUE(support::SameBits(rest, support::Slice(longer, 3000, 2000)));
    EXPECT_TRUE(twin.filter.EndOfSrc());
  }
}

TEST(PairEnd, IsFollowedByZerosForAsLongAsTheyAreAskedFor) {
  EchoCanceller twin;
  twin.Set_param_list({100.0});
  twin.Attach({&twin.NewSource(support::Noise(50)), &twin.NewSource(support::Noise(50))});
  EXPECT_TRUE(support::SameBits(twin.Pull(50), support::Constant(50)));
  EXPECT_TRUE(twin.filter.EndOfSrc());
  for (const int n : {1000, 8192, 1}) {
    EXPECT_TRUE(support::SameBits(twin.Pull(n), support::Constant(std::min(n, 8192 - 200))));
    EXPECT_TRUE(twin.filter.EndOfSrc());
  }
}

TEST(PairEnd, StandsBeforeAnySource) {
  Mixer mixer;
  EXPECT_TRUE(mixer.filter.EndOfSrc());
  EXPECT_TRUE(support::SameBits(mixer.Pull(20000), support::Constant(8192)));
  EchoCanceller canceller;
  canceller.Set_param_list({2048.0});
  EXPECT_TRUE(support::SameBits(canceller.Pull(20000), support::Constant(4096)));
}

TEST(PairEnd, ComesWithTheFirstSourceWhereThereIsNoSecond) {
  Mixer twin;
  const Samples signal = support::Noise(700);
  twin.Attach({&twin.NewSource(signal)});
  EXPECT_FALSE(twin.filter.EndOfSrc());
  EXPECT_TRUE(support::SameBits(twin.Pull(400), support::Slice(signal, 0, 400)));
  EXPECT_FALSE(twin.filter.EndOfSrc());
  EXPECT_TRUE(support::SameBits(twin.Pull(300), support::Slice(signal, 400, 300)));
  EXPECT_TRUE(twin.filter.EndOfSrc());
}

TEST(PairPeek, ReportsTheShorterOfTheTwoAndConsumesNothing) {
  Mixer twin;
  const Samples one = support::Constant(100, 1.0F);
  const Samples two = support::Constant(100, 2.0F);
  twin.Attach({&twin.NewSource(one), &twin.NewSource(two)});
  twin.sources.front().Deliver(support::InBlocksOf({30, 0, 0, 0, 0}));
  twin.sources.back().Deliver(support::InBlocksOf({20, 0, 0, 0, 0}));
  EXPECT_EQ(twin.Peek(50), 20);
  EXPECT_EQ(twin.Peek(10), 10);
  EXPECT_EQ(twin.Peek(0), 0);
  EXPECT_EQ(twin.Peek(-5), 0);
  EXPECT_TRUE(support::SameBits(twin.Pull(20), support::Constant(20, 3.0F)));
  EXPECT_EQ(twin.sources.front().mock.position, 30);
  EXPECT_EQ(twin.sources.back().mock.position, 20);
}

TEST(PairPeek, CanBeTheCallThatMeetsTheEnd) {
  EchoCanceller twin;
  twin.Set_param_list({40.0});
  twin.Attach({&twin.NewSource(support::Noise(60)), &twin.NewSource(support::Noise(60, 2))});
  EXPECT_EQ(twin.Peek(60), 60);
  EXPECT_TRUE(twin.filter.EndOfSrc());
  EXPECT_EQ(twin.Pull(60).size(), 60U);
}

TEST(PairCapacity, IsThatOfTheNarrowerBuffer) {
  EchoCanceller twin;
  twin.Set_param_list({2048.0});
  twin.Attach({&twin.NewSource(support::Noise(20000)), &twin.NewSource(support::Noise(20000))});
  EXPECT_EQ(twin.Peek(20000), 4096);
  EXPECT_EQ(twin.Pull(20000).size(), 4096U);
  Mixer mixer;
  mixer.Attach({&mixer.NewSource(support::Noise(20000)), &mixer.NewSource(support::Noise(20000))});
  EXPECT_EQ(mixer.Pull(20000).size(), 8192U);
}

}  // namespace
