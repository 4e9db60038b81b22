#include <gtest/gtest.h>

#include <limits>

#include "resample/settings.h"

namespace {

using support::Dice;
using support::Samples;

// Noise, now and then with values that arithmetic treats specially.
Samples Signal(Dice& dice) {
  Samples signal =
      support::Noise(dice.OneIn(5) ? dice.Int(0, 20000) : dice.Int(0, 600), dice.Seed());
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
    std::vector<int> sizes;
    for (int i = dice.Int(1, 7); i > 0; --i) {
      sizes.push_back(dice.OneIn(5) ? 0 : dice.Int(1, 900));
    }
    sizes.push_back(dice.Int(1, 100));
    source.Deliver(support::InBlocksOf(sizes));
  }
  if (dice.OneIn(4)) {
    // Never more than what was written, but for what was asked in full.
    source.Claim([offsets = std::vector<int>{0, 0, -3, 0, 50, -100000}, next = std::size_t{0}](
                     int wanted, int written) mutable {
      const int claimed = written + offsets[next++ % offsets.size()];
      return written == wanted ? claimed : std::min(claimed, written);
    });
  }
  source.Describe(static_cast<int>(dice.Between(0, 2147483647)), dice.Real(0.01, 1.0));
}

int PullSize(Dice& dice) {
  switch (dice.Int(1, 10)) {
    case 1:
      return 0;
    case 2:
      return dice.Int(-10000, -1);
    case 3:
      return dice.Int(5000, 20000);
    default:
      return dice.Int(1, 1500);
  }
}

// Attaches a new source, or none, with what a host may hand over beside it.
void Reattach(Dice& dice, resample::Pair& pair) {
  std::vector<support::TwinSource*> list;
  for (int count = dice.OneIn(6) ? dice.Int(0, 3) : 1; count > 0; --count) {
    list.push_back(&pair.NewSource(Signal(dice)));
    Script(dice, *list.back());
  }
  pair.Attach(list);
}

void CompareDescriptors(resample::Pair& pair) {
  if (pair.model.source == nullptr) return;
  for (support::TwinSource& source : pair.sources) {
    if (&source.model != pair.model.source) continue;
    const auto expected = pair.model.GetDescriptor();
    const support::Description actual = pair.filter.GetDescriptor(source.mock);
    EXPECT_EQ(actual.interval_ms, expected.interval_ms);
    EXPECT_EQ(actual.length, expected.length);
    source.model.Note("descriptor.Release()");
  }
}

using MakeParameters = std::vector<double> (*)(Dice& dice);

void Session(std::uint32_t seed, reference::Walk walk, MakeParameters parameters) {
  SCOPED_TRACE("seed " + std::to_string(seed));
  Dice dice(seed);
  resample::Pair pair(walk);
  if (!dice.OneIn(10)) pair.Set_param_list(parameters(dice));
  pair.Attach(Signal(dice));
  Script(dice, pair.sources.back());
  for (int step = dice.Int(3, 25); step > 0 && !testing::Test::HasFailure(); --step) {
    switch (dice.Int(1, 24)) {
      case 1:
        pair.Set_param_list(parameters(dice));
        break;
      case 2:
        Reattach(dice, pair);
        break;
      case 3:
        CompareDescriptors(pair);
        break;
      case 4:
        if (dice.OneIn(3)) {
          pair.filter.Dispose();
          pair.model.Dispose();
        }
        break;
      default:
        pair.Pull(PullSize(dice));
    }
    pair.SameCalls();
    EXPECT_EQ(pair.filter.EndOfSrc(), pair.model.EndOfSrc());
  }
}

TEST(ResamplerStreams, EqualTheStepByStepModelCallForCall) {
  for (std::uint32_t seed = 1; seed <= 600 && !HasFailure(); ++seed) {
    Session(seed, reference::Walk::Steps, resample::NearParameters);
  }
}

TEST(ResamplerStreams, EqualTheClosedFormCallForCall) {
  for (std::uint32_t seed = 1; seed <= 300 && !HasFailure(); ++seed) {
    Session(seed, reference::Walk::Jumps, resample::NearParameters);
  }
}

TEST(ResamplerStreams, EqualTheClosedFormWhateverTheParameters) {
  for (std::uint32_t seed = 1; seed <= 1500 && !HasFailure(); ++seed) {
    Session(seed, reference::Walk::Jumps, resample::FarParameters);
  }
}

// To the end, with sizes that meet the block buffer's end in all ways.
TEST(ResamplerStreams, EqualTheModelToTheEndForAnySizes) {
  Dice dice(99);
  for (int round = 0; round < 60 && !HasFailure(); ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    resample::Pair pair;
    std::vector<double> p = resample::NearParameters(dice);
    if (p.size() > 3) p.resize(8), p[resample::PhaseStart] = p[resample::DownStart] = 0.0;
    pair.Set_param_list(p);
    pair.Attach(support::Noise(dice.Int(0, 9000), dice.Seed()));
    Script(dice, pair.sources.back());
    std::vector<int> sizes;
    for (int i = dice.Int(1, 5); i > 0; --i)
      sizes.push_back(dice.Int(1, dice.OneIn(3) ? 30000 : 700));
    pair.PullToEnd(sizes);
    EXPECT_TRUE(pair.filter.EndOfSrc());
    for (const int more : {100, 9000, 1, 0, 50}) pair.Pull(more);  // over zeros
  }
}

// Pulls and deliveries leave no trace in the samples.
TEST(ResamplerStreams, AnySplitGivesTheSameSamples) {
  Dice dice(7);
  for (int round = 0; round < 40 && !HasFailure(); ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    std::vector<double> p = resample::NearParameters(dice);
    if (p.size() > 3) p.resize(8), p[resample::PhaseStart] = p[resample::DownStart] = 0.0;
    const Samples signal = support::Noise(dice.Int(0, 5000), dice.Seed());
    const auto whole = [&](const std::vector<int>& pulls, const std::vector<int>& deliveries) {
      support::CallLog log;
      support::SourceMock source("source", log, signal);
      source.deliver = support::InBlocksOf(deliveries);
      support::Filter filter = support::MakeFilter(support::Resample);
      filter.Set_param_list(p);
      filter.Set_src_list(source);
      return filter.PullAll(pulls);
    };
    const Samples one = whole({4096}, {100000});
    const Samples other = whole({dice.Int(1, 999), dice.Int(1, 99), dice.Int(1, 9999)},
                                {dice.Int(1, 999), dice.Int(1, 99), dice.Int(1, 9999)});
    EXPECT_TRUE(support::SameBits(other, one));
  }
}

}  // namespace
