#ifndef WAVEFILTERS_HOST_GAPS_H
#define WAVEFILTERS_HOST_GAPS_H

#include <cstdint>
#include <span>
#include <vector>

namespace wavechain {

/// Samples first to last - 1.
struct Gap {
  std::int64_t first = 0;
  std::int64_t last = 0;
  bool operator==(const Gap&) const = default;
};

/// The samples of a signal that have no data behind them, as spans in ascending order that do
/// not touch. The library renders such samples as 0, which alone tells nothing.
class Gaps {
 public:
  /// Adds a span that does not begin before the last one; an empty one is no gap.
  void Add(Gap gap);

  std::span<const Gap> All() const { return gaps; }
  /// How many of the first `length` samples lie in gaps.
  std::int64_t Samples(std::int64_t length) const;

  /// Every gap reaching so many samples further to either side, as behind a filter that looks so
  /// far, and not before 0.
  Gaps Widened(std::int64_t samples) const;
  /// The samples that are missing in either.
  Gaps United(const Gaps& other) const;
  /// Behind a resampler, whose sample k stands at the high-rate step k down and sees what stands
  /// up to `reach` steps from there; sample i of this signal stands at i up.
  Gaps Resampled(std::int64_t up, std::int64_t down, std::int64_t reach) const;

  /// Sets valid[i] to 0 where sample start + i lies in a gap, to 1 elsewhere.
  void Mark(std::int64_t start, std::span<unsigned char> valid) const;

 private:
  std::vector<Gap> gaps;
};

}  // namespace wavechain

#endif
