#ifndef WAVEFILTERS_HOST_RESAMPLING_H
#define WAVEFILTERS_HOST_RESAMPLING_H

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace wavechain {

/// How steep and how clean the low-pass of a resampler is. A kernel's response depends on its
/// half-length in units of max(up, down) alone, so a quality is one such length for all ratios.
struct ResamplerQuality {
  std::string_view name;
  int reach;          // half-length in units of max(up, down)
  double widen;       // below 0 it moves the whole transition below the lower Nyquist frequency
  int largestFactor;  // up and down of one stage: the half-length ends at 2048
};

/// From fast to best; docs/resampling.md has what each measures.
std::span<const ResamplerQuality> ResamplerQualities();
/// The quality of that name, or null.
const ResamplerQuality* FindQuality(std::string_view name);

/// How a rate is to be changed, where the host chooses the kernels.
struct Conversion {
  /// The rate to reach in Hz; without one the filter's own factors hold.
  std::optional<double> rate;
  const ResamplerQuality* quality = nullptr;
};

/// A ratio of two rates, up / down in lowest terms.
struct RateRatio {
  std::int64_t up = 1;
  std::int64_t down = 1;
};

/// The fraction of the smallest terms that is the value up to the rounding of doubles; nothing
/// where the terms would leave 32 bits.
std::optional<RateRatio> RatioOf(double value);

/// One resampling filter.
struct ResamplerStage {
  int up = 1;
  int down = 1;
  int halfLength = 0;  // high-rate steps
  double widen = 0.0;

  double Cutoff() const { return 1.0 / (up > down ? up : down); }
  /// Its whole parameter list, in order.
  std::vector<double> Parameters() const;
};

/// The stages that change a rate by the ratio at a quality: as few as its half-length allows,
/// of these the ones that cost least, and nowhere below the lower of the two rates. One stage
/// that changes nothing for 1 / 1. None where the ratio has a prime factor beyond the
/// quality's largest.
std::vector<ResamplerStage> PlanStages(const RateRatio& ratio, const ResamplerQuality& quality);

}  // namespace wavechain

#endif
