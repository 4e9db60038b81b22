#pragma once

#include <cmath>
#include <cstdint>
#include <vector>

namespace reference {

inline constexpr double TwoPi = 6.283185307179586;

// Adds a sine by turning a point on a circle, sample by sample, in double precision.
struct Sine {
  double stepCosine, stepSine, real, imaginary;

  Sine(double frequency, double amplitude, double phase, double interval_ms) {
    const double theta = TwoPi * phase / 360;
    const double omega = 0.001 * TwoPi * frequency * interval_ms;
    stepCosine = std::cos(omega);
    stepSine = std::sin(omega);
    real = amplitude * std::cos(theta);
    imaginary = amplitude * std::sin(theta);
  }

  void Apply(std::vector<float>& samples) {
    for (float& sample : samples) {
      sample = sample + static_cast<float>(real);
      const double turned = stepCosine * real - stepSine * imaginary;
      imaginary = stepCosine * imaginary + stepSine * real;
      real = turned;
    }
  }
};

// The square wave with its two weights.
struct Square {
  std::int32_t halfPeriod = 256;
  double currentWeight = 1.0, previousWeight = 0.0;
  double level = -1.0, previousLevel = -1.0;
  std::int32_t counter = 0;

  float Next() {
    ++counter;
    const double used = level;
    const double out = currentWeight * level + previousWeight * previousLevel;
    if (counter >= halfPeriod) {
      level = -level;
      counter = 0;
    }
    previousLevel = used;
    return static_cast<float>(out);
  }
};

}  // namespace reference
