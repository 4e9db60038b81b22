#ifndef WAVEFILTERS_FRAME_NUMERIC_H
#define WAVEFILTERS_FRAME_NUMERIC_H

#include <cstdint>
#include <limits>

namespace wavefilters {

/// Truncates toward zero. What lies beyond the 32-bit range becomes its nearer end and
/// not-a-number becomes 0, where a plain cast would be undefined. Every parameter and
/// every time that becomes a sample index goes through here.
constexpr std::int32_t ToInt32(double value) {
  using Limits = std::numeric_limits<std::int32_t>;
  if (value != value) {
    return 0;
  }
  if (value <= static_cast<double>(Limits::min())) {
    return Limits::min();
  }
  if (value >= static_cast<double>(Limits::max())) {
    return Limits::max();
  }
  return static_cast<std::int32_t>(value);
}

/// A sum or product that was formed in 64 bits, limited to the 32-bit range.
constexpr std::int32_t LimitToInt32(std::int64_t value) {
  using Limits = std::numeric_limits<std::int32_t>;
  if (value < Limits::min()) {
    return Limits::min();
  }
  if (value > Limits::max()) {
    return Limits::max();
  }
  return static_cast<std::int32_t>(value);
}

/// What a source claims to have delivered, taken at the bounds of what was asked of it:
/// no claim leads a filter out of its buffer.
constexpr int Delivered(int claimed, int asked) {
  if (claimed < 0 || asked < 0) {
    return 0;
  }
  return claimed < asked ? claimed : asked;
}

}  // namespace wavefilters

#endif
