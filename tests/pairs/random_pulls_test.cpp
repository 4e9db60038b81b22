#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "pairs/twin.h"

namespace {

using support::Dice;
using support::Samples;

Samples Signal(Dice& dice) {
  Samples signal =
      support::Noise(dice.OneIn(4) ? dice.Int(0, 25000) : dice.Int(0, 800), dice.Seed());
  if (!signal.empty() && dice.OneIn(4)) {
    using Limits = std::numeric_limits<float>;
    for (const float special : {-0.0F, Limits::denorm_min(), Limits::max(), Limits::infinity(),
                                -Limits::infinity(), Limits::quiet_NaN()}) {
      signal[static_cast<std::size_t>(dice.Int(0, static_cast<int>(signal.size()) - 1))] = special;
    }
  }
  return signal;
}

void Script(Dice& dice, support::TwinSource& source) {
  if (dice.OneIn(2)) {
    std::vector<int> sizes{dice.Int(1, 100)};
    for (int i = dice.Int(1, 7); i > 0; --i) {
      sizes.push_back(dice.OneIn(5) ? 0 : dice.Int(1, 900));
    }
    source.Deliver(support::InBlocksOf(sizes));
  }
  if (dice.OneIn(4)) {
    source.Claim([offsets = std::vector<int>{0, 0, -3, 0, 50, -100000}, next = std::size_t{0}](
                     int wanted, int written) mutable {
      const int claimed = written + offsets[next++ % offsets.size()];
      return written == wanted ? claimed : std::min(claimed, written);
    });
  }
}

int PullSize(Dice& dice) {
  switch (dice.Int(1, 10)) {
    case 1:
      return 0;
    case 2:
      return dice.Int(-10000, -1);
    case 3:
      return dice.Int(3000, 20000);
    default:
      return dice.Int(1, 1200);
  }
}

std::vector<double> Gains(Dice& dice) {
  std::vector<double> gains(static_cast<std::size_t>(dice.Int(0, 4)));
  for (double& gain : gains) {
    gain = dice.OneIn(8) ? dice.OneOf<double>({0.0, -0.0, 1e300, -1e300, std::nan(""), HUGE_VAL})
                         : dice.Real(-2.0, 2.0);
  }
  return gains;
}

std::vector<double> Spans(Dice& dice) {
  std::vector<double> spans(static_cast<std::size_t>(dice.Int(0, 3)));
  for (double& span : spans) {
    span = dice.OneIn(3) ? dice.OneOf<double>({0.0, 2048.0, 2047.9, 2049.0, 1e300, -1e300, -2.9,
                                               -0.5, std::nan(""), HUGE_VAL, 4294967297.0})
                         : dice.Real(0.0, 2100.0);
  }
  return spans;
}

// Attaches up to four sources, of which the third and fourth are not wanted.
template <class Twin>
void Attach(Dice& dice, Twin& twin) {
  std::vector<support::TwinSource*> list;
  for (int count = dice.OneIn(3) ? dice.Int(0, 4) : 2; count > 0; --count) {
    list.push_back(&twin.NewSource(Signal(dice)));
    Script(dice, *list.back());
  }
  twin.Attach(list);
}

template <class Twin>
void Session(std::uint32_t seed, std::vector<double> (*parameters)(Dice& dice)) {
  SCOPED_TRACE("seed " + std::to_string(seed));
  Dice dice(seed);
  Twin twin;
  if (!dice.OneIn(10)) twin.Set_param_list(parameters(dice));
  if (!dice.OneIn(10)) Attach(dice, twin);
  for (int step = dice.Int(3, 25); step > 0 && !testing::Test::HasFailure(); --step) {
    switch (dice.Int(1, 20)) {
      case 1:
        twin.Set_param_list(parameters(dice));
        break;
      case 2:
        Attach(dice, twin);
        break;
      case 3:
        if (dice.OneIn(3)) twin.Dispose();
        break;
      case 4:
      case 5:
      case 6:
        twin.Peek(PullSize(dice));
        break;
      default:
        twin.Pull(PullSize(dice));
    }
  }
}

TEST(PairPulls, OfTheMixerEqualTheModelCallForCall) {
  for (std::uint32_t seed = 1; seed <= 3000 && !HasFailure(); ++seed) {
    Session<pairs::Mixer>(seed, Gains);
  }
}

TEST(PairPulls, OfTheEchoCancellerEqualTheModelCallForCall) {
  for (std::uint32_t seed = 1; seed <= 3000 && !HasFailure(); ++seed) {
    Session<pairs::EchoCanceller>(seed, Spans);
  }
}

// Whatever the blocks: the whole of both signals, in step.
TEST(PairPulls, AnySplitGivesTheSameSamples) {
  Dice dice(3);
  for (int round = 0; round < 60 && !HasFailure(); ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    support::CallLog log;
    const Samples one = support::Noise(dice.Int(0, 12000), dice.Seed());
    const Samples two = support::Noise(dice.Int(0, 12000), dice.Seed());
    support::SourceMock first("first", log, one);
    support::SourceMock second("second", log, two);
    first.deliver = support::InBlocksOf({dice.Int(1, 5000), dice.Int(1, 500), dice.Int(1, 50)});
    second.deliver = support::InBlocksOf({dice.Int(1, 5000), dice.Int(1, 500), dice.Int(1, 50)});
    support::Filter filter = support::MakeFilter(support::EchoCancel);
    filter.Set_param_list({static_cast<double>(dice.OneIn(2) ? dice.Int(0, 2048) : 0)});
    filter.Set_src_list({&first, &second});
    const std::size_t longer = std::max(one.size(), two.size());
    Samples all;
    while (all.size() < longer) {
      const Samples block = filter.Pull(dice.Int(1, 3000));
      all.insert(all.end(), block.begin(), block.end());
    }
    all.resize(longer);
    Samples expected = support::Slice(one, 0, static_cast<int>(longer));
    for (std::size_t i = 0; i < two.size(); ++i) expected[i] = expected[i] - two[i];
    EXPECT_TRUE(support::SameBits(all, expected));
  }
}

}  // namespace
