#pragma once

#include <cmath>
#include <vector>

namespace reference {

// A moving average of n points under a Hamming window, with a sum of 1.
inline std::vector<float> HammingAverage(int n) {
  const double twoPi = 6.283185307179586;
  const double scale = 1.0 / (0.54 * n - 0.46);
  std::vector<float> coef;
  for (int i = 0; i < n; ++i) {
    coef.push_back(static_cast<float>(scale * (0.54 - 0.46 * std::cos(twoPi * i / (n - 1)))));
  }
  return coef;
}

// An impulse minus a band-pass of seven cosines, 1/n cycles per sample apart, around a frequency in
// Hz at a sampling interval of T seconds. Where n is even the last of the n + 1 points is left out.
inline std::vector<float> Notch(int n, double frequency, double edgeWeight, double T) {
  const double twoPi = 6.283185307179586;
  const int h = n / 2;
  const double x = frequency * T;
  const double d1 = 1.0 / n;
  const double d2 = 2.0 / n;
  const double d3 = 3.0 / n;
  std::vector<float> coef;
  for (int k = -h; k <= h && static_cast<int>(coef.size()) < n; ++k) {
    double s = std::cos(frequency * twoPi * T * k);
    s = s + std::cos((x - d1) * twoPi * k);
    s = s + std::cos((x + d1) * twoPi * k);
    s = s + std::cos((x - d2) * twoPi * k);
    s = s + std::cos((x + d2) * twoPi * k);
    s = s + edgeWeight * std::cos((x - d3) * twoPi * k);
    s = s + edgeWeight * std::cos((x + d3) * twoPi * k);
    coef.push_back(static_cast<float>(k == 0 ? 1 - 2 * s / n : -2 * s / n));
  }
  return coef;
}

// One output: in[0, taps) times the coefficients in single precision. Four products at a time are
// added up first, then added to the sum; what is left of the taps follows one by one.
inline float InnerProduct(const float* in, const std::vector<float>& coef) {
  const std::size_t taps = coef.size();
  float sum = 0.0F;
  std::size_t k = 0;
  for (; k + 4 <= taps; k += 4) {
    const float p0 = in[k] * coef[k];
    const float p1 = in[k + 1] * coef[k + 1];
    const float p2 = in[k + 2] * coef[k + 2];
    const float p3 = in[k + 3] * coef[k + 3];
    const float group = ((p0 + p1) + p2) + p3;
    sum = sum + group;
  }
  for (; k < taps; ++k) {
    const float product = in[k] * coef[k];
    sum = sum + product;
  }
  return sum;
}

// `count` outputs, the first from in[0].
inline std::vector<float> Convolve(const float* in, const std::vector<float>& coef, int count) {
  std::vector<float> out;
  for (int i = 0; i < count; ++i) {
    out.push_back(InnerProduct(in + i, coef));
  }
  return out;
}

// The whole filter at once: output i is centred on signal[i], with zeros before and after the
// signal; `count` may go beyond the signal's end.
inline std::vector<float> Filtered(const std::vector<float>& signal, const std::vector<float>& coef,
                                   int count) {
  const std::size_t half = coef.size() / 2;
  std::vector<float> padded(half, 0.0F);
  padded.insert(padded.end(), signal.begin(), signal.end());
  padded.resize(padded.size() + half + static_cast<std::size_t>(count), 0.0F);
  return Convolve(padded.data(), coef, count);
}

}  // namespace reference
