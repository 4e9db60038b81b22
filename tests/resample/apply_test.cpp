#include <gtest/gtest.h>

#include <cmath>

#include "resample/settings.h"
#include "support/guarded_buffer.h"

namespace {

using support::Dice;
using support::GuardedBuffer;
using support::Samples;

// Slot 16 in buffers of exactly the size that the call names.
reference::ResampledBlock Applied(support::Filter& filter, const Samples& in, int nIn, int nOut) {
  GuardedBuffer from(static_cast<int>(in.size()));
  std::copy(in.begin(), in.end(), from.data());
  const int room = std::clamp(nOut, 0, 200000);
  GuardedBuffer out(room);
  int consumed = -1;
  int produced = -1;
  filter.Call<ResampleApply>(16, from.data(), out.data(), nIn, nOut, &consumed, &produced);
  EXPECT_TRUE(support::SameBitsOrNaN(from.First(static_cast<int>(in.size())), in));
  from.CheckAfter(static_cast<int>(in.size()));
  EXPECT_GE(produced, 0);
  EXPECT_LE(produced, room);
  out.CheckAfter(produced);
  return {consumed, out.First(produced)};
}

void CompareApply(std::uint32_t seed, reference::Walk walk,
                  std::vector<double> (*parameters)(Dice&)) {
  SCOPED_TRACE("seed " + std::to_string(seed));
  Dice dice(seed);
  resample::Pair pair(walk);
  pair.Set_param_list(parameters(dice));
  pair.Attach(support::Noise(300));
  const std::int64_t margins = pair.model.settings.histLen + pair.model.settings.aheadLen;
  for (int call = 0; call < 8 && !testing::Test::HasFailure(); ++call) {
    const int nIn = dice.OneIn(5) ? dice.Int(-2, 1) : dice.Int(1, dice.OneIn(4) ? 9000 : 300);
    const int nOut = dice.OneIn(5) ? dice.Int(-2, 1) : dice.Int(1, 3000);
    const Samples in = support::Noise(static_cast<int>(std::max(nIn, 0) + margins), dice.Seed());
    const auto actual = Applied(pair.filter, in, nIn, nOut);
    const auto expected = pair.model.Apply(in.data(), nIn, nOut);
    EXPECT_EQ(actual.consumed, expected.consumed);
    EXPECT_TRUE(support::SameBitsOrNaN(actual.out, expected.out));
  }
  pair.log.Take();
  pair.calls.clear();
  pair.Pull(50);  // the stream goes on from where the calls left phase and count
}

TEST(ResamplerApply, EqualsTheStepByStepModel) {
  for (std::uint32_t seed = 1; seed <= 300 && !HasFailure(); ++seed) {
    CompareApply(seed, reference::Walk::Steps, resample::NearParameters);
  }
}

TEST(ResamplerApply, EqualsTheClosedFormForFarParameters) {
  for (std::uint32_t seed = 1; seed <= 1000 && !HasFailure(); ++seed) {
    CompareApply(seed, reference::Walk::Jumps, resample::FarParameters);
  }
}

// A kernel that does not fit the margins, as an exchanged slot 15 may leave it: terms without a
// sample add nothing.
Samples odd_kernel;
void OddCalcCoef(void*, float* coef, int* count) {
  std::copy(odd_kernel.begin(), odd_kernel.end(), coef);
  *count = static_cast<int>(odd_kernel.size());
}

TEST(ResamplerApply, TakesWhatLiesOutsideOfKernelAndBufferAsZero) {
  Dice dice(5);
  for (int round = 0; round < 200 && !HasFailure(); ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    resample::Pair pair;
    pair.filter.Exchange(15, OddCalcCoef);
    odd_kernel = support::Noise(dice.OneIn(5) ? 4097 : dice.Int(1, 60), dice.Seed());
    pair.Set_param_list({dice.Real(1.0, 9.0), dice.Real(1.0, 9.0), dice.Real(-20.0, 20.0),
                         dice.Real(-200.0, 20.0), 0.0, dice.Real(0.0, 80.0)});
    pair.Attach(support::Noise(500, dice.Seed()));
    pair.model.coef = odd_kernel;
    for (int pull = 0; pull < 6; ++pull) pair.Pull(dice.Int(1, 200));
  }
}

int claimed_count;
void EmptyCalcCoef(void*, float*, int* count) { *count = claimed_count; }

TEST(ResamplerApply, GivesZerosWithoutAKernel) {
  for (const int count : {0, -1, -100}) {
    resample::Pair pair;
    pair.filter.Exchange(15, EmptyCalcCoef);
    claimed_count = count;
    pair.Set_param_list({2.0, 3.0});
    pair.Attach(support::Noise(500));
    pair.model.coef.clear();
    for (int pull = 0; pull < 6; ++pull) pair.Pull(200);
  }
}

TEST(ResamplerApply, CountsConsumedPositionsAndGoesOnAtTheNextStep) {
  support::CallLog log;
  support::SourceMock source("source", log);
  support::Filter filter = support::MakeFilter(support::Resample);
  filter.Set_param_list({2.0, 3.0, 0.0, 0.0, 0.0, 0.0});  // L = 3, M = 2, one coefficient of 1
  filter.Set_src_list(source);
  // Steps 0, 2, 4 make outputs; samples stand at steps 0, 3, 6 and show at phase 0 alone.
  auto block = Applied(filter, {7.0F, 8.0F, 9.0F}, 3, 2);
  EXPECT_EQ(block.out, (Samples{7.0F, 0.0F}));
  EXPECT_EQ(block.consumed, 1);  // the step of the second output was the last of sample 0
  block = Applied(filter, {8.0F, 9.0F}, 2, 100);
  EXPECT_EQ(block.out, (Samples{0.0F, 9.0F, 0.0F}));
  EXPECT_EQ(block.consumed, 2);
  block = Applied(filter, {}, 0, 100);
  EXPECT_EQ(block.out, Samples{});
  EXPECT_EQ(block.consumed, 0);
}

}  // namespace
