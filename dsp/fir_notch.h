#ifndef WAVEFILTERS_DSP_FIR_NOTCH_H
#define WAVEFILTERS_DSP_FIR_NOTCH_H

#include "dsp/fir_filter.h"

namespace wavefilters {

/// Notch (band-stop) filter around one frequency.
///
/// | index | parameter       | unit    | default                     |
/// |-------|-----------------|---------|-----------------------------|
/// | 0     | half-length N   | samples | 0: a host always gives one  |
/// | 1     | notch frequency | Hz      | 2500                        |
/// | 2     | edge weight     | factor  | 0.5                         |
///
/// With a console, the notch frequency in radians per sample is written whenever a source
/// is attached.
class FIRNotch : public FIRFilter {
 public:
  void Set_param_list(double* values, int count) override;
  void CalcCoef(float* coefficients, int taps, double interval_s) override;

 protected:
  FIRNotch() = default;
  ~FIRNotch() = default;

 private:
  double notchFreq = 2500.0;  // Hz
  double edgeWeight = 0.5;    // of the outermost pair of cosines of the design
};

}  // namespace wavefilters

#endif
