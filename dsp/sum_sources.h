#ifndef WAVEFILTERS_DSP_SUM_SOURCES_H
#define WAVEFILTERS_DSP_SUM_SOURCES_H

#include "dsp/non_causal_p.h"

namespace wavefilters {

/// Weighted sum of two sources, as the combining partner of a pair.
///
/// | index | parameter                    | unit   | default |
/// |-------|------------------------------|--------|---------|
/// | 0     | gain1, of the first source   | factor | 1       |
/// | 1     | gain2, of the second source  | factor | 1       |
///
/// Gains are taken as given, negative ones subtract; they take effect at once.
class SumSources : public NonCausalP {
 public:
  void Set_param_list(double* values, int count) override;
  /// `out` comes with source 1 in it; computed in double, rounded once.
  void Apply(float* in, float* out, int n) override;

 protected:
  SumSources() = default;
  ~SumSources() = default;

 private:
  double gain1 = 1.0;
  double gain2 = 1.0;
};

}  // namespace wavefilters

#endif
