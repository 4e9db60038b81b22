#include "voice/glot_pulse.h"

#include <algorithm>
#include <cmath>

namespace wavefilters {
namespace {

constexpr int MaxRise = 512;
constexpr int Tail = 1023;  // samples after the instant
constexpr int Rows = MaxRise + 1 + Tail;

int RiseLength(const GlotPulse& pulse) {
  return static_cast<int>(std::min<std::int64_t>(2 * pulse.period, std::min(pulse.at, MaxRise)));
}

// What a row of lanes is kept in: four in a register, which every machine of this architecture
// has. Wider ones gain nothing: a lane waits for itself, and two registers fill the wait. A
// pulse alone needs no more than a float.
template <int Lanes>
struct Register {
  using Type = float __attribute__((vector_size(16), may_alias));
};
template <>
struct Register<1> {
  using Type = float;
};

// Some pulses of one tract order side by side: a row is a sample, a lane a pulse, and row
// MaxRise holds the instants. Lanes never mix, so each has the bits that it would have alone:
// before its first sample a lane holds zeros, whose products with its coefficients, which
// are finite, change no sum.
template <int Lanes>
class PulseLanes {
 public:
  // Lanes beyond `count` repeat the first pulse and are never added.
  PulseLanes(const GlotPulse* first, int count) : pulses(first), used(count) {
    order = pulses[0].tract.Order();
    for (int lane = 0; lane < Lanes; ++lane) {
      const GlotPulse& pulse = Lane(lane);
      rise[lane] = RiseLength(pulse);
      firstRow = std::min(firstRow, MaxRise - rise[lane]);
      for (int j = 0; j <= order; ++j) {
        At(a[j], lane) = pulse.tract.Coefficient(j);
      }
    }
  }

  void Shape(double interval_ms) {
    Rise(interval_ms);
    for (int row = firstRow; row <= MaxRise; ++row) {
      Row sum;
      Predict(row, sum);
      for (int i = 0; i < Count; ++i) w[row][i] = w[row][i] - sum[i];
    }
    Ring();
  }

  void AddTo(float* out) const {
    for (int lane = 0; lane < used; ++lane) {
      const float gain = pulses[lane].tract.Gain();
      float* sample = out + (pulses[lane].at - rise[lane]);
      for (int row = MaxRise - rise[lane]; row < Rows; ++row) {
        *sample++ += gain * At(w[row], lane);
      }
    }
  }

 private:
  using Number = typename Register<Lanes>::Type;
  static constexpr int Count =
      Lanes * static_cast<int>(sizeof(float)) / static_cast<int>(sizeof(Number));
  using Row = Number[Count];
  static float& At(Row& row, int lane) { return reinterpret_cast<float*>(row)[lane]; }
  static float At(const Row& row, int lane) { return reinterpret_cast<const float*>(row)[lane]; }
  const GlotPulse& Lane(int lane) const { return pulses[lane < used ? lane : 0]; }

  // The resonance z^2 + a1 z + r2, backwards from the instant. Its three starting values are
  // the sound of this source: the term 1 / a1 in the third is wanted, though the recursion
  // would not give it. What lies before a pulse's first sample is left out.
  void Rise(double interval_ms) {
    constexpr double Pi = 3.141592653589793;
    Row minusA1;
    Row minusR2;
    for (int lane = 0; lane < Lanes; ++lane) {
      const GlotPulse& pulse = Lane(lane);
      const auto r = static_cast<float>(std::exp(-Pi * pulse.bandwidth_kHz * interval_ms));
      const double c = std::cos(2.0 * Pi * pulse.frequency_kHz * interval_ms);
      const float r2 = r * r;
      const auto a1 = static_cast<float>(-2.0 * c * double{r});
      const double third = 1.0 / double{a1} - double{a1} + double{r2 / a1};
      At(w[MaxRise], lane) = static_cast<float>(-pulse.amplitude / double{a1});
      At(w[MaxRise - 1], lane) = static_cast<float>(pulse.amplitude);
      At(w[MaxRise - 2], lane) = static_cast<float>(pulse.amplitude * third);
      At(minusA1, lane) = -a1;
      At(minusR2, lane) = -r2;
    }
    for (int row = MaxRise - 3; row >= firstRow; --row) {
      for (int i = 0; i < Count; ++i) {
        w[row][i] = minusA1[i] * w[row + 1][i] + minusR2[i] * w[row + 2][i];
      }
    }
    for (int lane = 0; lane < Lanes; ++lane) {
      for (int row = firstRow; row < MaxRise - rise[lane]; ++row) {
        At(w[row], lane) = 0.0F;
      }
    }
  }

  // The tracts ring on without input.
  void Ring() {
    bool widens[Lanes];
    bool rings[Lanes];
    for (int e = 0; e < Tail; ++e) {
      bool anyWidens = false;
      bool anyRings = false;
      for (int lane = 0; lane < Lanes; ++lane) {
        const auto period = static_cast<double>(Lane(lane).period);
        widens[lane] = 0.6 * period < e && e <= 0.8 * period;
        rings[lane] = e < 1.5 * period && order >= 1;
        anyWidens = anyWidens || widens[lane];
        anyRings = anyRings || rings[lane];
      }
      if (anyWidens) {
        Widen(widens);
      }
      const int row = MaxRise + 1 + e;
      Row sum{};
      if (anyRings) {
        Predict(row, sum);
      }
      for (int i = 0; i < Count; ++i) w[row][i] = -sum[i];
      for (int lane = 0; lane < Lanes; ++lane) {
        if (!rings[lane]) At(w[row], lane) = 0.0F;
      }
    }
  }

  // Multiplies a[j] by 0.9985^j, rounded as it is formed. A factor of 1 leaves a lane's bits.
  void Widen(const bool (&widens)[Lanes]) {
    float g = 1.0F;
    for (int j = 1; j <= order; ++j) {
      g = static_cast<float>(double{g} * 0.9985);
      Row factor;
      for (int lane = 0; lane < Lanes; ++lane) At(factor, lane) = widens[lane] ? g : 1.0F;
      for (int i = 0; i < Count; ++i) a[j][i] = a[j][i] * factor[i];
    }
  }

  // The sum over j of a[j] * w[row - j], ascending, in single precision.
  void Predict(int row, Row& sum) const {
    const int reach = std::min(order, row - firstRow);
    Row total{};
    for (int j = 1; j <= reach; ++j) {
      for (int i = 0; i < Count; ++i) {
        const Number product = a[j][i] * w[row - j][i];
        total[i] = total[i] + product;
      }
    }
    for (int i = 0; i < Count; ++i) sum[i] = total[i];
  }

  const GlotPulse* pulses;
  int used;
  int order;
  int firstRow = MaxRise;  // where the longest rise begins
  int rise[Lanes];
  Row a[MaxTractOrder + 1];
  Row w[Rows];
};

template <int Lanes>
void AddTogether(const GlotPulse* pulses, int count, double interval_ms, float* out) {
  PulseLanes<Lanes> lanes(pulses, count);
  lanes.Shape(interval_ms);
  lanes.AddTo(out);
}

bool Fits(const GlotPulse& first, const GlotPulse& other) {
  return other.tract.Order() == first.tract.Order() && other.tract.IsFinite();
}

}  // namespace

void AddPulses(const GlotPulse* pulses, int count, double interval_ms, float* out) {
  for (int first = 0; first < count;) {
    int next = first + 1;
    if (pulses[first].tract.IsFinite()) {
      while (next < count && Fits(pulses[first], pulses[next])) {
        ++next;
      }
    }
    if (next - first > 1) {
      AddTogether<MostPulsesAtOnce>(pulses + first, next - first, interval_ms, out);
    } else {
      AddTogether<1>(pulses + first, 1, interval_ms, out);
    }
    first = next;
  }
}

}  // namespace wavefilters
