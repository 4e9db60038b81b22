#ifndef TESTS_REFERENCE_GLOT_SYN_H_
#define TESTS_REFERENCE_GLOT_SYN_H_

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numbers>
#include <vector>

#include "reference/event_source.h"

namespace reference {

// The glottal source: each pulse is a resonance that grows toward its instant, filtered by the
// tract, followed by the tract's ringing.
class GlotSyn : public EventSource {
 public:
  GlotSyn() : EventSource(".gpl") {}

  void Apply(float* out, std::int64_t count, std::int64_t start) override {
    while (pending && NextFits(count, start)) {
      pending = stream->GetDouble(amplitude) && stream->GetDouble(frequency_kHz) &&
                stream->GetDouble(bandwidth_kHz);
      if (!pending) return;
      coefficients = ReadTract();
      const std::int64_t current = next;
      const std::int64_t position = current - start;
      pending = ReadNextTime();
      const std::int64_t period = pending ? next - current : count - position;
      if (position >= 0 && period > 0) PutPulse(out, position, period);
    }
  }

 private:
  void PutPulse(float* out, std::int64_t position, std::int64_t period) const {
    const std::int64_t rise =
        std::min<std::int64_t>(2 * period, std::min<std::int64_t>(position, 512));
    const auto n = static_cast<std::size_t>(rise);
    const auto length = static_cast<double>(period);
    std::vector<float> w = Rise(n);
    std::vector<float> a = coefficients;
    for (std::size_t k = 0; k <= n; ++k) w[k] = w[k] - SumOfPast(a, w, k);
    for (std::size_t k = n + 1; k <= n + 1023; ++k) {
      const auto e = static_cast<double>(k - n - 1);
      if (0.6 * length < e && e <= 0.8 * length) Widen(a);
      w[k] = (e < 1.5 * length && a.size() > 1) ? -SumOfPast(a, w, k) : 0.0F;
    }
    const float gain = GainAtZeroFrequency(coefficients);
    for (std::size_t i = 0; i <= n + 1023; ++i) {
      const float added = gain * w[i];
      float& sample = out[position - rise + static_cast<std::int64_t>(i)];
      sample = sample + added;
    }
  }

  // The resonance, run backwards in time from the instant w[n]; room for the ringing follows it.
  std::vector<float> Rise(std::size_t n) const {
    const auto r = static_cast<float>(std::exp(-std::numbers::pi * bandwidth_kHz * interval_ms));
    const double c = std::cos(2.0 * std::numbers::pi * frequency_kHz * interval_ms);
    const float r2 = r * r;
    const auto a1 = static_cast<float>(-2.0 * c * static_cast<double>(r));
    const double wide = a1;
    const float quotient = r2 / a1;
    std::vector<float> w(n + 1024, 0.0F);
    w[n] = static_cast<float>(-amplitude / wide);
    if (n >= 1) w[n - 1] = static_cast<float>(amplitude);
    if (n >= 2) {
      w[n - 2] =
          static_cast<float>(amplitude * (1.0 / wide - wide + static_cast<double>(quotient)));
    }
    for (std::size_t back = 3; back <= n; ++back) {
      const std::size_t i = n - back;
      const float first = (-a1) * w[i + 1];
      const float second = r2 * w[i + 2];
      w[i] = first - second;
    }
    return w;
  }

  static void Widen(std::vector<float>& a) {
    float g = 1.0F;
    for (std::size_t j = 1; j < a.size(); ++j) {
      g = static_cast<float>(static_cast<double>(g) * 0.9985);
      a[j] = a[j] * g;
    }
  }

  double amplitude = 0.0;
  double frequency_kHz = 0.0;
  double bandwidth_kHz = 0.0;
  std::vector<float> coefficients{1.0F};
};

}  // namespace reference

#endif  // TESTS_REFERENCE_GLOT_SYN_H_
