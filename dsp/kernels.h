#ifndef WAVEFILTERS_DSP_KERNELS_H
#define WAVEFILTERS_DSP_KERNELS_H

#include <cstdint>

namespace wavefilters {

/// One output of a polyphase filter: the sum of in[newest - m] * coef[last - m * stride] over
/// m = 0, 1, ... while the coefficient's index is at least 0. Products in single precision, the
/// sum in double from +0 on. What lies outside coef[0 .. coefCount) or before in[0] counts as 0.
/// `stride` is at least 1.
float PolyphaseSum(const float* in, std::int64_t newest, const float* coef, std::int64_t coefCount,
                   std::int64_t last, std::int64_t stride);

}  // namespace wavefilters

#endif
