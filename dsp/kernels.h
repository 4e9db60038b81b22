#ifndef WAVEFILTERS_DSP_KERNELS_H
#define WAVEFILTERS_DSP_KERNELS_H

namespace wavefilters {

/// The convolution of `outCount` outputs with `taps` coefficients, applied without reversal:
/// out[i] is the sum over k of in[i + k] * coef[k], in single precision. The products are
/// summed four at a time, ((p0 + p1) + p2) + p3, each group then added to the accumulator,
/// which starts at +0; the last taps that make no group are added one by one. That order
/// fixes every bit of the result. `in` has outCount + taps - 1 samples and does not overlap
/// `out`.
void Convolve(const float* in, const float* coef, int taps, float* out, int outCount);

}  // namespace wavefilters

#endif
