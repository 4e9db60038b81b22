#ifndef TESTS_REFERENCE_TRACT_H_
#define TESTS_REFERENCE_TRACT_H_

#include <cmath>
#include <cstddef>
#include <numbers>
#include <vector>

namespace reference {

// Predictor coefficients from log-area ratios (base 2) by the step-up recursion. a[0] is 1, and one
// coefficient follows for each ratio.
inline std::vector<float> StepUp(const std::vector<float>& ratios) {
  std::vector<float> a{1.0F};
  a.insert(a.end(), ratios.begin(), ratios.end());
  for (std::size_t i = 1; i < a.size(); ++i) {
    const double e = std::exp(static_cast<double>(a[i]) * std::numbers::ln2);
    const double k = (e - 1.0) / (e + 1.0);
    for (std::size_t j = 1; j <= i / 2; ++j) {
      const double p = a[j];
      const double q = a[i - j];
      a[i - j] = static_cast<float>(k * p + q);
      a[j] = static_cast<float>(p + k * q);
    }
    a[i] = static_cast<float>(k);
  }
  return a;
}

// A(1), the sum of the coefficients.
inline float GainAtZeroFrequency(const std::vector<float>& a) {
  float gain = a[0];
  for (std::size_t j = 1; j < a.size(); ++j) gain = gain + a[j];
  return gain;
}

// a[1] w[k-1] + a[2] w[k-2] + ..., as far back as there are coefficients and samples.
inline float SumOfPast(const std::vector<float>& a, const std::vector<float>& w, std::size_t k) {
  float sum = 0.0F;
  for (std::size_t j = 1; j < a.size() && j <= k; ++j) {
    const float product = a[j] * w[k - j];
    sum = sum + product;
  }
  return sum;
}

}  // namespace reference

#endif  // TESTS_REFERENCE_TRACT_H_
