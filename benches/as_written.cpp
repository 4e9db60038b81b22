#include "benches/as_written.h"

#include <algorithm>
#include <cmath>

namespace wavefilters::bench {

void ConvolveAsWritten(const float* in, const float* coef, int taps, float* out, int outCount) {
  for (int i = 0; i < outCount; ++i) {
    const float* x = in + i;
    float sum = 0.0F;
    int k = 0;
    for (; k + 4 <= taps; k += 4) {
      sum +=
          x[k] * coef[k] + x[k + 1] * coef[k + 1] + x[k + 2] * coef[k + 2] + x[k + 3] * coef[k + 3];
    }
    for (; k < taps; ++k) {
      sum += x[k] * coef[k];
    }
    out[i] = sum;
  }
}

void ResampleAsWritten::Apply(const float* in, float* out, int nIn, int nOut, int& consumed,
                              int& produced) {
  consumed = 0;
  produced = 0;
  while (consumed < nIn && produced < nOut) {
    if (downCount == 0) {
      int j = margins + consumed;
      double sum = 0.0;
      for (int k = coefCount - 1 - phase; k >= 0; k -= up) {
        sum += double{in[j] * coef[k]};
        --j;
      }
      out[produced] = static_cast<float>(sum);
      ++produced;
    }
    if (++phase >= up) {
      phase = 0;
      ++consumed;
    }
    if (++downCount >= down) {
      downCount = 0;
    }
  }
}

namespace {

constexpr int MaxOrder = 256;
constexpr int Tail = 1023;

struct GlottalEvent {
  double amplitude;
  double frequency_kHz;
  double bandwidth_kHz;
  float a[MaxOrder + 1] = {1.0F};
  int order = 0;

  bool Read(INumStreamC& events) {
    if (!events.GetDouble(amplitude) || !events.GetDouble(frequency_kHz) ||
        !events.GetDouble(bandwidth_kHz)) {
      return false;
    }
    while (order < MaxOrder && events.GetSingle(a[order + 1])) {
      ++order;
    }
    for (int i = 1; i <= order; ++i) {
      const double e = std::exp(double{a[i]} * 0.6931471805599453);
      const double k = (e - 1.0) / (e + 1.0);
      for (int j = 1; j <= i / 2; ++j) {
        const double p = a[j];
        const double q = a[i - j];
        a[i - j] = static_cast<float>(k * p + q);
        a[j] = static_cast<float>(p + k * q);
      }
      a[i] = static_cast<float>(k);
    }
    return true;
  }
};

float Predict(const float* a, int order, const float* w, int k) {
  float sum = 0.0F;
  for (int j = 1; j <= std::min(order, k); ++j) {
    sum += a[j] * w[k - j];
  }
  return sum;
}

void Rise(const GlottalEvent& event, double interval_ms, float* w, int n) {
  constexpr double Pi = 3.141592653589793;
  const auto r = static_cast<float>(std::exp(-Pi * event.bandwidth_kHz * interval_ms));
  const double c = std::cos(2.0 * Pi * event.frequency_kHz * interval_ms);
  const float r2 = r * r;
  const auto a1 = static_cast<float>(-2.0 * c * double{r});
  const double third = 1.0 / double{a1} - double{a1} + double{r2 / a1};
  w[n] = static_cast<float>(-event.amplitude / double{a1});
  w[n - 1] = static_cast<float>(event.amplitude);
  w[n - 2] = static_cast<float>(event.amplitude * third);
  for (int i = n - 3; i >= 0; --i) {
    w[i] = -a1 * w[i + 1] - r2 * w[i + 2];
  }
}

void PutPulse(const GlottalEvent& event, double interval_ms, float* out, int at, int period) {
  float w[512 + 1 + Tail];
  const int n = std::min(2 * period, std::min(at, 512));
  Rise(event, interval_ms, w, n);
  float a[MaxOrder + 1];
  std::copy_n(event.a, event.order + 1, a);
  for (int k = 0; k <= n; ++k) {
    w[k] -= Predict(a, event.order, w, k);
  }
  for (int k = n + 1; k <= n + Tail; ++k) {
    const int e = k - n - 1;
    if (0.6 * period < e && e <= 0.8 * period) {
      float g = 1.0F;
      for (int j = 1; j <= event.order; ++j) {
        g = static_cast<float>(double{g} * 0.9985);
        a[j] *= g;
      }
    }
    w[k] = e < 1.5 * period && event.order >= 1 ? -Predict(a, event.order, w, k) : 0.0F;
  }
  float gain = 0.0F;
  for (int j = 0; j <= event.order; ++j) {
    gain += event.a[j];
  }
  for (int i = 0; i <= n + Tail; ++i) {
    out[at - n + i] += gain * w[i];
  }
}

}  // namespace

void GlottalAsWritten::Apply(float* out, int count) {
  int next = static_cast<int>(next_ms / interval_ms);
  while (next < count - 1024) {
    GlottalEvent event;
    if (!event.Read(*events)) {
      return;
    }
    const int at = next;
    const bool more = events->GetLine() && events->GetDouble(next_ms);
    next = static_cast<int>(next_ms / interval_ms);
    PutPulse(event, interval_ms, out, at, more ? next - at : count - at);
    if (!more) {
      return;
    }
  }
}

bool NumberFileAsWritten::Open(const std::string& name) {
  line.reset();
  file.close();
  file.open(name);
  return file.is_open();
}

bool NumberFileAsWritten::GetLine() {
  line.reset();
  if (!std::getline(file, text)) {
    return false;
  }
  line = std::make_unique<std::istringstream>(text);
  return true;
}

bool NumberFileAsWritten::GetDouble(double& value) {
  return line != nullptr && !(*line >> value).fail();
}

int NearestAsWritten(const double* xs, const double* ys, int count, double x, double y) {
  double smallest = 1000000.0;
  int nearest = 0;
  for (int i = 0; i < count; ++i) {
    const double dx = xs[i] - x;
    const double dy = ys[i] - y;
    const double distance = std::sqrt(dx * dx + dy * dy);
    if (distance < smallest) {
      smallest = distance;
      nearest = i;
    }
  }
  return nearest;
}

}  // namespace wavefilters::bench
