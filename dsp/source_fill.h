#ifndef WAVEFILTERS_DSP_SOURCE_FILL_H
#define WAVEFILTERS_DSP_SOURCE_FILL_H

#include <algorithm>

#include "frame/interfaces.h"
#include "frame/numeric.h"

namespace wavefilters {

/// Samples that a block filter holds between its source and its Apply: 32 KiB inside each.
inline constexpr int BlockBufferSize = 8192;

/// The two moves by which block buffers are filled, for what follows `fill` valid samples.
/// Callers keep fill + want within the buffer.

/// Asks the source for `want` samples behind the first `fill` of `buffer` and returns how
/// many came, at most what was asked for.
inline int ReadSource(IWaveSourceC* source, float* buffer, int fill, int want) {
  int delivered = 0;
  source->TransmitNow(buffer + fill, want, delivered);
  return Delivered(delivered, want);
}

/// Appends `count` zeros behind the first `fill` samples of `buffer`; none below 1.
inline void AppendZeros(float* buffer, int fill, int count) {
  std::fill_n(buffer + fill, std::max(count, 0), 0.0F);
}

/// Moves buffer[used .. fill) to the front and returns how many samples are left.
inline int DropFront(float* buffer, int fill, int used) {
  std::copy(buffer + used, buffer + fill, buffer);
  return fill - used;
}

}  // namespace wavefilters

#endif
