#ifndef WAVEFILTERS_FRAME_SINE_FILTER_H
#define WAVEFILTERS_FRAME_SINE_FILTER_H

#include "frame/in_place.h"

namespace wavefilters {

/// Adds a sinusoid to its input and reports the average cost of a sample when the source
/// has ended (again at every pull after the end).
///
/// | index | parameter | unit         | default |
/// |-------|-----------|--------------|---------|
/// | 0     | frequency | Hz           | 100     |
/// | 1     | amplitude | sample units | 1       |
/// | 2     | phase     | degrees      | 0       |
///
/// Parameters take effect when a source is attached. The sinusoid is a rotating complex
/// number, one multiplication a sample, never renormalised; it runs on across blocks.
class SineFilter : public InPlace {
 public:
  using InPlace::Init;
  void Set_param_list(double* values, int count) override;
  void Init(double interval_ms) override;
  void Apply(float* samples, int count) override;

 protected:
  SineFilter() = default;
  ~SineFilter() = default;

 private:
  double frequency = 100.0;  // Hz
  double amplitude = 1.0;
  double phase = 0.0;  // degrees, of the first sample

  double stepCosine = 1.0;  // of the angle that one sample advances
  double stepSine = 0.0;

  double real = 0.0;  // what the next sample receives
  double imaginary = 0.0;
};

}  // namespace wavefilters

#endif
