#include "dsp/resample.h"

#include <algorithm>

#include "dsp/kernels.h"
#include "frame/numeric.h"

namespace wavefilters {

void Resample::GetDescriptor(IWaveDescriptorC** out) {
  Source()->GetDescriptor(out);
  IWaveDescriptorC* descriptor = *out;
  double interval_ms = 0.0;
  descriptor->GetPeriod(&interval_ms);
  descriptor->SetPeriod(static_cast<double>(stream.downFactor) * interval_ms /
                        static_cast<double>(stream.upFactor));
  const std::int64_t length = descriptor->GetLength();
  descriptor->SetLength(LimitToInt32(length * stream.upFactor / stream.downFactor));
}

int Resample::SrcSet() {
  SISOFilter::SrcSet();
  CalcCoef(coef, coefCount);
  coefCount = std::clamp(coefCount, 0, MaxTaps);
  stream = setup;
  bank.Store(coef, coefCount, stream.upFactor, stream.downFactor);
  AppendZeros(buffer, 0, stream.histLen);
  bufFill = stream.histLen;
  ended = false;
  phase = stream.phaseStart;
  downCount = stream.downStart;
  padLeft = stream.aheadLen;
  return 0;
}

int Resample::TransmitNow(float* out, int n, int& got) {
  const std::int64_t up = stream.upFactor;
  const std::int64_t down = stream.downFactor;
  const std::int64_t inputs =
      std::min<std::int64_t>((up + down * n - 1) / up, BlockBufferSize - Margins());
  Fill(LimitToInt32(inputs + Margins() - bufFill));

  got = 0;
  const int available = bufFill - Margins();
  if (available >= 1) {
    int consumed = 0;
    Apply(buffer, out, available, n, consumed, got);
    bufFill = DropFront(buffer, bufFill, std::clamp(consumed, 0, available));
  }
  if (padLeft > 0 || bufFill > Margins()) {
    ended = false;
  } else {
    ended = Source() == nullptr || Source()->EndOfSrc();
  }
  return 0;
}

bool Resample::EndOfSrc() { return ended; }

void Resample::Fill(int want) {
  // The source is asked for its end before the need is looked at, both times.
  if (Source() != nullptr && !Source()->EndOfSrc() && want > 0) {
    const int came = ReadSource(Source(), buffer, bufFill, want);
    bufFill += came;
    want -= came;
  }
  if ((Source() == nullptr || Source()->EndOfSrc()) && want > 0) {
    if (!ended) {
      want = std::min(want, padLeft);
      padLeft -= want;
    }
    AppendZeros(buffer, bufFill, want);
    bufFill += want;
  }
}

void Resample::Apply(float* in, float* out, int nIn, int nOut, int& consumed, int& produced) {
  consumed = 0;
  produced = 0;
  if (nIn < 1 || nOut < 1) {
    return;
  }
  const ResampleSteps steps{stream.upFactor, stream.downFactor, phase, downCount};
  const std::int64_t done = std::min(steps.UntilConsumed(nIn), steps.UntilProduced(nOut));
  produced = static_cast<int>(steps.Produced(done));
  consumed = static_cast<int>(steps.Consumed(done));

  MakeOutputs(steps, in, Margins() + nIn, out, produced);
  phase = LimitToInt32(steps.Phase(done));
  downCount = LimitToInt32(steps.Count(done));
}

void Resample::MakeOutputs(const ResampleSteps& steps, const float* in, int inCount, float* out,
                           int outCount) const {
  const std::int64_t up = stream.upFactor;
  // The bank knows the phases 0 to L - 1 and reads nothing before `in`.
  if (phase >= 0 && phase < up && bank.TapsPerPhase() <= Margins() + 1) {
    const std::int64_t first = Margins() * up + phase + steps.OutputStep(0);
    bank.Run(in, inCount, first, out, outCount);
    return;
  }
  for (int i = 0; i < outCount; ++i) {
    const std::int64_t step = steps.OutputStep(i);
    const std::int64_t newest = Margins() + steps.Consumed(step);
    const std::int64_t inPhase = steps.Phase(step);
    // A phase below 0 has its place one input further on in the kernel.
    const std::int64_t last = coefCount - 1 - inPhase - (inPhase < 0 ? up : 0);
    out[i] = PolyphaseSum(in, newest, coef, coefCount, last, up);
  }
}

}  // namespace wavefilters
