#ifndef WAVEFILTERS_DSP_NON_CAUSAL_H
#define WAVEFILTERS_DSP_NON_CAUSAL_H

#include <cstdint>

#include "dsp/source_fill.h"
#include "frame/siso_filter.h"

namespace wavefilters {

/// Block engine: base of every filter whose output depends on input samples before and
/// after the current one.
///
/// The signal is preceded by `histLen` zeros and followed by `aheadLen` zeros, so as many
/// samples leave as came in, and output i is centred on input i. One call delivers at most
/// BlockBufferSize - histLen - aheadLen samples, whatever was asked for.
///
/// Between calls buffer[0 .. bufFill) holds input in time order. Derived classes set the
/// two margins in Init or Set_param_list, never below 0 and never above MaxHalfLen.
///
/// Without a source (before the first, and after Dispose) the engine first delivers what it
/// still holds and its padding, then what Apply makes of zeros, for as long as it is asked.
class NonCausal : public SISOFilter {
 public:
  /// With a null `out` nothing is consumed and `got` tells what a call would deliver now: a
  /// peek. It fills and pads the buffer like a real call, and may end the stream.
  int TransmitNow(float* out, int n, int& got) override;
  /// True once the source has ended and all trailing zeros are in the buffer. Where a peek
  /// brought that about, the last samples still come with the next call.
  bool EndOfSrc() override;
  int SrcSet() override;
  /// Slot 15. Makes `n` (1 or more) outputs. For output i the current input sample is
  /// in[histLen + i], and in[i] up to in[i + histLen + aheadLen] may be read. This one copies.
  virtual void Apply(float* in, float* out, int n);

 protected:
  NonCausal() = default;
  ~NonCausal() = default;

  /// Fills the buffer for a request of `n` and returns how many outputs are to be had, at most
  /// `n` (a negative request comes back as it is).
  int Fill(int n);

  std::int32_t histLen = 0;
  std::int32_t aheadLen = 0;

 private:
  float buffer[BlockBufferSize];
  std::int32_t bufFill = 0;
  std::int32_t padLeft = 0;  // trailing zeros still to append
  bool ended = true;
};

}  // namespace wavefilters

#endif
