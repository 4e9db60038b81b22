#include "voice/glot_pulse.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace wavefilters {
namespace {

constexpr int MaxRise = 512;
constexpr int Tail = 1023;  // samples after the instant

int RiseLength(const GlotPulse& pulse) {
  return static_cast<int>(std::min<std::int64_t>(2 * pulse.period, std::min(pulse.at, MaxRise)));
}

// Samples after the instant: from and up to which the bandwidths widen, and up to which the
// tract rings. As whole numbers, e > x and e <= x say where e stands to the floor of x.
struct Ringing {
  Ringing(std::int64_t period, int order) {
    const auto length = static_cast<double>(period);
    widensFrom = Within(std::floor(0.6 * length) + 1.0);
    widensTo = Within(std::floor(0.8 * length) + 1.0);
    rings = order >= 1 ? Within(std::ceil(1.5 * length)) : 0;
  }
  static int Within(double samples) { return static_cast<int>(std::min(samples, double{Tail})); }

  int widensFrom;
  int widensTo;
  int rings;
};

// What each widening multiplies a[j] by: 0.9985^j, rounded to single precision as it is formed.
struct WideningTable {
  constexpr WideningTable() {
    float power = 1.0F;
    for (float& factor : factors) {
      factor = power;
      power = static_cast<float>(double{power} * 0.9985);
    }
  }
  float factors[MaxTractOrder + 1] = {};
};
constexpr WideningTable Widening;

// Four at a time, copied from and to whatever address they have: one instruction each way. (A type
// with an alignment of its own would say the same, but clang 14 overlooks that in an alias.)
void AddToEach(float* samples, int count, float number) {
  using Four = float __attribute__((vector_size(16)));
  const Four numbers = {number, number, number, number};
  int i = 0;
  for (; i + 4 <= count; i += 4) {
    Four four;
    std::memcpy(&four, samples + i, sizeof four);
    four += numbers;
    std::memcpy(samples + i, &four, sizeof four);
  }
  for (; i < count; ++i) {
    samples[i] += number;
  }
}

// What a row of lanes is kept in: four in a register, which every machine of this architecture
// has. Wider ones gain nothing: a lane waits for itself, and two registers fill the wait. A
// pulse alone needs no more than a float.
template <int Lanes>
struct Register {
  using Number = float __attribute__((vector_size(16), may_alias));
  using Mask = std::int32_t __attribute__((vector_size(16)));
  static constexpr int Width = 4;
};
template <>
struct Register<1> {
  using Number = float;
  using Mask = std::int32_t;
  static constexpr int Width = 1;
};

// Some pulses of one tract order side by side: a row is a sample, a lane a pulse, and row
// MaxRise holds the instants. Lanes never mix, so each has the bits that it would have alone:
// before its first sample a lane holds zeros, whose products with its coefficients, which
// are finite, change no sum; what it computes behind its last one is never used.
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
    Row latest{};
    for (int row = firstRow; row <= MaxRise; ++row) {
      const Row sum = Predict(row, latest);
      for (int i = 0; i < Count; ++i) latest.part[i] = w[row].part[i] - sum.part[i];
      w[row] = latest;
    }
    Ring();
  }

  void AddTo(float* out) const {
    for (int lane = 0; lane < used; ++lane) {
      const GlotPulse& pulse = pulses[lane];
      const float gain = pulse.tract.Gain();
      const int rings = Ringing(pulse.period, order).rings;
      float* sample = out + (pulse.at - rise[lane]);
      for (int row = MaxRise - rise[lane]; row <= MaxRise + rings; ++row) {
        *sample++ += gain * At(w[row], lane);
      }
      AddToEach(sample, Tail - rings, gain * 0.0F);
    }
  }

 private:
  using Number = typename Register<Lanes>::Number;
  using Mask = typename Register<Lanes>::Mask;
  static constexpr int Count = Lanes / Register<Lanes>::Width;
  struct Row {
    Number part[Count];
  };
  static float& At(Row& row, int lane) { return reinterpret_cast<float*>(row.part)[lane]; }
  static float At(const Row& row, int lane) {
    return reinterpret_cast<const float*>(row.part)[lane];
  }
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
        w[row].part[i] =
            minusA1.part[i] * w[row + 1].part[i] + minusR2.part[i] * w[row + 2].part[i];
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
    Row from;
    Row to;
    int first = Tail;
    int last = 0;
    int rings = 0;
    for (int lane = 0; lane < Lanes; ++lane) {
      const Ringing ringing(Lane(lane).period, order);
      At(from, lane) = static_cast<float>(ringing.widensFrom);
      At(to, lane) = static_cast<float>(ringing.widensTo);
      first = std::min(first, ringing.widensFrom);
      last = std::max(last, ringing.widensTo);
      rings = std::max(rings, ringing.rings);
    }
    Row latest = w[MaxRise];
    for (int e = 0; e < rings; ++e) {
      if (e >= first && e < last) {
        Widen(from, to, static_cast<float>(e));
      }
      const int row = MaxRise + 1 + e;
      const Row sum = Predict(row, latest);
      for (int i = 0; i < Count; ++i) latest.part[i] = -sum.part[i];
      w[row] = latest;
    }
  }

  // Widens the bandwidths in the lanes where `e` lies in [from, to). A factor of 1 leaves a
  // lane's bits.
  void Widen(const Row& from, const Row& to, float e) {
    Mask widens[Count];
    for (int i = 0; i < Count; ++i) widens[i] = (from.part[i] <= e) & (e < to.part[i]);
    for (int j = 1; j <= order; ++j) {
      const Number factor = Number{} + Widening.factors[j];
      for (int i = 0; i < Count; ++i) {
        a[j].part[i] = a[j].part[i] * (widens[i] ? factor : Number{} + 1.0F);
      }
    }
  }

  // The sum over j of a[j] * w[row - j], ascending, in single precision. `latest` is row - 1,
  // which all of the sum waits for: it comes from registers, not back from memory.
  Row Predict(int row, const Row& latest) const {
    const int reach = std::min(order, row - firstRow);
    Row total{};
    if (reach >= 1) {
      for (int i = 0; i < Count; ++i) {
        const Number product = a[1].part[i] * latest.part[i];
        total.part[i] = total.part[i] + product;
      }
    }
    for (int j = 2; j <= reach; ++j) {
      for (int i = 0; i < Count; ++i) {
        const Number product = a[j].part[i] * w[row - j].part[i];
        total.part[i] = total.part[i] + product;
      }
    }
    return total;
  }

  const GlotPulse* pulses;
  int used;
  int order;
  int firstRow = MaxRise;  // where the longest rise begins
  int rise[Lanes];
  Row a[MaxTractOrder + 1];
  Row w[MaxRise + 1 + Tail];
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
