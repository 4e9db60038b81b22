#ifndef WAVEFILTERS_DSP_RESAMPLE_BLACKMAN_H
#define WAVEFILTERS_DSP_RESAMPLE_BLACKMAN_H

#include "dsp/resample.h"

namespace wavefilters {

/// Rational resampler with a Blackman-windowed sinc, modulated if so wanted.
///
/// | index | parameter                  | unit                       | if absent        |
/// |-------|----------------------------|----------------------------|------------------|
/// | 0     | M, decimation factor       | factor, 1 or more          | keeps its value  |
/// | 1     | L, interpolation factor    | factor, 1 or more          | keeps its value  |
/// | 2     | downStart                  | high-rate steps            | keeps its value  |
/// | 3     | phaseStart                 | high-rate steps            | keeps its value  |
/// | 4     | shift, modulation          | of the high-rate Nyquist   | keeps its value  |
/// | 5     | Q, kernel half-length      | high-rate steps, 0 to 2048 | 60               |
/// | 6     | cutoff                     | of the high-rate Nyquist   | 1 / max(L, M)    |
/// | 7     | widen, of the cutoff       | cutoff times half-length   | keeps its value  |
///
/// Decimation comes first. Whole numbers are truncated. Every call, an empty one too, works
/// out Q, the cutoff and the margins (Q / L inputs to either side) again. L above Q leaves a
/// kernel of one coefficient: the output is then stuffed with zeros. A filter that was never
/// given a list is an identity. Parameters take effect when a source is attached.
class ResampleBlackman : public Resample {
 public:
  void Set_param_list(double* values, int count) override;
  void CalcCoef(float* c, int& count) override;

 protected:
  ResampleBlackman() = default;
  ~ResampleBlackman() = default;

 private:
  double cutoff = 1.0;
  double shift = 0.0;
  double widen = 0.52;
};

}  // namespace wavefilters

#endif
