#ifndef WAVEFILTERS_DSP_KERNELS_H
#define WAVEFILTERS_DSP_KERNELS_H

#include <cstdint>

namespace wavefilters {

/// The convolution of `outCount` outputs with `taps` coefficients, applied without reversal:
/// out[i] is the sum over k of in[i + k] * coef[k], in single precision. The products are
/// summed four at a time, ((p0 + p1) + p2) + p3, each group then added to the accumulator,
/// which starts at +0; the last taps that make no group are added one by one. That order
/// fixes every bit of the result. `in` has outCount + taps - 1 samples and does not overlap
/// `out`.
void Convolve(const float* in, const float* coef, int taps, float* out, int outCount);

/// One output of a polyphase filter: the sum of in[newest - m] * coef[last - m * stride] over
/// m = 0, 1, ... while the coefficient's index is at least 0. Products in single precision, the
/// sum in double from +0 on. What lies outside coef[0 .. coefCount) or before in[0] counts as 0.
/// `stride` is at least 1.
float PolyphaseSum(const float* in, std::int64_t newest, const float* coef, std::int64_t coefCount,
                   std::int64_t last, std::int64_t stride);

}  // namespace wavefilters

#endif
