#ifndef WAVEFILTERS_HOST_SIGNAL_TOTALS_H
#define WAVEFILTERS_HOST_SIGNAL_TOTALS_H

#include <algorithm>
#include <cstdint>

namespace wavechain {

/// What the samples of a signal come to.
struct SignalTotals {
  std::int64_t samples = 0;
  std::int64_t nan = 0;
  std::int64_t infinite = 0;
  float peak = 0.0F;  // the greatest magnitude of those that are finite

  std::int64_t NonFinite() const { return nan + infinite; }
  void Add(const float* block, int count);
  /// Takes those of a signal beside this one, which has its samples at the same times.
  void AddBeside(const SignalTotals& other) {
    samples = std::max(samples, other.samples);
    nan += other.nan;
    infinite += other.infinite;
    peak = std::max(peak, other.peak);
  }
};

}  // namespace wavechain

#endif
