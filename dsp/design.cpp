#include "dsp/design.h"

#include <cmath>

namespace wavefilters {
namespace {

constexpr double Pi = 3.141592653589793;
constexpr double TwoPi = 6.283185307179586;

}  // namespace

void DesignHammingAverage(float* coef, int taps) {
  const double scale = 1.0 / (0.54 * taps - 0.46);
  for (int i = 0; i < taps; ++i) {
    const double window = 0.54 - 0.46 * std::cos(TwoPi * i / (taps - 1.0));
    coef[i] = static_cast<float>(scale * window);
  }
}

void DesignNotch(float* coef, int taps, double interval_s, double frequency, double edgeWeight) {
  const int half = taps / 2;
  const double n = taps;
  const double cycles = frequency * interval_s;  // per sample
  const double d1 = 1.0 / n;
  const double d2 = 2.0 / n;
  const double d3 = 3.0 / n;
  // The centre's angle is formed apart from the others: it may differ in its last bit.
  const double centre = frequency * TwoPi * interval_s;
  const double below1 = (cycles - d1) * TwoPi;
  const double above1 = (cycles + d1) * TwoPi;
  const double below2 = (cycles - d2) * TwoPi;
  const double above2 = (cycles + d2) * TwoPi;
  const double below3 = (cycles - d3) * TwoPi;
  const double above3 = (cycles + d3) * TwoPi;
  // An even number of taps has no place for the last point of a symmetric design.
  for (int i = 0; i < taps; ++i) {
    const double k = static_cast<double>(i) - half;
    const double sum = std::cos(centre * k) + std::cos(below1 * k) + std::cos(above1 * k) +
                       std::cos(below2 * k) + std::cos(above2 * k) +
                       edgeWeight * std::cos(below3 * k) + edgeWeight * std::cos(above3 * k);
    coef[i] = static_cast<float>(i == half ? 1.0 - 2.0 * sum / n : -2.0 * sum / n);
  }
}

void DesignBlackmanSinc(float* coef, int taps, int upFactor, double cutoff, double shift,
                        double widen) {
  if (taps == 1) {
    coef[0] = 1.0F;
    return;
  }
  const double h = 0.5 * (taps - 1.0);
  const double widened = widen / h + cutoff;
  for (int i = 0; i < taps; ++i) {
    const double t = (i - h) * Pi;
    const auto sinc = static_cast<float>(i == h ? widened : std::sin(widened * t) / t);
    const double modulation = std::cos(t * shift);
    const double window = 0.08 * std::cos(TwoPi * i / h) + (0.42 - 0.5 * std::cos(Pi * i / h));
    coef[i] = static_cast<float>(double{sinc * static_cast<float>(upFactor)} * modulation * window);
  }
}

}  // namespace wavefilters
