#ifndef WAVEFILTERS_DSP_FIR_FILTER_H
#define WAVEFILTERS_DSP_FIR_FILTER_H

#include <cstdint>

#include "dsp/convolve.h"
#include "dsp/design.h"
#include "dsp/non_causal.h"

namespace wavefilters {

/// Linear-phase FIR filter of 2N + 1 taps without delay: a Hamming-weighted average, unless
/// a derived class designs other coefficients.
///
/// | index | parameter     | unit    | default                                    |
/// |-------|---------------|---------|--------------------------------------------|
/// | 0     | half-length N | samples | 0, for which this design is not-a-number:  |
/// |       |               |         | a host always gives one                    |
///
/// N is truncated to a whole number and kept within 0 and MaxHalfLen. Parameters take effect
/// when a source is attached. Every block that is worked through once the stream has ended
/// is followed by a report of the average cost of a multiply-accumulate.
class FIRFilter : public NonCausal {
 public:
  using NonCausal::Init;
  void Set_param_list(double* values, int count) override;
  void Init(double interval_ms) override;
  void Apply(float* in, float* out, int n) override;
  /// Slot 16. Designs `taps` coefficients for a sampling interval in seconds. Nothing is
  /// written outside coefficients[0 .. taps).
  virtual void CalcCoef(float* coefficients, int taps, double interval_s);

 protected:
  FIRFilter() = default;
  ~FIRFilter() = default;

 private:
  std::int32_t halfLen = 0;
  std::int32_t tapCount = 1;
  float coef[MaxTaps] = {};
  const ConvolveFunction convolve = ConvolveFor(WidestInstructionSet());
};

}  // namespace wavefilters

#endif
