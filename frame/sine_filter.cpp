#include "frame/sine_filter.h"

#include <math.h>  // NOLINT(modernize-deprecated-headers): <cmath> does not promise sincos

#include <cmath>

#include "frame/params.h"

namespace wavefilters {
namespace {

constexpr double TwoPi = 6.283185307179586;

}  // namespace

void SineFilter::Set_param_list(double* values, int count) {
  const Params list{values, count};
  list.Read(0, frequency);
  list.Read(1, amplitude);
  list.Read(2, phase);
}

void SineFilter::Init(double interval_ms) {
  const double theta = TwoPi * phase / 360.0;
  const double omega = 0.001 * TwoPi * frequency * interval_ms;
  ::sincos(omega, &stepSine, &stepCosine);
  real = amplitude * std::cos(theta);
  imaginary = amplitude * std::sin(theta);
}

void SineFilter::Apply(float* samples, int count) {
  timer.Start(Console());
  double re = real;
  double im = imaginary;
  const double c = stepCosine;
  const double s = stepSine;
  for (int i = 0; i < count; ++i) {
    samples[i] += static_cast<float>(re);
    const double rotated = c * re - s * im;
    im = c * im + s * re;
    re = rotated;
  }
  real = re;
  imaginary = im;

  const bool ended = EndOfSrc();
  if (count > 0) {
    timer.Stop(Console(), count);
  }
  if (ended) {
    timer.Report(Console(), "Avg complex multiply (ns) =");
  }
}

}  // namespace wavefilters
