#include "host/signal_totals.h"

#include <bit>

namespace wavechain {

void SignalTotals::Add(const float* block, int count) {
  // Magnitudes order as integers do, those that are not finite behind all others: so the loop
  // becomes SIMD.
  constexpr std::uint32_t Magnitude = 0x7fffffffU;
  constexpr std::int32_t Infinity = 0x7f800000;
  std::int32_t nans = 0;
  std::int32_t infinities = 0;
  auto greatest = std::bit_cast<std::int32_t>(peak);
  for (int i = 0; i < count; ++i) {
    const auto size = static_cast<std::int32_t>(std::bit_cast<std::uint32_t>(block[i]) & Magnitude);
    nans += size > Infinity ? 1 : 0;
    infinities += size == Infinity ? 1 : 0;
    greatest = std::max(greatest, size < Infinity ? size : 0);
  }
  samples += count;
  nan += nans;
  infinite += infinities;
  peak = std::bit_cast<float>(greatest);
}

}  // namespace wavechain
