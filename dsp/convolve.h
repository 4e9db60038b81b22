#ifndef WAVEFILTERS_DSP_CONVOLVE_H
#define WAVEFILTERS_DSP_CONVOLVE_H

#include "dsp/instruction_set.h"

namespace wavefilters {

/// The convolution of `outCount` outputs with `taps` coefficients, applied without reversal:
/// out[i] is the sum over k of in[i + k] * coef[k], in single precision. The products are
/// summed four at a time, ((p0 + p1) + p2) + p3, each group then added to the accumulator,
/// which starts at +0; the last taps that make no group are added one by one. That order
/// fixes every bit of the result. `in` has outCount + taps - 1 samples and does not overlap
/// `out`; counts below 1 write nothing.
using ConvolveFunction = void (*)(const float* in, const float* coef, int taps, float* out,
                                  int outCount);

/// The one built for an instruction set, which must be at most `WidestInstructionSet()`.
ConvolveFunction ConvolveFor(InstructionSet set);

}  // namespace wavefilters

#endif
