#ifndef WAVEFILTERS_DSP_POLYPHASE_H
#define WAVEFILTERS_DSP_POLYPHASE_H

#include <cstdint>

#include "dsp/design.h"
#include "dsp/instruction_set.h"

namespace wavefilters {

/// A kernel of a rational resampler, stored by phase, and its run over a block.
///
/// The output at high-rate position newest * L + phase, with 0 <= phase < L, is the sum over
/// m = 0, 1, ... of in[newest - m] * coef[count - 1 - phase - m * L] while the coefficient's
/// index is at least 0: products in single precision, the sum in double from +0 on. That order
/// fixes every bit. A block's outputs lie M positions apart.
class PolyphaseBank {
 public:
  explicit PolyphaseBank(InstructionSet instructions) : set(instructions) {}

  /// Takes `count` coefficients (0 to MaxTaps) for the factors L and M (each 1 or more).
  void Store(const float* coef, int count, std::int32_t upFactor, std::int32_t downFactor);

  /// The most coefficients that one phase has: an output reads that many samples, its newest
  /// one and those before it.
  int TapsPerPhase() const { return shortest + (longer > 0 ? 1 : 0); }

  /// Makes `outCount` outputs from the position of the first on, out of the `inCount` samples
  /// (at most BlockBufferSize) in `in`, which hold all that the outputs read.
  void Run(const float* in, int inCount, std::int64_t position, float* out, int outCount) const;

  /// One phase's coefficients, in the order in which samples older and older meet them.
  struct Phase {
    const float* coef;
    int taps;
  };

 private:
  Phase At(std::int64_t phase) const;
  void RunSingly(const float* in, std::int64_t position, float* out, int outCount) const;
  void RunByPhase(const float* in, int inCount, std::int64_t position, float* out,
                  int outCount) const;

  std::int64_t up = 1;
  std::int64_t down = 1;
  // Outputs whose numbers differ by `phases` have one phase and lie `advance` inputs apart.
  std::int64_t phases = 1;
  std::int64_t advance = 1;

  // Each phase has `shortest` taps, the first `longer` of them one more.
  int shortest = 0;
  std::int64_t longer = 0;
  float byPhase[MaxTaps] = {};

  InstructionSet set;
};

}  // namespace wavefilters

#endif
