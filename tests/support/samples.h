#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace support {

using Samples = std::vector<float>;

// Whether both hold the same bits, sample for sample; the message names the first difference.
testing::AssertionResult SameBits(const Samples& actual, const Samples& expected);

// The same, but any not-a-number equals any other.
testing::AssertionResult SameBitsOrNaN(const Samples& actual, const Samples& expected);

// Reproducible values between -1 and 1 that fill the mantissa, so that each rounding shows.
Samples Noise(int count, std::uint32_t seed = 1);

// Zeros, or any other constant.
Samples Constant(int count, float value = 0.0F);

// 1, 2, 3 ...: shows at a glance where a sample came from.
Samples Ramp(int count, float first = 1.0F);

Samples operator+(const Samples& head, const Samples& tail);

// samples[first, first + count), with zeros where there are none.
Samples Slice(const Samples& samples, int first, int count);

}  // namespace support
