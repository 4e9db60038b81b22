#include "voice/glot_syn.h"

#include <algorithm>
#include <cmath>

namespace wavefilters {
namespace {

constexpr int MaxRise = 512;
constexpr int Tail = 1023;  // samples after the instant

}  // namespace

void GlotSyn::Apply(float* out, int count, int start) {
  while (Due(count, start)) {
    if (!ReadResonance()) {
      End();
      return;
    }
    ReadTract(tract);
    const std::int64_t index = Index();
    const std::int64_t at = index - start;
    const std::int64_t period = Advance() ? Index() - index : count - at;
    if (at >= 0) {
      PutPulse(out, static_cast<int>(at), period);
    }
  }
}

bool GlotSyn::ReadResonance() {
  return GetDouble(amplitude) && GetDouble(frequency_kHz) && GetDouble(bandwidth_kHz);
}

void GlotSyn::PutPulse(float* out, int at, std::int64_t period) const {
  if (period < 1) {
    return;
  }
  const int rise = static_cast<int>(std::min<std::int64_t>(2 * period, std::min(at, MaxRise)));
  float w[MaxRise + 1 + Tail];
  Rise(w, rise);
  tract.Filter(w, rise + 1);
  Ring(w, rise, period);

  const float gain = tract.Gain();
  float* first = out + (at - rise);
  for (int i = 0; i <= rise + Tail; ++i) {
    first[i] += gain * w[i];
  }
}

// The resonance z^2 + a1 z + r2, backwards from the instant. Its three starting values are the
// sound of this source: the term 1 / a1 in the third is wanted, though the recursion would not
// give it. What lies before the working buffer is left out.
void GlotSyn::Rise(float* w, int instant) const {
  constexpr double Pi = 3.141592653589793;
  const auto r = static_cast<float>(std::exp(-Pi * bandwidth_kHz * Interval_ms()));
  const double c = std::cos(2.0 * Pi * frequency_kHz * Interval_ms());
  const float r2 = r * r;
  const auto a1 = static_cast<float>(-2.0 * c * double{r});

  w[instant] = static_cast<float>(-amplitude / double{a1});
  if (instant >= 1) {
    w[instant - 1] = static_cast<float>(amplitude);
  }
  if (instant >= 2) {
    const double third = 1.0 / double{a1} - double{a1} + double{r2 / a1};
    w[instant - 2] = static_cast<float>(amplitude * third);
  }
  for (int i = instant - 3; i >= 0; --i) {
    w[i] = -a1 * w[i + 1] - r2 * w[i + 2];
  }
}

// The tract rings on without input, its bandwidths widened further and further within a window
// of the period, as an opening glottis damps it.
void GlotSyn::Ring(float* w, int instant, std::int64_t period) const {
  const double p = static_cast<double>(period);
  Tract damped = tract;
  for (int e = 0; e < Tail; ++e) {
    const int k = instant + 1 + e;
    if (0.6 * p < e && e <= 0.8 * p) {
      damped.Widen();
    }
    const bool rings = e < 1.5 * p && damped.Order() >= 1;
    w[k] = rings ? -damped.Predict(w, k) : 0.0F;
  }
}

}  // namespace wavefilters
