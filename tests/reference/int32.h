#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

namespace reference {

// A real number as a 32-bit count: truncated toward zero, what lies beyond the range at its nearer
// end, not-a-number as 0.
inline std::int32_t Int32(double value) {
  if (std::isnan(value)) return 0;
  if (value >= 2147483647.0) return std::numeric_limits<std::int32_t>::max();
  if (value <= -2147483648.0) return std::numeric_limits<std::int32_t>::min();
  return static_cast<std::int32_t>(value);
}

// The exact value of a sum of 32-bit counts, taken back to 32 bits at the nearer end.
inline std::int32_t Int32(std::int64_t value) {
  if (value > std::numeric_limits<std::int32_t>::max()) {
    return std::numeric_limits<std::int32_t>::max();
  }
  if (value < std::numeric_limits<std::int32_t>::min()) {
    return std::numeric_limits<std::int32_t>::min();
  }
  return static_cast<std::int32_t>(value);
}

}  // namespace reference
