#ifndef TESTS_REFERENCE_FRIC_SYN_H_
#define TESTS_REFERENCE_FRIC_SYN_H_

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <numbers>
#include <utility>
#include <vector>

#include "reference/event_source.h"

namespace reference {

// The frication source: bursts of windowed noise, shaped by a fixed filter and by the tract. The
// noise comes from the generator that it is given: the C library's rand follows the product's
// draws.
class FricSyn : public EventSource {
 public:
  FricSyn() : EventSource(".fla") {}

  void DrawFrom(std::function<int()> generator) { draw = std::move(generator); }

  void Apply(float* out, std::int64_t count, std::int64_t start) override {
    while (pending && NextFits(count, start)) {
      pending = stream->GetDouble(amplitude);
      if (!pending) return;
      coefficients = ReadTract();
      const std::int64_t position = next - start;
      if (position >= 0) PutBurst(out, position);
      pending = ReadNextTime();
    }
  }

 private:
  void PutBurst(float* out, std::int64_t position) {
    const std::int64_t half = Int32(5.0 / interval_ms);
    if (position < half || half < 1 || half > 7168) return;
    const std::int64_t length = std::min(Int32(20.0 / interval_ms) + half, half + 1024);
    std::vector<float> w = Noise(std::min(2 * half + 1, length));
    w.resize(static_cast<std::size_t>(length), 0.0F);
    Shape(w);
    for (std::size_t k = 0; k < w.size(); ++k) w[k] = w[k] - SumOfPast(coefficients, w, k);
    const float gain = GainAtZeroFrequency(coefficients);
    for (std::int64_t i = 0; i < length; ++i) {
      const float added = gain * w[static_cast<std::size_t>(i)];
      float& sample = out[position - half + i];
      sample = sample + added;
    }
  }

  std::vector<float> Noise(std::int64_t samples) {
    const auto scale = static_cast<float>(amplitude * 3.4641016151377544 / 2147483647.0);
    const auto last = static_cast<double>(samples - 1);
    std::vector<float> w;
    for (std::int64_t i = 0; i < samples; ++i) {
      const double noise = static_cast<double>(draw()) - 1073741823.5;
      const double window = std::sin(static_cast<double>(i) * std::numbers::pi / last);
      w.push_back(static_cast<float>(noise * window * static_cast<double>(scale)));
    }
    return w;
  }

  // A first difference, then a resonance at 50 Hz of 100 Hz bandwidth.
  void Shape(std::vector<float>& w) const {
    const auto r = static_cast<float>(std::exp(-0.3141592653589793 * interval_ms));
    const double c = std::cos(0.3141592653589793 * interval_ms);
    const auto a1 = static_cast<float>(-2.0 * c * static_cast<double>(r));
    float lastInput = 0.0F;
    float last = 0.0F;
    float lastButOne = 0.0F;
    for (float& sample : w) {
      const float difference = sample - lastInput;
      const float first = a1 * last;
      const float decayed = lastButOne * r;
      const float second = decayed * r;
      const float partial = difference - first;
      lastInput = sample;
      lastButOne = last;
      sample = partial - second;
      last = sample;
    }
  }

  std::function<int()> draw;
  double amplitude = 0.0;
  std::vector<float> coefficients{1.0F};
};

}  // namespace reference

#endif  // TESTS_REFERENCE_FRIC_SYN_H_
