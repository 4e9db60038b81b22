#ifndef WAVEFILTERS_HOST_GAPS_BEHIND_H
#define WAVEFILTERS_HOST_GAPS_BEHIND_H

#include <optional>
#include <span>

#include "host/gaps.h"

namespace wavechain {

// What becomes of a track's gaps behind a filter, by the values of its parameters. A sample has
// data behind it when every sample that it is made of has.

/// Behind a filter that reaches as far to either side as its first parameter says.
std::optional<Gaps> SmoothedGaps(std::span<const double> values, const Gaps& gaps);

/// Behind the resampler.
std::optional<Gaps> ResampledGaps(std::span<const double> values, const Gaps& gaps);

/// Behind a filter that replaces the signal by another one: that has none.
std::optional<Gaps> ReplacedGaps(std::span<const double> values, const Gaps& gaps);

}  // namespace wavechain

#endif
