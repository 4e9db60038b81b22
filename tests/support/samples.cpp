#include "support/samples.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <iomanip>
#include <random>

namespace support {
namespace {

// A signalling not-a-number: a quiet one would come through additions and products unchanged.
constexpr std::uint32_t Canary = 0x7F80CAFEU;

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

GuardedBuffer::GuardedBuffer(int room)
    : count(std::max(room, 0)),
      cells(static_cast<std::size_t>(count + 2 * Guard), std::bit_cast<float>(Canary)) {}

Samples GuardedBuffer::First(int produced) const {
  return {cells.begin() + Guard, cells.begin() + Guard + std::clamp(produced, 0, count)};
}

void GuardedBuffer::CheckAfter(int produced) const {
  const int size = static_cast<int>(cells.size());
  for (int i = 0; i < size; ++i) {
    const bool written = i >= Guard && i < Guard + std::min(produced, count);
    if (!written && std::bit_cast<std::uint32_t>(cells[static_cast<std::size_t>(i)]) != Canary) {
      ADD_FAILURE() << "sample " << i - Guard << " was written: the room has " << count
                    << " samples and " << produced << " were announced";
      return;
    }
  }
}

}  // namespace support
