#include "dsp/polyphase.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <iostream>
#include <limits>
#include <random>
#include <utility>
#include <vector>

namespace wavefilters {
namespace {

// One output as it is told in words.
float PlainOutput(const float* in, std::int64_t newest, const std::vector<float>& coef,
                  std::int64_t phase, std::int64_t up) {
  double sum = 0.0;
  std::int64_t j = newest;
  for (std::int64_t k = static_cast<std::int64_t>(coef.size()) - 1 - phase; k >= 0; k -= up) {
    volatile float product = in[j] * coef[static_cast<std::size_t>(k)];
    sum += double{product};
    --j;
  }
  return static_cast<float>(sum);
}

bool SameBits(float a, float b) {
  return std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b) ||
         (std::isnan(a) && std::isnan(b));
}

class PolyphaseVariants : public testing::TestWithParam<InstructionSet> {
 protected:
  // The names of what the machine lacks go to the log; nothing is claimed about them.
  bool Available() const {
    if (GetParam() <= WidestInstructionSet()) {
      return true;
    }
    std::cout << "not compared: this machine lacks instruction set " << static_cast<int>(GetParam())
              << '\n';
    return false;
  }

  // `outCount` outputs, the first of them at phase `phase` of the input `newest`.
  void Compare(int up, int down, const std::vector<float>& coef, const std::vector<float>& in,
               int newest, int phase, int outCount) {
    PolyphaseBank bank(GetParam());
    bank.Store(coef.data(), static_cast<int>(coef.size()), up, down);
    std::vector<float> got(static_cast<std::size_t>(outCount) + 1, 7.0F);
    const std::int64_t first = std::int64_t{newest} * up + phase;
    bank.Run(in.data(), static_cast<int>(in.size()), first, got.data(), outCount);
    for (int i = 0; i < outCount; ++i) {
      const std::int64_t position = first + std::int64_t{i} * down;
      const float wanted = PlainOutput(in.data(), position / up, coef, position % up, up);
      ASSERT_TRUE(SameBits(got[static_cast<std::size_t>(i)], wanted))
          << up << "/" << down << ", " << coef.size() << " taps, output " << i << " of "
          << outCount;
    }
    EXPECT_EQ(got[static_cast<std::size_t>(outCount)], 7.0F);
  }

  // As many outputs as the inputs reach for, and a few smaller numbers of them.
  void CompareCounts(int up, int down, int margin, std::size_t inCount, float scale) {
    const auto coef = Draw(static_cast<std::size_t>(2 * margin * up + 1), scale);
    const auto in = Draw(inCount, scale);
    const int newest = 2 * margin;
    const int phase = static_cast<int>(random() % static_cast<unsigned>(up));
    const auto reach = (static_cast<std::int64_t>(inCount) - newest) * up - phase;
    const int most = static_cast<int>((reach + down - 1) / down);
    for (const int outCount : {most, most - 1, most / 2, most / 7, 1, 0}) {
      Compare(up, down, coef, in, newest, phase, std::max(outCount, 0));
    }
  }

  std::vector<float> Draw(std::size_t count, float scale) {
    std::uniform_real_distribution<float> uniform(-scale, scale);
    std::vector<float> values(count);
    for (float& value : values) {
      value = uniform(random);
    }
    return values;
  }

  std::mt19937 random{160};
};

TEST_P(PolyphaseVariants, EqualThePlainSumOverFactorsKernelsAndCounts) {
  if (Available()) {
    const int factors[][2] = {{1, 1}, {2, 1},   {1, 2},     {3, 2},     {2, 3},  {4, 2},  {6, 4},
                              {8, 7}, {20, 21}, {160, 147}, {147, 160}, {1, 50}, {50, 1}, {5, 900}};
    for (const auto& factor : factors) {
      for (const int margin : {0, 1, 12}) {
        CompareCounts(factor[0], factor[1], margin, 900, 1.0F);
      }
      CompareCounts(factor[0], factor[1], 6, 8192, 1.0F);
      CompareCounts(factor[0], factor[1], 6, 700, 1e-19F);  // subnormal products
    }
    CompareCounts(1, 1, 2048, 8192, 1.0F);
    CompareCounts(2, 1, 1024, 8192, 1.0F);
  }
}

// Every number of outputs that a phase may have left over from full tiles, and both parities of
// the inputs that are split.
TEST_P(PolyphaseVariants, EqualThePlainSumOverNumbersOfOutputs) {
  if (Available()) {
    const auto in = Draw(400, 1.0F);
    for (const auto& [up, down] : {std::pair{1, 1}, {1, 2}, {2, 1}, {3, 2}, {2, 3}, {1, 3}}) {
      const auto coef = Draw(static_cast<std::size_t>(2 * 3 * up + 1), 1.0F);
      for (int outCount = 1; outCount <= 150 * up / down; ++outCount) {
        const auto reach = static_cast<std::size_t>(7 + ((outCount - 1) * down + up - 1) / up);
        const std::vector<float> read(in.begin(), in.begin() + static_cast<std::ptrdiff_t>(reach));
        Compare(up, down, coef, read, 6, 0, outCount);
      }
    }
  }
}

TEST_P(PolyphaseVariants, EqualThePlainSumWhereInputsOutnumberTheBlock) {
  if (Available()) {
    CompareCounts(1, 1, 5, 20000, 1.0F);
    CompareCounts(2, 3, 5, 20000, 1.0F);
  }
}

// More streams than there is room for, and a few outputs all the same.
TEST_P(PolyphaseVariants, EqualThePlainSumWhereOutputsLieFarApart) {
  if (Available()) {
    CompareCounts(1, 1024, 0, 8192, 1.0F);
    CompareCounts(1, 1025, 0, 8192, 1.0F);
    CompareCounts(2, 2051, 1, 20000, 1.0F);
  }
}

TEST_P(PolyphaseVariants, EqualThePlainSumOnInfinitiesAndNegativeZeros) {
  if (Available()) {
    using Limits = std::numeric_limits<float>;
    const float odd[] = {
        Limits::denorm_min(), Limits::infinity(), -Limits::infinity(), Limits::quiet_NaN(), -0.0F,
        Limits::max()};
    for (int round = 0; round < 40; ++round) {
      auto coef = Draw(25, 1.0F);
      auto in = Draw(400, 1.0F);
      for (int i = 0; i < round; ++i) {
        in[random() % in.size()] = odd[random() % std::size(odd)];
      }
      coef[random() % coef.size()] = odd[random() % std::size(odd)];
      Compare(3, 2, coef, in, 8, round % 3, 500);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(InstructionSets, PolyphaseVariants,
                         testing::Values(InstructionSet::Baseline, InstructionSet::Avx2,
                                         InstructionSet::Avx512));

}  // namespace
}  // namespace wavefilters
