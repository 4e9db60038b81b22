#include "host/gaps_behind.h"

#include <cmath>

namespace wavechain {

std::optional<Gaps> SmoothedGaps(std::span<const double> values, const Gaps& gaps) {
  return gaps.Widened(static_cast<std::int64_t>(values[0]));
}

std::optional<Gaps> ResampledGaps(std::span<const double> values, const Gaps& gaps) {
  const auto down = static_cast<std::int64_t>(values[0]);
  const auto up = static_cast<std::int64_t>(values[1]);
  // Of the kernel, the filter keeps as many whole input samples to either side as it reaches.
  const auto kernel = static_cast<std::int64_t>(values[5]) / up * up;
  // Outputs that start elsewhere than at the first input stand that much further on.
  const auto shift = static_cast<std::int64_t>(std::abs(values[2]) + std::abs(values[3]));
  return gaps.Resampled(up, down, kernel + shift);
}

std::optional<Gaps> ReplacedGaps(std::span<const double> /*values*/, const Gaps& /*gaps*/) {
  return std::nullopt;
}

}  // namespace wavechain
