#ifndef WAVEFILTERS_DSP_RESAMPLE_H
#define WAVEFILTERS_DSP_RESAMPLE_H

#include <cstdint>

#include "dsp/design.h"
#include "dsp/polyphase.h"
#include "dsp/resample_steps.h"
#include "dsp/source_fill.h"
#include "frame/siso_filter.h"

namespace wavefilters {

/// Base of a resampler by a rational factor L/M: each input sample becomes L high-rate steps,
/// a polyphase kernel filters them, and every M-th step makes an output. There is no delay:
/// the kernel is centred on the current sample. A derived class has the kernel's design and
/// the parameters.
///
/// The descriptor handed on has the new interval and length; the length is truncated, and the
/// stream may deliver one sample more than announced.
///
/// What the derived class sets in `setup` takes effect when a source is attached; until then
/// the stream, and the descriptor, keep to what it was attached with.
class Resample : public SISOFilter {
 public:
  void GetDescriptor(IWaveDescriptorC** out) override;
  /// `out` is written whenever outputs are made: there is no peek.
  int TransmitNow(float* out, int n, int& got) override;
  bool EndOfSrc() override;
  int SrcSet() override;
  /// Slot 15. Designs the kernel for what is set up: writes up to MaxTaps coefficients and
  /// stores their number in `count`.
  virtual void CalcCoef(float* c, int& count) = 0;
  /// Slot 16. Runs the high-rate steps until `nIn` inputs are consumed or `nOut` outputs are
  /// made. `in` is the oldest sample in reach: it holds the margins and `nIn` samples more.
  /// Takes time in proportion to what is consumed and produced, whatever the factors are.
  virtual void Apply(float* in, float* out, int nIn, int nOut, int& consumed, int& produced);

 protected:
  Resample() = default;
  ~Resample() = default;

  struct Setup {
    std::int32_t histLen = 0;     // input samples that the kernel reaches back
    std::int32_t aheadLen = 0;    // and ahead
    std::int32_t upFactor = 1;    // L, 1 or more
    std::int32_t downFactor = 1;  // M, 1 or more
    std::int32_t phaseStart = 0;  // any value
    std::int32_t downStart = 0;   // any value
  };
  Setup setup;

 private:
  void Fill(int want);
  void MakeOutputs(const ResampleSteps& steps, const float* in, int inCount, float* out,
                   int outCount) const;
  std::int32_t Margins() const { return stream.histLen + stream.aheadLen; }

  Setup stream;  // what the running stream was attached with
  std::int32_t phase = 0;
  std::int32_t downCount = 0;

  std::int32_t coefCount = 0;
  float coef[MaxTaps] = {};
  PolyphaseBank bank{WidestInstructionSet()};

  std::int32_t bufFill = 0;
  std::int32_t padLeft = 0;  // trailing zeros still to append
  bool ended = true;
  float buffer[BlockBufferSize];
};

}  // namespace wavefilters

#endif
