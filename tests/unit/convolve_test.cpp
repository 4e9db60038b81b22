#include "dsp/convolve.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <iostream>
#include <limits>
#include <random>
#include <vector>

namespace wavefilters {
namespace {

// The sum as it is told in words, one output at a time.
void PlainConvolve(const float* in, const float* coef, int taps, float* out, int outCount) {
  for (int i = 0; i < outCount; ++i) {
    volatile float sum = 0.0F;
    int k = 0;
    for (; k + 4 <= taps; k += 4) {
      volatile float group = in[i + k] * coef[k];
      for (int tap = 1; tap < 4; ++tap) {
        volatile float product = in[i + k + tap] * coef[k + tap];
        group = group + product;
      }
      sum = sum + group;
    }
    for (; k < taps; ++k) {
      volatile float product = in[i + k] * coef[k];
      sum = sum + product;
    }
    out[i] = sum;
  }
}

bool SameBits(float a, float b) {
  return std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b) ||
         (std::isnan(a) && std::isnan(b));
}

class ConvolveVariants : public testing::TestWithParam<InstructionSet> {
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

  void Compare(const std::vector<float>& in, const std::vector<float>& coef, int offset,
               int outCount) {
    const int taps = static_cast<int>(coef.size());
    std::vector<float> wanted(static_cast<std::size_t>(outCount) + 1, 7.0F);
    std::vector<float> got(wanted.size() + 16, 7.0F);
    PlainConvolve(in.data() + offset, coef.data(), taps, wanted.data(), outCount);
    ConvolveFor(GetParam())(in.data() + offset, coef.data(), taps, got.data() + offset, outCount);
    for (int i = 0; i <= outCount; ++i) {  // one beyond: it must still be 7
      ASSERT_TRUE(
          SameBits(got[static_cast<std::size_t>(offset + i)], wanted[static_cast<std::size_t>(i)]))
          << "taps " << taps << ", outputs " << outCount << ", offset " << offset << ", output "
          << i;
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

  std::mt19937 random{512};
};

TEST_P(ConvolveVariants, EqualThePlainLoopOverTapsCountsAndAlignments) {
  if (Available()) {
    for (const int taps : {1, 2, 3, 4, 5, 7, 8, 17, 65, 129, 130, 131, 132, 133, 257, 1025}) {
      for (const int outCount : {0, 1, 7, 8, 31, 33, 63, 64, 65, 127, 128, 200}) {
        const int offset = (taps + outCount) % 16;
        const auto size = static_cast<std::size_t>(taps + outCount + offset);
        Compare(Draw(size, 1.0F), Draw(static_cast<std::size_t>(taps), 1.0F), offset, outCount);
      }
    }
    Compare(Draw(8192, 1.0F), Draw(4097, 1.0F), 3, 4000);
  }
}

TEST_P(ConvolveVariants, EqualThePlainLoopOnSubnormalsInfinitiesAndNegativeZeros) {
  if (Available()) {
    using Limits = std::numeric_limits<float>;
    const float odd[] = {Limits::denorm_min(), -Limits::denorm_min(), Limits::infinity(),
                         -Limits::infinity(),  Limits::quiet_NaN(),   -0.0F,
                         Limits::max(),        -Limits::max(),        Limits::min()};
    std::uniform_int_distribution<std::size_t> which(0, std::size(odd) - 1);
    for (int round = 0; round < 60; ++round) {
      auto in = Draw(700, round % 2 == 0 ? 1.0F : 1e-38F);
      auto coef = Draw(static_cast<std::size_t>(round % 3 == 0 ? 16 : 140 + round),
                       round % 2 == 0 ? 1.0F : 1e-5F);
      for (int i = 0; i < round / 2; ++i) {
        in[random() % in.size()] = odd[which(random)];
        coef[random() % coef.size()] = odd[which(random)];
      }
      Compare(in, coef, round % 16, 300);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(InstructionSets, ConvolveVariants,
                         testing::Values(InstructionSet::Baseline, InstructionSet::Avx2,
                                         InstructionSet::Avx512));

}  // namespace
}  // namespace wavefilters
