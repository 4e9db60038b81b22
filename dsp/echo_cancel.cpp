#include "dsp/echo_cancel.h"

#include <algorithm>

#include "dsp/design.h"
#include "frame/params.h"

namespace wavefilters {

void EchoCancel::Set_param_list(double* values, int count) {
  const Params list{values, count};
  list.ReadInt(0, echoSpan);
  echoSpan = std::clamp(echoSpan, 0, MaxHalfLen);
  histLen = echoSpan;
  aheadLen = echoSpan;
}

void EchoCancel::Apply(float* in, float* out, int n) {
  const float* current = in + echoSpan;
  for (int i = 0; i < n; ++i) {
    out[i] -= current[i];
  }
}

}  // namespace wavefilters
