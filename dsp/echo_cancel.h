#ifndef WAVEFILTERS_DSP_ECHO_CANCEL_H
#define WAVEFILTERS_DSP_ECHO_CANCEL_H

#include <cstdint>

#include "dsp/non_causal_p.h"

namespace wavefilters {

/// First source minus second source, as the combining partner of a pair.
///
/// | index | parameter                                  | unit    | default |
/// |-------|--------------------------------------------|---------|---------|
/// | 0     | D, margins of the second source's buffer   | samples | 0       |
///
/// D is truncated and kept within 0 and MaxHalfLen. It reserves room around the second
/// source's samples and delays nothing: sample i is taken from sample i. D takes effect at
/// once, but the buffer is laid out for it when sources are attached, so a D set in
/// mid-stream shifts the second source by the difference until then.
class EchoCancel : public NonCausalP {
 public:
  void Set_param_list(double* values, int count) override;
  /// `out` comes with source 1 in it; computed in single precision.
  void Apply(float* in, float* out, int n) override;

 protected:
  EchoCancel() = default;
  ~EchoCancel() = default;

 private:
  std::int32_t echoSpan = 0;  // D, also the index of the current sample
};

}  // namespace wavefilters

#endif
