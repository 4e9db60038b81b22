#include "dsp/sum_sources.h"

#include "frame/params.h"

namespace wavefilters {

void SumSources::Set_param_list(double* values, int count) {
  const Params list{values, count};
  list.Read(0, gain1);
  list.Read(1, gain2);
}

void SumSources::Apply(float* in, float* out, int n) {
  const double g1 = gain1;
  const double g2 = gain2;
  for (int i = 0; i < n; ++i) {
    out[i] = static_cast<float>(double{out[i]} * g1 + double{in[i]} * g2);
  }
}

}  // namespace wavefilters
