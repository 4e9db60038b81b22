#include "voice/fric_syn.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "frame/numeric.h"

namespace wavefilters {
namespace {

constexpr int Tail = 1024;                  // samples from the centre on
constexpr int MaxHalfWindow = 8192 - Tail;  // what a staged block has room for before them
constexpr double Pi = 3.141592653589793;

}  // namespace

void FricSyn::Init(double interval_ms) {
  halfWindow = ToInt32(5.0 / interval_ms);
  EventTrack::Init(interval_ms);
}

void FricSyn::Apply(float* out, int count, int start) {
  while (Due(count, start)) {
    if (!GetDouble(noiseAmplitude)) {
      End();
      return;
    }
    ReadTract(tract);
    const std::int64_t at = std::int64_t{Index()} - start;
    if (at >= 0) {
      PutPulse(out, static_cast<int>(at));
    }
    Advance();
  }
}

void FricSyn::PutPulse(float* out, int at) const {
  if (halfWindow < 1 || halfWindow > MaxHalfWindow || at < halfWindow) {
    return;
  }
  const int toEnd = ToInt32(20.0 / Interval_ms()) + halfWindow;
  const int length = std::min(toEnd, halfWindow + Tail);
  const int window = std::min(2 * halfWindow + 1, length);
  float w[MaxHalfWindow + Tail];
  DrawNoise(w, window);
  std::fill(w + window, w + length, 0.0F);
  Shape(w, length);
  tract.Filter(w, length);

  const float gain = tract.Gain();
  float* first = out + (at - halfWindow);
  for (int i = 0; i < length; ++i) {
    first[i] += gain * w[i];
  }
}

// Uniform noise of the width that has the wanted RMS, under a half sine.
void FricSyn::DrawNoise(float* w, int count) const {
  constexpr double Root12 = 3.4641016151377544;
  const double scale =
      static_cast<double>(static_cast<float>(noiseAmplitude * Root12 / 2147483647.0));
  for (int i = 0; i < count; ++i) {
    const double noise = std::rand() - 1073741823.5;
    w[i] = static_cast<float>(noise * std::sin(i * Pi / (count - 1.0)) * scale);
  }
}

// A first difference, which takes the mean out, and a resonance at 50 Hz of 100 Hz bandwidth.
void FricSyn::Shape(float* w, int count) const {
  constexpr double PiTenth = 0.3141592653589793;
  const auto r = static_cast<float>(std::exp(-PiTenth * Interval_ms()));
  const auto a1 = static_cast<float>(-2.0 * std::cos(PiTenth * Interval_ms()) * double{r});
  float before = 0.0F;
  float y1 = 0.0F;
  float y2 = 0.0F;
  for (int i = 0; i < count; ++i) {
    const float x = w[i];
    const float y = x - before - a1 * y1 - y2 * r * r;
    before = x;
    y2 = y1;
    y1 = y;
    w[i] = y;
  }
}

}  // namespace wavefilters
