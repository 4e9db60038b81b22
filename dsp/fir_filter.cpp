#include "dsp/fir_filter.h"

#include <algorithm>

#include "frame/params.h"

namespace wavefilters {

void FIRFilter::Set_param_list(double* values, int count) {
  const Params list{values, count};
  list.ReadInt(0, halfLen);
  halfLen = std::clamp(halfLen, 0, MaxHalfLen);
}

void FIRFilter::Init(double interval_ms) {
  histLen = halfLen;
  aheadLen = halfLen;
  tapCount = 2 * halfLen + 1;
  CalcCoef(coef, tapCount, interval_ms * 0.001);
}

void FIRFilter::Apply(float* in, float* out, int n) {
  timer.Start(Console());
  convolve(in, coef, tapCount, out, n);
  const bool isEnd = EndOfSrc();
  const std::int64_t macs = std::int64_t{n} * tapCount;
  if (macs > 0) {
    timer.Stop(Console(), macs);
  }
  if (isEnd) {
    timer.Report(Console(), "Avg MACC (ns) =");
  }
}

void FIRFilter::CalcCoef(float* coefficients, int taps, double /*interval_s*/) {
  DesignHammingAverage(coefficients, taps);
}

}  // namespace wavefilters
