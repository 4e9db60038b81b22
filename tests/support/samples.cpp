#include "support/samples.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <iomanip>
#include <random>

namespace support {
namespace {

std::string Shown(const Samples& samples, std::size_t index) {
  if (index >= samples.size()) {
    return "nothing";
  }
  std::ostringstream text;
  text << std::setprecision(9) << samples[index] << " (0x" << std::hex
       << std::bit_cast<std::uint32_t>(samples[index]) << ")";
  return text.str();
}

testing::AssertionResult Compare(const Samples& actual, const Samples& expected, bool anyNaN) {
  const auto equal = [anyNaN](float left, float right) {
    return std::bit_cast<std::uint32_t>(left) == std::bit_cast<std::uint32_t>(right) ||
           (anyNaN && std::isnan(left) && std::isnan(right));
  };
  const auto differs =
      std::mismatch(actual.begin(), actual.end(), expected.begin(), expected.end(), equal).first;
  if (differs == actual.end() && actual.size() == expected.size()) {
    return testing::AssertionSuccess();
  }
  const auto index = static_cast<std::size_t>(differs - actual.begin());
  return testing::AssertionFailure()
         << "first difference at sample " << index << ": " << Shown(actual, index) << ", expected "
         << Shown(expected, index) << "; " << actual.size() << " samples, expected "
         << expected.size();
}

}  // namespace

testing::AssertionResult SameBits(const Samples& actual, const Samples& expected) {
  return Compare(actual, expected, false);
}

testing::AssertionResult SameBitsOrNaN(const Samples& actual, const Samples& expected) {
  return Compare(actual, expected, true);
}

Samples Noise(int count, std::uint32_t seed) {
  std::mt19937 bits(seed);
  Samples samples(static_cast<std::size_t>(count));
  for (float& sample : samples) {
    sample = static_cast<float>(static_cast<double>(bits()) / 2147483648.0 - 1.0);
  }
  return samples;
}

Samples Constant(int count, float value) { return Samples(static_cast<std::size_t>(count), value); }

Samples Ramp(int count, float first) {
  Samples samples(static_cast<std::size_t>(count));
  for (float& sample : samples) {
    sample = first;
    first += 1.0F;
  }
  return samples;
}

Samples operator+(const Samples& head, const Samples& tail) {
  Samples all = head;
  all.insert(all.end(), tail.begin(), tail.end());
  return all;
}

Samples Slice(const Samples& samples, int first, int count) {
  Samples slice;
  for (int i = first; i < first + count; ++i) {
    const bool inside = i >= 0 && i < static_cast<int>(samples.size());
    slice.push_back(inside ? samples[static_cast<std::size_t>(i)] : 0.0F);
  }
  return slice;
}

}  // namespace support
